#include "zanserver/wishreport.h"

#include "valueframework/valueaccess.h"
#include "zancommon/zanpath.h"

using namespace Qt::StringLiterals;

namespace ZANServer {

namespace {

ValueString* GetText(QStringView wish, QStringView name) {
    return ZANPlatform::GetOrCreateValue<ValueString>(ZANPath::Server(u"Res/CtlR/%1/%2"_s.arg(wish, name)));
}

} // namespace

WishReport::WishReport(QStringView wish)
    : m_asked(GetText(wish, u"Asked"))
    , m_carriedOut(GetText(wish, u"CarriedOut"))
    , m_reason(GetText(wish, u"Reason")) {}

void WishReport::Tell(const QString& asked, const QString& carriedOut, const QString& reason) {
    m_asked->SetValue(asked);
    m_carriedOut->SetValue(carriedOut);
    m_reason->SetValue(reason);
}

void WishReport::Clear() {
    if (!m_reason->GetValue().isEmpty()) {
        Tell({}, {}, {});
    }
}

} // namespace ZANServer

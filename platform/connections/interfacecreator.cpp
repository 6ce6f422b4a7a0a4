#include "connections/interfacecreator.h"

#include "connections/serialline.h"
#include "connections/serialportinterface.h"
#include "kwbase/tracesource.h"

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr TraceSource TRACE(u"connections\\interfacecreator");

} // namespace

IInterface* CInterfaceCreator::CreateInterface(const QString& address, IInterfaceCallback* callback, quint64,
                                               bool) {
    const auto refuse = [&](const QString& reason, unsigned line = __builtin_LINE()) -> IInterface* {
        TRACE.Information(
            [&] { return u"The interface \""_s + address + u"\" cannot be opened: "_s + reason + u'.'; },
            line);
        return nullptr;
    };
    if (!callback) {
        return refuse(u"there is no callback for its events"_s);
    }
    QString reason;
    auto pInterface = std::make_unique<SerialPortInterface>(*callback);
    if (!SerialLine::Open(pInterface->Port(), address, reason)) {
        return refuse(reason);
    }
    pInterface->Start();
    return pInterface.release();
}

QString CInterfaceCreator::CheckAddress(const QString& address) {
    return SerialLine::CheckAddress(address);
}

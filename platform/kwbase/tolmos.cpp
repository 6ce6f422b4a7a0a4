#include "kwbase/tolmos.h"

#include <QDateTime>

namespace {

class HostOS : public ITolmOS {
public:
    [[nodiscard]] unsigned long long GetCurrentTime() const override {
        return static_cast<unsigned long long>(QDateTime::currentMSecsSinceEpoch());
    }
    bool TranslateHostName(const QString& host, QString& translated) const override {
        const QString name = host.endsWith(u'.') ? host.chopped(1) : host;
        if (name.isEmpty()) {
            return false;
        }
        translated = name.toLower();
        return true;
    }
};

ITolmOS* replacement = nullptr;

} // namespace

ITolmOS::~ITolmOS() = default;

ITolmOS& TolmOS::Create() {
    static HostOS host;
    return replacement ? *replacement : host;
}

void TolmOS::Replace(ITolmOS* os) {
    replacement = os;
}

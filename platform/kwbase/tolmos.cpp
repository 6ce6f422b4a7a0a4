#include "kwbase/tolmos.h"

#include <QDateTime>

namespace {

class HostOS : public ITolmOS {
public:
    [[nodiscard]] unsigned long long GetCurrentTime() const override {
        return static_cast<unsigned long long>(QDateTime::currentMSecsSinceEpoch());
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

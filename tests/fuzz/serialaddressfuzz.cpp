#include "connections/iinterface.h"
#include "connections/iinterfacecallback.h"
#include "connections/interfacecreator.h"
#include "fuzz.h"

#include <memory>

using namespace Qt::StringLiterals;

namespace {

/// Hears nothing, because no line is ever open. Without one the address would not be looked at.
class Callback final : public IInterfaceCallback {
public:
    virtual ~Callback() = default;

    void OnOpen() override {}
    void OnClose() override {}
    void OnRead() override {}
    void OnError() override {}
};

} // namespace

/// Addresses of serial lines. The line itself does not exist, so that none of the machine's is opened.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Callback callback;
    const std::unique_ptr<IInterface> interface(
        CInterfaceCreator::CreateInterface(u"/dev/no-such-line"_s + TextOf(data, size), &callback, 0, false));
    Require(!interface);
    return 0;
}

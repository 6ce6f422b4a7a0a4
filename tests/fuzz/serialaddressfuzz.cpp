#include "connections/iinterface.h"
#include "connections/iinterfacecallback.h"
#include "connections/interfacecreator.h"
#include "fuzz.h"

#include <memory>

using namespace Qt::StringLiterals;

/// Addresses of serial lines. The line itself does not exist, so that none of the machine's is opened.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::unique_ptr<IInterface> interface(
        CInterfaceCreator::CreateInterface(u"/dev/no-such-line"_s + TextOf(data, size), nullptr, 0, false));
    return 0;
}

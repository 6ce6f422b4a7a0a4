#include "fuzz.h"
#include "zancommon/zanoptions.h"

/// Option texts as a device reports them.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ZANOptions& options = *ZANOptions::Instance();
    options.ClearAllOptions();
    options.AddOptionsFromString(TextOf(data, size));
    // What was understood reads the same when it is written.
    const QString text = options.GetOptionsAsString();
    options.ClearAllOptions();
    Require(options.AddOptionsFromString(text) || text.isEmpty());
    Require(options.GetOptionsAsString() == text);
    return 0;
}

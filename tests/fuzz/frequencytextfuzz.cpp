#include "fuzz.h"
#include "zanserver/frequencytext.h"

#include <cmath>

using namespace ZANServer;

/// Frequencies of a command line.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const std::optional<double> frequency = FrequencyText::Parse(TextOf(data, size))) {
        Require(std::isfinite(*frequency) && *frequency >= 0.0);
        Require(FrequencyText::Parse(FrequencyText::Format(*frequency)).has_value());
    }
    return 0;
}

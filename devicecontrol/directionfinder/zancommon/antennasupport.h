#pragma once

#include "zancommon/zandomain.h"

#include <vector>

/// Whether the device supports an antenna in an operation mode, and the reason when it does not.
///
/// The device supports an antenna when a row of the sample-mode table passes all tests. When none does, the
/// reason is the first test that no row gets beyond.
struct AntennaSupport {
    /// The tests of a row in their order. Each value names the test that failed.
    enum class EReason : int {
        UNKNOWN_CONVERTER, ///< the antenna has no converter, or one of an unknown type
        CONVERTER,         ///< no row is for the antenna's converter
        DEVICE_TYPE,       ///< none of those is for the device's type
        OPERATION_MODE,    ///< none of those is for the operation mode
        FREQUENCY_RANGE,   ///< none of those holds the antenna's whole range
        OPTION_EXCLUDES,   ///< each of those is excluded by an option that the device has
        OPTION_MISSING,    ///< those that are not excluded require an option that the device does not have
        SUPPORTED          ///< a row passes all tests
    };

    EReason reason = EReason::UNKNOWN_CONVERTER;
    /// OPTION_MISSING: options of which any one would be enough. OPTION_EXCLUDES: the options that exclude.
    /// In the order of the table, each once.
    std::vector<EZANOptions> options;

    [[nodiscard]] bool IsSupported() const { return reason == EReason::SUPPORTED; }
};

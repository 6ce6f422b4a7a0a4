#pragma once

#include "zancommon/antennasupport.h"
#include "zancommon/zancharacteristics.h"

#include <vector>

/// A question to the sample-mode table: everything that a row has to fit.
struct SampleModeQuery {
    using Row = ZANCharacteristics::SampleModeDescription;

    EZANType deviceType = ZANTYPE_ZANTIDE;
    EOperationMode mode = OPMODE_ANY;
    EZANConverter converter = CONVERTER_NONE;
    double start = ZANCharacteristics::fFREQUENCY_ANY;             ///< Hz
    double stop = ZANCharacteristics::fFREQUENCY_ANY;              ///< Hz
    double realtimeBandwidth = ZANCharacteristics::fBANDWIDTH_ANY; ///< Hz

    /// The first test that the row fails; whatever its bandwidth is.
    [[nodiscard]] AntennaSupport::EReason Test(const Row& row) const;
    /// Whether the row passes all tests and has the bandwidth.
    [[nodiscard]] bool Fits(const Row& row) const;
    /// Of the rows that fit, the first one of the highest priority; null when none fits.
    [[nodiscard]] const Row* FindBest() const;
    /// All rows that fit, in the order of the table.
    [[nodiscard]] std::vector<const Row*> FindAll() const;
    /// How far the rows come that come furthest.
    [[nodiscard]] AntennaSupport Explain() const;
};

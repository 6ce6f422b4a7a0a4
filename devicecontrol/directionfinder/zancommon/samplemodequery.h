#pragma once

#include "zancommon/antennasupport.h"
#include "zancommon/zancharacteristics.h"

#include <vector>

/// A query of the sample-mode table: the conditions that a row must meet.
struct SampleModeQuery {
    using Row = ZANCharacteristics::SampleModeDescription;

    EZANType deviceType = ZANTYPE_ZANTIDE;
    EOperationMode mode = OPMODE_ANY;
    EZANConverter converter = CONVERTER_NONE;
    double start = ZANCharacteristics::fFREQUENCY_ANY;             ///< Hz
    double stop = ZANCharacteristics::fFREQUENCY_ANY;              ///< Hz
    double realtimeBandwidth = ZANCharacteristics::fBANDWIDTH_ANY; ///< Hz

    /// The first test that the row fails; the bandwidth is not tested.
    [[nodiscard]] AntennaSupport::EReason Test(const Row& row) const;
    /// Whether the row passes all tests and has the bandwidth.
    [[nodiscard]] bool Fits(const Row& row) const;
    /// The first row of the highest priority among those that fit; null when none fits.
    [[nodiscard]] const Row* FindBest() const;
    /// All rows that fit, in the order of the table.
    [[nodiscard]] std::vector<const Row*> FindAll() const;
    /// The result of the rows that pass the most tests.
    [[nodiscard]] AntennaSupport Explain() const;
};

#pragma once

#include "tolmappstartup/icfg.h"
#include "zancommon/antennadata.h"

#include <QString>

/// One antenna in the settings of a station: the section "SystemConfiguration/Antenna%1", %1 counted from 0.
///
/// Frequencies are stored as texts in Hz with three decimals.
class AntennaSection {
public:
    /// Which keys are read.
    enum class EKeys {
        ALL,   ///< all but the polarisation, which the device and the value tree decide
        CHOICE ///< what an operator chooses: range, enabled, compass, mounting
    };

    /// Null, with a traced assertion, when the section cannot be opened.
    static CfgPtr Open(ICfg& station, int index);
    static QString ReadName(const ICfg& section);
    /// Reads the keys; a missing key is read as "", 0 or false. A range that does not lie within the coverage
    /// becomes the coverage. `dfMethods` is not changed.
    static void Read(const ICfg& section, EKeys keys, AntennaData& antenna);
    /// Writes all keys.
    static void Write(ICfg& section, const AntennaData& antenna);
};

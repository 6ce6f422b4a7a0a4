#pragma once

#include "zancommon/antennadatalist.h"
#include "zancommon_export.h"

#include <QString>

#include <functional>

/// Judges and repairs an antenna setup: which antennas are enabled, and in which ranges they are used.
///
/// Works on lists alone: what the device supports is asked of a predicate, and nothing is published. So a
/// repair can be shown before it is made (`ZANCharacteristics::ProposeAntennaSetup`,
/// `ZANCharacteristics::MakeAntennaSetupValid`). Messages are sentences for the user, translated with the
/// context "ZANCharacteristics", with frequencies in MHz. Ranges are taken as they are: what is not a number
/// comes out as such.
class ZANCOMMON_EXPORT AntennaSetup {
public:
    /// Whether the device can work with an antenna in the range in which it is used. Must not be empty.
    using IsSupported = std::function<bool(const AntennaData&)>;

    /// What is thought of a setup.
    struct Verdict {
        bool isValid = false;
        QString message;
    };

    /// A setup in the place of another one.
    struct Proposal {
        bool isPossible = false;  ///< there is an antenna to work with
        bool isRepair = false;    ///< the antennas are not those that there were
        AntennaDataList antennas; ///< records of its own; those that there were, unless it is a repair
        QString message;          ///< what is changed, or why nothing is
    };

    /// Every enabled antenna must be supported, and the ranges in the order of the list must join into one
    /// span without gaps and overlaps. Antennas of a pair may share a range.
    [[nodiscard]] static Verdict Check(const AntennaDataList& list, const IsSupported& isSupported);

    /// Enables what is supported as it is used, for all that it covers, and then cuts or disables what
    /// overlaps or leaves a gap. What comes out is sorted, and not checked again. The list is not changed.
    [[nodiscard]] static Proposal Repair(const AntennaDataList& list, const IsSupported& isSupported);

    /// The setup as it is, for one that is valid already.
    [[nodiscard]] static Proposal Keep(const AntennaDataList& list);

    /// Whether an antenna of this name is one of a pair that differs by polarisation or side only: the name
    /// ends in "_H", "_V", "_L" or "_R".
    [[nodiscard]] static bool IsOneOfPair(const QString& name);
};

#pragma once

#include "zancommon/antennadatalist.h"
#include "zancommon_export.h"

#include <QString>

#include <functional>

/// Judges and repairs an antenna setup: which antennas are enabled, and in which ranges they are used.
///
/// Works on lists only: a predicate says what the device supports, and nothing is published. So a repair can
/// be shown before it is made (`ZANCharacteristics::ProposeAntennaSetup`,
/// `ZANCharacteristics::MakeAntennaSetupValid`). Messages are sentences for the user, translated with the
/// context "ZANCharacteristics", with frequencies in MHz. Ranges are not checked: NaN stays NaN.
class ZANCOMMON_EXPORT AntennaSetup {
public:
    /// Whether the device can work with an antenna in the range in which it is used. Must not be empty.
    using IsSupported = std::function<bool(const AntennaData&)>;

    /// The result of a check.
    struct Verdict {
        bool isValid = false;
        QString message;
    };

    /// A setup that is to replace another one.
    struct Proposal {
        bool isPossible = false;  ///< the device supports at least one antenna
        bool isRepair = false;    ///< the antennas differ from those before
        AntennaDataList antennas; ///< copies; without a repair equal to those before
        QString message;          ///< what was changed, or why nothing was
    };

    /// Every enabled antenna must be supported, and the ranges in the order of the list must join into one
    /// span without gaps and overlaps. Antennas of a pair may share a range.
    [[nodiscard]] static Verdict Check(const AntennaDataList& list, const IsSupported& isSupported);

    /// Enables the antennas that are supported in their range of use, extends their ranges to the coverage,
    /// and then cuts or disables those that overlap or leave a gap. The result is sorted, and not checked
    /// again. The list is not changed.
    [[nodiscard]] static Proposal Repair(const AntennaDataList& list, const IsSupported& isSupported);

    /// The same setup, for one that is valid already.
    [[nodiscard]] static Proposal Keep(const AntennaDataList& list);

    /// Whether an antenna of this name is one of a pair that differs only in polarisation or side: the name
    /// ends in "_H", "_V", "_L" or "_R".
    [[nodiscard]] static bool IsOneOfPair(const QString& name);
};

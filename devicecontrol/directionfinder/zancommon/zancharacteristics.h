#pragma once

#include "zancommon/zandomain.h"
#include "zancommon_export.h"

#include <QString>

#include <array>
#include <cstddef>
#include <limits>
#include <span>

/// What the attached DF device can do.
class ZANCOMMON_EXPORT ZANCharacteristics {
public:
    /// How a frequency range that straddles two antennas is moved. Any other value leaves it where it is.
    enum EAdjustMode : qint32 {
        ADJUST_DOWN = 0, ///< the range ends where the antenna of its start frequency ends
        ADJUST_UP = 1    ///< the range starts where the antenna of its stop frequency starts
    };

    /// Row of the antenna library. A model has one row per frequency range with methods of its own. The
    /// library ends with a row without a name.
    struct AntennaDescription {
        QString name;                           ///< model name, compared case-sensitively
        double minFrequency = 0.0;              ///< Hz, inclusive
        double maxFrequency = 0.0;              ///< Hz, inclusive
        qint32 dfMethods = METHODDETAILED_NONE; ///< mask of EZANMethodDetailed
    };

    /// Row of the sample-mode table, which ends with a row of the sample mode SAMPLEMODE_END.
    struct SampleModeDescription {
        static constexpr std::size_t MAX_LIST_LENGTH = 10;

        EZANSampleMode sampleMode = SAMPLEMODE_END;
        std::array<EZANType, MAX_LIST_LENGTH + 1> deviceTypes{ZANTYPE_END}; ///< closed by ZANTYPE_END
        EZANOptions requiredOption = OPTION_NONE;
        EZANOptions excludedOption = OPTION_NONE; ///< OPTION_NONE: no option excludes the row
        EZANConverter firstConverter = CONVERTER_NONE;
        EZANConverter secondConverter = CONVERTER_NONE; ///< CONVERTER_NONE: the row has one converter only
        double realtimeBandwidth = 0.0;                 ///< Hz
        double minFrequency = 0.0;                      ///< Hz, inclusive
        double maxFrequency = 0.0;                      ///< Hz, inclusive
        /// Closed by OPMODE_END; OPMODE_ANY in the list makes the row valid for every mode.
        std::array<EOperationMode, MAX_LIST_LENGTH + 1> operationModes{OPMODE_END};
        int priority = 0;                             ///< of several rows that fit, the highest wins
        const double* resolutionBandwidths = nullptr; ///< Hz, closed by -1.0; static data
        qint32 preamplifierAvailable = 0; ///< 0 or 1: the receiver path has a switchable preamplifier
        EFreqRange range = FREQRANGE_HF;
    };

    /// As an argument: the frequency restricts nothing.
    static constexpr double fFREQUENCY_ANY = std::numeric_limits<double>::lowest();
    /// As an argument: the bandwidth restricts nothing.
    static constexpr double fBANDWIDTH_ANY = std::numeric_limits<double>::lowest();
    static constexpr int MAX_CHANNEL_COUNT_DEFAULT = 60000;

    /// Converters of each group, closed by CONVERTER_NONE.
    static constexpr std::array s_aHF_CONVERTERS{CONVERTER_RCV01, CONVERTER_RCV02, CONVERTER_RCV09,
                                                 CONVERTER_RCV07, CONVERTER_NONE};
    static constexpr std::array s_aVUHF_CONVERTERS{CONVERTER_RCV03, CONVERTER_RCV04, CONVERTER_RCV06,
                                                   CONVERTER_RCV08, CONVERTER_RCV10, CONVERTER_NONE};

    /// True when the converter stands in the group before its closing CONVERTER_NONE.
    [[nodiscard]] static constexpr bool IsInGroup(std::span<const EZANConverter> group,
                                                  EZANConverter converter);

    /// True when a row that reaches from `minimum` to `maximum` (Hz, inclusive) holds a range: start not
    /// below the minimum, stop not above the maximum. fFREQUENCY_ANY is not compared; any other value is, a
    /// negative one too. One frequency is given as start and as stop.
    [[nodiscard]] static constexpr bool LimitsHold(double minimum, double maximum, double start, double stop);
};

constexpr bool ZANCharacteristics::IsInGroup(std::span<const EZANConverter> group, EZANConverter converter) {
    for (const EZANConverter member : group) {
        if (member == CONVERTER_NONE) {
            return false;
        }
        if (member == converter) {
            return true;
        }
    }
    return false;
}

constexpr bool ZANCharacteristics::LimitsHold(double minimum, double maximum, double start, double stop) {
    return (start == fFREQUENCY_ANY || start >= minimum) && (stop == fFREQUENCY_ANY || stop <= maximum);
}

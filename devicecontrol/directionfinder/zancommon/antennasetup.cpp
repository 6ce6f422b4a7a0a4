#include "zancommon/antennasetup.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace {

QString Translate(const char* text) {
    return QCoreApplication::translate("ZANCharacteristics", text);
}

/// A frequency in MHz, as the messages show it.
QString ToMHz(double frequency) {
    return QString::number(frequency / 1e6, 'g', 6);
}

/// Copies the records in their order (`CopyFrom` would sort them).
AntennaDataList CopyOf(const AntennaDataList& list) {
    AntennaDataList copy;
    for (const auto& antenna : list.GetAntennas()) {
        copy.AddAntenna(*antenna);
    }
    return copy;
}

/// Enables the antennas that are supported in their range of use, and extends all ranges to the coverage.
/// Returns whether there is a supported one.
bool EnableSupported(const AntennaDataList& list, const AntennaSetup::IsSupported& isSupported) {
    bool isAnySupported = false;
    for (const auto& antenna : list.GetAntennas()) {
        antenna->enabled = isSupported(*antenna);
        SetRange(*antenna, CoverageOf(*antenna));
        isAnySupported = isAnySupported || antenna->enabled;
    }
    return isAnySupported;
}

/// Moves the beginning of an antenna's range to the end of the span below it; disables the antenna when it
/// adds nothing or leaves a gap.
void FitOnto(const FrequencyRange& span, AntennaData& antenna) {
    if (span.high >= antenna.maxRange) {
        // The left and the right half of this antenna cover the same range, and both stay.
        antenna.enabled = antenna.name == "PX104_R"_L1;
    } else if (antenna.minRange > span.high + FrequencyRange::STEP) {
        antenna.enabled = false;
    } else {
        antenna.minRange = span.high + FrequencyRange::STEP;
    }
}

/// Joins the enabled antennas of a sorted list into one span, which is returned.
FrequencyRange JoinRanges(const AntennaDataList& list) {
    FrequencyRange span{-1.0, -1.0}; // below 0: none yet
    for (const auto& antenna : list.GetAntennas()) {
        if (antenna->enabled && span.high >= 0.0) {
            FitOnto(span, *antenna);
        }
        if (!antenna->enabled) {
            antenna->minRange = antenna->maxRange;
            continue;
        }
        if (span.low < 0.0) {
            span.low = antenna->minRange;
        }
        span.high = antenna->maxRange;
    }
    return span;
}

} // namespace

AntennaSetup::Verdict AntennaSetup::Check(const AntennaDataList& list, const IsSupported& isSupported) {
    const auto refuse = [](const QString& message) { return Verdict{false, message}; };
    if (list.GetAntennas().empty()) {
        return refuse(Translate("No antennas connected to device."));
    }
    FrequencyRange span{-1.0, -1.0}; // covered so far
    int count = 0;
    for (const auto& antenna : list.GetAntennas()) {
        if (!antenna->enabled) {
            continue;
        }
        if (!isSupported(*antenna)) {
            return refuse(
                Translate("Antenna %1 (%2 MHz - %3 MHz) is not supported by the ZAN device with the "
                          "currently installed options. It must be disabled.")
                    .arg(antenna->name, ToMHz(antenna->minFreq), ToMHz(antenna->maxFreq)));
        }
        const FrequencyRange range = RangeOf(*antenna);
        if (!(span.low > 0.0) || !(span.high > 0.0)) {
            span = range;
        } else if (range.IsFollowedBy(span)) {
            span.low = range.low;
        } else if (span.IsFollowedBy(range)) {
            span.high = range.high;
        } else if (span.IsApartFrom(range)) {
            return refuse(Translate("Frequency range is not entirely covered without gaps."));
        } else if ((range.high != span.high && range.low != span.low) || !IsOneOfPair(antenna->name)) {
            return refuse(Translate("Frequency ranges are overlapping."));
        }
        // An antenna of a pair that shares an edge does not change the span, even when it reaches beyond it.
        ++count;
    }
    return count > 0 ? Verdict{true, Translate("Antenna setup is valid.")}
                     : refuse(Translate("No antennas enabled."));
}

AntennaSetup::Proposal AntennaSetup::Repair(const AntennaDataList& list, const IsSupported& isSupported) {
    AntennaDataList repaired;
    repaired.CopyFrom(list);
    if (!EnableSupported(repaired, isSupported)) {
        return {false, false, CopyOf(list), Translate("No antenna is supported by device.")};
    }
    repaired.SortAntennasByFrequencyRanges();
    const FrequencyRange span = JoinRanges(repaired);
    return {true, true, repaired,
            Translate("Auto configuration of antennas successfully covered range from %1 MHz to %2 MHz.")
                .arg(ToMHz(span.low), ToMHz(span.high))};
}

AntennaSetup::Proposal AntennaSetup::Keep(const AntennaDataList& list) {
    return {true, false, CopyOf(list), Translate("Antenna setup is already valid. Nothing changed.")};
}

bool AntennaSetup::IsOneOfPair(const QString& name) {
    return name.endsWith("_H"_L1) || name.endsWith("_V"_L1) || name.endsWith("_L"_L1) ||
           name.endsWith("_R"_L1);
}

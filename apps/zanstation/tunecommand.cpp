#include "zancommon/zancharacteristics.h"
#include "zanstation/commandline.h"
#include "zanstation/commands.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/frequencytext.h"
#include "zanstation/operationmodetext.h"
#include "zanstation/station.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>

using namespace Qt::StringLiterals;
using FrequencyText::Format;
using FrequencyText::FormatRange;

namespace {

/// What `zanstation tune` is asked: a frequency, or a range.
struct TuneRequest {
    EOperationMode mode = OPMODE_FFM;
    std::optional<double> frequency; ///< Hz
    std::optional<double>
        bandwidth;      ///< Hz; realtime bandwidth wanted, which wideband FFM fits into the range
    double start = 0.0; ///< Hz, without a frequency
    double stop = 0.0;  ///< Hz, without a frequency
    ZANCharacteristics::EAdjustMode adjustMode = ZANCharacteristics::ADJUST_DOWN;
    QString adjustName; ///< of the adjust mode
};

void PrintLine(const QString& name, const QString& text) {
    Console::Print(name.leftJustified(14) + text);
}

/// "raised by 1 MHz" or "lowered by 1 MHz"
QString DescribeMove(double move) {
    return (move > 0.0 ? u"raised by "_s : u"lowered by "_s) + Format(std::abs(move));
}

void PrintChanges(const QStringList& changes) {
    PrintLine(u"changed"_s, changes.isEmpty() ? u"nothing"_s : changes.constFirst());
    for (qsizetype i = 1; i < changes.size(); ++i) {
        PrintLine({}, changes.at(i));
    }
}

int PrintFailure(const QString& why) {
    PrintLine(u"valid"_s, u"no: "_s + why);
    return EXIT_FAILED;
}

/// The texts of bandwidths in Hz.
QString FormatBandwidths(const std::set<double>& bandwidths) {
    QStringList texts;
    for (const double bandwidth : bandwidths) {
        texts.append(ZANCharacteristics::FormatBandwidth(bandwidth, 3, false));
    }
    return texts.isEmpty() ? u"none"_s : texts.join(u", "_s);
}

QString DescribeAntenna(const AntennaData& antenna) {
    return antenna.name + u" ("_s + FormatRange(antenna.minRange, antenna.maxRange) + u')';
}

/// Prints what receives a range with an antenna: converter, sample mode and bandwidths. Returns the exit
/// code.
int PrintReception(const ZANCharacteristics& characteristics, const AntennaData& antenna, EOperationMode mode,
                   double start, double stop, double realtimeBandwidth) {
    PrintLine(u"antenna"_s, DescribeAntenna(antenna));
    PrintLine(u"converter"_s, antenna.converterTypeName);
    const EZANSampleMode sampleMode = characteristics.GetBestSampleMode(mode, start, stop, realtimeBandwidth);
    if (sampleMode == SAMPLEMODE_END) {
        PrintLine(u"sample mode"_s,
                  u"no: there are the realtime bandwidths "_s +
                      FormatBandwidths(characteristics.GetRealtimeBandwidths(mode, start, stop)));
        return EXIT_FAILED;
    }
    // One that is wanted is met to the letter.
    const double sampled =
        characteristics.GetRealtimeBandwidths(mode, start, stop).contains(realtimeBandwidth)
            ? realtimeBandwidth
            : characteristics.GetDefaultRealtimeBandwidth(mode, start, stop);
    PrintLine(u"sample mode"_s, QString::number(sampleMode) + u", realtime bandwidth "_s +
                                    ZANCharacteristics::FormatBandwidth(sampled, 3, false));
    PrintLine(u"resolution"_s, FormatBandwidths(characteristics.GetResolutionBandwidths(mode, start, stop,
                                                                                        realtimeBandwidth)));
    return EXIT_OK;
}

bool HasLimits(const ZANCharacteristics& characteristics, EOperationMode mode) {
    return characteristics.GetMinFreq(mode) < characteristics.GetMaxFreq(mode);
}

QString DescribeLimits(const ZANCharacteristics& characteristics, EOperationMode mode) {
    return HasLimits(characteristics, mode)
               ? u"the mode goes from "_s + Format(characteristics.GetMinFreq(mode)) + u" to "_s +
                     Format(characteristics.GetMaxFreq(mode))
               : u"the device serves no range in this mode"_s;
}

int TuneFrequency(ZANCharacteristics& characteristics, const TuneRequest& request) {
    const EOperationMode mode = request.mode;
    const double asked = *request.frequency;
    const double inLimits =
        std::min(std::max(asked, characteristics.GetMinFreq(mode)), characteristics.GetMaxFreq(mode));
    const bool hasBand = mode == OPMODE_WIDEBAND_FFM;
    double bandwidth = request.bandwidth.value_or(
        hasBand ? characteristics.GetDefaultRealtimeBandwidth(mode, inLimits, inLimits) : 0.0);
    PrintLine(u"asked"_s, Format(asked) + u", mode "_s + OperationModeText::Format(mode) +
                              (hasBand ? u", bandwidth "_s + Format(bandwidth) : QString()));

    // Moved within the limits of the mode first, and then with the whole band within the antenna's range.
    double frequency = asked;
    const AntennaData* const antenna = characteristics.ToNextValidFrequency(mode, frequency, bandwidth);
    if (!antenna) {
        return PrintFailure(HasLimits(characteristics, mode)
                                ? u"no enabled antenna serves "_s + Format(inLimits) + u" in this mode; "_s +
                                      DescribeLimits(characteristics, mode)
                                : DescribeLimits(characteristics, mode));
    }
    if (hasBand && bandwidth > antenna->maxRange - antenna->minRange) {
        return PrintFailure(u"the band of "_s + Format(bandwidth) + u" is wider than the range of "_s +
                            DescribeAntenna(*antenna));
    }
    QStringList changes;
    if (inLimits != asked) {
        changes.append(
            u"frequency %1: %2"_s.arg(DescribeMove(inLimits - asked), DescribeLimits(characteristics, mode)));
    }
    if (frequency != inLimits) {
        changes.append(u"frequency %1: the band of %2 shall lie in the range of %3"_s.arg(
            DescribeMove(frequency - inLimits), Format(bandwidth), antenna->name));
    }
    PrintLine(u"valid"_s, Format(frequency));
    PrintChanges(changes);
    return PrintReception(characteristics, *antenna, mode, frequency, frequency,
                          request.bandwidth.value_or(ZANCharacteristics::fBANDWIDTH_ANY));
}

int TuneRange(ZANCharacteristics& characteristics, const TuneRequest& request) {
    const EOperationMode mode = request.mode;
    PrintLine(u"asked"_s, FormatRange(request.start, request.stop) + u", mode "_s +
                              OperationModeText::Format(mode) + u", adjust "_s + request.adjustName);

    double start = request.start;
    double stop = request.stop;
    double anyBandwidth = ZANCharacteristics::fBANDWIDTH_ANY;
    double unused = 0.0;
    const AntennaData* const antenna = characteristics.ToNextValidFrequencyRange(
        mode, start, stop, anyBandwidth, unused, request.adjustMode);
    if (!antenna) {
        return PrintFailure(u"no antenna with a sample mode holds the whole range; "_s +
                            DescribeLimits(characteristics, mode));
    }
    QStringList changes;
    double intoLimits = 0.0;
    if (request.stop > characteristics.GetMaxFreq(mode)) {
        intoLimits = characteristics.GetMaxFreq(mode) - request.stop;
    } else if (request.start < characteristics.GetMinFreq(mode)) {
        intoLimits = characteristics.GetMinFreq(mode) - request.start;
    }
    if (intoLimits != 0.0) {
        changes.append(
            u"range %1: %2"_s.arg(DescribeMove(intoLimits), DescribeLimits(characteristics, mode)));
    }
    if (const double inLimits = request.start + intoLimits; start != inLimits) {
        changes.append(
            u"range %1: it straddled the border of two antennas"_s.arg(DescribeMove(start - inLimits)));
    }
    PrintLine(u"valid"_s, FormatRange(start, stop));
    PrintChanges(changes);
    // What was returned served the start before the second move.
    const AntennaData* const serving = characteristics.GetAntennaForFrequency(start, false);
    return PrintReception(characteristics, *serving, mode, start, stop, anyBandwidth);
}

/// Moves what was asked for to the nearest valid frequency or range, and prints what was changed and why, the
/// antenna that serves it, its converter, the best sample mode and its resolution bandwidths.
/// Returns the exit code: failed when nothing serves it.
int TuneTo(ZANCharacteristics& characteristics, const TuneRequest& request) {
    return request.frequency ? TuneFrequency(characteristics, request) : TuneRange(characteristics, request);
}

/// Reads how a range shall be moved off the border of two antennas.
std::optional<ZANCharacteristics::EAdjustMode> ReadAdjustMode(const QString& text) {
    constexpr auto LEAVE = static_cast<ZANCharacteristics::EAdjustMode>(2);
    if (text == u"down") {
        return ZANCharacteristics::ADJUST_DOWN;
    }
    if (text == u"up") {
        return ZANCharacteristics::ADJUST_UP;
    }
    return text == u"none" ? std::optional(LEAVE) : std::nullopt;
}

} // namespace

int Commands::Tune(const QStringList& arguments) {
    CommandLine line(
        u"tune"_s,
        u"Moves a frequency, or a range from --start to --stop, to the nearest valid one, and tells what was "
        "changed and why, and what receives it. Frequencies: 145.5M, 145.5 MHz, 300k, 1e6."_s,
        {{u"mode"_s, u"ffm, wideband, scan, search, tdma, or a number from 0 to 14."_s, u"MODE"_s, u"ffm"_s},
         {u"frequency"_s, u"The frequency wanted."_s, u"F"_s},
         {u"bandwidth"_s,
          u"Band around it that the antenna must hold in wideband mode (default: the realtime bandwidth)."_s,
          u"B"_s},
         {u"start"_s, u"Start of the range wanted."_s, u"F"_s},
         {u"stop"_s, u"Stop of the range wanted."_s, u"F"_s},
         {u"adjust"_s, u"Where a range that straddles two antennas goes: down, up, or none."_s,
          u"down|up|none"_s, u"down"_s}});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    TuneRequest request;
    std::optional<double> start;
    std::optional<double> stop;
    if (!line.Frequency(u"frequency"_s, request.frequency) ||
        !line.Frequency(u"bandwidth"_s, request.bandwidth) || !line.Frequency(u"start"_s, start) ||
        !line.Frequency(u"stop"_s, stop)) {
        return EXIT_USAGE;
    }
    const std::optional<EOperationMode> mode = OperationModeText::Parse(*line.Text(u"mode"_s));
    if (!mode) {
        return CommandLine::Refuse(u"--mode takes ffm, wideband, scan, search, tdma or a number to 14"_s);
    }
    request.adjustName = *line.Text(u"adjust"_s);
    const std::optional adjustMode = ReadAdjustMode(request.adjustName);
    if (!adjustMode) {
        return CommandLine::Refuse(u"--adjust takes down, up or none"_s);
    }
    const bool isRange = start && stop && *start <= *stop && !request.bandwidth;
    const bool isFrequency = !start && !stop && !line.IsSet(u"adjust"_s);
    if (request.frequency ? !isFrequency : !isRange) {
        return CommandLine::Refuse(
            u"--frequency (with --bandwidth), or --start and --stop (with --adjust), the lower one first"_s);
    }
    request.mode = *mode;
    request.adjustMode = *adjustMode;
    request.start = start.value_or(0.0);
    request.stop = stop.value_or(0.0);
    return line.WithStation([&request] { return TuneTo(Station::GetCharacteristics(), request); });
}

#include "zancommon/zancharacteristics.h"
#include "zanserver/frequencytext.h"
#include "zanserver/operationmodetext.h"
#include "zanserver/station.h"
#include "zanstation/antennajson.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <cmath>
#include <optional>
#include <set>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using FrequencyText::Format;
using FrequencyText::FormatRange;

namespace {

/// The request of `zanstation tune`: a frequency or a range.
struct TuneRequest {
    EOperationMode mode = OPMODE_FFM;
    std::optional<double> frequency; ///< Hz
    std::optional<double>
        bandwidth;      ///< Hz; the wanted realtime bandwidth, which wideband FFM fits into the range
    double start = 0.0; ///< Hz, when there is no frequency
    double stop = 0.0;  ///< Hz, when there is no frequency
    ZANCharacteristics::EAdjustMode adjustMode = ZANCharacteristics::ADJUST_DOWN;
    QString adjustName; ///< of the adjust mode
};

/// A change of the request.
struct Change {
    QString what;
    double move = 0.0; // Hz
    QString why;
};

/// The result of a request.
struct Tuning {
    explicit Tuning(const TuneRequest& wish)
        : request(wish)
        , start(wish.start)
        , stop(wish.stop) {}

    TuneRequest request;
    bool isValid = false;
    double start; // the valid range in Hz; for a frequency both are the same
    double stop;
    std::vector<Change> changes;
    const AntennaData* antenna = nullptr; // serves the request
    EZANSampleMode sampleMode = SAMPLEMODE_END;
    double realtimeBandwidth = 0.0;
    std::set<double> realtimeBandwidths; // all that the device has there
    std::set<double> resolutionBandwidths;
    QString problem; // why the request is not served

    [[nodiscard]] int GetExitCode() const {
        if (!isValid || sampleMode == SAMPLEMODE_END) {
            return EXIT_FAILED;
        }
        return changes.empty() ? EXIT_OK : EXIT_MOVED;
    }
};

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

bool HasLimits(const FrequencyRange& limits) {
    return limits.low < limits.high;
}

QString DescribeLimits(const FrequencyRange& limits) {
    return HasLimits(limits) ? u"the mode goes from "_s + Format(limits.low) + u" to "_s + Format(limits.high)
                             : u"the device serves no range in this mode"_s;
}

/// Adds a move of the request, if there was one.
void AddChange(Tuning& tuning, const QString& what, double move, const QString& why) {
    if (move != 0.0) {
        tuning.changes.push_back({what, move, why});
    }
}

/// Why no antenna serves a frequency.
QString DescribeProblem(const FrequencyAdjustment& adjustment) {
    if (adjustment.missing == FrequencyAdjustment::EMissing::WIDTH) {
        return u"the band of "_s + Format(adjustment.bandwidth) + u" is wider than the range of "_s +
               DescribeAntenna(*adjustment.antenna);
    }
    const QString limits = DescribeLimits(adjustment.limits);
    return HasLimits(adjustment.limits) ? u"no enabled antenna serves "_s + Format(adjustment.frequency) +
                                              u" in this mode; "_s + limits
                                        : limits;
}

/// Finds sample mode and bandwidths for the valid range.
void FindReception(const ZANCharacteristics& characteristics, Tuning& tuning, double realtimeBandwidth) {
    const EOperationMode mode = tuning.request.mode;
    tuning.sampleMode = characteristics.GetBestSampleMode(mode, tuning.start, tuning.stop, realtimeBandwidth);
    tuning.realtimeBandwidths = characteristics.GetRealtimeBandwidths(mode, tuning.start, tuning.stop);
    if (tuning.sampleMode == SAMPLEMODE_END) {
        tuning.problem = u"no sample mode has the wanted realtime bandwidth; possible: "_s +
                         FormatBandwidths(tuning.realtimeBandwidths);
        return;
    }
    // A wanted realtime bandwidth must be met exactly.
    tuning.realtimeBandwidth =
        tuning.realtimeBandwidths.contains(realtimeBandwidth)
            ? realtimeBandwidth
            : characteristics.GetDefaultRealtimeBandwidth(mode, tuning.start, tuning.stop);
    tuning.resolutionBandwidths =
        characteristics.GetResolutionBandwidths(mode, tuning.start, tuning.stop, realtimeBandwidth);
}

Tuning TuneFrequency(ZANCharacteristics& characteristics, const TuneRequest& request) {
    const FrequencyAdjustment adjustment =
        characteristics.AdjustFrequency(request.mode, *request.frequency, request.bandwidth);
    Tuning tuning(request);
    if (request.mode == OPMODE_WIDEBAND_FFM) {
        tuning.request.bandwidth = adjustment.bandwidth;
    }
    if (!adjustment.IsServed()) {
        tuning.problem = DescribeProblem(adjustment);
        return tuning;
    }
    const QString what = u"frequency"_s;
    AddChange(tuning, what, adjustment.intoLimits, DescribeLimits(adjustment.limits));
    AddChange(tuning, what, adjustment.intoRange,
              u"the band of %1 must lie in the range of %2"_s.arg(Format(adjustment.bandwidth),
                                                                  adjustment.antenna->name));
    tuning.isValid = true;
    tuning.start = tuning.stop = adjustment.frequency;
    tuning.antenna = adjustment.antenna;
    FindReception(characteristics, tuning, request.bandwidth.value_or(ZANCharacteristics::fBANDWIDTH_ANY));
    return tuning;
}

Tuning TuneRange(ZANCharacteristics& characteristics, const TuneRequest& request) {
    constexpr double ANY_BANDWIDTH = ZANCharacteristics::fBANDWIDTH_ANY;
    const RangeAdjustment adjustment = characteristics.AdjustFrequencyRange(
        request.mode, {request.start, request.stop}, ANY_BANDWIDTH, request.adjustMode);
    Tuning tuning(request);
    if (!adjustment.IsServed()) {
        tuning.problem =
            u"no antenna with a sample mode covers the whole range; "_s + DescribeLimits(adjustment.limits);
        return tuning;
    }
    const QString what = u"range"_s;
    AddChange(tuning, what, adjustment.intoLimits, DescribeLimits(adjustment.limits));
    AddChange(tuning, what, adjustment.offBorder, u"it straddled the border of two antennas"_s);
    tuning.isValid = true;
    tuning.start = adjustment.range.low;
    tuning.stop = adjustment.range.high;
    tuning.antenna = adjustment.antenna;
    FindReception(characteristics, tuning, ANY_BANDWIDTH);
    return tuning;
}

void PrintLine(const QString& name, const QString& text) {
    Console::Print(name.leftJustified(14) + text);
}

QString DescribeRequest(const TuneRequest& request) {
    const QString mode = u", mode "_s + OperationModeText::Format(request.mode);
    if (!request.frequency) {
        return FormatRange(request.start, request.stop) + mode + u", adjust "_s + request.adjustName;
    }
    const bool hasBand = request.mode == OPMODE_WIDEBAND_FFM;
    return Format(*request.frequency) + mode +
           (hasBand ? u", bandwidth "_s + Format(*request.bandwidth) : QString());
}

/// For people: "frequency raised by 1 MHz: ..."
QString DescribeChange(const Change& change) {
    return change.what + (change.move > 0.0 ? u" raised by "_s : u" lowered by "_s) +
           Format(std::abs(change.move)) + u": "_s + change.why;
}

void Print(const Tuning& tuning) {
    PrintLine(u"asked"_s, DescribeRequest(tuning.request));
    if (!tuning.isValid) {
        PrintLine(u"valid"_s, u"no: "_s + tuning.problem);
        return;
    }
    PrintLine(u"valid"_s,
              tuning.request.frequency ? Format(tuning.start) : FormatRange(tuning.start, tuning.stop));
    QString title = u"changed"_s;
    if (tuning.changes.empty()) {
        PrintLine(title, u"nothing"_s);
    }
    for (const Change& change : tuning.changes) {
        PrintLine(title, DescribeChange(change));
        title.clear();
    }
    PrintLine(u"antenna"_s, DescribeAntenna(*tuning.antenna));
    PrintLine(u"converter"_s, tuning.antenna->converterTypeName);
    if (tuning.sampleMode == SAMPLEMODE_END) {
        PrintLine(u"sample mode"_s, u"no: "_s + tuning.problem);
        return;
    }
    PrintLine(u"sample mode"_s, QString::number(tuning.sampleMode) + u", realtime bandwidth "_s +
                                    ZANCharacteristics::FormatBandwidth(tuning.realtimeBandwidth, 3, false));
    PrintLine(u"resolution"_s, FormatBandwidths(tuning.resolutionBandwidths));
}

QJsonArray ToArray(const std::set<double>& numbers) {
    QJsonArray array;
    for (const double number : numbers) {
        array.append(number);
    }
    return array;
}

/// A frequency, or a range.
void SetFrequencies(QJsonObject& object, bool isFrequency, double start, double stop) {
    if (isFrequency) {
        object[u"frequency_hz"_s] = start;
    } else {
        object[u"start_hz"_s] = start;
        object[u"stop_hz"_s] = stop;
    }
}

/// For programs. Members without a value are left out.
QJsonObject Describe(const Tuning& tuning) {
    const TuneRequest& request = tuning.request;
    const bool isFrequency = request.frequency.has_value();
    QJsonObject asked{{u"mode"_s, OperationModeText::Format(request.mode)}};
    SetFrequencies(asked, isFrequency, request.frequency.value_or(request.start), request.stop);
    if (request.bandwidth) {
        asked[u"bandwidth_hz"_s] = *request.bandwidth;
    }
    if (!isFrequency) {
        asked[u"adjust"_s] = request.adjustName;
    }
    QJsonArray changes;
    for (const Change& change : tuning.changes) {
        changes.append(QJsonObject{{u"by_hz"_s, change.move}, {u"why"_s, change.why}});
    }
    QJsonObject object{{u"asked"_s, asked}, {u"changes"_s, changes}};
    if (!tuning.problem.isEmpty()) {
        object[u"problem"_s] = tuning.problem;
    }
    if (!tuning.isValid) {
        return object;
    }
    QJsonObject valid;
    SetFrequencies(valid, isFrequency, tuning.start, tuning.stop);
    object[u"valid"_s] = valid;
    object[u"antenna"_s] = AntennaJson::Describe(*tuning.antenna);
    object[u"realtime_bandwidths_hz"_s] = ToArray(tuning.realtimeBandwidths);
    if (tuning.sampleMode != SAMPLEMODE_END) {
        object[u"sample_mode"_s] = tuning.sampleMode;
        object[u"realtime_bandwidth_hz"_s] = tuning.realtimeBandwidth;
        object[u"resolution_bandwidths_hz"_s] = ToArray(tuning.resolutionBandwidths);
    }
    return object;
}

/// Moves the request to the nearest valid frequency or range, and prints what was changed and why, the
/// antenna that serves it, its converter, the best sample mode and its resolution bandwidths. Returns the
/// exit code: failed when nothing serves the request, moved when it is not served unchanged.
int TuneTo(ZANCharacteristics& characteristics, const TuneRequest& request, bool asJson) {
    const Tuning tuning =
        request.frequency ? TuneFrequency(characteristics, request) : TuneRange(characteristics, request);
    if (asJson) {
        Console::PrintJson(QJsonDocument(Describe(tuning)));
    } else {
        Print(tuning);
    }
    return tuning.GetExitCode();
}

/// Reads how a range is to be moved off the border of two antennas.
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

namespace Commands {

int Tune(const QStringList& arguments) {
    CommandLine line(
        u"tune"_s,
        u"Moves a frequency, or a range from --start to --stop, to the nearest valid one, and prints what "
        u"was "
        "changed and why, and what receives it. Frequencies: 145.5M, 145.5 MHz, 300k, 1e6."_s,
        {{u"mode"_s, u"The operation mode, also as a number from 0 to 14."_s,
          u"ffm|wideband|scan|search|tdma|N"_s, u"ffm"_s},
         {u"frequency"_s, u"The wanted frequency."_s, u"F"_s},
         {u"bandwidth"_s,
          u"Band around it that the antenna must cover in wideband mode (default: the realtime bandwidth)."_s,
          u"B"_s},
         {u"start"_s, u"Start of the wanted range."_s, u"F"_s},
         {u"stop"_s, u"Stop of the wanted range."_s, u"F"_s},
         {u"adjust"_s, u"How a range that straddles two antennas is moved: down, up, or none."_s,
          u"down|up|none"_s, u"down"_s},
         CommandLine::JsonOption()});
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
        return CommandLine::Refuse(
            u"--mode takes ffm, wideband, scan, search, tdma or a number from 0 to 14, not %1"_s.arg(
                CommandLine::Quote(*line.Text(u"mode"_s))));
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
            u"tune takes --frequency (and --bandwidth), or --start and --stop with the lower one first (and "
            "--adjust)"_s);
    }
    request.mode = *mode;
    request.adjustMode = *adjustMode;
    request.start = start.value_or(0.0);
    request.stop = stop.value_or(0.0);
    return line.WithStation([&] { return TuneTo(Station::GetCharacteristics(), request, line.AsJson()); });
}

} // namespace Commands

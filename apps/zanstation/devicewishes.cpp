#include "zanstation/devicewishes.h"

#include "zanserver/frequencytext.h"
#include "zanserver/operationmodetext.h"
#include "zanserver/scanranges.h"
#include "zanstation/commandline.h"

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

/// Ranges such as "118M:137M:25k,156M:162.05M:25k" as the tree has them. Nothing when one is not a range.
std::optional<QStringList> ReadRanges(const QString& text) {
    QStringList ranges;
    for (const QString& each : text.split(u',')) {
        KvZANCommon::FreqRangeDefinition range;
        const QStringList parts = each.split(u':');
        const auto frequency = [&parts](qsizetype part) {
            return FrequencyText::Parse(parts.value(part)).value_or(0.0);
        };
        range.SetStartFreq(frequency(0));
        range.SetStopFreq(frequency(1));
        range.SetStepFreq(frequency(2));
        QString fault;
        if (parts.size() != 3 || !ScanRanges::Parse(ScanRanges::Format(range), fault)) {
            return {};
        }
        ranges.append(ScanRanges::Format(range));
    }
    return ranges;
}

} // namespace

QList<QCommandLineOption> DeviceWishes::GetOptions() {
    return {{u"mode"_s, u"Operation mode that the device is wished to be in."_s,
             u"ffm|wideband|scan|search|tdma"_s},
            {u"frequency"_s, u"Frequency that the device is wished to measure."_s, u"F"_s},
            {u"ranges"_s, u"Ranges that the device is wished to scan, such as 118M:137M:25k,156M:162M:25k."_s,
             u"START:STOP:STEP[,...]"_s}};
}

std::optional<DeviceWishes> DeviceWishes::Read(const CommandLine& line) {
    DeviceWishes wishes;
    if (const std::optional<QString> mode = line.Text(u"mode"_s)) {
        wishes.mode = OperationModeText::Parse(*mode);
        if (!wishes.mode) {
            CommandLine::Refuse(u"--mode takes ffm, wideband, scan, search or tdma, not "_s +
                                CommandLine::Quote(*mode));
            return {};
        }
    }
    if (const std::optional<QString> text = line.Text(u"ranges"_s)) {
        const std::optional<QStringList> ranges = ReadRanges(*text);
        if (!ranges) {
            CommandLine::Refuse(
                u"--ranges takes start, stop and step of each, such as 118M:137M:25k,156M:162M:25k, not "_s +
                CommandLine::Quote(*text));
            return {};
        }
        wishes.ranges = *ranges;
    }
    return line.Frequency(u"frequency"_s, wishes.frequency) ? std::optional(std::move(wishes)) : std::nullopt;
}

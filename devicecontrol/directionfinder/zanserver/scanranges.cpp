#include "zanserver/scanranges.h"

#include "zanserver/drivererrands.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <variant>

using namespace Qt::StringLiterals;
using KvZANCommon::FreqRangeDefinition;

namespace ZANServer::ScanRanges {

namespace {

using Range = FreqRangeDefinition;
using Place = std::variant<double*, qint32*, bool*>;

constexpr double HIGHEST_FREQUENCY = 1e12; // Hz: far above every device
constexpr double LONGEST_TIME = 86400.0;   // s
constexpr double HIGHEST_LEVEL = 1000.0;   // dB
constexpr double ROUNDING = 1e-6;          // of a channel
constexpr qsizetype MOST_SECTORS = 36;

/// A setting of a range: a member of the JSON object of its group, with its limits.
struct Member {
    QStringView group;
    QStringView name;
    double lowest = 0.0;
    double highest = 0.0;
    double scale = 1.0; ///< of the record's unit in that of the text
    Place (*find)(Range& range) = nullptr;
};

constexpr std::array<Member, 36> MEMBERS{{
    {u"df", u"bandwidth", 1.0, 1e9, 1,
     [](Range& r) -> Place { return &r.GetDFSettings().resolutionBandwidth; }},
    {u"df", u"method", 0, 3, 1, [](Range& r) -> Place { return &r.GetDFSettings().method; }},
    {u"df", u"realtimeBandwidth", 1.0, 1e9, 1,
     [](Range& r) -> Place { return &r.GetDFSettings().realtimeBandwidth; }},
    {u"df", u"preamplifier", 0, 1, 1, [](Range& r) -> Place { return &r.GetDFSettings().preamplifier; }},
    {u"df", u"activeAntenna", 0, 1, 1, [](Range& r) -> Place { return &r.GetDFSettings().activeAntenna; }},
    {u"df", u"superResolution", 0, 1, 1,
     [](Range& r) -> Place { return &r.GetDFSettings().superResolution; }},
    {u"df", u"averageTime", 0, LONGEST_TIME, 1,
     [](Range& r) -> Place { return &r.GetDFSettings().averageTime; }},
    {u"df", u"measurementTime", 0, LONGEST_TIME, 1,
     [](Range& r) -> Place { return &r.GetDFSettings().measurementTime; }},
    {u"df", u"threshold", -HIGHEST_LEVEL, HIGHEST_LEVEL, 1,
     [](Range& r) -> Place { return &r.GetDFSettings().levelThreshold; }},
    {u"df", u"relativeThreshold", 0, 1, 1,
     [](Range& r) -> Place { return &r.GetDFSettings().relativeThreshold; }},
    {u"df", u"polarisation", 0, 3, 1, [](Range& r) -> Place { return &r.GetDFSettings().polarisation; }},
    {u"demodulation", u"demodulation", 0, 1000, 1,
     [](Range& r) -> Place { return &r.GetDEMSettings().demodulation; }},
    {u"demodulation", u"squelch", -HIGHEST_LEVEL, HIGHEST_LEVEL, 1,
     [](Range& r) -> Place { return &r.GetDEMSettings().squelch; }},
    {u"demodulation", u"gainControl", 0, 1, 1,
     [](Range& r) -> Place { return &r.GetDEMSettings().gainControl; }},
    {u"demodulation", u"bandwidth", 1.0, 1e9, 1,
     [](Range& r) -> Place { return &r.GetDEMSettings().bandwidth; }},
    {u"demodulation", u"offset", -1e9, 1e9, 1, [](Range& r) -> Place { return &r.GetDEMSettings().offset; }},
    {u"demodulation", u"beatFrequency", 0, 1e6, 1,
     [](Range& r) -> Place { return &r.GetDEMSettings().beatFrequency; }},
    {u"filter", u"azimuthFrom", 0, 360, 100,
     [](Range& r) -> Place { return &r.GetFilterSettings().azimuthFrom; }},
    {u"filter", u"azimuthTo", 0, 360, 100,
     [](Range& r) -> Place { return &r.GetFilterSettings().azimuthTo; }},
    {u"filter", u"quality", 0, 100, 1, [](Range& r) -> Place { return &r.GetFilterSettings().qualityMin; }},
    {u"filter", u"azimuthSpread", 0, 360, 100,
     [](Range& r) -> Place { return &r.GetFilterSettings().azimuthSpreadMax; }},
    {u"filter", u"durationMin", 0, LONGEST_TIME, 1000,
     [](Range& r) -> Place { return &r.GetFilterSettings().durationMin; }},
    {u"filter", u"durationMax", 0, LONGEST_TIME, 1000,
     [](Range& r) -> Place { return &r.GetFilterSettings().durationMax; }},
    {u"filter", u"elevationFrom", -90, 90, 100,
     [](Range& r) -> Place { return &r.GetFilterSettings().elevationFrom; }},
    {u"filter", u"elevationTo", -90, 90, 100,
     [](Range& r) -> Place { return &r.GetFilterSettings().elevationTo; }},
    {u"alarm", u"levelMin", -HIGHEST_LEVEL, HIGHEST_LEVEL, 1,
     [](Range& r) -> Place { return &r.GetAlarmSettings().levelMin; }},
    {u"alarm", u"levelMax", -HIGHEST_LEVEL, HIGHEST_LEVEL, 1,
     [](Range& r) -> Place { return &r.GetAlarmSettings().levelMax; }},
    {u"alarm", u"levelHysteresis", 0, HIGHEST_LEVEL, 1,
     [](Range& r) -> Place { return &r.GetAlarmSettings().levelHysteresis; }},
    {u"alarm", u"quality", 0, 100, 1, [](Range& r) -> Place { return &r.GetAlarmSettings().qualityMin; }},
    {u"alarm", u"elevationMin", -90, 90, 1,
     [](Range& r) -> Place { return &r.GetAlarmSettings().elevationMin; }},
    {u"alarm", u"elevationMax", -90, 90, 1,
     [](Range& r) -> Place { return &r.GetAlarmSettings().elevationMax; }},
    {u"alarm", u"bandwidthMin", 0, 1e9, 1,
     [](Range& r) -> Place { return &r.GetAlarmSettings().bandwidthMin; }},
    {u"alarm", u"bandwidthMax", 0, 1e9, 1,
     [](Range& r) -> Place { return &r.GetAlarmSettings().bandwidthMax; }},
    {u"alarm", u"durationMin", 0, LONGEST_TIME, 1,
     [](Range& r) -> Place { return &r.GetAlarmSettings().durationMin; }},
    {u"alarm", u"durationMax", 0, LONGEST_TIME, 1,
     [](Range& r) -> Place { return &r.GetAlarmSettings().durationMax; }},
    {u"alarm", u"holdTime", 0, LONGEST_TIME, 1,
     [](Range& r) -> Place { return &r.GetAlarmSettings().holdTime; }},
}};

/// A number within limits; null when it is not one.
std::optional<double> ReadNumber(const QJsonValue& value, double lowest, double highest) {
    const double number = value.toDouble(std::nan(""));
    return number >= lowest && number <= highest ? std::optional(number) : std::nullopt;
}

bool Put(const QJsonValue& value, const Member& member, Place place) {
    if (auto* const* flag = std::get_if<bool*>(&place)) {
        **flag = value.toBool();
        return value.isBool();
    }
    const auto number = ReadNumber(value, member.lowest, member.highest);
    if (!number) {
        return false;
    }
    if (auto* const* real = std::get_if<double*>(&place)) {
        **real = *number;
        return true;
    }
    const double scaled = *number * member.scale;
    *std::get<qint32*>(place) = static_cast<qint32>(std::lround(scaled));
    return member.scale != 1.0 || scaled == std::floor(scaled);
}

QJsonValue Get(const Member& member, Place place) {
    if (auto* const* flag = std::get_if<bool*>(&place)) {
        return **flag;
    }
    const auto* const* real = std::get_if<double*>(&place);
    return real ? **real : *std::get<qint32*>(place) / member.scale;
}

QString Wrong(const QString& what, const QJsonValue& value) {
    const QString text = QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact));
    return u"%1 cannot be %2"_s.arg(what, Bounded(text.sliced(1, text.size() - 2), 40));
}

/// The sectors of the alarm: pairs of degrees.
QString ReadSectors(const QJsonValue& value, Range& range) {
    const QJsonArray sectors = value.toArray();
    if (!value.isArray() || sectors.size() > MOST_SECTORS) {
        return Wrong(u"alarm.sectors"_s, value);
    }
    for (const QJsonValue each : sectors) {
        const auto from = ReadNumber(each.toArray().at(0), 0.0, 360.0);
        const auto to = ReadNumber(each.toArray().at(1), 0.0, 360.0);
        if (!from || !to || each.toArray().size() != 2) {
            return Wrong(u"a sector"_s, each);
        }
        range.GetAlarmSettings().sectors.push_back({*from, *to});
    }
    return {};
}

QString ReadGroup(const QString& group, const QJsonValue& value, Range& range) {
    const QJsonObject object = value.toObject();
    if (!value.isObject()) {
        return Wrong(group, value);
    }
    for (auto it = object.begin(); it != object.end(); ++it) {
        const QString name = group + u'.' + it.key();
        if (name == u"alarm.sectors") {
            if (QString fault = ReadSectors(it.value(), range); !fault.isEmpty()) {
                return fault;
            }
            continue;
        }
        const auto* const member = std::ranges::find_if(
            MEMBERS, [&](const Member& each) { return each.group == group && each.name == it.key(); });
        if (member == MEMBERS.end()) {
            return u"there is no member %1"_s.arg(Bounded(name, 40));
        }
        if (!Put(it.value(), *member, member->find(range))) {
            return Wrong(name, it.value());
        }
    }
    return {};
}

QString ReadMember(const QString& name, const QJsonValue& value, Range& range) {
    const auto frequency = ReadNumber(value, name == u"step" ? 1e-3 : 0.0, HIGHEST_FREQUENCY);
    if (name == u"start" || name == u"stop" || name == u"step") {
        if (!frequency) {
            return Wrong(name, value);
        }
        name == u"start" ? range.SetStartFreq(*frequency)
                         : (name == u"stop" ? range.SetStopFreq(*frequency) : range.SetStepFreq(*frequency));
        return {};
    }
    if (name == u"name") {
        range.SetName(value.toString());
        return value.isString() ? QString() : Wrong(name, value);
    }
    if (std::ranges::none_of(MEMBERS, [&](const Member& member) { return member.group == name; })) {
        return u"%1 is not known"_s.arg(Bounded(name, 40));
    }
    return ReadGroup(name, value, range);
}

} // namespace

std::optional<FreqRangeDefinition> Parse(const QString& text, QString& fault) {
    QJsonParseError error;
    const QJsonDocument document =
        text.size() > LONGEST_TEXT ? QJsonDocument() : QJsonDocument::fromJson(text.toUtf8(), &error);
    if (!document.isObject()) {
        fault = text.size() > LONGEST_TEXT ? u"the text of a range is longer than %1"_s.arg(LONGEST_TEXT)
                                           : u"a range is not a JSON object: "_s + Bounded(text, 40);
        return {};
    }
    FreqRangeDefinition range;
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        fault = ReadMember(it.key(), it.value(), range);
        if (!fault.isEmpty()) {
            return {};
        }
    }
    if (!(range.GetStepFreq() > 0.0) || range.GetStopFreq() < range.GetStartFreq() ||
        !object.contains("stop"_L1)) {
        fault = u"a range needs start, stop not below it, and step"_s;
        return {};
    }
    return range;
}

QString Format(const FreqRangeDefinition& range) {
    FreqRangeDefinition actual = range;
    FreqRangeDefinition initial;
    QJsonObject object{{u"start"_s, range.GetStartFreq()},
                       {u"stop"_s, range.GetStopFreq()},
                       {u"step"_s, range.GetStepFreq()}};
    if (!range.GetName().isEmpty()) {
        object[u"name"_s] = range.GetName();
    }
    for (const Member& member : MEMBERS) {
        const QJsonValue value = Get(member, member.find(actual));
        if (value != Get(member, member.find(initial))) {
            QJsonObject group = object[member.group].toObject();
            group[member.name] = value;
            object[member.group] = group;
        }
    }
    QJsonArray sectors;
    for (const AlarmSettings::Sector& sector : range.GetAlarmSettings().sectors) {
        sectors.append(QJsonArray{sector.azimuthFrom, sector.azimuthTo});
    }
    if (!sectors.isEmpty()) {
        QJsonObject alarm = object[u"alarm"_s].toObject();
        alarm[u"sectors"_s] = sectors;
        object[u"alarm"_s] = alarm;
    }
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

double CountChannels(const FreqRangeDefinition& range) {
    return std::floor((range.GetStopFreq() - range.GetStartFreq()) / range.GetStepFreq() + ROUNDING) + 1.0;
}

void Number(std::vector<FreqRangeDefinition>& ranges) {
    unsigned long next = 0;
    int index = 0;
    for (FreqRangeDefinition& range : ranges) {
        range.SetIndex(index++);
        range.SetFirstChannel(next);
        next += static_cast<unsigned long>(CountChannels(range));
        range.SetLastChannel(next - 1);
    }
}

double GetChannelFrequency(const std::vector<FreqRangeDefinition>& ranges, long index, unsigned channel) {
    if (index >= 0 && std::cmp_less(index, ranges.size())) {
        const FreqRangeDefinition& range = ranges[static_cast<std::size_t>(index)];
        if (channel >= range.GetFirstChannel() && channel <= range.GetLastChannel()) {
            return range.GetStartFreq() +
                   range.GetStepFreq() * static_cast<double>(channel - range.GetFirstChannel());
        }
    }
    return std::numeric_limits<double>::quiet_NaN();
}

bool AreEqual(const FreqRangeDefinition& first, const FreqRangeDefinition& second) {
    return first.GetIndex() == second.GetIndex() && first.GetStartFreq() == second.GetStartFreq() &&
           first.GetStepFreq() == second.GetStepFreq() && first.GetStopFreq() == second.GetStopFreq() &&
           first.GetName() == second.GetName() && first.GetFirstChannel() == second.GetFirstChannel() &&
           first.GetLastChannel() == second.GetLastChannel() &&
           first.GetDFSettings() == second.GetDFSettings() &&
           first.GetDEMSettings() == second.GetDEMSettings() &&
           first.GetFilterSettings() == second.GetFilterSettings() &&
           first.GetAlarmSettings() == second.GetAlarmSettings();
}

} // namespace ZANServer::ScanRanges

#include "simulator/scenarioreader.h"

#include "simulator/faults.h"
#include "simulator/jsonmembers.h"
#include "simulator/receivepath.h"
#include "simulator/scanplan.h"
#include "zancommon/closedtable.h"
#include "zancommon/zancharacteristics.h"
#include "zancommon/zanoptions.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <span>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

using Limits = JsonMembers::Limits;

constexpr Limits LATITUDE{-90.0, 90.0};
constexpr Limits LONGITUDE{-180.0, 180.0};
constexpr Limits ALTITUDE{-500.0, 100'000.0}; // m
constexpr Limits CIRCLE{0.0, 360.0};
constexpr Limits SPEED{0.0, 2000.0};   // m/s
constexpr Limits CLIMB{-300.0, 300.0}; // m/s
constexpr Limits TIME{0.0, 1e9};       // some thirty years
constexpr Limits PERIOD{0.1, 1e6};
constexpr Limits TILT{0.0, 45.0};
constexpr Limits FREQUENCY{1.0, 1e11};
constexpr Limits BANDWIDTH{1.0, 1e9};
constexpr Limits POWER{-100.0, 120.0};         // dBm
constexpr Limits NOISE_DENSITY{-180.0, -60.0}; // dBm in 1 Hz

constexpr qsizetype MOST_EMITTERS = 1000;
constexpr qsizetype MOST_WAY_POINTS = 1000;
constexpr qsizetype MOST_OTHERS = 100;

/// What the modulations take, in Hz, as long as an emitter does not say it.
struct Modulation {
    QStringView name;
    double bandwidth = 0.0;
};
constexpr std::array<Modulation, 7> MODULATIONS{{
    {u"cw", 200.0},
    {u"ssb", 2700.0},
    {u"am", 6000.0},
    {u"fm", 12'000.0},
    {u"fsk", 1000.0},
    {u"broadcast", 180'000.0},
    {u"data", 25'000.0},
}};

struct ModeName {
    QStringView name;
    EMode mode = EMODE_STANDBY;
};
constexpr std::array<ModeName, 4> MODES{{
    {u"ffm", EMODE_FFM},
    {u"wideband", EMODE_WIDEBAND_FFM},
    {u"scan", EMODE_SCAN},
    {u"search", EMODE_SEARCH},
}};

/// The row of a table with a name; null when there is none, which is refused.
template <class Table>
auto FindNamed(const Table& table, JsonMembers& members, const QString& member, const QString& name) {
    const auto row =
        std::ranges::find_if(table, [&](const auto& each) { return QStringView(each.name) == name; });
    if (row == table.end()) {
        members.Refuse(member, u"\"%1\" is not known"_s.arg(name));
        return static_cast<decltype(&*row)>(nullptr);
    }
    return &*row;
}

Place ReadPlace(JsonMembers& members) {
    return {members.Number(u"latitude"_s, LATITUDE), members.Number(u"longitude"_s, LONGITUDE),
            members.Number(u"altitude"_s, ALTITUDE, 0.0)};
}

/// The members of a track are beside those of what moves on it.
Track ReadTrack(JsonMembers& members) {
    Track track;
    if (!members.Has(u"way"_s)) {
        track.start = ReadPlace(members);
        track.course = members.Number(u"course"_s, CIRCLE, 0.0);
        track.speed = members.Number(u"speed"_s, SPEED, 0.0);
        track.climb = members.Number(u"climb"_s, CLIMB, 0.0);
        return track;
    }
    members.ForEach(u"way"_s, MOST_WAY_POINTS, [&track](JsonMembers& each) {
        const double at = each.Number(u"at"_s, TIME);
        if (!track.way.empty() && !(at > track.way.back().at)) {
            each.Refuse(u"at"_s, u"is not later than the point before"_s);
        }
        track.way.push_back({at, ReadPlace(each)});
    });
    if (track.way.empty()) {
        members.Refuse(u"way"_s, u"is empty"_s);
    }
    track.repeat = members.Flag(u"repeat"_s, false);
    if (track.repeat && track.way.size() < 2) {
        members.Refuse(u"repeat"_s, u"a way of one point cannot be repeated"_s);
    }
    return track;
}

Swing ReadSwing(JsonMembers& members, const QString& name) {
    JsonMembers swing = members.Object(name);
    const Swing result{swing.Number(u"amplitude"_s, TILT, 0.0), swing.Number(u"period"_s, PERIOD, 10.0)};
    swing.RefuseUnknown();
    return result;
}

std::vector<ScanRange> ReadRanges(JsonMembers& members, const Device& device) {
    std::vector<ScanRange> ranges;
    double channels = 0.0;
    members.ForEach(u"ranges"_s, MOST_OTHERS, [&](JsonMembers& each) {
        const ScanRange range{each.Number(u"start"_s, FREQUENCY), each.Number(u"step"_s, BANDWIDTH),
                              each.Number(u"stop"_s, FREQUENCY)};
        constexpr double MOST_CHANNELS = ZANCharacteristics::MAX_CHANNEL_COUNT_DEFAULT;
        channels += ScanPlan::CountChannels(MakeRange(range, 0));
        if (range.stop < range.start) {
            each.Refuse(u"stop"_s, u"is below the start"_s);
        } else if (channels > MOST_CHANNELS) {
            each.Refuse(u"step"_s, u"makes more channels than the device has"_s);
        } else if (!ReceivePath::FindAntenna(device, range.start)) {
            each.Refuse(u"start"_s, u"is not in the range of an antenna"_s);
        } else if (!ReceivePath::FindAntenna(device, range.stop)) {
            each.Refuse(u"stop"_s, u"is not in the range of an antenna"_s);
        }
        ranges.push_back(range);
    });
    return ranges;
}

std::vector<EZANOptions> ReadOptions(JsonMembers& members) {
    std::vector<EZANOptions> options;
    for (const QString& name : members.Texts(u"options"_s, MOST_OTHERS)) {
        if (const auto* entry = FindNamed(Rows(ZANOptions::s_aOptionEntries), members, u"options"_s, name)) {
            options.push_back(entry->option);
        }
    }
    return options;
}

Fault ReadFault(JsonMembers& members) {
    Fault fault;
    const QString kind = members.Text(u"kind"_s);
    if (const std::optional<EFault> found = Faults::FindByName(kind)) {
        fault.kind = *found;
    } else {
        members.Refuse(u"kind"_s, u"\"%1\" is not known"_s.arg(kind));
    }
    fault.at = members.Number(u"at"_s, TIME);
    fault.duration = members.Number(u"for"_s, TIME);
    fault.delay = members.Number(u"delay"_s, {0.0, 60.0}, fault.delay);
    return fault;
}

Schedule ReadSchedule(JsonMembers members) {
    Schedule schedule;
    schedule.start = members.Number(u"start"_s, TIME, 0.0);
    schedule.stop = members.OptionalNumber(u"stop"_s, TIME);
    schedule.off = members.Number(u"off"_s, TIME, 0.0);
    schedule.on = schedule.off > 0.0 ? members.Number(u"on"_s, TIME) : members.Number(u"on"_s, TIME, 0.0);
    members.RefuseUnknown();
    return schedule;
}

int GetLine(const QByteArray& document, qsizetype offset) {
    return static_cast<int>(document.first(std::clamp<qsizetype>(offset, 0, document.size())).count('\n')) +
           1;
}

} // namespace

std::optional<Scenario> ScenarioReader::ReadFile(const QString& name) {
    const QString folder = u":/simulator/scenarios/"_s;
    QStringList builtIn = QDir(folder).entryList();
    builtIn.replaceInStrings(u".json"_s, QString());
    const QString wanted = name.isEmpty() ? u"ship"_s : name;
    const QString path = builtIn.contains(wanted) ? folder + wanted + u".json"_s : name;
    QFile file(path);
    // What is no file of its own may have no end, or never begin.
    const QString fault = !QFileInfo::exists(path)
                              ? u"there is no such file; built in are "_s + builtIn.join(u", "_s)
                          : !QFileInfo(path).isFile()   ? u"it is not a file"_s
                          : !file.open(QFile::ReadOnly) ? file.errorString()
                                                        : QString();
    if (!fault.isEmpty()) {
        m_error = name + u": cannot be opened: "_s + fault;
        return {};
    }
    std::optional<Scenario> scenario = Read(file.read(LARGEST + 1));
    if (!scenario && !name.isEmpty()) {
        m_error = name + u": "_s + m_error;
    }
    return scenario;
}

std::optional<Scenario> ScenarioReader::Read(const QByteArray& document) {
    m_error.clear();
    if (document.size() > LARGEST) {
        m_error = u"is larger than %1 bytes"_s.arg(LARGEST);
        return {};
    }
    QJsonParseError parseError;
    const QJsonDocument json = QJsonDocument::fromJson(document, &parseError);
    if (json.isNull()) {
        m_error = u"line %1: %2"_s.arg(GetLine(document, parseError.offset)).arg(parseError.errorString());
        return {};
    }
    JsonMembers members(json.isObject() ? QJsonValue(json.object()) : QJsonValue(), {}, m_error);
    Scenario scenario = ReadScenario(members);
    members.RefuseUnknown();
    return m_error.isEmpty() ? std::optional(std::move(scenario)) : std::nullopt;
}

Scenario ScenarioReader::ReadScenario(JsonMembers& members) {
    Scenario scenario;
    scenario.name = members.Text(u"name"_s, {});
    members.Text(u"description"_s, {});
    constexpr double MOST = 9007199254740991.0; // the largest whole number that JSON keeps
    scenario.seed = static_cast<quint64>(members.WholeNumber(u"seed"_s, {0.0, MOST}, 1.0));
    if (members.Has(u"start"_s)) {
        const QDateTime start = QDateTime::fromString(members.Text(u"start"_s), Qt::ISODate);
        if (!start.isValid() || start.toMSecsSinceEpoch() < 0 || start.timeSpec() == Qt::LocalTime) {
            members.Refuse(u"start"_s, u"is not a time such as 2026-01-01T12:00:00Z"_s);
        } else {
            scenario.startTime = static_cast<quint64>(start.toMSecsSinceEpoch());
        }
    }
    scenario.platform = ReadPlatform(members.Object(u"station"_s));
    scenario.device = ReadDevice(members.Object(u"device"_s), scenario.platform.compasses.size());
    members.ForEach(u"emitters"_s, MOST_EMITTERS,
                    [&](JsonMembers& each) { scenario.emitters.push_back(ReadEmitter(each)); });
    members.ForEach(u"wishes"_s, MOST_OTHERS, [&](JsonMembers& each) {
        scenario.wishes.push_back(ReadWish(each, scenario.device));
        if (scenario.wishes.size() > 1 && scenario.wishes.back().at < (scenario.wishes.end() - 2)->at) {
            each.Refuse(u"at"_s, u"is earlier than the wish before"_s);
        }
    });
    members.ForEach(u"faults"_s, MOST_OTHERS,
                    [&](JsonMembers& each) { scenario.faults.push_back(ReadFault(each)); });
    return scenario;
}

Platform ScenarioReader::ReadPlatform(JsonMembers members) {
    Platform platform;
    platform.track = ReadTrack(members);
    platform.heading = members.OptionalNumber(u"heading"_s, CIRCLE);
    platform.declination = members.Number(u"declination"_s, {-180.0, 180.0}, 0.0);
    JsonMembers motion = members.Object(u"motion"_s);
    platform.yaw = ReadSwing(motion, u"yaw"_s);
    platform.pitch = ReadSwing(motion, u"pitch"_s);
    platform.roll = ReadSwing(motion, u"roll"_s);
    platform.heave = ReadSwing(motion, u"heave"_s);
    motion.RefuseUnknown();
    members.ForEach(u"compasses"_s, MOST_OTHERS, [&platform](JsonMembers& each) {
        platform.compasses.push_back({each.Text(u"type"_s), each.Number(u"resolution"_s, {0.01, 45.0}, 0.1),
                                      each.Flag(u"magnetic"_s, false), each.Flag(u"pitchRoll"_s, true)});
    });
    JsonMembers gps = members.Object(u"gps"_s);
    platform.satellites =
        static_cast<int>(gps.WholeNumber(u"satellites"_s, {0.0, 100.0}, platform.satellites));
    platform.gpsQuality = static_cast<int>(gps.WholeNumber(u"quality"_s, {0.0, 8.0}, platform.gpsQuality));
    gps.RefuseUnknown();
    members.RefuseUnknown();
    return platform;
}

Device ScenarioReader::ReadDevice(JsonMembers members, std::size_t compassCount) {
    Device device;
    const QString type = members.Text(u"type"_s);
    if (const auto* row = FindNamed(ZANCharacteristics::s_aDeviceTypeNames, members, u"type"_s, type)) {
        device.type = row->type;
    }
    device.options = ReadOptions(members);
    device.noiseDensity = members.Number(u"noiseDensity"_s, NOISE_DENSITY, device.noiseDensity);
    members.ForEach(u"converters"_s, MOST_OTHERS, [&device](JsonMembers& each) {
        const auto* row =
            FindNamed(ZANCharacteristics::s_aConverterTypeNames, each, u"type"_s, each.Text(u"type"_s));
        device.converters.push_back(row ? row->converter : CONVERTER_NONE);
    });
    members.ForEach(u"antennas"_s, MOST_OTHERS, [&](JsonMembers& each) {
        device.antennas.push_back(ReadAntenna(each, device, compassCount));
    });
    if (device.antennas.empty()) {
        members.Refuse(u"antennas"_s, u"there is none"_s);
    }
    members.ForEach(u"components"_s, MOST_OTHERS, [&device](JsonMembers& each) {
        device.components.push_back({each.Text(u"name"_s), each.Text(u"serialNumber"_s, {}),
                                     each.Text(u"version"_s, {}), each.Flag(u"operational"_s, true)});
    });
    device.frequency = members.Number(u"frequency"_s, FREQUENCY, device.frequency);
    if (!ReceivePath::FindAntenna(device, device.frequency)) {
        members.Refuse(u"frequency"_s, u"is not in the range of an antenna"_s);
    }
    device.ranges = ReadRanges(members, device);
    members.RefuseUnknown();
    return device;
}

Antenna ScenarioReader::ReadAntenna(JsonMembers& members, const Device& device, std::size_t compassCount) {
    Antenna antenna;
    antenna.name = members.Text(u"name"_s);
    FindNamed(Rows(ZANCharacteristics::s_aAntennaLibrary), members, u"name"_s, antenna.name);
    antenna.converter = static_cast<int>(members.WholeNumber(u"converter"_s, {0.0, 99.0}, 0));
    if (antenna.converter >= std::ssize(device.converters)) {
        members.Refuse(u"converter"_s, u"there is no such converter"_s);
        antenna.converter = 0;
    }
    antenna.compass =
        static_cast<int>(members.WholeNumber(u"compass"_s, {-1.0, 99.0}, compassCount > 0 ? 0 : -1));
    if (antenna.compass >= static_cast<int>(compassCount)) {
        members.Refuse(u"compass"_s, u"there is no such compass"_s);
        antenna.compass = -1;
    }
    antenna.mechanicalOffset = members.Number(u"mechanicalOffset"_s, {-360.0, 360.0}, 0.0);
    return antenna;
}

Emitter ScenarioReader::ReadEmitter(JsonMembers& members) {
    Emitter emitter;
    emitter.name = members.Text(u"name"_s);
    emitter.frequency = members.Number(u"frequency"_s, FREQUENCY);
    const QString name = members.Text(u"modulation"_s, u"am"_s);
    const Modulation* const modulation = FindNamed(MODULATIONS, members, u"modulation"_s, name);
    emitter.bandwidth = members.Number(u"bandwidth"_s, BANDWIDTH, modulation ? modulation->bandwidth : 1.0);
    emitter.power = members.Number(u"power"_s, POWER);
    emitter.schedule = ReadSchedule(members.Object(u"schedule"_s));
    emitter.track = ReadTrack(members);
    return emitter;
}

Wish ScenarioReader::ReadWish(JsonMembers& members, const Device& device) {
    Wish wish;
    wish.at = members.Number(u"at"_s, TIME);
    if (members.Has(u"mode"_s)) {
        if (const ModeName* row = FindNamed(MODES, members, u"mode"_s, members.Text(u"mode"_s))) {
            wish.mode = row->mode;
        }
    }
    wish.frequency = members.OptionalNumber(u"frequency"_s, FREQUENCY);
    if (wish.frequency && !ReceivePath::FindAntenna(device, *wish.frequency)) {
        members.Refuse(u"frequency"_s, u"is not in the range of an antenna"_s);
    }
    wish.averageTime = members.OptionalNumber(u"averageTime"_s, {0.0, 3600.0});
    wish.resolutionBandwidth = members.OptionalNumber(u"resolutionBandwidth"_s, BANDWIDTH);
    if (members.Has(u"superResolution"_s)) {
        wish.superResolution = members.Flag(u"superResolution"_s, false);
    }
    if (members.Has(u"ranges"_s)) {
        wish.ranges = ReadRanges(members, device);
    }
    return wish;
}

} // namespace Simulator

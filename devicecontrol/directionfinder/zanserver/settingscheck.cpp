#include "zanserver/settingscheck.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"
#include "zancommon/closedtable.h"
#include "zancommon/stationcfg.h"
#include "zancommon/zancharacteristics.h"
#include "zancommon/zansetupdata.h"
#include "zanserver/controlvalues.h"
#include "zanserver/gpsdsettings.h"
#include "zanserver/keptwishes.h"
#include "zanserver/plural.h"
#include "zanserver/scanranges.h"
#include "zanserver/stationposition.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <span>
#include <type_traits>
#include <vector>

using namespace Qt::StringLiterals;
using ZANPlatform::ReadInteger;

namespace ZANServer {

namespace {

using Severity = Finding::Severity;

struct IntegerSetting {
    QStringView key;
    qint64 minimum = 0;
    qint64 maximum = 0;
};

constexpr std::array APPLICATION_INTEGERS{IntegerSetting{u"Output_Interval", 0, 10000},
                                          IntegerSetting{u"Control_Interval", 0, 10000},
                                          IntegerSetting{u"OverheadPass/Threshold", 0, 900},
                                          IntegerSetting{u"Recorder/FileSize", 1, 100000},
                                          IntegerSetting{u"Recorder/FileCount", 1, 10000},
                                          IntegerSetting{GpsdSettings::MAX_AGE,
                                                         GpsdSettings::SHORTEST_MAX_AGE_MS,
                                                         GpsdSettings::LONGEST_MAX_AGE_MS}};
constexpr IntegerSetting ANTENNA_COUNT{u"SystemConfiguration/AntennaCount", 0, 12};
constexpr IntegerSetting HUB_PORT{u"MshCentralPort", 1, 65535};

constexpr std::array<QStringView, 6> APPLICATION_FLAGS{u"RS232Output_Enabled", u"FileOutput_Enabled",
                                                       u"OverheadPass/Valid",  u"Recorder/Enabled",
                                                       u"MshReceiver_Enabled", GpsdSettings::PITCH_AND_ROLL};
constexpr std::array<QStringView, 2> STATION_FLAGS{u"HwRequirementsEditable", u"HwCheckRequirements"};
constexpr std::array<QStringView, 5> ANTENNA_FLAGS{u"Enabled", u"CompassEnabled", u"CompassSupport",
                                                   u"PolarizationSupport", u"ActivePassiveSupport"};
constexpr std::array<QStringView, 6> ANTENNA_NUMBERS{u"MinRange", u"MaxRange", u"MechOffset",
                                                     u"MinFreq",  u"MaxFreq",  u"CompassValue"};

/// The keys that are used, apart from those of the setup table. "#" means a number.
constexpr std::array<QStringView, 25> KNOWN_KEYS{u"Recorder/Enabled",
                                                 u"Recorder/File",
                                                 u"Recorder/FileSize",
                                                 u"Recorder/FileCount",
                                                 u"Driver/Name",
                                                 u"Driver/Address",
                                                 u"RS232Output_Enabled",
                                                 u"RS232Output_Address",
                                                 u"FileOutput_Enabled",
                                                 u"FileOutput_Address",
                                                 u"Output_Interval",
                                                 u"MshReceiver_Enabled",
                                                 u"MshCentralAddress",
                                                 u"MshCentralPort",
                                                 u"MshClientName",
                                                 u"AutoCoupleTargets",
                                                 u"OverheadPass/Threshold",
                                                 u"OverheadPass/Valid",
                                                 u"ZANStations/Count",
                                                 u"Control_Interval",
                                                 GpsdSettings::ADDRESS,
                                                 GpsdSettings::MAX_AGE,
                                                 GpsdSettings::POSITION_RECEIVER,
                                                 GpsdSettings::HEADING_RECEIVER,
                                                 GpsdSettings::PITCH_AND_ROLL};
constexpr std::array<QStringView, 8> KNOWN_STATION_KEYS{
    u"DeviceAddress",        u"DevType",
    u"DevOptions",           u"HwRequiredComponents",
    u"HwOptionalComponents", u"HwRequirementsEditable",
    u"HwCheckRequirements",  u"SystemConfiguration/AntennaCount"};
constexpr std::array<QStringView, 15> KNOWN_ANTENNA_KEYS{u"Name",
                                                         u"Enabled",
                                                         u"MinRange",
                                                         u"MaxRange",
                                                         u"CompassEnabled",
                                                         u"MechOffset",
                                                         u"CompassSupport",
                                                         u"DFAlgorithm",
                                                         u"MinFreq",
                                                         u"MaxFreq",
                                                         u"PolarizationSupport",
                                                         u"PolarizationMode",
                                                         u"ActivePassiveSupport",
                                                         u"CompassValue",
                                                         u"ConverterTypeName"};

/// All known keys with their full paths.
QStringList GetKnownKeys() {
    const QString station = u"ZANStations/ZANStation#/"_s;
    const QString antenna = station + u"SystemConfiguration/Antenna#/"_s;
    QStringList known;
    for (const QStringView key : KNOWN_KEYS) {
        known.append(key.toString());
    }
    for (const QStringView key : KNOWN_STATION_KEYS) {
        known.append(station + key.toString());
    }
    for (const ZANSetupData::DataEntry& row : ZANSetupData::GetEntries()) {
        known.append(station + row.key);
    }
    for (const KeptWishes::Setting& setting : KeptWishes::SETTINGS) {
        known.append(station + u"Control/"_s + setting.key.toString());
    }
    known.append(station + u"Control/"_s + KeptWishes::RANGE_KEY.toString() + u'#');
    for (const QStringView key : KNOWN_ANTENNA_KEYS) {
        known.append(antenna + key.toString());
    }
    return known;
}

/// The keys of the application's settings with their full paths.
QStringList ListKeys(const QString& directory) {
    const QString fileName = directory + u"/Application.ini"_s;
    return QFileInfo(fileName).size() > CfgCenter::MAX_FILE_SIZE
               ? QStringList() // the store has refused the file, too
               : QSettings(fileName, QSettings::IniFormat).allKeys();
}

constexpr std::size_t MOST_REPORTED = 20;
constexpr qsizetype LONGEST_SHOWN = 200; // and compared

/// How many characters must be inserted, removed or changed to turn one text into the other.
std::size_t GetDistance(QStringView from, QStringView to) {
    std::vector<std::size_t> row(static_cast<std::size_t>(to.size()) + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (const QChar c : from) {
        std::size_t diagonal = row[0]++;
        for (std::size_t i = 1; i < row.size(); ++i) {
            const std::size_t changed = diagonal + (c == to[static_cast<qsizetype>(i) - 1] ? 0 : 1);
            diagonal = row[i];
            row[i] = std::min({changed, row[i] + 1, row[i - 1] + 1});
        }
    }
    return row.back();
}

/// The name that is most similar to a text.
QString FindNearest(const QString& text, const QStringList& names) {
    const QString compared = text.first(std::min(text.size(), LONGEST_SHOWN));
    return std::ranges::min(names, {}, [&](const QString& name) { return GetDistance(compared, name); });
}

/// A text for the operator.
QString Shorten(const QString& text) {
    return text.size() > LONGEST_SHOWN ? text.first(LONGEST_SHOWN) + u"..."_s : text;
}

/// \param allowed continues "allowed", such as "is true or false"
QString Describe(const QString& key, const QString& value, const QString& allowed) {
    return u"the setting \"%1\" is \"%2\"; allowed %3"_s.arg(Shorten(key), Shorten(value), allowed);
}

QString DescribeWholeNumbers(qint64 minimum, qint64 maximum) {
    return u"are whole numbers from %1 to %2"_s.arg(minimum).arg(maximum);
}

Finding Refused(const QString& key, const QString& value, const QString& allowed) {
    return {Severity::Error, Describe(key, value, allowed)};
}

/// The text under a key; null when the key is missing.
QString TextOf(const ICfg& cfg, const QString& key) {
    return cfg.GetString(key, {});
}

/// Whether an integer setting is missing or allowed.
bool IsSound(const IntegerSetting& setting, const QString& text) {
    qint64 number = 0;
    return text.isNull() ||
           (ReadInteger(text, number) && number >= setting.minimum && number <= setting.maximum);
}

void CheckInteger(const ICfg& cfg, const IntegerSetting& setting, Findings& findings) {
    const QString key = setting.key.toString();
    if (const QString text = TextOf(cfg, key); !IsSound(setting, text)) {
        findings.push_back(Refused(key, text, DescribeWholeNumbers(setting.minimum, setting.maximum)));
    }
}

void CheckGpsdAddress(const ICfg& cfg, Findings& findings) {
    const QString key = GpsdSettings::ADDRESS.toString();
    const QString text = TextOf(cfg, key);
    if (!text.isNull() && !GpsdAddress::Read(text)) {
        findings.push_back(Refused(key, text, u"is HOST or HOST:PORT, such as localhost:2947"_s));
    }
}

/// \param prefix where the keys are, for the message
void CheckFlags(const ICfg& cfg, std::span<const QStringView> keys, const QString& prefix,
                Findings& findings) {
    static const QStringList flags{u"true"_s, u"false"_s, u"1"_s, u"0"_s};
    for (const QStringView key : keys) {
        const QString text = TextOf(cfg, key.toString());
        if (!text.isNull() && !flags.contains(text, Qt::CaseInsensitive)) {
            findings.push_back(Refused(prefix + key.toString(), text, u"is true or false"_s));
        }
    }
}

void CheckAntennas(ICfg& station, Findings& findings) {
    const QString system = u"SystemConfiguration"_s;
    const CfgPtr antennas(station.GetSubCfg(system));
    for (qint64 i = 0; i < ANTENNA_COUNT.maximum; ++i) { // further sections are never read
        const QString name = u"Antenna"_s + QString::number(i);
        const CfgPtr antenna(antennas->GetSubCfg(name));
        const QString prefix = system + u'/' + name + u'/';
        CheckFlags(*antenna, ANTENNA_FLAGS, prefix, findings);
        for (const QStringView key : ANTENNA_NUMBERS) {
            const QString text = TextOf(*antenna, key.toString());
            bool isNumber = false;
            const double number = text.toDouble(&isNumber);
            if (!text.isNull() && (!isNumber || !std::isfinite(number))) {
                findings.push_back(Refused(prefix + key.toString(), text, u"is a number"_s));
            }
        }
    }
}

template <class T>
bool IsUnlimited(const T& value) {
    using Limits = std::numeric_limits<std::decay_t<decltype(value.GetMin())>>;
    return value.GetMin() == Limits::lowest() && value.GetMax() == Limits::max();
}

/// The contents that a value accepts, as a text; empty for any text.
QString DescribeAllowed(const ValueBase& value) {
    if (const auto* selection = dynamic_cast<const ValueSelection*>(&value)) {
        QStringList items;
        for (const SelectionItem& item : selection->GetItems()) {
            items.append(QString::number(item.GetKey()) + u" ("_s + item.GetName() + u')');
        }
        return u"is "_s + items.join(u", "_s);
    }
    if (dynamic_cast<const ValueBool*>(&value)) {
        return u"is true or false"_s;
    }
    if (const auto* integer = dynamic_cast<const ValueNumericInt*>(&value)) {
        return IsUnlimited(*integer) ? u"is a whole number"_s
                                     : DescribeWholeNumbers(integer->GetMin(), integer->GetMax());
    }
    const auto* number = dynamic_cast<const ValueNumericDouble*>(&value);
    return !number || IsUnlimited(*number) ? u"is a number"_s
                                           : u"is %1 to %2"_s.arg(number->GetMin()).arg(number->GetMax());
}

bool Takes(ValueBase& value, const QString& text) {
    auto* const selection = dynamic_cast<ValueSelection*>(&value);
    int key = 0;
    return selection ? ReadInteger(text, key) && selection->SetCurrentKey(key, nullptr)
                     : value.SetStringValue(text, nullptr);
}

/// What the device was doing last, tried on values in the same way.
/// \param base where the values are
void CheckControl(ICfg& station, const QString& base, Findings& findings) {
    const CfgPtr section(station.GetSubCfg(u"Control"_s));
    for (const KeptWishes::Setting& setting : KeptWishes::SETTINGS) {
        const QString text = TextOf(*section, setting.key.toString());
        ValueBase* const value = Tree::Instance()->GetValue(base + setting.descriptor->PathName());
        if (auto* const selection = dynamic_cast<ValueSelection*>(value)) {
            FillSelection(*setting.descriptor, *selection);
        }
        if (value && !text.isNull() && !KeptWishes::Take(*value, text, nullptr)) {
            findings.push_back(
                Refused(u"Control/"_s + setting.key.toString(), text, DescribeAllowed(*value)));
        }
    }
    for (const QString& key : section->GetKeys()) {
        const QString text = TextOf(*section, key);
        if (QString fault;
            key.startsWith(KeptWishes::RANGE_KEY) && !text.isEmpty() && !ScanRanges::Parse(text, fault)) {
            findings.push_back(
                Refused(u"Control/"_s + key, text, u"is a range as a JSON object; "_s + fault));
        }
    }
}

/// Tries the settings of the setup table on values of the types that they are for.
void CheckSetup(ICfg& station, Findings& findings) {
    const QString base = u"/SettingsCheck"_s;
    Tree& tree = *Tree::Instance();
    StdDeviceDefinition::CreateBranch(StdDeviceDefinition::EBranch::SERVER, base);
    for (const ZANSetupData::DataEntry& row : ZANSetupData::GetEntries()) {
        const QString text = TextOf(station, row.key);
        ValueBase* const value = tree.GetValue(base + row.PathBelowBase());
        if (value && !text.isNull() && !Takes(*value, text)) {
            findings.push_back(Refused(row.key, text, DescribeAllowed(*value)));
        }
    }
    CheckControl(station, base, findings);
    tree.Remove(tree.GetNode(base));
}

Finding Doubted(const QString& key, const QString& value, const QString& allowed) {
    return {Severity::Warning, Describe(key, value, allowed)};
}

void CheckAntennaModel(const ICfg& station, const QString& key, Findings& findings) {
    QStringList models;
    for (const auto& row : Rows(ZANCharacteristics::s_aAntennaLibrary)) {
        models.append(row.name.toString());
    }
    const QString model = TextOf(station, key);
    if (model.isNull()) {
        return; // an antenna that is not there
    }
    if (model.isEmpty()) {
        findings.push_back(
            {Severity::Warning, u"the setting \"%1\" is empty: the antenna has no name"_s.arg(key)});
    } else if (!models.contains(model)) {
        findings.push_back(Doubted(
            key, model,
            u"are the models of \"zanstation catalogue antennas\", and the nearest one is \"%1\""_s.arg(
                FindNearest(model, models))));
    }
}

/// An empty name is accepted: the antenna has no converter.
void CheckConverter(const ICfg& station, const QString& key, Findings& findings) {
    QStringList names;
    for (const auto& row : ZANCharacteristics::s_aConverterTypeNames) {
        names.append(row.name.toString());
    }
    const QString name = TextOf(station, key);
    if (!name.isEmpty() && !names.contains(name)) {
        findings.push_back(Doubted(key, name, u"are "_s + names.join(u", "_s)));
    }
}

void CheckMethods(const ICfg& station, const QString& key, Findings& findings) {
    static const QStringList methods{u"WAT"_s,  u"COR"_s, u"COR8"_s, u"COR8O"_s, u"COR9"_s,
                                     u"SUPR"_s, u"VEC"_s, u"VMI"_s,  u"VMR"_s};
    const QString text = TextOf(station, key);
    for (const QStringView name : qTokenize(text, u',')) {
        if (!text.isEmpty() && !methods.contains(name)) {
            findings.push_back(
                Doubted(key, text, u"are %1, separated by \",\""_s.arg(methods.join(u", "_s))));
            return;
        }
    }
}

/// Warns when the position source is Manual and the position has not been set.
void CheckManualPosition(const ICfg& station, Findings& findings) {
    QStringList missing;
    for (const QString& key : {u"LocationLatitude"_s, u"LocationLongitude"_s}) {
        if (TextOf(station, key).isNull()) {
            missing.append(key);
        }
    }
    if (station.GetInt(u"LocationChoice"_s, 0) == StationPosition::SOURCE_MANUAL && !missing.isEmpty()) {
        findings.push_back(
            {Severity::Warning,
             u"LocationChoice is 2 (Manual), and %1 %2 not set: the station has no position"_s.arg(
                 missing.join(u" and "_s), missing.size() == 1 ? u"is"_s : u"are"_s)});
    }
}

} // namespace

Findings CheckSettings(const QString& address) {
    Findings findings;
    const ICfg& application = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    for (const IntegerSetting& setting : APPLICATION_INTEGERS) {
        CheckInteger(application, setting, findings);
    }
    CheckFlags(application, APPLICATION_FLAGS, {}, findings);
    CheckGpsdAddress(application, findings);
    if (const CfgPtr station{StationCfg::GetStationCfg(address, false)}) {
        CheckInteger(*station, ANTENNA_COUNT, findings);
        CheckFlags(*station, STATION_FLAGS, {}, findings);
        CheckAntennas(*station, findings);
        CheckSetup(*station, findings);
    }
    if (findings.size() > MOST_REPORTED) {
        const std::size_t unreported = findings.size() - MOST_REPORTED;
        findings.resize(MOST_REPORTED);
        findings.push_back(
            {Severity::Error, u"and "_s + Plural(unreported, u"further setting"_s) + u" not as allowed"_s});
    }
    return findings;
}

Findings CheckMeaning(const QString& address) {
    Findings findings;
    const ICfg& application = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    const QString portKey = HUB_PORT.key.toString();
    if (const QString port = TextOf(application, portKey); !IsSound(HUB_PORT, port)) {
        findings.push_back(Doubted(portKey, port,
                                   DescribeWholeNumbers(HUB_PORT.minimum, HUB_PORT.maximum) +
                                       u", and the default is used"_s));
    }
    if (const CfgPtr station{StationCfg::GetStationCfg(address, false)}) {
        const qint64 count = station->GetInt(ANTENNA_COUNT.key.toString(), 1);
        for (qint64 i = 0; i < std::min(count, ANTENNA_COUNT.maximum); ++i) {
            const QString antenna = u"SystemConfiguration/Antenna%1/"_s.arg(i);
            CheckAntennaModel(*station, antenna + u"Name"_s, findings);
            CheckMethods(*station, antenna + u"DFAlgorithm"_s, findings);
            CheckConverter(*station, antenna + u"ConverterTypeName"_s, findings);
        }
        CheckManualPosition(*station, findings);
    }
    return findings;
}

Findings CheckKeys(const QString& directory) {
    Findings findings;
    static const QRegularExpression number(u"(?<=ZANStation|Antenna)\\d+(?=/)|(?<=ScanRange)\\d+$"_s);
    const QStringList known = GetKnownKeys();
    std::size_t unknown = 0;
    for (const QString& key : ListKeys(directory)) {
        const QString pattern = QString(key).replace(number, u"#"_s);
        if (known.contains(pattern) || ++unknown > MOST_REPORTED) {
            continue;
        }
        QString nearest = FindNearest(pattern, known);
        // The suggested key has the section numbers of the unknown one.
        QRegularExpressionMatchIterator numbers = number.globalMatch(key);
        while (nearest.contains(u'#')) {
            nearest.replace(nearest.indexOf(u'#'), 1, numbers.hasNext() ? numbers.next().captured() : u"0"_s);
        }
        findings.push_back(
            {Severity::Warning,
             u"the setting \"%1\" is unknown and not used; the most similar known one is \"%2\""_s.arg(
                 Shorten(key), nearest)});
    }
    if (unknown > MOST_REPORTED) {
        findings.push_back({Severity::Warning,
                            Plural(unknown - MOST_REPORTED, u"further unknown setting"_s) + u", not used"_s});
    }
    return findings;
}

} // namespace ZANServer

#include "kwbase/tolmos.h"
#include "stddevicedefinition/antbuilder.h"
#include "support/devicetree.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/tracelines.h"
#include "zancommon/zancharacteristics.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTextStream>
#include <QTranslator>

#include <gtest/gtest.h>

#include <ctime>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace {

constexpr double ANY = ZANCharacteristics::fFREQUENCY_ANY;

const QString NONE_CONNECTED = u"No antennas connected to device."_s;
const QString NONE_ENABLED = u"No antennas enabled."_s;
const QString GAP = u"Frequency range is not entirely covered without gaps."_s;
const QString OVERLAP = u"Frequency ranges are overlapping."_s;
const QString VALID = u"Antenna setup is valid."_s;
const QString ALREADY_VALID = u"Antenna setup is already valid. Nothing changed."_s;
const QString NONE_SUPPORTED = u"No antenna is supported by device."_s;

QString NotSupported(const QString& name, const QString& low, const QString& high) {
    return u"Antenna "_s + name + u" ("_s + low + u" MHz - "_s + high +
           u" MHz) is not supported by the ZAN device with the currently installed options. It must be disabled."_s;
}

QString Covered(const QString& low, const QString& high) {
    return u"Auto configuration of antennas successfully covered range from "_s + low + u" MHz to "_s + high +
           u" MHz."_s;
}

/// An antenna on a converter that serves its range: 300 kHz to 30 MHz, or 20 MHz to 3.6 GHz.
AntennaData Antenna(const QString& name, double low, double high) {
    return MakeAntenna(name, low < 20e6 ? u"RCV01"_s : u"RCV03"_s, low, high);
}

AntennaData Unnamed(double low, double high) {
    return Antenna(u"PX106"_s, low, high);
}

AntennaData Disabled(AntennaData antenna) {
    antenna.enabled = false;
    return antenna;
}

AntennaData UsedFor(AntennaData antenna, double low, double high) {
    antenna.minRange = low;
    antenna.maxRange = high;
    return antenna;
}

AntennaData Unsupported(AntennaData antenna) {
    antenna.converterTypeName = u"RCV99"_s;
    return antenna;
}

void Fill(AntennaDataList& list, const std::vector<AntennaData>& antennas) {
    for (const AntennaData& antenna : antennas) {
        list.AddAntenna(new AntennaData(antenna));
    }
}

/// What of an antenna a repair decides.
struct Setting {
    QString name;
    bool enabled;
    double minRange;
    double maxRange;

    bool operator==(const Setting&) const = default;
};

void PrintTo(const Setting& setting, std::ostream* out) {
    *out << setting.name.toStdString() << (setting.enabled ? " on " : " off ")
         << QByteArray::number(setting.minRange, 'f', 1).toStdString() << " - "
         << QByteArray::number(setting.maxRange, 'f', 1).toStdString();
}

std::vector<Setting> SettingsOf(const AntennaDataList& list) {
    std::vector<Setting> settings;
    for (const auto& antenna : list.GetAntennas()) {
        settings.push_back({antenna->name, antenna->enabled, antenna->minRange, antenna->maxRange});
    }
    return settings;
}

std::vector<Setting> OwnSettings(const ZANCharacteristics& characteristics) {
    std::vector<Setting> settings;
    for (int i = 0; const AntennaData* antenna = characteristics.GetAntennaByIndex(i); ++i) {
        settings.push_back({antenna->name, antenna->enabled, antenna->minRange, antenna->maxRange});
    }
    return settings;
}

std::vector<Setting> SettingsInTree() {
    AntennaDataList list;
    list.ReadAntennasFromValueTree(DeviceTree::Path());
    return SettingsOf(list);
}

QString DumpOfTree() {
    QString text;
    QTextStream out(&text);
    Tree::Instance()->Dump(out);
    return text;
}

ValueString* ModifyTime() {
    return DeviceTree::DeviceValue<ValueString>(g_vdCfgModifyTime);
}

/// Stands in for the operating system, with a clock under control.
class DrivenClock : public ITolmOS {
public:
    DrivenClock() { TolmOS::Replace(this); }
    ~DrivenClock() override { TolmOS::Replace(nullptr); }

    [[nodiscard]] unsigned long long GetCurrentTime() const override { return now; }
    bool TranslateHostName(const QString& /*host*/, QString& /*translated*/) const override { return false; }

    unsigned long long now = 0; // ms since 1970, UTC
};

/// Puts a mark before every text of the context, and spoils those of other contexts.
class MarkingTranslator : public QTranslator {
public:
    MarkingTranslator() { QCoreApplication::installTranslator(this); }
    ~MarkingTranslator() override { QCoreApplication::removeTranslator(this); }

    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* disambiguation,
                                    int n) const override {
        const bool isExpected = qstrcmp(context, "ZANCharacteristics") == 0 && !disambiguation && n == -1;
        return (isExpected ? u"Ü: "_s : u"? "_s) + QString::fromUtf8(sourceText);
    }
};

class ZANCharacteristicsValidityTest : public testing::Test {
protected:
    ZANCharacteristics& Connect(const std::vector<AntennaData>& antennas, bool autoUpdate = true) {
        DeviceTree::SetAntennas(antennas);
        return DeviceTree::Connect(autoUpdate);
    }

    TraceLines m_traces; // also keeps the output of the tests readable
    DeviceTree m_device;
};

// The verdict

struct VerdictRow {
    const char* name;
    std::vector<AntennaData> antennas;
    QString message; // VALID: the setup is valid
};

const std::vector<VerdictRow>& Verdicts() {
    static const std::vector<VerdictRow> rows{
        {"no antennas", {}, NONE_CONNECTED},
        {"disabled only", {Disabled(Unnamed(20e6, 1300e6)), Disabled(Unnamed(1e6, 2e6))}, NONE_ENABLED},
        {"disabled and unsupported", {Disabled(Unsupported(Unnamed(20e6, 1300e6)))}, NONE_ENABLED},
        {"one", {Unnamed(20e6, 1300e6)}, VALID},
        {"one beside a disabled one that overlaps",
         {Disabled(Unnamed(20e6, 100e6)), Unnamed(20e6, 1300e6), Disabled(Unnamed(100e6, 200e6))},
         VALID},

        {"adjoining above exactly", {Unnamed(300e3, 30e6), Unnamed(30e6, 1300e6)}, VALID},
        {"adjoining above with half a hertz", {Unnamed(300e3, 30e6), Unnamed(30000000.5, 1300e6)}, GAP},
        {"adjoining above with 1 Hz", {Unnamed(300e3, 30e6), Unnamed(30000001.0, 1300e6)}, VALID},
        {"above with 2 Hz", {Unnamed(300e3, 30e6), Unnamed(30000002.0, 1300e6)}, GAP},
        {"above with 500 kHz", {Unnamed(300e3, 30e6), Unnamed(30.5e6, 1300e6)}, GAP},
        {"adjoining below exactly", {Unnamed(30e6, 1300e6), Unnamed(300e3, 30e6)}, VALID},
        {"adjoining below with half a hertz", {Unnamed(30e6, 1300e6), Unnamed(300e3, 29999999.5)}, GAP},
        {"adjoining below with 1 Hz", {Unnamed(30e6, 1300e6), Unnamed(300e3, 29999999.0)}, VALID},
        {"below with 2 Hz", {Unnamed(30e6, 1300e6), Unnamed(300e3, 29999998.0)}, GAP},
        {"three in a row", {Unnamed(1e6, 2e6), Unnamed(2e6, 3e6), Unnamed(3000001.0, 4e6)}, VALID},
        {"the third below", {Unnamed(2e6, 3e6), Unnamed(3e6, 4e6), Unnamed(1e6, 2e6)}, VALID},
        {"a gap that the third would close", {Unnamed(1e6, 2e6), Unnamed(3e6, 4e6), Unnamed(2e6, 3e6)}, GAP},

        {"overlapping", {Unnamed(20e6, 100e6), Unnamed(50e6, 200e6)}, OVERLAP},
        {"overlapping below", {Unnamed(50e6, 200e6), Unnamed(20e6, 100e6)}, OVERLAP},
        {"overlapping by half a hertz", {Unnamed(20e6, 100e6), Unnamed(99999999.5, 200e6)}, OVERLAP},
        {"within", {Unnamed(20e6, 1300e6), Unnamed(50e6, 200e6)}, OVERLAP},
        {"around", {Unnamed(50e6, 200e6), Unnamed(20e6, 1300e6)}, OVERLAP},
        {"a pair within, without an edge in common",
         {Unnamed(20e6, 1300e6), Antenna(u"PX121_V"_s, 50e6, 200e6)},
         OVERLAP},
        {"the same range", {Antenna(u"PX106"_s, 20e6, 1300e6), Antenna(u"PX115"_s, 20e6, 1300e6)}, OVERLAP},

        {"vertical and horizontal",
         {Antenna(u"PX121_V"_s, 20e6, 1300e6), Antenna(u"PX121_H"_s, 20e6, 1300e6)},
         VALID},
        {"left and right", {Antenna(u"PX104_L"_s, 1e6, 30e6), Antenna(u"PX104_R"_s, 1e6, 30e6)}, VALID},
        {"all four endings",
         {Antenna(u"a_H"_s, 1e6, 30e6), Antenna(u"b_V"_s, 1e6, 30e6), Antenna(u"c_L"_s, 1e6, 30e6),
          Antenna(u"d_R"_s, 1e6, 30e6)},
         VALID},
        {"small letters are not an ending", {Unnamed(1e6, 30e6), Antenna(u"PX104_r"_s, 1e6, 30e6)}, OVERLAP},
        {"nor is the middle of a name", {Unnamed(1e6, 30e6), Antenna(u"PX104_R1"_s, 1e6, 30e6)}, OVERLAP},
        {"the name of the one that comes later counts",
         {Unnamed(1e6, 30e6), Antenna(u"x_V"_s, 1e6, 30e6)},
         VALID},
        {"not that of the first", {Antenna(u"x_V"_s, 1e6, 30e6), Unnamed(1e6, 30e6)}, OVERLAP},
        {"one of a pair that reaches beyond leaves the span",
         {Unnamed(20e6, 100e6), Antenna(u"x_H"_s, 20e6, 200e6), Unnamed(100e6, 300e6)},
         VALID},
        {"also at the lower end",
         {Unnamed(100e6, 200e6), Antenna(u"x_H"_s, 50e6, 200e6), Unnamed(20e6, 100e6)},
         VALID},
        {"what adjoins only the part beyond leaves a gap",
         {Unnamed(20e6, 100e6), Antenna(u"x_H"_s, 20e6, 200e6), Unnamed(200e6, 300e6)},
         GAP},
        {"a shared upper edge", {Unnamed(20e6, 100e6), Antenna(u"x_H"_s, 50e6, 100e6)}, VALID},
        {"a shared upper edge without pair", {Unnamed(20e6, 100e6), Unnamed(50e6, 100e6)}, OVERLAP},

        // A span that does not lie above 0 is begun again.
        {"the span begins again", {UsedFor(Unnamed(20e6, 30e6), ANY, 100e6), Unnamed(300e6, 400e6)}, VALID},
        {"also for its upper end", {UsedFor(Unnamed(20e6, 30e6), 20e6, 0.0), Unnamed(300e6, 400e6)}, VALID},
        // The working range counts, not the coverage.
        {"working ranges adjoin", {UsedFor(Unnamed(20e6, 100e6), 20e6, 50e6), Unnamed(50e6, 200e6)}, VALID},
        {"working ranges leave a gap",
         {UsedFor(Unnamed(20e6, 100e6), 20e6, 50e6), UsedFor(Unnamed(50e6, 200e6), 60e6, 200e6)},
         GAP},

        {"not supported",
         {MakeAntenna(u"PX108"_s, u"RCV03"_s, 300e3, 3600e6)},
         NotSupported(u"PX108"_s, u"0.3"_s, u"3600"_s)},
        {"not supported in its working range, shown with its coverage",
         {UsedFor(Unnamed(20e6, 1300e6), 19e6, 1300e6)},
         NotSupported(u"PX106"_s, u"20"_s, u"1300"_s)},
        {"converter unknown", {Unsupported(Unnamed(1e6, 2e6))}, NotSupported(u"PX106"_s, u"1"_s, u"2"_s)},
        {"six digits",
         {Unsupported(Unnamed(1234567.89, 1234567890.0))},
         NotSupported(u"PX106"_s, u"1.23457"_s, u"1234.57"_s)},
        {"large and small",
         {Unsupported(Unnamed(1.0, 1234567890123456.0))},
         NotSupported(u"PX106"_s, u"1e-06"_s, u"1.23457e+09"_s)},
        {"half a hertz is rounded",
         {Unsupported(Unnamed(30000000.5, 30000001.0))},
         NotSupported(u"PX106"_s, u"30"_s, u"30"_s)},
        {"the name stays as it is",
         {Unsupported(Antenna(u"%1 %2 %L3 %99 <b>ä</b>"_s, 1e6, 2e6))},
         NotSupported(u"%1 %2 %L3 %99 <b>ä</b>"_s, u"1"_s, u"2"_s)},
        {"no name", {Unsupported(Antenna({}, 1e6, 2e6))}, NotSupported({}, u"1"_s, u"2"_s)},
        {"not supported comes before overlap",
         {Unnamed(1e6, 2e6), Unsupported(Unnamed(1e6, 2e6))},
         NotSupported(u"PX106"_s, u"1"_s, u"2"_s)},
        {"the first fault in the list counts",
         {Unnamed(1e6, 2e6), Unnamed(1e6, 2e6), Unsupported(Unnamed(3e6, 4e6))},
         OVERLAP},
    };
    return rows;
}

TEST_F(ZANCharacteristicsValidityTest, ASetupIsJudgedInTheOrderOfTheList) {
    const ZANCharacteristics& characteristics = Connect({});
    for (const VerdictRow& row : Verdicts()) {
        SCOPED_TRACE(row.name);
        AntennaDataList list;
        Fill(list, row.antennas);
        const std::vector<Setting> before = SettingsOf(list);
        QString message = u"something that was there"_s;
        EXPECT_EQ(characteristics.CheckAntennaSetupValidity(&list, message), row.message == VALID);
        EXPECT_EQ(message, row.message);
        EXPECT_EQ(SettingsOf(list), before);
    }
}

TEST_F(ZANCharacteristicsValidityTest, NullMeansTheOwnAntennas) {
    for (const VerdictRow& row : Verdicts()) {
        SCOPED_TRACE(row.name);
        const ZANCharacteristics& characteristics = Connect(row.antennas);
        const QString tree = DumpOfTree();
        QString message;
        EXPECT_EQ(characteristics.CheckAntennaSetupValidity(nullptr, message), row.message == VALID);
        EXPECT_EQ(message, row.message);
        EXPECT_EQ(DumpOfTree(), tree);
    }
    AntennaDataList empty;
    QString message;
    EXPECT_FALSE(Connect({Unnamed(1e6, 2e6)}).CheckAntennaSetupValidity(&empty, message));
    EXPECT_EQ(message, NONE_CONNECTED);
}

TEST_F(ZANCharacteristicsValidityTest, RangesMayAdjoinExactlyOrWithOneHertzBetween) {
    for (const auto& [begin, verdict] :
         std::vector<std::pair<double, QString>>{{30e6, VALID}, {30000001.0, VALID}, {30.5e6, GAP}}) {
        QString message;
        EXPECT_EQ(Connect({Unnamed(300e3, 30e6), Unnamed(begin, 1300e6)})
                      .CheckAntennaSetupValidity(nullptr, message),
                  verdict == VALID);
        EXPECT_EQ(message, verdict);
    }
}

TEST_F(ZANCharacteristicsValidityTest, OnlyAntennasOfAPairMayShareARange) {
    QString message;
    EXPECT_TRUE(Connect({Antenna(u"PX121_V"_s, 20e6, 1300e6), Antenna(u"PX121_H"_s, 20e6, 1300e6)})
                    .CheckAntennaSetupValidity(nullptr, message));
    EXPECT_FALSE(Connect({Antenna(u"PX106"_s, 20e6, 1300e6), Antenna(u"PX115"_s, 20e6, 1300e6)})
                     .CheckAntennaSetupValidity(nullptr, message));
    EXPECT_EQ(message, OVERLAP);
}

TEST_F(ZANCharacteristicsValidityTest, AnAntennaThatTheDeviceCannotServeIsReportedWithItsCoverageInMHz) {
    QString message;
    EXPECT_FALSE(Connect({MakeAntenna(u"PX108"_s, u"RCV05"_s, 300e3, 3600e6)})
                     .CheckAntennaSetupValidity(nullptr, message));
    EXPECT_EQ(message, u"Antenna PX108 (0.3 MHz - 3600 MHz) is not supported by the ZAN device with the "
                       "currently installed options. It must be disabled."_s);
}

TEST_F(ZANCharacteristicsValidityTest, OnlyDisabledAntennasAreNoneEnabled) {
    QString message;
    EXPECT_FALSE(Connect({Disabled(Unnamed(20e6, 1300e6))}).CheckAntennaSetupValidity(nullptr, message));
    EXPECT_EQ(message, NONE_ENABLED);
}

TEST_F(ZANCharacteristicsValidityTest, TheInstalledOptionsDecideWhatIsSupported) {
    const ZANCharacteristics& characteristics = Connect({MakeAntenna(u"PX120"_s, u"RCV07"_s, 9e3, 1e6)});
    QString message;
    EXPECT_FALSE(characteristics.CheckAntennaSetupValidity(nullptr, message));
    EXPECT_EQ(message, NotSupported(u"PX120"_s, u"0.009"_s, u"1"_s));
    ZANOptions::Instance()->AddOption(OPTION_ZAN_LF);
    EXPECT_TRUE(characteristics.CheckAntennaSetupValidity(nullptr, message));
}

// Translation

TEST_F(ZANCharacteristicsValidityTest, EveryVerdictIsTranslated) {
    const MarkingTranslator translator;
    ZANCharacteristics& characteristics = Connect({});
    QString message;
    for (const VerdictRow& row : Verdicts()) {
        AntennaDataList list;
        Fill(list, row.antennas);
        const bool isValid = characteristics.CheckAntennaSetupValidity(&list, message);
        EXPECT_EQ(message, u"Ü: "_s + row.message);
        EXPECT_EQ(isValid, row.message == VALID);
    }
}

TEST_F(ZANCharacteristicsValidityTest, EveryOutcomeOfARepairIsTranslated) {
    const MarkingTranslator translator;
    QString message;
    Connect({Unnamed(1e6, 2e6)}).MakeAntennaSetupValid(message);
    EXPECT_EQ(message, u"Ü: "_s + ALREADY_VALID);
    Connect({Unsupported(Unnamed(1e6, 2e6))}).MakeAntennaSetupValid(message);
    EXPECT_EQ(message, u"Ü: "_s + NONE_SUPPORTED);
    Connect({Disabled(Unnamed(1e6, 2e6))}).MakeAntennaSetupValid(message);
    EXPECT_EQ(message, u"Ü: "_s + Covered(u"1"_s, u"2"_s));
}

// The repair

struct RepairRow {
    const char* name;
    std::vector<AntennaData> antennas;
    std::vector<Setting> repaired;
    QString message;
};

const std::vector<RepairRow>& Repairs() {
    const auto hf = [](const QString& name) { return Antenna(name, 300e3, 30e6); };
    static const std::vector<RepairRow> rows{
        {"what is supported is enabled over its whole coverage",
         {Disabled(UsedFor(Unnamed(20e6, 1300e6), 100e6, 200e6))},
         {{u"PX106"_s, true, 20e6, 1300e6}},
         Covered(u"20"_s, u"1300"_s)},
        {"what is not supported is disabled and collapsed",
         {Unsupported(Antenna(u"PX103"_s, 300e3, 30e6)), Antenna(u"PX106"_s, 20e6, 1300e6)},
         {{u"PX103"_s, false, 30e6, 30e6}, {u"PX106"_s, true, 20e6, 1300e6}},
         Covered(u"20"_s, u"1300"_s)},
        {"support is judged on the working range, which then becomes the coverage",
         {Disabled(UsedFor(Unnamed(100e3, 40e6), 300e3, 30e6))},
         {{u"PX106"_s, true, 100e3, 40e6}},
         Covered(u"0.1"_s, u"40"_s)},
        {"also when only the coverage is supported",
         {UsedFor(Antenna(u"PX103"_s, 300e3, 30e6), 100e3, 30e6), Antenna(u"PX106"_s, 100e6, 1300e6)},
         {{u"PX103"_s, false, 30e6, 30e6}, {u"PX106"_s, true, 100e6, 1300e6}},
         Covered(u"100"_s, u"1300"_s)},
        {"antennas are sorted",
         {Antenna(u"c"_s, 100e6, 1300e6), Antenna(u"a"_s, 300e3, 30e6), Antenna(u"b"_s, 25e6, 200e6)},
         {{u"a"_s, true, 300e3, 30e6},
          {u"b"_s, true, 30000001.0, 200e6},
          {u"c"_s, true, 200000001.0, 1300e6}},
         Covered(u"0.3"_s, u"1300"_s)},
        {"an overlap is cut off 1 Hz above",
         {Antenna(u"a"_s, 300e3, 30e6), Antenna(u"b"_s, 20e6, 1300e6)},
         {{u"a"_s, true, 300e3, 30e6}, {u"b"_s, true, 30000001.0, 1300e6}},
         Covered(u"0.3"_s, u"1300"_s)},
        {"adjoining exactly is moved 1 Hz up",
         {Antenna(u"a"_s, 300e3, 30e6), Disabled(Antenna(u"b"_s, 30e6, 1300e6)), Antenna(u"c"_s, 2e6, 30e6)},
         {{u"a"_s, true, 300e3, 30e6}, {u"c"_s, false, 30e6, 30e6}, {u"b"_s, true, 30000001.0, 1300e6}},
         Covered(u"0.3"_s, u"1300"_s)},
        {"1 Hz above stays",
         {Antenna(u"a"_s, 300e3, 30e6), Disabled(Unsupported(Antenna(u"x"_s, 1e6, 2e6))),
          Antenna(u"b"_s, 30000001.0, 1300e6), Antenna(u"c"_s, 30000002.0, 1301e6)},
         {{u"a"_s, true, 300e3, 30e6},
          {u"x"_s, false, 2e6, 2e6},
          {u"b"_s, true, 30000001.0, 1300e6},
          {u"c"_s, true, 1300000001.0, 1301e6}},
         Covered(u"0.3"_s, u"1301"_s)},
        {"half a hertz between does not leave a gap",
         {Antenna(u"a"_s, 300e3, 30e6), Antenna(u"b"_s, 30000000.5, 1300e6)},
         {{u"a"_s, true, 300e3, 30e6}, {u"b"_s, true, 30000001.0, 1300e6}},
         Covered(u"0.3"_s, u"1300"_s)},
        {"one and a half hertz does",
         {Antenna(u"a"_s, 300e3, 30e6), Antenna(u"b"_s, 30000001.5, 1300e6)},
         {{u"a"_s, true, 300e3, 30e6}, {u"b"_s, false, 1300e6, 1300e6}},
         Covered(u"0.3"_s, u"30"_s)},
        {"what would leave a gap is disabled, and what follows it is joined to what was kept",
         {Antenna(u"a"_s, 1e6, 2e6), Antenna(u"b"_s, 3e6, 4e6), Antenna(u"c"_s, 5e6, 6e6)},
         {{u"a"_s, true, 1e6, 2e6}, {u"b"_s, false, 4e6, 4e6}, {u"c"_s, false, 6e6, 6e6}},
         Covered(u"1"_s, u"2"_s)},
        {"what adds nothing is disabled",
         {Antenna(u"a"_s, 1e6, 5e6), Antenna(u"b"_s, 2e6, 5e6), Antenna(u"c"_s, 3e6, 6e6)},
         {{u"a"_s, true, 1e6, 5e6}, {u"b"_s, false, 5e6, 5e6}, {u"c"_s, true, 5000001.0, 6e6}},
         Covered(u"1"_s, u"6"_s)},
        {"what adds half a hertz is kept",
         {Antenna(u"a"_s, 1e6, 5e6), Antenna(u"b"_s, 2e6, 5000000.5)},
         {{u"a"_s, true, 1e6, 5e6}, {u"b"_s, true, 5000001.0, 5000000.5}},
         Covered(u"1"_s, u"5"_s)},
        {"what adds 1 Hz is kept",
         {Antenna(u"a"_s, 1e6, 5e6), Antenna(u"b"_s, 2e6, 5000001.0)},
         {{u"a"_s, true, 1e6, 5e6}, {u"b"_s, true, 5000001.0, 5000001.0}},
         Covered(u"1"_s, u"5"_s)},
        {"of two models with the same range the first one is kept",
         {hf(u"PX102"_s), hf(u"PX101"_s)},
         {{u"PX101"_s, true, 300e3, 30e6}, {u"PX102"_s, false, 30e6, 30e6}},
         Covered(u"0.3"_s, u"30"_s)},
        {"of a pair by polarisation as well",
         {Disabled(Antenna(u"PX121_V"_s, 20e6, 1300e6)), Disabled(Antenna(u"PX121_H"_s, 20e6, 1300e6))},
         {{u"PX121_H"_s, true, 20e6, 1300e6}, {u"PX121_V"_s, false, 1300e6, 1300e6}},
         Covered(u"20"_s, u"1300"_s)},
        {"left and right half stay side by side",
         {Disabled(hf(u"PX104_R"_s)), Disabled(hf(u"PX104_L"_s))},
         {{u"PX104_L"_s, true, 300e3, 30e6}, {u"PX104_R"_s, true, 300e3, 30e6}},
         Covered(u"0.3"_s, u"30"_s)},
        {"a right half of that name only",
         {hf(u"PX104SR_L"_s), hf(u"PX104SR_R"_s), hf(u"PX104_R "_s)},
         {{u"PX104SR_L"_s, true, 300e3, 30e6},
          {u"PX104SR_R"_s, false, 30e6, 30e6},
          {u"PX104_R "_s, false, 30e6, 30e6}},
         Covered(u"0.3"_s, u"30"_s)},
        // The one that is not supported keeps the two from being sorted by name.
        {"with the right half first the left one goes",
         {Antenna(u"PX104_R"_s, 400e3, 29e6), Unsupported(Antenna(u"PX101"_s, 300e3, 30e6)),
          Antenna(u"PX104_L"_s, 400e3, 29e6)},
         {{u"PX104_R"_s, true, 400e3, 29e6},
          {u"PX101"_s, false, 30e6, 30e6},
          {u"PX104_L"_s, false, 29e6, 29e6}},
         Covered(u"0.4"_s, u"29"_s)},
        {"a right half that ends lower sets the end of what is covered",
         {Antenna(u"PX101"_s, 300e3, 30e6), Antenna(u"PX104_R"_s, 300e3, 20e6),
          Antenna(u"b"_s, 25e6, 1300e6)},
         {{u"PX101"_s, true, 300e3, 30e6},
          {u"PX104_R"_s, true, 300e3, 20e6},
          {u"b"_s, false, 1300e6, 1300e6}},
         Covered(u"0.3"_s, u"20"_s)},
        {"an unsupported right half stays disabled",
         {hf(u"PX104_L"_s), Unsupported(hf(u"PX104_R"_s))},
         {{u"PX104_L"_s, true, 300e3, 30e6}, {u"PX104_R"_s, false, 30e6, 30e6}},
         Covered(u"0.3"_s, u"30"_s)},
        {"six digits",
         {Disabled(Unnamed(1234567.89, 29876543.21))},
         {{u"PX106"_s, true, 1234567.89, 29876543.21}},
         Covered(u"1.23457"_s, u"29.8765"_s)},
    };
    return rows;
}

TEST_F(ZANCharacteristicsValidityTest, ARepairEnablesCutsAndDisables) {
    for (const RepairRow& row : Repairs()) {
        for (const bool autoUpdate : {true, false}) {
            SCOPED_TRACE(row.name);
            ZANCharacteristics& characteristics = Connect(row.antennas, autoUpdate);
            QString message;
            EXPECT_TRUE(characteristics.MakeAntennaSetupValid(message));
            EXPECT_EQ(message, row.message);
            EXPECT_EQ(OwnSettings(characteristics), row.repaired);
            EXPECT_EQ(SettingsInTree(), row.repaired);
        }
    }
}

TEST_F(ZANCharacteristicsValidityTest, OfAntennasWithOneRangeTheFirstIsKeptAndTheRightHalfOfAPair) {
    struct Row {
        std::vector<AntennaData> antennas;
        std::set<QString> kept;
    };
    const auto hf = [](const QString& name) { return Disabled(Antenna(name, 400e3, 29e6)); };
    const std::vector<Row> rows{
        {{hf(u"PX104_L"_s), hf(u"PX104_R"_s)}, {u"PX104_L"_s, u"PX104_R"_s}},
        {{hf(u"PX104_R"_s), Unsupported(Antenna(u"PX101"_s, 300e3, 30e6)), hf(u"PX104_L"_s)},
         {u"PX104_R"_s}}, // the one that is not supported keeps them from being sorted by name
        {{hf(u"PX101"_s), hf(u"PX102"_s)}, {u"PX101"_s}},
    };
    for (const Row& row : rows) {
        ZANCharacteristics& characteristics = Connect(row.antennas);
        QString message;
        EXPECT_TRUE(characteristics.MakeAntennaSetupValid(message));
        EXPECT_EQ(message, Covered(u"0.4"_s, u"29"_s));
        std::set<QString> kept;
        for (const Setting& setting : OwnSettings(characteristics)) {
            if (setting.enabled) {
                kept.insert(setting.name);
            }
        }
        EXPECT_EQ(kept, row.kept);
    }
}

TEST_F(ZANCharacteristicsValidityTest, AValidSetupIsLeftAlone) {
    ZANCharacteristics& characteristics =
        Connect({Antenna(u"b"_s, 30e6, 1300e6), Antenna(u"a"_s, 1e6, 30e6)});
    CodeObserver observer;
    ModifyTime()->AddObserver(&observer);
    characteristics.AddObserver(&observer);
    const AntennaData* const antenna = characteristics.GetAntennaByIndex(0);
    const QString tree = DumpOfTree();
    QString message;
    EXPECT_TRUE(characteristics.MakeAntennaSetupValid(message));
    EXPECT_EQ(message, ALREADY_VALID);
    EXPECT_EQ(characteristics.GetAntennaByIndex(0), antenna);
    EXPECT_EQ(DumpOfTree(), tree);
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ZANCharacteristicsValidityTest, ARepairThatFailsLeavesListTreeAndModifyTime) {
    const std::vector<std::vector<AntennaData>> setups{
        {},
        {Unsupported(Unnamed(1e6, 2e6))},
        {Unsupported(Antenna(u"b"_s, 3e6, 4e6)), Disabled(UsedFor(Unnamed(1e6, 40e6), 2e6, 31e6))},
    };
    for (const auto& setup : setups) {
        ZANCharacteristics& characteristics = Connect(setup);
        const std::vector<Setting> own = OwnSettings(characteristics);
        CodeObserver observer;
        ModifyTime()->AddObserver(&observer);
        characteristics.AddObserver(&observer);
        const QString tree = DumpOfTree();
        QString message;
        EXPECT_FALSE(characteristics.MakeAntennaSetupValid(message));
        EXPECT_EQ(message, NONE_SUPPORTED);
        EXPECT_EQ(OwnSettings(characteristics), own);
        EXPECT_EQ(DumpOfTree(), tree);
        EXPECT_TRUE(observer.codes.empty());
    }
}

TEST_F(ZANCharacteristicsValidityTest, TheTreeHoldsExactlyTheRepairedAntennas) {
    AntennaData first = Antenna(u"PX103"_s, 300e3, 30e6);
    first.handle = 4;
    first.dfMethods = {METHOD_COR, METHOD_SUPR};
    first.compassEnabled = true;
    first.compassSupport = true;
    first.compassValue = 12.5F;
    first.compassHandle = 6;
    first.mechOffset = -1.5F;
    first.polarizationSupport = true;
    first.polarizationMode = POLARISATION_HORIZONTAL;
    first.activePassiveSupport = true;
    first.converterHandle = 8;
    ZANCharacteristics& characteristics = Connect({first, Antenna(u"PX106"_s, 20e6, 1300e6)});
    const QString other = DeviceTree::Path() + u"/Further"_s;
    Tree::Instance()->CreateNode(other);
    QString message;
    ASSERT_TRUE(characteristics.MakeAntennaSetupValid(message));

    int antennaNodes = 0;
    for (const ITreeItem* item : Tree::Instance()->GetNode(DeviceTree::Path())->GetTreeItems()) {
        antennaNodes += item->GetName().startsWith(u"Ant"_s) ? 1 : 0;
    }
    EXPECT_EQ(antennaNodes, 2);
    EXPECT_NE(Tree::Instance()->GetNode(other), nullptr);
    const AntennaData* const antenna = characteristics.GetAntennaByHandle(4);
    ASSERT_NE(antenna, nullptr);
    EXPECT_EQ(antenna->name, first.name);
    EXPECT_EQ(antenna->dfMethods, first.dfMethods);
    EXPECT_EQ(antenna->dfAlgorithms, (QStringList{u"COR"_s, u"SUPR"_s}));
    EXPECT_TRUE(antenna->compassEnabled && antenna->compassSupport && antenna->polarizationSupport &&
                antenna->activePassiveSupport);
    EXPECT_EQ(antenna->compassValue, 12.5F);
    EXPECT_EQ(antenna->compassHandle, 6);
    EXPECT_EQ(antenna->mechOffset, -1.5F);
    EXPECT_EQ(antenna->polarizationMode, POLARISATION_HORIZONTAL);
    EXPECT_EQ(antenna->converterHandle, 8);
    EXPECT_EQ(antenna->converterTypeName, first.converterTypeName);
    EXPECT_EQ(antenna->minFreq, 300e3);
    EXPECT_EQ(antenna->maxFreq, 30e6);
}

TEST_F(ZANCharacteristicsValidityTest, ARepairHasEverythingRebuiltFromTheTree) {
    ZANCharacteristics& characteristics =
        Connect({Disabled(Antenna(u"a"_s, 300e3, 30e6)), Disabled(Antenna(u"b"_s, 20e6, 1300e6))});
    ASSERT_EQ(characteristics.GetMaxFreq(OPMODE_FFM), 25e6);
    CodeObserver observer;
    characteristics.AddObserver(&observer);
    QString message;
    ASSERT_TRUE(characteristics.MakeAntennaSetupValid(message));
    EXPECT_EQ(characteristics.GetMinFreq(OPMODE_FFM), 300e3);
    EXPECT_EQ(characteristics.GetMaxFreq(OPMODE_FFM), 1300e6);
    double vuhfStart = 0.0;
    double hfEnd = 0.0;
    EXPECT_TRUE(characteristics.GetConverterSwitchFreq(vuhfStart, hfEnd));
    EXPECT_EQ(vuhfStart, 30000001.0);
    EXPECT_EQ(hfEnd, 30e6);
    EXPECT_EQ(observer.codes, std::vector<TChangeCode>{TChangeCode::Changed});
    EXPECT_TRUE(characteristics.CheckAntennaSetupValidity(nullptr, message));
}

TEST_F(ZANCharacteristicsValidityTest, ObserversOfTheModifyTimeFindTheRepairedAntennasInTheTree) {
    ZANCharacteristics& characteristics =
        Connect({Antenna(u"a"_s, 300e3, 30e6), Antenna(u"b"_s, 20e6, 1300e6)});
    std::vector<Setting> seen;
    FunctionObserver observer([&](Observable*, TChangeCode) { seen = SettingsInTree(); });
    ModifyTime()->AddObserver(&observer);
    ModifyTime()->MakeFirstObserver(&observer);
    QString message;
    ASSERT_TRUE(characteristics.MakeAntennaSetupValid(message));
    EXPECT_EQ(seen, (std::vector<Setting>{{u"a"_s, true, 300e3, 30e6}, {u"b"_s, true, 30000001.0, 1300e6}}));
}

TEST_F(ZANCharacteristicsValidityTest, ARebuildWhileTheOldAntennasGoDoesNotLoseTheRepairedOnes) {
    const std::vector<Setting> repaired{{u"a"_s, true, 300e3, 30e6}, {u"b"_s, true, 30000001.0, 1300e6}};
    for (const bool autoUpdate : {true, false}) {
        ZANCharacteristics& characteristics =
            Connect({Antenna(u"a"_s, 300e3, 30e6), Antenna(u"b"_s, 20e6, 1300e6)}, autoUpdate);
        int count = 0;
        FunctionObserver rebuilder([&](Observable*, TChangeCode) {
            ++count;
            characteristics.UpdateCachedDataFromValueTree();
        });
        for (ITreeItem* item : Tree::Instance()->GetNode(DeviceTree::Path())->GetTreeItems()) {
            if (StdDeviceTree::Ant::IsAntenna(item)) {
                item->AddObserver(&rebuilder);
            }
        }
        QString message;
        ASSERT_TRUE(characteristics.MakeAntennaSetupValid(message));
        EXPECT_EQ(count, 2);
        EXPECT_EQ(SettingsInTree(), repaired);
        EXPECT_EQ(OwnSettings(characteristics), repaired);
    }
}

TEST_F(ZANCharacteristicsValidityTest, AnObserverOfARepairMayDestroyTheInformationCenter) {
    const DrivenClock clock;
    for (int i = 0; i < 2; ++i) { // the second time at the modify time of the first
        ZANCharacteristics& characteristics = Connect({Disabled(Unnamed(1e6, 2e6))});
        FunctionObserver destroyer([](Observable*, TChangeCode) { ZANInformationCenter::Finalise(); });
        characteristics.AddObserver(&destroyer);
        QString message;
        EXPECT_TRUE(characteristics.MakeAntennaSetupValid(message));
        EXPECT_EQ(message, Covered(u"1"_s, u"2"_s));
        EXPECT_EQ(SettingsInTree(), (std::vector<Setting>{{u"PX106"_s, true, 1e6, 2e6}}));
        EXPECT_EQ(ModifyTime()->GetObserverCount(), 0U);
    }
}

TEST_F(ZANCharacteristicsValidityTest, ARepairWithoutModifyTimeIsWrittenAllTheSame) {
    DeviceTree::SetAntennas({Disabled(Unnamed(1e6, 2e6))});
    Tree::Instance()->Remove(ModifyTime());
    ZANCharacteristics& characteristics = DeviceTree::Connect();
    QString message;
    EXPECT_TRUE(characteristics.MakeAntennaSetupValid(message));
    EXPECT_EQ(message, Covered(u"1"_s, u"2"_s));
    EXPECT_EQ(SettingsInTree(), (std::vector<Setting>{{u"PX106"_s, true, 1e6, 2e6}}));
    EXPECT_EQ(OwnSettings(characteristics), SettingsInTree());
}

TEST_F(ZANCharacteristicsValidityTest, ARepairOfADeviceThatIsGoneKeepsItToItself) {
    ZANCharacteristics& characteristics = Connect({Disabled(Unnamed(1e6, 2e6))});
    Tree::Instance()->Remove(Tree::Instance()->GetNode(DeviceTree::Path()));
    const QString tree = DumpOfTree();
    QString message;
    EXPECT_TRUE(characteristics.MakeAntennaSetupValid(message));
    EXPECT_EQ(OwnSettings(characteristics), (std::vector<Setting>{{u"PX106"_s, true, 1e6, 2e6}}));
    EXPECT_EQ(DumpOfTree(), tree);
}

// The modify time

/// Puts a time zone in force.
class TimeZone {
public:
    explicit TimeZone(const QByteArray& zone)
        : m_old(qgetenv("TZ"))
        , m_wasSet(qEnvironmentVariableIsSet("TZ")) {
        qputenv("TZ", zone);
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone() {
        if (m_wasSet) {
            qputenv("TZ", m_old);
        } else {
            qunsetenv("TZ");
        }
        tzset();
    }

private:
    QByteArray m_old;
    bool m_wasSet;
};

TEST_F(ZANCharacteristicsValidityTest, TheModifyTimeIsTheLocalTimeOfTheRepair) {
    struct Row {
        QByteArray zone; // as POSIX writes it: hours to add for UTC
        QString utc;
        QString text;
    };
    const std::vector<Row> rows{
        {"UTC0", u"2026-11-20T13:25:07.999"_s, u"201126132507"_s},
        {"UTC0", u"2009-01-02T03:04:05"_s, u"020109030405"_s},
        {"UTC0", u"2026-12-31T23:59:59"_s, u"311226235959"_s},
        {"UTC0", u"2000-01-01T00:00:00"_s, u"010100000000"_s},
        {"EAST-5:30", u"2026-12-31T23:59:59"_s, u"010127052959"_s},
        {"WEST8", u"2027-01-01T00:00:00"_s, u"311226160000"_s},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.zone.toStdString() + " " + row.utc.toStdString());
        const TimeZone zone(row.zone);
        DrivenClock clock;
        QDateTime time = QDateTime::fromString(row.utc, Qt::ISODateWithMs);
        time.setTimeSpec(Qt::UTC);
        clock.now = static_cast<unsigned long long>(time.toMSecsSinceEpoch());
        QString message;
        ASSERT_TRUE(Connect({Disabled(Unnamed(1e6, 2e6))}).MakeAntennaSetupValid(message));
        EXPECT_EQ(ModifyTime()->GetValue(), row.text);
    }
}

TEST_F(ZANCharacteristicsValidityTest, TwoRepairsWithinOneSecondBothReachTheObservers) {
    DrivenClock clock;
    ZANCharacteristics& characteristics = Connect({Disabled(Unnamed(1e6, 2e6))});
    CodeObserver ofTime;
    CodeObserver ofCharacteristics;
    ModifyTime()->AddObserver(&ofTime);
    characteristics.AddObserver(&ofCharacteristics);
    for (std::size_t repairs = 1; repairs <= 3; ++repairs) {
        QString message;
        ASSERT_TRUE(characteristics.MakeAntennaSetupValid(message));
        EXPECT_EQ(message, Covered(u"1"_s, u"2"_s));
        EXPECT_EQ(ofTime.codes, std::vector<TChangeCode>(repairs, TChangeCode::Changed));
        EXPECT_EQ(ofCharacteristics.codes, std::vector<TChangeCode>(repairs, TChangeCode::Changed));
        EXPECT_TRUE(characteristics.GetAntennaByIndex(0)->enabled);
        characteristics.GetAntennaByIndex(0)->enabled = false;
        clock.now += 400;
    }
}

} // namespace

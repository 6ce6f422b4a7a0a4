#include "zancommon/antennadatalist.h"

#include "support/antennas.h"
#include "support/devicetree.h"
#include "support/storedsettings.h"
#include "support/tracelines.h"

#include <gtest/gtest.h>

#include <QMap>

#include <functional>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

QString Station() {
    return u"10.0.0.7:5000"_s;
}

using Section = QMap<QByteArray, QByteArray>; // the keys of one antenna

/// A settings file with one station that has these antennas.
QByteArray FileWith(const QByteArray& countLine, const std::vector<Section>& sections) {
    QByteArray text = "[ZANStations]\nCount=1\n[ZANStations/ZANStation0]\nDeviceAddress=10.0.0.7:5000\n"
                      "[ZANStations/ZANStation0/SystemConfiguration]\n" +
                      countLine + '\n';
    int number = 0;
    for (const Section& section : sections) {
        text += "[ZANStations/ZANStation0/SystemConfiguration/Antenna" + QByteArray::number(number++) + "]\n";
        for (auto entry = section.begin(); entry != section.end(); ++entry) {
            text += entry.key() + '=' + entry.value() + '\n';
        }
    }
    return text;
}

/// An enabled antenna; in MHz.
Section MakeSection(const QByteArray& name, double minFreq, double maxFreq, double minRange,
                    double maxRange) {
    const auto text = [](double frequency) { return QByteArray::number(frequency * 1e6, 'f', 3); };
    return {{"Name", name},
            {"Enabled", "true"},
            {"MinFreq", text(minFreq)},
            {"MaxFreq", text(maxFreq)},
            {"MinRange", text(minRange)},
            {"MaxRange", text(maxRange)}};
}

Section MakeWholeSection() {
    return {{"Name", "PX122"},
            {"Enabled", "true"},
            {"MinRange", "2000000.000"},
            {"MaxRange", "25000000.000"},
            {"CompassEnabled", "true"},
            {"MechOffset", "-3.5"},
            {"CompassSupport", "true"},
            {"DFAlgorithm", "COR,VEC"},
            {"MinFreq", "1000000.000"},
            {"MaxFreq", "30000000.000"},
            {"PolarizationSupport", "true"},
            {"PolarizationMode", "2"},
            {"ActivePassiveSupport", "true"},
            {"CompassValue", "12.500"},
            {"ConverterTypeName", "RCV01"}};
}

/// What is in that section.
AntennaData MakeWholeAntenna() {
    AntennaData antenna = MakeAntenna(u"PX122"_s, u"RCV01"_s, 1e6, 30e6);
    antenna.minRange = 2e6;
    antenna.maxRange = 25e6;
    antenna.compassEnabled = true;
    antenna.mechOffset = -3.5F;
    antenna.compassSupport = true;
    antenna.dfAlgorithms = {u"COR"_s, u"VEC"_s};
    antenna.dfMethods = {1, 3};
    antenna.polarizationSupport = true;
    antenna.activePassiveSupport = true;
    antenna.compassValue = 12.5F;
    return antenna;
}

class AntennaDataListCfgTest : public testing::Test {
protected:
    /// A key of the one station.
    static QString Stored(const QString& key) {
        return CfgCenter::GetAppCfg(ICfg::View::Stations)
            .GetString(u"ZANStations/ZANStation0/SystemConfiguration/"_s + key, u"(none)"_s);
    }
    /// Antennas with these names and coverages in MHz.
    struct Coverage {
        QString name;
        double minFreq;
        double maxFreq;
    };
    static AntennaDataList ListOf(const std::vector<Coverage>& coverages) {
        AntennaDataList list;
        for (const Coverage& each : coverages) {
            Append(list, MakeAntenna(each.name, {}, each.minFreq * 1e6, each.maxFreq * 1e6));
        }
        return list;
    }
    /// The ranges of all entries in MHz.
    static QString RangesOf(const AntennaDataList& list) {
        QStringList texts;
        for (const auto& antenna : list.GetAntennas()) {
            texts.append(QString::number(antenna->minRange / 1e6, 'g', 12) + u'-' +
                         QString::number(antenna->maxRange / 1e6, 'g', 12));
        }
        return texts.join(u' ');
    }

    StoredSettings settings;
    TraceLines trace;
};

// --- writing ---

TEST_F(AntennaDataListCfgTest, FifteenKeysAreWrittenForEachEntry) {
    AntennaDataList list;
    Append(list, MakeUnusualAntenna());
    AntennaData plain;
    plain.name = u"PX104_L"_s;
    plain.maxFreq = plain.maxRange = 2999999999.9996;
    Append(list, plain);
    list.WriteAntennaSetupToCfg(Station());
    EXPECT_EQ(settings.CloseAndRead(), uR"([ZANStations]
Count=1

[ZANStations/ZANStation0]
DeviceAddress=10.0.0.7:5000

[ZANStations/ZANStation0/SystemConfiguration]
AntennaCount=2

[ZANStations/ZANStation0/SystemConfiguration/Antenna0]
ActivePassiveSupport=true
CompassEnabled=true
CompassSupport=true
CompassValue=12.500
ConverterTypeName=RCV01
DFAlgorithm="SUPR,COR,VEC"
Enabled=false
MaxFreq=30000000.000
MaxRange=25000000.000
MechOffset=-3.5
MinFreq=1000000.000
MinRange=1500000.000
Name=PX122 (A/P)
PolarizationMode=3
PolarizationSupport=true

[ZANStations/ZANStation0/SystemConfiguration/Antenna1]
ActivePassiveSupport=false
CompassEnabled=false
CompassSupport=false
CompassValue=-1.000
ConverterTypeName=
DFAlgorithm=
Enabled=true
MaxFreq=3000000000.000
MaxRange=3000000000.000
MechOffset=0.0
MinFreq=0.000
MinRange=0.000
Name=PX104_L
PolarizationMode=0
PolarizationSupport=false
)"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(AntennaDataListCfgTest, NumbersAreWrittenWithTheirDecimals) {
    struct Case {
        double number;
        QString frequencyText;
        QString offsetText;
    };
    const Case cases[] = {
        {0.0006, u"0.001"_s, u"0.0"_s}, {-359.96, u"-359.960"_s, u"-360.0"_s},
        {0.24, u"0.240"_s, u"0.2"_s},   {1e10, u"10000000000.000"_s, u"10000000000.0"_s},
        {INF, u"inf"_s, u"inf"_s},      {NOT_A_NUMBER, u"nan"_s, u"nan"_s},
    };
    for (const Case& each : cases) {
        AntennaData antenna;
        antenna.name = u"A"_s;
        antenna.minFreq = antenna.maxFreq = antenna.minRange = antenna.maxRange = each.number;
        antenna.mechOffset = static_cast<float>(each.number);
        AntennaDataList list;
        Append(list, antenna);
        list.WriteAntennaSetupToCfg(Station());
        for (const QString& key : {u"MinFreq"_s, u"MaxFreq"_s, u"MinRange"_s, u"MaxRange"_s}) {
            EXPECT_EQ(Stored(u"Antenna0/"_s + key), each.frequencyText) << key.toStdString();
        }
        EXPECT_EQ(Stored(u"Antenna0/MechOffset"_s), each.offsetText);
    }
}

TEST_F(AntennaDataListCfgTest, WritingFewerEntriesLeavesTheSectionsBehindThem) {
    ListOf({{u"A"_s, 1, 2}, {u"B"_s, 2, 3}, {u"C"_s, 3, 4}, {u"D"_s, 4, 5}, {u"E"_s, 5, 6}})
        .WriteAntennaSetupToCfg(Station());
    ListOf({{u"X"_s, 1, 2}, {u"Y"_s, 2, 3}, {u"Z"_s, 3, 4}}).WriteAntennaSetupToCfg(Station());
    settings.Reopen();
    EXPECT_EQ(Stored(u"AntennaCount"_s), u"3"_s);
    QStringList names;
    for (int i = 0; i < 6; ++i) {
        names.append(Stored(u"Antenna%1/Name"_s.arg(i)));
    }
    EXPECT_EQ(names.join(u' '), u"X Y Z D E (none)"_s);
    AntennaDataList built;
    EXPECT_EQ(built.BuildAntennasFromCfg(Station()), 3);
    EXPECT_EQ(NamesOf(built), (QStringList{u"X"_s, u"Y"_s, u"Z"_s}));
}

TEST_F(AntennaDataListCfgTest, EmptyListIsWrittenAsACountOfNone) {
    ListOf({{u"A"_s, 1, 2}}).WriteAntennaSetupToCfg(Station());
    AntennaDataList().WriteAntennaSetupToCfg(Station());
    settings.Reopen();
    EXPECT_EQ(Stored(u"AntennaCount"_s), u"0"_s);
    EXPECT_EQ(Stored(u"Antenna0/Name"_s), u"A"_s);
    EXPECT_EQ(AntennaDataList().BuildAntennasFromCfg(Station()), 0);
}

TEST_F(AntennaDataListCfgTest, NothingIsWrittenWithoutThePermissionToSave) {
    const QString before = QString::fromLatin1(FileWith("AntennaCount=1", {MakeWholeSection()}));
    settings.Write(before.toLatin1());
    AntennaDataList list = ListOf({{u"A"_s, 1, 2}});
    list.allowSave(false);
    list.WriteAntennaSetupToCfg(Station());
    list.WriteAntennaSetupToCfg(u"unknown"_s);
    AntennaDataList copy(list);
    copy.WriteAntennaSetupToCfg(Station());
    AntennaDataList deepCopy;
    deepCopy.CopyFrom(list);
    deepCopy.WriteAntennaSetupToCfg(Station());
    EXPECT_EQ(settings.CloseAndRead(), before);

    settings.Reopen();
    list.allowSave(true);
    list.WriteAntennaSetupToCfg(Station());
    EXPECT_EQ(Stored(u"Antenna0/Name"_s), u"A"_s);
}

TEST_F(AntennaDataListCfgTest, EachStationHasItsOwnSetup) {
    ListOf({{u"A"_s, 1, 2}}).WriteAntennaSetupToCfg(Station());
    ListOf({{u"B"_s, 1, 2}, {u"C"_s, 1, 2}}).WriteAntennaSetupToCfg({});
    settings.Reopen();
    AntennaDataList first;
    AntennaDataList second;
    EXPECT_EQ(first.BuildAntennasFromCfg(Station()), 1);
    EXPECT_EQ(second.BuildAntennasFromCfg(u"Default"_s), 2); // means the empty address
    EXPECT_EQ(NamesOf(first), QStringList{u"A"_s});
    EXPECT_EQ(NamesOf(second), (QStringList{u"B"_s, u"C"_s}));
}

// --- building ---

TEST_F(AntennaDataListCfgTest, WhatWasWrittenIsBuiltByTheNextRunWithoutHandlesAndPolarisation) {
    AntennaDataList list;
    Append(list, MakeUnusualAntenna());
    AntennaData other = MakeAntenna(u"PX104_L"_s, u"RCV03"_s, 30e6, 3e9);
    other.dfAlgorithms = {u"COR9"_s, u"BOGUS"_s};
    other.dfMethods = {1, 0xFFFFFFFFU};
    Append(list, other);
    list.WriteAntennaSetupToCfg(Station());
    settings.Reopen();

    AntennaDataList built;
    EXPECT_EQ(built.BuildAntennasFromCfg(Station()), 2);
    ASSERT_EQ(built.GetAntennas().size(), 2U);
    AntennaData expected = MakeUnusualAntenna();
    expected.handle = expected.reservedHandle = expected.compassHandle = expected.converterHandle = -1;
    expected.polarizationMode = POLARISATION_LEFT;
    expected.furtherFlag = false;
    expected.auxiliaryValue1 = expected.auxiliaryValue2 = expected.auxiliaryValue3 = 0;
    ExpectSame(*built.GetAntennaByIndex(0), expected);
    ExpectSame(*built.GetAntennaByIndex(1), [&] {
        AntennaData antenna = other;
        antenna.compassValue = -1.0F;
        return antenna;
    }());
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(AntennaDataListCfgTest, NamesOfAnyTextSurvive) {
    const QStringList names{u"PX122 (A/P)"_s, u"%1 %2"_s,           u" blanks "_s,    u"\"quoted\""_s,
                            u"[x]=;#"_s,      u"two\nlines\t\\n"_s, u"\u00e4\u4e2d"_s};
    AntennaDataList list;
    for (const QString& name : names) {
        Append(list, MakeAntenna(name, name, 1, 2));
    }
    list.WriteAntennaSetupToCfg(Station());
    settings.Reopen();
    AntennaDataList built;
    EXPECT_EQ(built.BuildAntennasFromCfg(Station()), names.size());
    EXPECT_EQ(NamesOf(built), names);
    for (const auto& antenna : built.GetAntennas()) {
        EXPECT_EQ(antenna->converterTypeName, antenna->name);
    }
}

TEST_F(AntennaDataListCfgTest, CountDecidesHowManySectionsAreBuilt) {
    struct Case {
        QByteArray line;
        int count;
        bool isReported = false;
    };
    const Case cases[] = {
        {"AntennaCount=1", 1},           {"AntennaCount=11", 11},
        {"AntennaCount=12", 12},         {"AntennaCount=13", 12},
        {"AntennaCount=20", 12},         {"AntennaCount=4294967297", 12},
        {"AntennaCount=0", 0},           {"AntennaCount=-1", 0},
        {"AntennaCount=-4294967295", 0}, {"", 1},
        {"AntennaCount=many", 1, true},  {"AntennaCount=2.5", 1, true},
        {"AntennaCount=", 1, true},      {"AntennaCount=99999999999999999999", 1, true},
    };
    std::vector<Section> sections;
    for (int i = 0; i < 14; ++i) {
        sections.push_back(MakeSection("A" + QByteArray::number(i), 1, 9, 1, 9));
    }
    for (const Case& each : cases) {
        SCOPED_TRACE(each.line.toStdString());
        settings.Write(FileWith(each.line, sections));
        trace.lines.clear();
        AntennaDataList list;
        EXPECT_EQ(list.BuildAntennasFromCfg(Station()), each.count);
        ASSERT_EQ(list.GetAntennas().size(), static_cast<std::size_t>(each.count));
        for (int i = 0; i < each.count; ++i) {
            EXPECT_EQ(list.GetAntennaByIndex(i)->name, u"A%1"_s.arg(i));
        }
        EXPECT_EQ(trace.lines.size(), each.isReported ? 1 : 0);
    }
}

TEST_F(AntennaDataListCfgTest, CountedSectionThatIsMissingBuildsADisabledEntryWithoutName) {
    settings.Write(FileWith("AntennaCount=2", {MakeWholeSection()}));
    AntennaDataList list;
    EXPECT_EQ(list.BuildAntennasFromCfg(Station()), 2);
    ASSERT_EQ(list.GetAntennas().size(), 2U);
    ExpectSame(*list.GetAntennaByIndex(0), MakeWholeAntenna());
    AntennaData missing;
    missing.enabled = false;
    missing.compassValue = 0.0F;
    ExpectSame(*list.GetAntennaByIndex(1), missing);
}

TEST_F(AntennaDataListCfgTest, SectionsEditedByHandAreBuiltAsFarAsTheyCanBeRead) {
    using Change = std::function<void(AntennaData&)>;
    struct Case {
        QByteArray key;
        std::optional<QByteArray> text; // none: the key is missing
        Change change;
    };
    const auto none = std::nullopt;
    const Change nothing = [](AntennaData&) {};
    const Change fullMinimum = [](AntennaData& a) { a.minRange = 1e6; };
    const Change fullMaximum = [](AntennaData& a) { a.maxRange = 30e6; };
    const Change disabled = [](AntennaData& a) { a.enabled = false; };
    const Change noMethods = [](AntennaData& a) {
        a.dfMethods.clear();
        a.dfAlgorithms.clear();
    };
    const auto number = [](float AntennaData::*field, double value) {
        return [field, value](AntennaData& a) { a.*field = static_cast<float>(value); };
    };
    const auto no = [](bool AntennaData::*field) { return [field](AntennaData& a) { a.*field = false; }; };
    const Case cases[] = {
        {"Name", none, [](AntennaData& a) { a.name.clear(); }},
        {"Name", R"(%1=[a];\n")", [](AntennaData& a) { a.name = uR"(%1=[a];\n")"_s; }},
        {"Enabled", none, disabled},
        {"Enabled", "", disabled},
        {"Enabled", "perhaps", disabled},
        {"Enabled", "FALSE", disabled},
        {"Enabled", "1", nothing},
        {"Enabled", "True", nothing},
        {"MinRange", none, fullMinimum},
        {"MinRange", "low", fullMinimum},
        {"MinRange", "2,5e6", fullMinimum},
        {"MinRange", "999999.999", fullMinimum},
        {"MinRange", "30000000.001", fullMinimum},
        {"MinRange", "nan", fullMinimum},
        {"MinRange", "-inf", fullMinimum},
        {"MinRange", "1e6", fullMinimum},
        {"MinRange", "3e7", [](AntennaData& a) { a.minRange = 30e6; }},
        {"MaxRange", none, fullMaximum},
        {"MaxRange", "high", fullMaximum},
        {"MaxRange", "999999", fullMaximum},
        {"MaxRange", "31e6", fullMaximum},
        {"MaxRange", "nan", fullMaximum},
        {"MaxRange", "inf", fullMaximum},
        {"MaxRange", "1e999", fullMaximum},
        {"MaxRange", "1e6", [](AntennaData& a) { a.maxRange = 1e6; }},
        {"CompassEnabled", none, no(&AntennaData::compassEnabled)},
        {"CompassEnabled", "yes", no(&AntennaData::compassEnabled)},
        {"MechOffset", none, number(&AntennaData::mechOffset, 0)},
        {"MechOffset", "north", number(&AntennaData::mechOffset, 0)},
        {"MechOffset", "12.345", number(&AntennaData::mechOffset, 12.345)},
        {"MechOffset", "inf", number(&AntennaData::mechOffset, INF)},
        {"MechOffset", "nan", number(&AntennaData::mechOffset, NOT_A_NUMBER)},
        {"CompassSupport", none, no(&AntennaData::compassSupport)},
        {"CompassSupport", "2", no(&AntennaData::compassSupport)},
        {"DFAlgorithm", none, noMethods},
        {"DFAlgorithm", "", noMethods},
        {"DFAlgorithm", "WAT,COR9,VEC",
         [](AntennaData& a) {
             a.dfAlgorithms = {u"WAT"_s, u"COR9"_s, u"VEC"_s};
             a.dfMethods = {0, 1, 3};
         }},
        {"DFAlgorithm", "cor,,VEC;COR, COR",
         [](AntennaData& a) {
             a.dfAlgorithms = {u"cor"_s, u""_s, u"VEC;COR"_s, u" COR"_s};
             a.dfMethods = {0xFFFFFFFFU, 0xFFFFFFFFU, 0xFFFFFFFFU, 0xFFFFFFFFU};
         }},
        {"MinFreq", none, [](AntennaData& a) { a.minFreq = 0; }},
        {"MinFreq", "low", [](AntennaData& a) { a.minFreq = 0; }},
        {"MinFreq", "-inf", [](AntennaData& a) { a.minFreq = -INF; }},
        {"MinFreq", "3e6", [](AntennaData& a) { a.minFreq = a.minRange = 3e6; }},
        {"MinFreq", "4e7", // above the maximum: no range lies within
         [](AntennaData& a) {
             a.minFreq = a.minRange = 40e6;
             a.maxRange = 30e6;
         }},
        {"MinFreq", "nan",
         [](AntennaData& a) {
             a.minFreq = a.minRange = NOT_A_NUMBER;
             a.maxRange = 30e6;
         }},
        {"MaxFreq", none,
         [](AntennaData& a) {
             a.maxFreq = a.maxRange = 0;
             a.minRange = 1e6;
         }},
        {"MaxFreq", "high",
         [](AntennaData& a) {
             a.maxFreq = a.maxRange = 0;
             a.minRange = 1e6;
         }},
        {"MaxFreq", "inf", [](AntennaData& a) { a.maxFreq = INF; }},
        {"MaxFreq", "nan",
         [](AntennaData& a) {
             a.maxFreq = a.maxRange = NOT_A_NUMBER;
             a.minRange = 1e6;
         }},
        {"PolarizationSupport", none, no(&AntennaData::polarizationSupport)},
        {"PolarizationSupport", "-1", no(&AntennaData::polarizationSupport)},
        {"PolarizationMode", none, nothing},
        {"PolarizationMode", "3", nothing}, // the device decides it
        {"PolarizationMode", "sideways", nothing},
        {"ActivePassiveSupport", none, no(&AntennaData::activePassiveSupport)},
        {"ActivePassiveSupport", "active", no(&AntennaData::activePassiveSupport)},
        {"CompassValue", none, number(&AntennaData::compassValue, 0)},
        {"CompassValue", "none", number(&AntennaData::compassValue, 0)},
        {"CompassValue", "-1", number(&AntennaData::compassValue, -1)},
        {"CompassValue", "nan", number(&AntennaData::compassValue, NOT_A_NUMBER)},
        {"ConverterTypeName", none, [](AntennaData& a) { a.converterTypeName.clear(); }},
        {"ConverterTypeName", "\"a\\tb\"", [](AntennaData& a) { a.converterTypeName = u"a\tb"_s; }},
    };
    QSet<QByteArray> keys;
    for (const Case& each : cases) {
        SCOPED_TRACE((each.key + '=' + each.text.value_or("(missing)")).toStdString());
        keys.insert(each.key);
        Section section = MakeWholeSection();
        if (each.text) {
            section[each.key] = *each.text;
        } else {
            section.remove(each.key);
        }
        settings.Write(FileWith("AntennaCount=1", {section}));
        AntennaDataList list;
        ASSERT_EQ(list.BuildAntennasFromCfg(Station()), 1);
        AntennaData expected = MakeWholeAntenna();
        each.change(expected);
        ExpectSame(*list.GetAntennaByIndex(0), expected);
    }
    EXPECT_EQ(keys.size(), 15);
}

TEST_F(AntennaDataListCfgTest, BuiltEntriesComeBehindThoseThatAreThere) {
    settings.Write(FileWith("AntennaCount=2", {MakeSection("B", 1, 9, 2, 8), MakeSection("C", 1, 9, 2, 8)}));
    AntennaDataList list = ListOf({{u"A"_s, 20, 30}});
    EXPECT_EQ(list.BuildAntennasFromCfg(Station()), 2);
    EXPECT_EQ(NamesOf(list), (QStringList{u"A"_s, u"B"_s, u"C"_s}));
    EXPECT_EQ(list.BuildAntennasFromCfg(Station()), 2);
    EXPECT_EQ(NamesOf(list), (QStringList{u"A"_s, u"B"_s, u"C"_s, u"B"_s, u"C"_s}));
}

TEST_F(AntennaDataListCfgTest, RangesAreMadeDisjointAfterBuilding) {
    settings.Write(
        FileWith("AntennaCount=2", {MakeSection("A", 1, 30, 10, 20), MakeSection("B", 1, 30, 20, 30)}));
    AntennaDataList list;
    EXPECT_EQ(list.BuildAntennasFromCfg(Station()), 2);
    EXPECT_EQ(RangesOf(list), u"10-20 20.000001-30"_s);
}

TEST_F(AntennaDataListCfgTest, WithoutTheStationNothingIsReadWrittenOrSaid) {
    AntennaDataList list = ListOf({{u"B"_s, 20, 30}, {u"A"_s, 10, 20}});
    EXPECT_EQ(list.BuildAntennasFromCfg(Station()), 0);
    EXPECT_EQ(NamesOf(list), (QStringList{u"B"_s, u"A"_s}));
    EXPECT_EQ(RangesOf(list), u"20-30 10-20"_s);

    EXPECT_FALSE(list.ReadAntennaSetupFromCfg(Station()));
    EXPECT_EQ(NamesOf(list), (QStringList{u"A"_s, u"B"_s})); // sorted all the same
    EXPECT_EQ(RangesOf(list), u"10-20 20-30"_s);             // and otherwise left alone

    EXPECT_TRUE(trace.lines.isEmpty());
    EXPECT_EQ(settings.CloseAndRead(), QString());
}

// --- reading the operator's choices again ---

TEST_F(AntennaDataListCfgTest, OperatorsChoicesAreAppliedAndNothingElse) {
    Section section = MakeWholeSection();
    section["Enabled"] = "false";
    section["MinFreq"] = "0.000"; // what the device says of itself counts more
    section["MaxFreq"] = "1.000";
    settings.Write(FileWith("AntennaCount=1", {section}));
    AntennaData antenna = MakeUnusualAntenna();
    antenna.name = u"PX122"_s;
    antenna.enabled = true;
    antenna.compassEnabled = false;
    AntennaDataList list;
    Append(list, antenna);
    EXPECT_TRUE(list.ReadAntennaSetupFromCfg(Station()));
    antenna.minRange = 2e6;
    antenna.maxRange = 25e6;
    antenna.enabled = false;
    antenna.compassEnabled = true;
    antenna.mechOffset = -3.5F;
    ExpectSame(*list.GetAntennaByIndex(0), antenna);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(AntennaDataListCfgTest, ChoicesThatCannotBeReadAreTheWholeCoverageDisabled) {
    struct Case {
        QByteArray minRange;
        QByteArray maxRange;
        QString ranges;
    };
    const Case cases[] = {{"2e6", "8e6", u"2-8"_s},     {"1e6", "9e6", u"1-9"_s},
                          {"0.9e6", "9.1e6", u"1-9"_s}, {"9.1e6", "0.9e6", u"1-9"_s},
                          {"low", "high", u"1-9"_s},    {"", "", u"1-9"_s},
                          {"nan", "nan", u"1-9"_s},     {"-inf", "inf", u"1-9"_s},
                          {"1e999", "1e999", u"1-9"_s}, {"8000000.000", "2e6", u"8-2"_s}};
    for (const Case& each : cases) {
        Section section{{"Name", "A"}, {"MinRange", each.minRange}, {"MaxRange", each.maxRange}};
        settings.Write(FileWith("AntennaCount=1", {section}));
        AntennaDataList list = ListOf({{u"A"_s, 1, 9}});
        list.GetAntennaByIndex(0)->compassEnabled = true;
        list.GetAntennaByIndex(0)->mechOffset = 5.0F;
        EXPECT_TRUE(list.ReadAntennaSetupFromCfg(Station()));
        EXPECT_EQ(RangesOf(list), each.ranges) << each.minRange.toStdString();
        EXPECT_FALSE(list.GetAntennaByIndex(0)->enabled);
        EXPECT_FALSE(list.GetAntennaByIndex(0)->compassEnabled);
        EXPECT_EQ(list.GetAntennaByIndex(0)->mechOffset, 0.0F);
    }
}

TEST_F(AntennaDataListCfgTest, SectionsAreSearchedByNameForwardOnly) {
    struct Case {
        const char* what;
        std::vector<QByteArray> sections; // names; each has the range 2-8 MHz
        QStringList applied;              // the entries, of A, B and C, that found theirs
    };
    const Case cases[] = {
        {"in the order of the list", {"A", "B", "C"}, {u"A"_s, u"B"_s, u"C"_s}},
        {"others between are passed over", {"X", "A", "Y", "B", "Z", "C"}, {u"A"_s, u"B"_s, u"C"_s}},
        {"one that was passed over is not found again", {"B", "A", "C"}, {u"A"_s}},
        {"the search for a missing one uses all sections up", {"B", "C"}, {}},
        {"the other way round", {"C", "B", "A"}, {u"A"_s}},
        {"one without a name ends the search", {"A", "", "B", "C"}, {u"A"_s}},
        {"also at the front", {"", "A", "B"}, {}},
        {"names are compared exactly", {"a", "A ", "B"}, {u"A"_s, u"B"_s}}, // blanks at the end are cut off
        {"no sections", {}, {}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        std::vector<Section> sections;
        for (const QByteArray& name : each.sections) {
            sections.push_back(MakeSection(name, 0, 100, 2, 8));
        }
        settings.Write(FileWith("AntennaCount=1", sections)); // the count is that of the build
        AntennaDataList list = ListOf({{u"C"_s, 1, 12}, {u"A"_s, 1, 10}, {u"B"_s, 1, 11}});
        EXPECT_TRUE(list.ReadAntennaSetupFromCfg(Station()));
        ASSERT_EQ(NamesOf(list), (QStringList{u"A"_s, u"B"_s, u"C"_s}));
        QStringList applied;
        for (const auto& antenna : list.GetAntennas()) {
            if (antenna->maxRange == 8e6) {
                applied.append(antenna->name);
            }
        }
        EXPECT_EQ(applied, each.applied);
    }
}

TEST_F(AntennaDataListCfgTest, EntriesOfOneNameTakeTheirSectionsInOrder) {
    settings.Write(
        FileWith("AntennaCount=2", {MakeSection("A", 1, 9, 2, 3), MakeSection("A", 20, 30, 21, 22)}));
    AntennaDataList list = ListOf({{u"A"_s, 20, 30}, {u"A"_s, 1, 9}});
    EXPECT_TRUE(list.ReadAntennaSetupFromCfg(Station()));
    EXPECT_EQ(RangesOf(list), u"2-3 21-22"_s);
}

TEST_F(AntennaDataListCfgTest, RangesAreMadeDisjointEvenWhenTheSearchEndsEarly) {
    settings.Write(FileWith("AntennaCount=1", {MakeSection("A", 10, 20, 10, 15)}));
    AntennaDataList list = ListOf({{u"A"_s, 10, 20}, {u"B"_s, 15, 30}, {u"C"_s, 30, 40}});
    EXPECT_TRUE(list.ReadAntennaSetupFromCfg(Station()));
    EXPECT_EQ(RangesOf(list), u"10-15 15.000001-30 30.000001-40"_s);
}

TEST_F(AntennaDataListCfgTest, RangeThatBeginsAtTheEndOfTheCoverageBeforeBeginsOneHertzHigher) {
    struct Case {
        const char* what;
        double minRangeOfA;
        double maxRangeOfA;
        double minRangeOfB;
        QString ranges;
    };
    const Case cases[] = {
        {"at the end of the coverage", 1, 15, 20, u"1-15 20.000001-40"_s},
        {"the end of the range does not count", 1, 15, 15, u"1-15 15-40"_s},
        {"raised once only", 1, 20, 20, u"1-20 20.000001-40"_s},
        {"elsewhere", 1, 20, 21, u"1-20 21-40"_s},
    };
    for (const Case& each : cases) {
        // Disabled, so that the ranges themselves are not compared with one another.
        Section a = MakeSection("A", 1, 20, each.minRangeOfA, each.maxRangeOfA);
        Section b = MakeSection("B", 10, 40, each.minRangeOfB, 40);
        a["Enabled"] = "false";
        settings.Write(FileWith("AntennaCount=2", {a, b}));
        AntennaDataList list = ListOf({{u"A"_s, 1, 20}, {u"B"_s, 10, 40}});
        EXPECT_TRUE(list.ReadAntennaSetupFromCfg(Station()));
        EXPECT_EQ(RangesOf(list), each.ranges) << each.what;
    }
}

TEST_F(AntennaDataListCfgTest, LowestFrequencyTakenForABadOneIsRaisedTheSame) {
    settings.Write(
        FileWith("AntennaCount=2", {MakeSection("A", 1, 20, 1, 15), MakeSection("B", 20, 40, 1, 30)}));
    AntennaDataList list = ListOf({{u"A"_s, 1, 20}, {u"B"_s, 20, 40}});
    EXPECT_TRUE(list.ReadAntennaSetupFromCfg(Station()));
    EXPECT_EQ(RangesOf(list), u"1-15 20.000001-30"_s);
}

TEST_F(AntennaDataListCfgTest, BeforeTheFirstEntryTheCoverageEndsAtMinusOneHertz) {
    settings.Write(FileWith("AntennaCount=1", {{{"Name", "A"}, {"MinRange", "-1.000"}}}));
    AntennaDataList list;
    Append(list, MakeAntenna(u"A"_s, {}, -5.0, 5.0));
    EXPECT_TRUE(list.ReadAntennaSetupFromCfg(Station()));
    EXPECT_EQ(list.GetAntennaByIndex(0)->minRange, 0.0);
}

TEST_F(AntennaDataListCfgTest, RangesStayWhenTheyAreWrittenAndReadAgainAndAgain) {
    AntennaDataList list = ListOf({{u"A"_s, 10, 20}, {u"B"_s, 20, 30}, {u"C"_s, 25, 40}});
    list.MakeAntennaRangesDisjoint();
    const QString ranges = u"10-20 20.000001-30 25-40"_s;
    for (int run = 0; run < 3; ++run) {
        list.WriteAntennaSetupToCfg(Station());
        settings.Reopen();
        list.Clear();
        EXPECT_EQ(list.BuildAntennasFromCfg(Station()), 3);
        EXPECT_EQ(RangesOf(list), ranges);
        EXPECT_TRUE(list.ReadAntennaSetupFromCfg(Station()));
        EXPECT_EQ(RangesOf(list), ranges);
    }
}

TEST_F(AntennaDataListCfgTest, EmptyListIsReadWithoutEffect) {
    settings.Write(FileWith("AntennaCount=1", {MakeWholeSection()}));
    AntennaDataList list;
    EXPECT_TRUE(list.ReadAntennaSetupFromCfg(Station()));
    EXPECT_TRUE(list.GetAntennas().empty());
}

} // namespace

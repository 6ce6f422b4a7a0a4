#include "zancommon/zansetupdata.h"

#include "support/devicetree.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/storedsettings.h"
#include "support/tracelines.h"
#include "support/treevalues.h"
#include "support/valuesamples.h"
#include "valueframework/valueaccess.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>

#include <algorithm>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using ZANPlatform::GetOrCreateValue;

namespace {

struct Row {
    const char16_t* key;
    const ValueDescriptor* descriptor;
    const char16_t* alternativeName;
    const char16_t* content; // another one than the default, as the text of the value
    const char16_t* stored;  // the same in the settings
};

const Row ROWS[] = {
    {u"LastModification", &g_vdCfgModifyTime, u"", u"2026-11-20 13:14:15", u"2026-11-20 13:14:15"},
    {u"Message4CalError", &g_vdKnownCalErrorMessage, u"", u"a;b,\"c\" \\n %1\nä", u"a;b,\"c\" \\n %1\nä"},
    {u"Message4Startup", &g_vdKnownDevErrorMessage, u"", u"  true  ", u"  true  "},
    {u"UseJobSettings4FFM", nullptr, u"USEJOBSETTINGSFORFFM", u"1", u"true"},
    {u"SynFastMode", &g_vdSynFastMode, u"", u"1", u"true"},
    {u"LocationLatitude", &g_vdPosLatitude, u"", u"-48.137154", u"-48.137154"},
    {u"LocationLongitude", &g_vdPosLongitude, u"", u"179.999999", u"179.999999"},
    {u"LocationChoice", &g_vdPosSource, u"", u"Manual", u"2"},
    {u"PreAmplifierHf", &g_vdPreAmplifierHf, u"", u"1", u"true"},
    {u"PreAmplifierVuhf", &g_vdPreAmplifierVuhf, u"", u"1", u"true"},
    {u"GainControlMode", &g_vdGainControlMode, u"", u"MGC", u"1"},
    {u"AGCDecay", &g_vdAGCDecay, u"", u"-7", u"-7"},
    {u"MGCLevel", &g_vdMGCLevel, u"", u"-0.1", u"-0.1"},
    {u"AntennaActive", &g_vdAntennaActive, u"", u"1", u"true"},
    {u"AntennaPolarization", &g_vdPolarisation, u"", u"Horizontal", u"Horizontal"},
    {u"GPSSynchronization", &g_vdPosCalculation, u"", u"1", u"true"},
    {u"CompassChoice", &g_vdHeaSource, u"", u"GPS", u"2"},
    {u"DFMechOffset", &g_vdHeaOffset, u"", u"-3600", u"-3600"},
    {u"Declination", &g_vdDeclination, u"", u"1800", u"1800"},
    {u"PitchThreshold", &g_vdPitchThreshold, u"", u"89.9", u"89.9"},
    {u"RollThreshold", &g_vdRollThreshold, u"", u"-180", u"-180"},
    {u"CalibrationSchedule", nullptr, u"CalibrationSchedule", u"daily;03:00", u"daily;03:00"},
};

constexpr const char* DIRECTORY_VARIABLE = "ZAN_SETUP_DIRECTORY";

QString Text(const char16_t* text) {
    return QString::fromUtf16(text);
}

QString Station() {
    return u"10.0.0.7:5000"_s;
}

/// The row with a key.
const Row& RowOf(QStringView key) {
    return *std::ranges::find_if(ROWS, [key](const Row& row) { return key == row.key; });
}

QString PathOf(const Row& row, const QString& base = u"/ZANServer"_s) {
    return base + (row.descriptor ? row.descriptor->PathName() : u'/' + Text(row.alternativeName));
}

ValueBase* ValueOf(const Row& row, const QString& base = u"/ZANServer"_s) {
    return Tree::Instance()->GetValue(PathOf(row, base));
}

/// The snapshot of a row.
const ValueBase* SnapshotOf(QStringView key) {
    const auto entries = ZANSetupData::GetEntries();
    return std::ranges::find(entries, key, &ZANSetupData::DataEntry::key)->value.get();
}

/// Makes the values of all rows with their defaults below a node.
void MakeValues(const QString& base) {
    for (const Row& row : ROWS) {
        if (row.descriptor) {
            row.descriptor->CreateBelow(base, nullptr);
        }
    }
    GetOrCreateValue<ValueBool>(PathOf(RowOf(u"UseJobSettings4FFM"), base));
    GetOrCreateValue<ValueString>(PathOf(RowOf(u"CalibrationSchedule"), base));
}

void SetContents(const QString& base = u"/ZANServer"_s) {
    for (const Row& row : ROWS) {
        ASSERT_TRUE(ValueOf(row, base)->SetStringValue(Text(row.content), nullptr));
    }
}

class ZANSetupDataTest : public testing::Test {
protected:
    ZANSetupDataTest() { MakeValues(u"/ZANServer"_s); }

    /// A key of the one station.
    static QString Stored(const QString& key) {
        return CfgCenter::GetAppCfg(ICfg::View::Stations)
            .GetString(u"ZANStations/ZANStation0/"_s + key, u"(none)"_s);
    }
    /// A settings file with the one station and these lines.
    static QByteArray FileWith(const QByteArray& lines) {
        return "[ZANStations]\nCount=1\n\n[ZANStations/ZANStation0]\nDeviceAddress=10.0.0.7:5000\n" + lines;
    }
    static void ExpectSnapshots(bool areThere) {
        for (const ZANSetupData::DataEntry& entry : ZANSetupData::GetEntries()) {
            EXPECT_EQ(entry.value != nullptr, areThere) << entry.key.toStdString();
        }
    }
    static QString SnapshotText(QStringView key) {
        const ValueBase* const snapshot = SnapshotOf(key);
        return snapshot ? snapshot->GetStringValue() : u"(none)"_s;
    }

    DeviceTree device;
    StoredSettings settings;
    TraceLines trace;
    ZANSetupData data{u"Setup"_s, u"/ZANServer"_s};
};

// --- the table ---

TEST_F(ZANSetupDataTest, TableBindsEachKeyToItsValue) {
    const auto entries = ZANSetupData::GetEntries();
    ASSERT_EQ(entries.size(), 22U);
    ASSERT_EQ(std::size(ROWS), 22U);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(entries[i].key, Text(ROWS[i].key));
        EXPECT_EQ(entries[i].descriptor, ROWS[i].descriptor);
        EXPECT_EQ(entries[i].alternativeName, Text(ROWS[i].alternativeName));
    }
    EXPECT_TRUE((entries.data() + entries.size())->key.isEmpty()) << "the row that closes the table";
    ExpectSnapshots(false);
}

// --- the way from the tree to the settings and back ---

TEST_F(ZANSetupDataTest, EachValueIsStoredUnderItsKey) {
    SetContents();
    data.ReadFromValueTree({});
    data.WriteToCfg(Station());
    for (const Row& row : ROWS) {
        EXPECT_EQ(Stored(Text(row.key)), Text(row.stored)) << Text(row.key).toStdString();
    }
    EXPECT_EQ(Stored(u"DeviceAddress"_s), Station());
    EXPECT_TRUE(trace.lines.isEmpty());
}

// Runs in the process that the next test starts.
TEST_F(ZANSetupDataTest, DISABLED_SettingsOfTheRunBeforeArriveInTheTree) {
    ASSERT_TRUE(CfgCenter::SetConfigDirectory(qEnvironmentVariable(DIRECTORY_VARIABLE)));
    for (const Row& row : ROWS) {
        ASSERT_NE(ValueOf(row)->GetStringValue(), Text(row.content));
    }
    data.ReadFromValueTree({});
    data.ReadFromCfg(Station());
    data.WriteToValueTree(nullptr, {});
    for (const Row& row : ROWS) {
        EXPECT_EQ(ValueOf(row)->GetStringValue(), Text(row.content)) << Text(row.key).toStdString();
    }
}

TEST_F(ZANSetupDataTest, NextRunOfTheProgramFindsAllSettings) {
    const QTemporaryDir directory;
    ASSERT_TRUE(CfgCenter::SetConfigDirectory(directory.path()));
    SetContents();
    data.ReadFromValueTree({});
    data.WriteToCfg(Station());
    ASSERT_TRUE(CfgCenter::Close());

    QProcess nextRun;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(DIRECTORY_VARIABLE), directory.path());
    nextRun.setProcessEnvironment(environment);
    nextRun.setProcessChannelMode(QProcess::MergedChannels);
    nextRun.start(QCoreApplication::applicationFilePath(),
                  {u"--gtest_filter=ZANSetupDataTest.DISABLED_SettingsOfTheRunBeforeArriveInTheTree"_s,
                   u"--gtest_also_run_disabled_tests"_s});
    ASSERT_TRUE(nextRun.waitForFinished(60000));
    const QByteArray output = nextRun.readAll();
    EXPECT_EQ(nextRun.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(nextRun.exitCode(), 0) << output.toStdString();
    EXPECT_TRUE(output.contains("[  PASSED  ] 1 test.")) << output.toStdString();
}

TEST_F(ZANSetupDataTest, StandardTreeHoldsEveryRowBelowOneBasePath) {
    const auto makeStandardTree = [] {
        Tree::Instance()->Clear();
        CreateBranch(EBranch::SERVER, u"/ZANServer"_s);
    };
    makeStandardTree();
    data.ReadFromValueTree({});
    ExpectSnapshots(true);
    SetContents();
    data.ReadFromValueTree({});
    data.WriteToCfg(Station());
    settings.Reopen();
    makeStandardTree();
    data.ReadFromValueTree({});
    data.ReadFromCfg(Station());
    data.WriteToValueTree(nullptr, {});
    for (const Row& row : ROWS) {
        EXPECT_EQ(ValueOf(row)->GetStringValue(), Text(row.content)) << Text(row.key).toStdString();
    }
}

TEST_F(ZANSetupDataTest, BasePathAndPathMayEndWithASlash) {
    ZANSetupData slashed(u"Setup"_s, u"/ZANServer/"_s);
    slashed.ReadFromValueTree({});
    ExpectSnapshots(true);
    MakeValues(u"/Elsewhere"_s);
    SetContents(u"/Elsewhere"_s);
    slashed.ReadFromValueTree(u"/Elsewhere/"_s);
    slashed.WriteToValueTree(nullptr, u"/ZANServer/"_s);
    for (const Row& row : ROWS) {
        EXPECT_EQ(ValueOf(row)->GetStringValue(), Text(row.content)) << Text(row.key).toStdString();
    }
}

TEST_F(ZANSetupDataTest, ValueOfAnyTypeSurvivesInEveryRow) {
    const auto fillTree = [](const auto& make) {
        for (const Row& row : ROWS) {
            Tree::Instance()->Remove(ValueOf(row));
            ASSERT_TRUE(InsertInTree(PathOf(row), make()));
        }
    };
    for (const ValueSample& sample : ValueSamples()) {
        SCOPED_TRACE(sample.typeName);
        fillTree(sample.make);
        data.ReadFromValueTree({});
        data.WriteToCfg(Station());
        settings.Reopen();
        fillTree(sample.makeOther);
        data.ReadFromValueTree({});
        data.ReadFromCfg(Station());
        data.WriteToValueTree(nullptr, {});
        const std::unique_ptr<ValueBase> expected = sample.make();
        for (const Row& row : ROWS) {
            EXPECT_TRUE(ValueOf(row)->Compare(expected.get()))
                << ValueOf(row)->GetStringValue().toStdString();
        }
    }
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(ZANSetupDataTest, SelectionIsStoredByItsKeyAlone) {
    auto* const choice = DeviceTree::ServerValue<ValueSelection>(g_vdPosSource);
    choice->Clear(nullptr);
    choice->AddItem({u"same"_s, 0, -5}, nullptr);
    choice->AddItem({u"same"_s, 0, 1L << 40}, nullptr);
    choice->SetCurrentIndex(1, nullptr);
    data.ReadFromValueTree({});
    data.WriteToCfg(Station());
    EXPECT_EQ(Stored(u"LocationChoice"_s), QString::number(1L << 40));
    choice->SetCurrentIndex(0, nullptr);
    data.ReadFromValueTree({});
    data.ReadFromCfg(Station());
    EXPECT_EQ(dynamic_cast<const ValueSelection&>(*SnapshotOf(u"LocationChoice")).GetCurrentKey(), 1L << 40);
}

TEST_F(ZANSetupDataTest, KeyThatIsTheCurrentOneAlreadyLeavesTheChoiceAlone) {
    auto* const choice = DeviceTree::ServerValue<ValueSelection>(g_vdPosSource);
    choice->Clear(nullptr);
    choice->AddItem({u"first"_s, 0, 5}, nullptr);
    choice->AddItem({u"second"_s, 0, 5}, nullptr);
    choice->SetCurrentIndex(1, nullptr);
    settings.Write(FileWith("LocationChoice=5\n"));
    data.ReadFromValueTree({});
    data.ReadFromCfg(Station());
    EXPECT_EQ(SnapshotText(u"LocationChoice"), u"second"_s);
}

TEST_F(ZANSetupDataTest, SelectionWithoutItemsAndWithoutASettingIsNotTraced) {
    DeviceTree::ServerValue<ValueSelection>(g_vdPosSource)->Clear(nullptr);
    settings.Write(FileWith(""));
    data.ReadFromValueTree({});
    data.ReadFromCfg(Station());
    EXPECT_TRUE(trace.lines.isEmpty()) << trace.lines.constFirst().toStdString();
}

// --- snapshots ---

TEST_F(ZANSetupDataTest, SnapshotIsACopyUntilTheTreeIsReadAgain) {
    auto* const polarisation = DeviceTree::ServerValue<ValueString>(g_vdPolarisation);
    data.ReadFromValueTree({});
    ExpectSnapshots(true);
    const ValueBase* const snapshot = SnapshotOf(u"AntennaPolarization");
    EXPECT_NE(snapshot, polarisation);
    EXPECT_EQ(snapshot->GetType(), polarisation->GetType());
    polarisation->SetValue(u"Horizontal"_s, nullptr);
    EXPECT_EQ(SnapshotText(u"AntennaPolarization"), u"Vertical"_s);
    data.ReadFromValueTree({});
    EXPECT_EQ(SnapshotText(u"AntennaPolarization"), u"Horizontal"_s);
    EXPECT_EQ(SnapshotOf(u"AntennaPolarization"), snapshot) << "it takes the value over";
}

TEST_F(ZANSetupDataTest, SnapshotFollowsAValueThatHasBecomeAnother) {
    data.ReadFromValueTree({});
    Tree::Instance()->Remove(ValueOf(RowOf(u"LocationLatitude")));
    GetOrCreateValue<ValueString>(PathOf(RowOf(u"LocationLatitude")))->SetValue(u"north"_s, nullptr);
    // Of the same type, but outside the range that the snapshot knows
    auto* const offset = DeviceTree::ServerValue<ValueNumericInt>(g_vdHeaOffset);
    offset->SetMinMax(-10000, 10000, 1, nullptr);
    offset->SetValue(10000, nullptr);
    data.ReadFromValueTree({});
    EXPECT_EQ(SnapshotText(u"LocationLatitude"), u"north"_s);
    EXPECT_EQ(SnapshotText(u"DFMechOffset"), u"10000"_s);
    offset->SetValue(0, nullptr);
    data.WriteToValueTree(nullptr, {});
    EXPECT_EQ(offset->GetValue(), 10000);
}

TEST_F(ZANSetupDataTest, SnapshotsAreSharedAndGoWithAnyObject) {
    ZANSetupData other(u"Other"_s, u"/Nowhere"_s);
    SetContents();
    data.ReadFromValueTree({});
    other.WriteToCfg(Station());
    EXPECT_EQ(Stored(u"AGCDecay"_s), u"-7"_s);

    for (int way = 0; way < 2; ++way) {
        data.ReadFromValueTree({});
        ExpectSnapshots(true);
        if (way == 0) {
            const ZANSetupData brief(u"Brief"_s, {});
        } else {
            const ZANSetupData copy = data;
        }
        ExpectSnapshots(false);
    }
    settings.Write(FileWith({}));
    data.WriteToCfg(Station());
    EXPECT_EQ(Stored(u"AGCDecay"_s), u"(none)"_s);
}

TEST_F(ZANSetupDataTest, CopyKeepsTheBasePath) {
    auto copy = std::make_unique<ZANSetupData>(data);
    ZANSetupData assigned(u"Other"_s, u"/Nowhere"_s);
    assigned = *copy;
    for (ZANSetupData* each : {copy.get(), &assigned}) {
        each->ReadFromValueTree({});
        ExpectSnapshots(true);
        each->ReadFromValueTree(u"/Nowhere"_s);
        ExpectSnapshots(false);
    }
    static_assert(std::has_virtual_destructor_v<ZANSetupData>);
}

// --- paths ---

TEST_F(ZANSetupDataTest, PathIsInFrontOfTheBasePath) {
    MakeValues(u"/DEVICES/Second"_s);
    SetContents(u"/DEVICES/Second"_s);
    data.ReadFromValueTree(u"/DEVICES/Second"_s);
    data.WriteToValueTree(nullptr, {});
    for (const Row& row : ROWS) {
        EXPECT_EQ(ValueOf(row)->GetStringValue(), Text(row.content));
    }
    data.ReadFromValueTree({});
    for (const Row& row : ROWS) {
        Tree::Instance()->Remove(ValueOf(row, u"/DEVICES/Second"_s));
    }
    MakeValues(u"/DEVICES/Second"_s);
    data.WriteToValueTree(nullptr, u"/DEVICES/Second"_s);
    for (const Row& row : ROWS) {
        EXPECT_EQ(ValueOf(row, u"/DEVICES/Second"_s)->GetStringValue(), Text(row.content));
    }
}

TEST_F(ZANSetupDataTest, WithoutAnyPathNothingIsFound) {
    MakeValues({}); // right below the root
    SetContents({});
    ZANSetupData pathless(u"Setup"_s, {});
    data.ReadFromValueTree({});
    pathless.WriteToValueTree(nullptr, {});
    for (const Row& row : ROWS) {
        EXPECT_EQ(ValueOf(row, {})->GetStringValue(), Text(row.content));
    }
    pathless.ReadFromValueTree({});
    ExpectSnapshots(false);
}

// --- what is missing ---

TEST_F(ZANSetupDataTest, ValueThatIsMissingHasNoSnapshotAndItsSettingStays) {
    for (const Row& row : ROWS) {
        SCOPED_TRACE(Text(row.key).toStdString());
        MakeValues(u"/ZANServer"_s);
        SetContents();
        data.ReadFromValueTree({});
        settings.Write(FileWith(Text(row.key).toUtf8() + "=by hand\n"));
        Tree::Instance()->Remove(ValueOf(row));
        data.ReadFromValueTree({});
        for (const Row& other : ROWS) {
            EXPECT_EQ(SnapshotOf(other.key) != nullptr, &other != &row);
        }
        data.WriteToCfg(Station());
        data.ReadFromCfg(Station());
        EXPECT_EQ(SnapshotOf(row.key), nullptr);
        for (const Row& other : ROWS) {
            EXPECT_EQ(Stored(Text(other.key)), &other == &row ? u"by hand"_s : Text(other.stored));
        }
        data.WriteToValueTree(nullptr, {});
        EXPECT_FALSE(ValueOf(row));
    }
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(ZANSetupDataTest, ValueThatHasGoneSinceItWasReadIsSkipped) {
    SetContents();
    data.ReadFromValueTree({});
    Tree::Instance()->Clear();
    data.WriteToValueTree(nullptr, {});
    EXPECT_EQ(Tree::Instance()->GetValueCount(), 0);
    MakeValues(u"/ZANServer"_s);
    Tree::Instance()->Remove(ValueOf(RowOf(u"AGCDecay")));
    data.WriteToValueTree(nullptr, {});
    EXPECT_FALSE(ValueOf(RowOf(u"AGCDecay")));
    EXPECT_EQ(ValueOf(RowOf(u"MGCLevel"))->GetStringValue(), u"-0.1"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(ZANSetupDataTest, UnknownStationIsNotReadAndNotMade) {
    settings.Write(FileWith("AGCDecay=5\n"));
    const QString before = settings.Read();
    data.ReadFromValueTree({});
    data.ReadFromCfg(u"10.0.0.8:5000"_s);
    data.ReadFromCfg({});
    EXPECT_EQ(SnapshotText(u"AGCDecay"), u"0"_s);
    EXPECT_EQ(settings.CloseAndRead(), before);
}

TEST_F(ZANSetupDataTest, StationIsMadeWhenItIsWritten) {
    Tree::Instance()->Clear();
    data.WriteToCfg({});
    EXPECT_EQ(settings.CloseAndRead(), uR"([ZANStations]
Count=1

[ZANStations/ZANStation0]
DeviceAddress=Default
HwCheckRequirements=false
HwOptionalComponents=
HwRequiredComponents=
HwRequirementsEditable=false
)"_s);
}

TEST_F(ZANSetupDataTest, KeyThatIsMissingKeepsTheSnapshotAndIsNotWritten) {
    const QByteArray text = FileWith("AGCDecay=5\n");
    settings.Write(text);
    SetContents();
    data.ReadFromValueTree({});
    data.ReadFromCfg(Station());
    for (const Row& row : ROWS) {
        EXPECT_EQ(SnapshotText(row.key), Text(row.key) == u"AGCDecay"_s ? u"5"_s : Text(row.content));
    }
    EXPECT_EQ(settings.CloseAndRead(), QString::fromUtf8(text));
}

TEST_F(ZANSetupDataTest, SettingThatIsNoContentOfTheValueKeepsTheSnapshot) {
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"LocationChoice", "Manual"}, {u"LocationChoice", "77"},
        {u"LocationChoice", ""},       {u"LocationChoice", "9223372036854775808"},
        {u"CompassChoice", "-1"},      {u"GainControlMode", "1.0"},
        {u"SynFastMode", "perhaps"},   {u"SynFastMode", "2"},
        {u"UseJobSettings4FFM", ""},   {u"LocationLatitude", "north"},
        {u"LocationLatitude", "90.1"}, {u"LocationLatitude", "nan"},
        {u"LocationLatitude", ""},     {u"LocationLongitude", "inf"},
        {u"AGCDecay", "2147483648"},   {u"AGCDecay", "1.5"},
        {u"DFMechOffset", "3601"},     {u"Declination", "-1801"},
    };
    SetContents();
    for (const auto& [key, text] : cases) {
        settings.Write(FileWith(Text(key).toUtf8() + '=' + text + '\n'));
        data.ReadFromValueTree({});
        trace.lines.clear();
        data.ReadFromCfg(Station());
        EXPECT_EQ(SnapshotText(key), Text(RowOf(key).content)) << Text(key).toStdString() << '=' << text;
        EXPECT_FALSE(trace.lines.filter(Text(key)).isEmpty()) << "it is traced";
    }
}

// --- observers ---

TEST_F(ZANSetupDataTest, OriginatorIsNotNotifiedOfWhatItWrites) {
    SetContents();
    data.ReadFromValueTree({});
    for (const Row& row : ROWS) {
        Tree::Instance()->Remove(ValueOf(row));
    }
    MakeValues(u"/ZANServer"_s);
    CodeObserver originator;
    CodeObserver other;
    for (const Row& row : ROWS) {
        ValueOf(row)->AddObserver(&originator);
        ValueOf(row)->AddObserver(&other);
    }
    data.WriteToValueTree(&originator, {});
    EXPECT_EQ(other.codes, std::vector<TChangeCode>(std::size(ROWS), TChangeCode::Changed));
    data.WriteToValueTree(&originator, {}); // changes nothing
    EXPECT_EQ(other.codes.size(), std::size(ROWS));
    EXPECT_TRUE(originator.codes.empty());
}

TEST_F(ZANSetupDataTest, ReadingAndStoringNotifyNobody) {
    SetContents();
    CodeObserver observer;
    for (const Row& row : ROWS) {
        ValueOf(row)->AddObserver(&observer);
    }
    data.ReadFromValueTree({});
    data.WriteToCfg(Station());
    settings.Write(FileWith("AGCDecay=5\nSynFastMode=false\nLocationChoice=1\n"));
    data.ReadFromCfg(Station());
    EXPECT_EQ(SnapshotText(u"AGCDecay"), u"5"_s);
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(ZANSetupDataTest, ObserverMayDropTheSnapshotsAndTheTreeWhileTheyAreWritten) {
    SetContents();
    data.ReadFromValueTree({});
    ValueOf(RowOf(u"Message4Startup"))->SetStringValue(u"old"_s, nullptr);
    FunctionObserver dropper([](Observable*, TChangeCode code) {
        if (code == TChangeCode::Changed) {
            const ZANSetupData brief(u"Brief"_s, {});
            Tree::Instance()->Clear();
        }
    });
    ValueOf(RowOf(u"Message4Startup"))->AddObserver(&dropper);
    data.WriteToValueTree(nullptr, {});
    ExpectSnapshots(false);
    EXPECT_EQ(Tree::Instance()->GetValueCount(), 0);
}

// --- hardware requirements ---

TEST_F(ZANSetupDataTest, HardwareRequirementsAreStoredAlong) {
    DeviceTree::ServerValue<ValueString>(g_vdDevRequiredComponents)->SetValue(u"B;;A"_s, nullptr);
    DeviceTree::ServerValue<ValueString>(g_vdDevOptionalComponents)->SetValue(u"C"_s, nullptr);
    DeviceTree::ServerValue<ValueBool>(g_vdDevCheckRequirements)->SetValue(true, nullptr);
    ZANSetupData(u"Setup"_s, u"/Nowhere"_s).WriteToCfg(Station()); // whatever the base path
    EXPECT_EQ(Stored(u"HwRequiredComponents"_s), u"A;B"_s);
    EXPECT_EQ(Stored(u"HwOptionalComponents"_s), u"C"_s);
    EXPECT_EQ(Stored(u"HwCheckRequirements"_s), u"true"_s);
    EXPECT_EQ(Stored(u"HwRequirementsEditable"_s), u"false"_s);
}

// --- trace ---

TEST_F(ZANSetupDataTest, TableIsTracedRowByRow) {
    SetContents();
    data.ReadFromValueTree({});
    Tree::Instance()->Remove(ValueOf(RowOf(u"LocationLatitude")));
    data.ReadFromValueTree({});
    data.PrintSetupTrace();
    ASSERT_EQ(trace.lines.size(), 23);
    const auto messageOf = [](const QString& line) { return line.sliced(line.indexOf(u"): "_s) + 3); };
    EXPECT_TRUE(trace.lines[0].startsWith(u"devicecontrol\\directionfinder\\zancommon\\zansetupdata("_s));
    EXPECT_EQ(messageOf(trace.lines[0]), QString::asprintf("%-30s %-30s %s", "KEY", "PATH", "VALUE"));
    EXPECT_EQ(messageOf(trace.lines[4]),
              QString::asprintf("%-30s %-30s %s", "UseJobSettings4FFM", "/USEJOBSETTINGSFORFFM", "1"));
    EXPECT_EQ(messageOf(trace.lines[6]),
              QString::asprintf("%-30s %-30s %s", "LocationLatitude", "/Res/PosR/PosLatitude", "NULL"));
    EXPECT_EQ(messageOf(trace.lines[11]),
              QString::asprintf("%-30s %-30s %s", "GainControlMode", "/Par/Rx/GainControlMode", "MGC"));
    for (std::size_t i = 0; i < std::size(ROWS); ++i) {
        const QString message = messageOf(trace.lines[static_cast<qsizetype>(i) + 1]);
        EXPECT_EQ(message.first(30).trimmed(), Text(ROWS[i].key));
        EXPECT_TRUE(message.contains(PathOf(ROWS[i], {})));
    }
}

TEST_F(ZANSetupDataTest, NothingIsTracedWhenTheBitIsOff) {
    data.ReadFromValueTree({});
    ErrorHandler::Instance().SetTraceMask(~TraceBit::INFORMATION);
    data.PrintSetupTrace();
    EXPECT_TRUE(trace.lines.isEmpty());
}

} // namespace

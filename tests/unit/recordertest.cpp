#include "zanserver/recorder.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/eventloop.h"
#include "support/fulldisk.h"
#include "support/printing.h"
#include "support/recordings.h"
#include "support/storedsettings.h"
#include "valueframework/tree.h"
#include "zancommon/recordingreader.h"
#include "zancommon/zanpath.h"
#include "zanserver/publish.h"
#include "zanserver/station.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using namespace StdDeviceDefinition;
using KvZANCommon::RecordedBearing;
using KvZANCommon::RecordingReader;

namespace {

const QByteArray HEADER = RECORDING_HEADER.chopped(1) + ",mode,emitter,position_time_ms\n";
const QByteArray ROW = "1000,121500000,71.5,,90,,,,,,,,3,,\n";

/// The unit of the size is a byte in these tests, so that a file holds a few rows.
constexpr qint64 BYTE = 1;

template <class T>
T& ServerValue(const ValueDescriptor& descriptor) {
    return *Tree::Instance()->Find<T>(ZANPath::Server(descriptor));
}

/// A block of one usable bearing.
BearingBlock MakeBlock(quint64 time = 1000) {
    BearingBlock block;
    block.time = time;
    block.status.frequency = 121.5e6;
    Bearing bearing;
    bearing.azimuth = 715;
    bearing.quality = 90;
    block.bearings = {bearing};
    return block;
}

void Write(const QString& name, const QByteArray& content) {
    QFile file(name);
    ASSERT_TRUE(file.open(QFile::WriteOnly) && file.write(content) == content.size());
}

class RecorderTest : public testing::Test {
protected:
    RecorderTest() {
        CreateBranch(EBranch::SERVER, ZANPath::SERVER.toString());
        for (const ValueDescriptor* each : {&g_vdTrueHeading, &g_vdPitch, &g_vdRoll, &g_vdAltitude,
                                            &g_vdPosLatitude, &g_vdPosLongitude, &g_vdPosLastUpdate}) {
            Tree::Instance()->GetValue(ZANPath::Server(*each))->SetState(TValueState::NotMeasured, nullptr);
        }
    }

    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }
    /// A recorder to a file, with its size in bytes and the number of full files that are kept.
    Recorder& Make(int size = 100000, int count = 10, int stepBackMs = 0,
                   Recorder::Start start = Recorder::Start::AsKept) {
        ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
        cfg.SetBool(u"Recorder/Enabled"_s, true);
        cfg.SetString(u"Recorder/File"_s, Path(u"flight.csv"_s));
        cfg.SetInt(u"Recorder/FileSize"_s, size);
        cfg.SetInt(u"Recorder/FileCount"_s, count);
        constexpr int AT_ONCE_MS = 1;
        m_recorder.emplace(GetStationFiles(), start, BYTE, AT_ONCE_MS, AT_ONCE_MS, stepBackMs);
        QObject::connect(&*m_recorder, &Recorder::Failed, &*m_recorder,
                         [this](const QString& text) { m_failures.append(text); });
        QObject::connect(&*m_recorder, &Recorder::Recovered, &*m_recorder, [this] { ++m_recoveries; });
        return *m_recorder;
    }
    void Take(const BearingBlock& block) {
        std::vector<BearingResult> results;
        for (const Bearing& bearing : block.bearings) {
            results.emplace_back();
            results.back().SetFrequency(block.status.frequency);
            results.back().SetAzimuth(bearing.azimuth);
        }
        m_recorder->Take(block, results);
    }
    [[nodiscard]] QByteArray Contents(const QString& name = u"flight.csv"_s) const {
        QFile file(Path(name));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    [[nodiscard]] StationFiles GetStationFiles() const {
        return {m_settings.GetDirectory(), u"replay"_s, m_replayed};
    }
    [[nodiscard]] QStringList Files() const {
        return QDir(m_directory.path()).entryList({u"flight*"_s}, QDir::Files);
    }
    /// Switches the recorder off and on again.
    static void SwitchOffAndOn() {
        ServerValue<ValueBool>(g_vdRecEnabled).SetValue(false);
        ServerValue<ValueBool>(g_vdRecEnabled).SetValue(true);
    }
    /// Some numbered recordings.
    void WriteNumbered(int count) const {
        for (int i = 1; i <= count; ++i) {
            Write(Path(u"flight.00000%1.csv"_s.arg(i)), HEADER + ROW);
        }
    }

    StoredSettings m_settings;
    QString m_replayed; // the recording; empty: none
    QTemporaryDir m_directory;
    std::optional<Recorder> m_recorder;
    QStringList m_failures;
    int m_recoveries = 0;
};

} // namespace

TEST_F(RecorderTest, FileThatTheOutputReplacesIsNotRecordedTo) {
    ServerValue<ValueBool>(g_vdFileEnabled).SetValue(true, nullptr);
    ServerValue<ValueString>(g_vdFileName).SetValue(Path(u"flight"_s), nullptr);
    Make();
    ServerValue<ValueString>(g_vdRecFile).SetValue(Path(u"flight.bak"_s), nullptr); // of the next output
    EXPECT_FALSE(QFile::exists(Path(u"flight.bak"_s)));
    EXPECT_EQ(ServerValue<ValueString>(g_vdRecRefused).GetValue(),
              u"%2: the output %1 would overwrite %2, which the recorder writes"_s.arg(
                  Path(u"flight"_s), Path(u"flight.bak"_s)));
}

TEST_F(RecorderTest, FileThatIsTheStationsOwnIsNotRecordedTo) {
    Make();
    for (const QString& name : {u"/Application.ini.saving"_s, u"/TrafficControl.ini"_s, u"/DFSettings.ini"_s,
                                u"/ZANControl/commandlog-replay.txt"_s}) {
        const QString file = m_settings.GetDirectory() + name;
        ASSERT_TRUE(QDir().mkpath(QFileInfo(file).path()));
        ServerValue<ValueString>(g_vdRecFile).SetValue(file, nullptr);
        EXPECT_FALSE(QFile::exists(file));
        EXPECT_EQ(ServerValue<ValueString>(g_vdRecRefused).GetValue(),
                  u"%1: it would overwrite %1, which belongs to the station"_s.arg(file));
    }
}

TEST_F(RecorderTest, WritesARowForEachBearingWithWhatWasUsed) {
    Make();
    Take(MakeBlock());
    EXPECT_EQ(Contents(), HEADER + ROW);
    Publish(ServerValue<ValueNumericInt>(g_vdTrueHeading), std::optional(3599));
    Publish(ServerValue<ValueNumericDouble>(g_vdPitch), std::optional(4.9600001));
    Publish(ServerValue<ValueNumericDouble>(g_vdRoll), std::optional(-0.05));
    Publish(ServerValue<ValueNumericDouble>(g_vdAltitude), std::optional(12.25));
    Publish(ServerValue<ValueNumericDouble>(g_vdPosLatitude), std::optional(48.123456789));
    Publish(ServerValue<ValueNumericDouble>(g_vdPosLongitude), std::optional(-11.5));
    Publish(ServerValue<ValueTimeStamp>(g_vdPosLastUpdate), std::optional(quint64{999}));
    BearingBlock block = MakeBlock(2000);
    block.bearings[0].elevation = -12;
    block.bearings[0].level = -5204;
    block.kind = BearingBlock::Kind::FixedFrequency;
    Take(block);
    EXPECT_EQ(Contents(),
              HEADER + ROW +
                  "2000,121500000,71.5,-1.2,90,-52.04,359.9,4.9600001,-0.05,48.123456789,-11.5,12.25,1,,"
                  "999\n");
    EXPECT_EQ(m_recorder->GetRowCount(), 2U);
}

TEST_F(RecorderTest, EmittersOfSuperResolutionAreNumberedAndNoneIsARowToo) {
    Make();
    BearingBlock block = MakeBlock();
    block.kind = BearingBlock::Kind::SuperResolution;
    block.bearings.push_back(block.bearings.front());
    Take(block);
    block.bearings.clear();
    Take(block);
    EXPECT_EQ(Contents(), HEADER + "1000,121500000,71.5,,90,,,,,,,,1,0,\n"
                                   "1000,121500000,71.5,,90,,,,,,,,1,1,\n"
                                   "1000,121500000,0,,0,,,,,,,,1,-1,\n");
}

TEST_F(RecorderTest, BearingThatTheDriverHasMarkedIsLeftOutAndOneThatNoRowHoldsIsCounted) {
    Make();
    BearingBlock block = MakeBlock();
    block.bearings.resize(2, block.bearings.front());
    block.bearings[0].marker = -4000;
    block.bearings[1].quality = 101;
    Take(block);
    EXPECT_EQ(Contents(), "");
    EXPECT_EQ(m_recorder->GetDroppedCount(), 1U);
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(RecorderTest, FullFileGetsTheNextNumberAndTheOldestOnesGo) {
    Make(static_cast<int>(HEADER.size() + 2 * ROW.size()), 2);
    Write(Path(u"flight.1.csv"_s), "another file");
    for (int i = 0; i < 9; ++i) {
        Take(MakeBlock());
    }
    EXPECT_EQ(Files(), (QStringList{u"flight.000003.csv"_s, u"flight.000004.csv"_s, u"flight.1.csv"_s,
                                    u"flight.csv"_s}));
    EXPECT_EQ(Contents(u"flight.000004.csv"_s), HEADER + ROW + ROW);
    EXPECT_EQ(Contents(), HEADER + ROW);
    EXPECT_EQ(m_recorder->GetRowCount(), 9U);
}

TEST_F(RecorderTest, FileOfASizeBelowOneRowHoldsOneRow) {
    Make(1);
    Take(MakeBlock());
    Take(MakeBlock());
    EXPECT_EQ(Files(), (QStringList{u"flight.000001.csv"_s, u"flight.csv"_s}));
    EXPECT_EQ(Contents(), HEADER + ROW);
}

TEST_F(RecorderTest, NewFileBeginsWhenTheTimeStepsBackFurtherThanARecordingMay) {
    Make();
    Take(MakeBlock(11001));
    Take(MakeBlock(11001));
    Take(MakeBlock(1000));
    EXPECT_EQ(Contents(u"flight.000001.csv"_s).count("\n11001,"), 2);
    EXPECT_EQ(Contents(), HEADER + ROW);
}

TEST_F(RecorderTest, ChannelsWhoseTimesInterleaveShareAFileThatTheReaderTakes) {
    WriteNumbered(1);
    Make(100000, 1);
    constexpr int ROWS = 100;
    for (quint64 time = 20000; time < 20000 + ROWS / 2; ++time) {
        Take(MakeBlock(time));
        Take(MakeBlock(time - 200));
    }
    Take(MakeBlock(20000 + ROWS / 2 - 1 - 10000));
    EXPECT_EQ(Files(), (QStringList{u"flight.000001.csv"_s, u"flight.csv"_s}));
    m_recorder.reset();
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(Path(u"flight.csv"_s))) << reader.GetErrorText().toStdString();
    while (reader.Next()) {
    }
    EXPECT_EQ(reader.GetRowCount(), quint64{ROWS + 1});
    EXPECT_EQ(reader.GetBadLineCount(), 0U);
}

TEST_F(RecorderTest, ClockThatIsSetBackAgainAndAgainRemovesNoOlderRecording) {
    WriteNumbered(1);
    Make(100000, 1);
    for (quint64 time = 100000; time > 50000; time -= 10001) {
        Take(MakeBlock(time));
    }
    EXPECT_EQ(Contents(u"flight.000001.csv"_s), HEADER + ROW);
    EXPECT_EQ(Files().size(), 6) << Files().join(u' ').toStdString();
    EXPECT_EQ(m_recorder->GetRowCount(), 5U);
}

TEST_F(RecorderTest, DriverWhoseRowsAlternateBetweenTwoTimesDoesNotBeginAFileWithEachRow) {
    Make(100000, 10, Recorder::STEP_BACK_MS);
    for (int i = 0; i < 100; ++i) {
        Take(MakeBlock(3'600'000));
        Take(MakeBlock(1000));
    }
    EXPECT_EQ(Files(), (QStringList{u"flight.000001.csv"_s, u"flight.csv"_s}));
    EXPECT_EQ(Contents(u"flight.000001.csv"_s).count("\n3600000,"), 1);
    EXPECT_EQ(Contents().count("\n1000,"), 1);
    EXPECT_EQ(Contents().count("\n3600000,"), 99);
    EXPECT_EQ(m_recorder->GetDroppedCount(), 99U);
    EXPECT_EQ(m_recorder->GetRowCount(), 101U);
    m_recorder.reset();
    EXPECT_EQ(ServerValue<ValueString>(g_vdRecLastError).GetValue(),
              u"a row was left out: its time is too early, and a file has just begun because of that"_s);
}

TEST_F(RecorderTest, RecordingThatIsThereIsKeptUnderANumber) {
    Write(Path(u"flight.csv"_s), RECORDING_HEADER + "1,1,1,,1,,,,,,,\n");
    Write(Path(u"flight.000007.csv"_s), HEADER + ROW);
    Make();
    EXPECT_TRUE(Contents(u"flight.000008.csv"_s).endsWith("1,1,1,,1,,,,,,,\n"));
    EXPECT_EQ(Contents(), "");
}

TEST_F(RecorderTest, FileThatIsNoRecordingIsLeftAloneAndTheRecorderWaitsForItToGo) {
    Write(Path(u"flight.csv"_s), "[General]\n");
    Make();
    Take(MakeBlock());
    EXPECT_EQ(Contents(), "[General]\n");
    EXPECT_EQ(m_recorder->GetProblem(),
              u"Could not open file %1: it is there and is not a recording"_s.arg(Path(u"flight.csv"_s)));
    EXPECT_EQ(m_recorder->GetDroppedCount(), 1U);
    QFile::remove(Path(u"flight.csv"_s));
    ASSERT_TRUE(SpinUntil([this] { return m_recorder->IsOpen(); }));
    EXPECT_TRUE(m_failures.isEmpty()) << "the same failure again is not told";
    Take(MakeBlock());
    EXPECT_EQ(Contents(), HEADER + ROW);
    EXPECT_EQ(m_recoveries, 1);
    EXPECT_EQ(m_recorder->GetProblem(), QString());
}

TEST_F(RecorderTest, TwoRecordersNeverShareAFile) {
    Make();
    Take(MakeBlock());
    Recorder second(GetStationFiles());
    EXPECT_FALSE(second.IsOpen());
    EXPECT_TRUE(
        second.GetProblem().contains(u"it is in use by process %1"_s.arg(QCoreApplication::applicationPid())))
        << second.GetProblem().toStdString();
    EXPECT_EQ(Files(), QStringList{u"flight.csv"_s});
}

TEST_F(RecorderTest, FullDiskIsToldOnceAndRowsAreWholeWhenThereIsRoomAgain) {
    Make();
    Take(MakeBlock());
    {
        const FullDisk disk(Contents().size() + 10);
        for (int i = 0; i < 3; ++i) {
            Take(MakeBlock());
        }
    }
    EXPECT_EQ(m_failures.size(), 1);
    EXPECT_TRUE(m_failures.join(u""_s).startsWith(u"Writing to "_s));
    EXPECT_EQ(m_recorder->GetDroppedCount(), 3U);
    Take(MakeBlock());
    EXPECT_EQ(Contents(), HEADER + ROW + ROW);
    EXPECT_EQ(m_recoveries, 1);
}

TEST_F(RecorderTest, FileWhoseDirectoryIsRemovedIsToldOnceAndBeginsAgainWhenItIsBack) {
    const QString directory = Path(u"records"_s);
    ASSERT_TRUE(QDir().mkpath(directory));
    Make();
    ServerValue<ValueString>(g_vdRecFile).SetValue(directory + u"/flight.csv"_s);
    Take(MakeBlock());
    ASSERT_TRUE(QDir(directory).removeRecursively());
    ASSERT_TRUE(SpinUntil([this] { return !m_recorder->IsOpen(); }));
    Take(MakeBlock());
    EXPECT_EQ(m_recorder->GetDroppedCount(), 1U);
    ASSERT_TRUE(QDir().mkpath(directory));
    ASSERT_TRUE(SpinUntil([this] { return m_recorder->IsOpen(); }));
    Take(MakeBlock());
    EXPECT_EQ(Contents(u"records/flight.csv"_s), HEADER + ROW);
    EXPECT_EQ(m_failures.size(), 2) << "that it went, and that it cannot be opened";
    EXPECT_EQ(m_recoveries, 1);
}

TEST_F(RecorderTest, TreeSwitchesItAndTheSettingsKeepThat) {
    Make();
    ServerValue<ValueBool>(g_vdRecEnabled).SetValue(false);
    Take(MakeBlock());
    EXPECT_FALSE(m_recorder->IsOpen());
    EXPECT_EQ(m_recorder->GetDroppedCount(), 0U);
    ServerValue<ValueString>(g_vdRecFile).SetValue(Path(u"flight2.csv"_s));
    ServerValue<ValueNumericInt>(g_vdRecFileSize).SetValue(7);
    ServerValue<ValueNumericInt>(g_vdRecFileCount).SetValue(3);
    ServerValue<ValueBool>(g_vdRecEnabled).SetValue(true);
    Take(MakeBlock());
    EXPECT_EQ(Contents(u"flight2.csv"_s), HEADER + ROW);
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    EXPECT_TRUE(cfg.GetBool(u"Recorder/Enabled"_s, false));
    EXPECT_EQ(cfg.GetString(u"Recorder/File"_s, {}), Path(u"flight2.csv"_s));
    EXPECT_EQ(cfg.GetInt(u"Recorder/FileSize"_s, 0), 7);
    EXPECT_EQ(cfg.GetInt(u"Recorder/FileCount"_s, 0), 3);
}

TEST_F(RecorderTest, FileThatCannotBeRecordedToIsRefusedWithTheReasonAndTheOneBeforeStays) {
    Make();
    Take(MakeBlock());
    Write(Path(u"notes.txt"_s), "no recording");
    const QString present = Path(u"flight.csv"_s);
    auto& file = ServerValue<ValueString>(g_vdRecFile);
    for (const auto& [name, reason] :
         {std::pair{Path(u"notes.txt"_s), u"it is there and is not a recording"_s},
          {u"-"_s, u"it is standard output, and a recording needs a file"_s},
          {m_directory.path(), u"it is not a file"_s}}) {
        file.SetValue(name);
        EXPECT_EQ(file.GetValue(), present);
        EXPECT_EQ(ServerValue<ValueString>(g_vdRecRefused).GetValue(), name + u": "_s + reason);
        EXPECT_EQ(CfgCenter::GetAppCfg(ICfg::View::Outputs).GetString(u"Recorder/File"_s, {}), present);
    }
    file.SetValue(QString());
    EXPECT_EQ(ServerValue<ValueString>(g_vdRecRefused).GetValue(), u"the recorder has no file"_s);
    Take(MakeBlock());
    EXPECT_EQ(Contents(), HEADER + ROW + ROW);
    file.SetValue(Path(u"other.csv"_s));
    EXPECT_EQ(ServerValue<ValueString>(g_vdRecRefused).GetValue(), QString());
    Take(MakeBlock());
    EXPECT_EQ(Contents(u"other.csv"_s), HEADER + ROW);
}

TEST_F(RecorderTest, RecorderIsNotSwitchedOnOntoAFileThatIsNoRecording) {
    Make();
    auto& enabled = ServerValue<ValueBool>(g_vdRecEnabled);
    enabled.SetValue(false);
    Write(Path(u"flight.csv"_s), "notes");
    enabled.SetValue(true);
    EXPECT_FALSE(enabled.GetValue());
    EXPECT_FALSE(CfgCenter::GetAppCfg(ICfg::View::Outputs).GetBool(u"Recorder/Enabled"_s, true));
    EXPECT_EQ(Contents(), "notes");
}

TEST_F(RecorderTest, StateAndTimeOfTheLastFailureTellWhetherItFailsNow) {
    Write(Path(u"flight.csv"_s), "notes");
    Make();
    const auto& state = ServerValue<ValueSelection>(g_vdRecState);
    const auto& time = ServerValue<ValueTimeStamp>(g_vdRecLastErrorTime);
    EXPECT_EQ(state.GetStringValue(), u"Failed"_s);
    EXPECT_EQ(time.GetState(), TValueState::Valid);
    QFile::remove(Path(u"flight.csv"_s));
    ASSERT_TRUE(SpinUntil([this] { return m_recorder->IsOpen(); }));
    Take(MakeBlock());
    auto& enabled = ServerValue<ValueBool>(g_vdRecEnabled);
    ASSERT_TRUE(SpinUntil([&] { return state.GetStringValue() == u"Open"_s; })) << "published every second";
    enabled.SetValue(false);
    EXPECT_EQ(state.GetStringValue(), u"Off"_s);
    EXPECT_FALSE(ServerValue<ValueString>(g_vdRecLastError).GetValue().isEmpty()) << "it was there once";
}

TEST_F(RecorderTest, TreeHasItsCountersAndLastFailure) {
    Write(Path(u"flight.csv"_s), "no recording");
    Make();
    Take(MakeBlock());
    QFile::remove(Path(u"flight.csv"_s));
    ASSERT_TRUE(SpinUntil([this] { return m_recorder->IsOpen(); }));
    Take(MakeBlock());
    m_recorder.reset();
    EXPECT_EQ(ServerValue<ValueNumericDouble>(g_vdRecRows).GetValue(), 1.0);
    EXPECT_EQ(ServerValue<ValueNumericDouble>(g_vdRecDropped).GetValue(), 1.0);
    EXPECT_TRUE(ServerValue<ValueString>(g_vdRecLastError).GetValue().contains(u"is not a recording"_s));
}

TEST_F(RecorderTest, WhatItWritesTheReaderReadsToTheLastDigit) {
    Make();
    Publish(ServerValue<ValueNumericDouble>(g_vdPosLatitude), std::optional(0.1 + 0.2));
    Publish(ServerValue<ValueNumericDouble>(g_vdPitch), std::optional(-1e-7));
    BearingBlock block = MakeBlock(253402300799999);
    block.status.frequency = 8333.3333333333339;
    Take(block);
    RecordingReader reader;
    ASSERT_TRUE(m_recorder->IsOpen());
    m_recorder.reset();
    ASSERT_TRUE(reader.Open(Path(u"flight.csv"_s))) << reader.GetErrorText().toStdString();
    const std::optional<RecordedBearing> row = reader.Next();
    ASSERT_TRUE(row.has_value());
    EXPECT_EQ(row->timeMs, 253402300799999U);
    EXPECT_EQ(row->latitude, 0.1 + 0.2);
    EXPECT_EQ(row->pitch, -1e-7);
    EXPECT_EQ(row->frequency, 8333.3333333333339);
    EXPECT_EQ(row->mode, 3.0);
}

TEST_F(RecorderTest, FileThatCannotGetANumberIsLeftAloneAtTheStartAndGrowsLater) {
    const QByteArray recording = RECORDING_HEADER + "1,1,1,,1,,,,,,,\n";
    Write(Path(u"flight.csv"_s), recording);
    Write(Path(u"flight.999999.csv"_s), recording);
    Make(static_cast<int>(HEADER.size() + ROW.size()));
    EXPECT_EQ(m_recorder->GetProblem(),
              u"Could not move file %1: no number is left"_s.arg(Path(u"flight.csv"_s)));
    EXPECT_EQ(Contents(), recording);
    QFile::remove(Path(u"flight.csv"_s));
    ASSERT_TRUE(SpinUntil([this] { return m_recorder->IsOpen(); }));
    const QByteArray lateRow = "20" + ROW; // at 201000
    for (int i = 0; i < 3; ++i) {
        Take(MakeBlock(201000));
    }
    EXPECT_EQ(Contents(), HEADER + lateRow + lateRow + lateRow);
    Take(MakeBlock(999));
    EXPECT_EQ(Contents(), HEADER + lateRow + lateRow + lateRow) << "an earlier row would not be read";
    EXPECT_EQ(m_recorder->GetDroppedCount(), 1U);
    EXPECT_EQ(Contents(u"flight.999999.csv"_s), recording);
    QFile::remove(Path(u"flight.999999.csv"_s));
    ASSERT_TRUE(SpinUntil([this] { return m_recorder->IsOpen(); }));
    EXPECT_EQ(Contents(u"flight.000001.csv"_s), HEADER + lateRow + lateRow + lateRow);
}

TEST_F(RecorderTest, PlacesThatAreNoFilesAndAreKeptInTheSettingsAreToldWithTheReason) {
    Make();
    ASSERT_TRUE(QDir().mkpath(Path(u"folder"_s)));
    for (const auto& [name, reason] : {std::pair{Path(u"folder"_s), u"it is not a file"_s},
                                       {Path(u"flight.csv/below"_s), u"Not a directory"_s},
                                       {Path(u"nowhere/flight.csv"_s), u"No such file or directory"_s},
                                       {u"-"_s, u"it is standard output, and a recording needs a file"_s},
                                       {QString(), u"Invalid argument"_s}}) {
        m_recorder.reset();
        CfgCenter::GetAppCfg(ICfg::View::Outputs).SetString(u"Recorder/File"_s, name);
        m_recorder.emplace(GetStationFiles());
        EXPECT_EQ(m_recorder->GetProblem(), u"Could not open file %1: %2"_s.arg(name, reason));
    }
}

TEST_F(RecorderTest, FileThatHasNoRoomForItsFirstRowIsEmptyUntilThereIsRoom) {
    Make();
    {
        const FullDisk disk(HEADER.size());
        Take(MakeBlock());
        EXPECT_TRUE(m_recorder->GetProblem().startsWith(u"Writing to "_s));
        EXPECT_EQ(Contents(), "");
    }
    Take(MakeBlock());
    EXPECT_EQ(Contents(), HEADER + ROW);
    EXPECT_EQ(Files(), QStringList{u"flight.csv"_s}) << "a file without content gets no number";
}

TEST_F(RecorderTest, FileThatIsWatchedAndStaysIsRecordedToOn) {
    Make();
    Take(MakeBlock());
    CountWakeUps(); // it is looked at again and again meanwhile
    Take(MakeBlock());
    EXPECT_EQ(Contents(), HEADER + ROW + ROW);
    EXPECT_EQ(Files(), QStringList{u"flight.csv"_s});
    EXPECT_EQ(m_failures, QStringList());
}

TEST_F(RecorderTest, StartsAndSwitchesWithoutABearingCostNoRecordingAndMakeNone) {
    WriteNumbered(3);
    Write(Path(u"flight.csv"_s), HEADER + ROW);
    for (int i = 0; i < 5; ++i) {
        Make(100000, 4);
        SwitchOffAndOn();
    }
    EXPECT_EQ(Files(), (QStringList{u"flight.000001.csv"_s, u"flight.000002.csv"_s, u"flight.000003.csv"_s,
                                    u"flight.000004.csv"_s, u"flight.csv"_s}));
    EXPECT_EQ(Contents(), "");
}

TEST_F(RecorderTest, RecordingWithoutRowsIsUsedAgain) {
    for (const QByteArray& header : {HEADER, RECORDING_HEADER, HEADER.chopped(1)}) {
        Write(Path(u"flight.csv"_s), header);
        Make();
        EXPECT_EQ(Files(), QStringList{u"flight.csv"_s});
        Take(MakeBlock());
        EXPECT_EQ(Contents(), HEADER + ROW);
        m_recorder.reset();
    }
}

TEST_F(RecorderTest, RecordingThatIsReplayedIsNeitherRecordedToNorMovedNorRemoved) {
    WriteNumbered(3);
    m_replayed = Path(u"flight.000001.csv"_s);
    Write(Path(u"flight.csv"_s), HEADER + ROW + ROW);
    Make(100000, 1);
    EXPECT_EQ(Files(), (QStringList{u"flight.000001.csv"_s, u"flight.000004.csv"_s, u"flight.csv"_s}));
    ASSERT_TRUE(QFile::link(m_replayed, Path(u"link.csv"_s)));
    for (const QString& name : {m_replayed, Path(u"link.csv"_s)}) {
        ServerValue<ValueString>(g_vdRecFile).SetValue(name);
        EXPECT_EQ(ServerValue<ValueString>(g_vdRecRefused).GetValue(),
                  u"%1: it is the recording that is replayed"_s.arg(name));
    }
    EXPECT_EQ(Contents(u"flight.000001.csv"_s), HEADER + ROW);
}

TEST_F(RecorderTest, NumberedFileThatSomeStationReadsIsNotRemoved) {
    WriteNumbered(2);
    RecordingReader reader;
    ASSERT_TRUE(reader.Open(Path(u"flight.000001.csv"_s)));
    Write(Path(u"flight.csv"_s), HEADER + ROW + ROW);
    Make(100000, 1);
    EXPECT_EQ(Files(), (QStringList{u"flight.000001.csv"_s, u"flight.000003.csv"_s, u"flight.csv"_s}));
}

TEST_F(RecorderTest, RecorderThatStartsOffLeavesTheSettingsAsTheyAre) {
    Make(100000, 10, 0, Recorder::Start::Off);
    Take(MakeBlock());
    EXPECT_FALSE(m_recorder->IsOn());
    EXPECT_FALSE(QFile::exists(Path(u"flight.csv"_s)));
    ServerValue<ValueNumericInt>(g_vdRecFileCount).SetValue(3);
    const ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
    EXPECT_TRUE(cfg.GetBool(u"Recorder/Enabled"_s, false));
    EXPECT_EQ(cfg.GetInt(u"Recorder/FileCount"_s, 0), 3);
    ServerValue<ValueBool>(g_vdRecEnabled).SetValue(true);
    Take(MakeBlock());
    EXPECT_EQ(Contents(), HEADER + ROW);
}

TEST_F(RecorderTest, OnlyRecordingsWithSixDigitsAreItsNumberedFiles) {
    for (const QString& name : {u"flight.20261101.csv"_s, u"flight.999999999.csv"_s, u"flight.00001.csv"_s}) {
        Write(Path(name), HEADER + ROW);
    }
    Write(Path(u"flight.000001.csv"_s), "notes of the first flight");
    for (const QString& name : {u"flight.000002.csv"_s, u"flight.000003.csv"_s}) {
        Write(Path(name), HEADER + ROW);
    }
    Write(Path(u"flight.csv"_s), HEADER + ROW + ROW);
    Make(100000, 1);
    EXPECT_EQ(Files(), (QStringList{u"flight.000001.csv"_s, u"flight.000004.csv"_s, u"flight.00001.csv"_s,
                                    u"flight.20261101.csv"_s, u"flight.999999999.csv"_s, u"flight.csv"_s}));
    EXPECT_EQ(Contents(u"flight.000001.csv"_s), "notes of the first flight");
    EXPECT_EQ(Contents(u"flight.000004.csv"_s), HEADER + ROW + ROW);
}

TEST_F(RecorderTest, NameThatIsTakenByAnythingElseIsSkipped) {
    ASSERT_TRUE(QDir().mkpath(Path(u"flight.000001.csv"_s)));
    ASSERT_TRUE(QFile::link(Path(u"nowhere"_s), Path(u"flight.000002.csv"_s)));
    Write(Path(u"flight.000003.csv"_s), "notes");
    Write(Path(u"flight.csv"_s), HEADER + ROW);
    Make(100000, 1);
    EXPECT_EQ(Contents(u"flight.000003.csv"_s), "notes");
    EXPECT_EQ(Contents(u"flight.000004.csv"_s), HEADER + ROW);
    EXPECT_TRUE(QFileInfo(Path(u"flight.000001.csv"_s)).isDir());
    EXPECT_TRUE(QFileInfo(Path(u"flight.000002.csv"_s)).isSymLink());
}

TEST_F(RecorderTest, RecordingThatALossOfPowerHasDamagedGivesWayAndIsKept) {
    int number = 0;
    for (const QByteArray& damaged :
         {QByteArray(4096, '\0'), HEADER.first(20), HEADER.first(20) + QByteArray(100, '\0')}) {
        Write(Path(u"flight.csv"_s), damaged);
        Make();
        const QString kept = u"flight.damaged.00000%1.csv"_s.arg(++number);
        EXPECT_EQ(Contents(kept), damaged);
        EXPECT_EQ(m_recorder->GetProblem(),
                  u"File %1 was damaged, and is kept as %2"_s.arg(Path(u"flight.csv"_s), Path(kept)));
        Take(MakeBlock());
        EXPECT_EQ(Contents(), HEADER + ROW);
        EXPECT_EQ(m_recorder->GetProblem(), QString());
        m_recorder.reset();
    }
}

TEST_F(RecorderTest, DamagedRecordingForWhichNoNumberIsLeftStays) {
    Write(Path(u"flight.csv"_s), HEADER.first(20));
    Write(Path(u"flight.damaged.999999.csv"_s), HEADER + ROW);
    Make();
    EXPECT_FALSE(m_recorder->IsOpen());
    EXPECT_EQ(Contents(), HEADER.first(20));
}

TEST_F(RecorderTest, FileThatOnlyBeginsAsADamagedOneIsLeftAlone) {
    for (const QByteArray& content : {QByteArray(512, '\0') + "a disk", HEADER.first(20) + "and more\n"}) {
        Write(Path(u"flight.csv"_s), content);
        Make();
        EXPECT_FALSE(m_recorder->IsOpen());
        EXPECT_EQ(Contents(), content);
        EXPECT_EQ(Files(), QStringList{u"flight.csv"_s});
    }
}

TEST_F(RecorderTest, FileThatIsCutShortIsToldAndTheNextRowBeginsAFileOfItsOwn) {
    Make();
    Take(MakeBlock());
    Take(MakeBlock());
    const QByteArray cut = HEADER + ROW.first(10);
    ASSERT_TRUE(QFile::resize(Path(u"flight.csv"_s), cut.size()));
    Take(MakeBlock());
    EXPECT_EQ(Contents(u"flight.000001.csv"_s), cut);
    EXPECT_EQ(Contents(), HEADER + ROW);
    EXPECT_EQ(m_failures, QStringList(u"File %1 was changed by another program while it was recorded"_s.arg(
                              Path(u"flight.csv"_s))));
    EXPECT_EQ(m_recoveries, 1);
    EXPECT_EQ(m_recorder->GetRowCount(), 3U);
}

TEST_F(RecorderTest, FileThatIsEmptiedOrAppendedToIsNoticedWithoutARow) {
    Make();
    Take(MakeBlock());
    ASSERT_TRUE(QFile::resize(Path(u"flight.csv"_s), 0));
    ASSERT_TRUE(SpinUntil([this] { return m_failures.size() == 1; }));
    Take(MakeBlock());
    EXPECT_EQ(Contents(), HEADER + ROW);
    EXPECT_EQ(Files(), QStringList{u"flight.csv"_s});
    Write(Path(u"flight.csv"_s), HEADER + ROW + "half a r");
    ASSERT_TRUE(SpinUntil([this] { return m_failures.size() == 2; }));
    EXPECT_EQ(Contents(u"flight.000001.csv"_s), HEADER + ROW + "half a r");
}

TEST_F(RecorderTest, FileThatGrowsBecauseItCannotBeMovedIsTriedAgainWhenItHasGrownAsMuch) {
    Make(static_cast<int>(HEADER.size() + ROW.size()));
    Write(Path(u"flight.999999.csv"_s), HEADER + ROW);
    Take(MakeBlock());
    Take(MakeBlock());
    QFile::remove(Path(u"flight.999999.csv"_s));
    const qsizetype rows = (HEADER.size() + ROW.size()) / ROW.size();
    for (qsizetype i = 0; i < rows; ++i) {
        Take(MakeBlock());
    }
    EXPECT_EQ(Contents(u"flight.000001.csv"_s).count("\n1000,"), 1 + rows);
    EXPECT_EQ(Contents(), HEADER + ROW);
}

TEST_F(RecorderTest, FileThatALinkLeadsToIsNumberedWhereItIsAndTheLinkStays) {
    ASSERT_TRUE(QDir().mkpath(Path(u"disk"_s)));
    ASSERT_TRUE(QFile::link(Path(u"disk/record.csv"_s), Path(u"flight.csv"_s)));
    Make(static_cast<int>(HEADER.size() + ROW.size()));
    Take(MakeBlock());
    Take(MakeBlock());
    EXPECT_EQ(Contents(u"disk/record.000001.csv"_s), HEADER + ROW);
    EXPECT_EQ(Contents(u"disk/record.csv"_s), HEADER + ROW);
    EXPECT_EQ(QFileInfo(Path(u"flight.csv"_s)).symLinkTarget(), Path(u"disk/record.csv"_s));
    // The link is led elsewhere.
    QFile::remove(Path(u"flight.csv"_s));
    ASSERT_TRUE(QFile::link(Path(u"disk/other.csv"_s), Path(u"flight.csv"_s)));
    ASSERT_TRUE(SpinUntil([this] { return QFile::exists(Path(u"disk/other.csv"_s)); }));
    Take(MakeBlock());
    EXPECT_EQ(Contents(u"disk/other.csv"_s), HEADER + ROW);
}

TEST_F(RecorderTest, RecorderWhoseNumberedFileIsTheOutputDoesNotRecord) {
    ServerValue<ValueBool>(g_vdFileEnabled).SetValue(true, nullptr);
    for (const QString& name : {u"flight.000001.csv"_s, u"flight.000002.csv"_s}) {
        ServerValue<ValueString>(g_vdFileName).SetValue(Path(name), nullptr);
        WriteNumbered(1);
        Make();
        EXPECT_EQ(
            m_recorder->GetProblem(),
            u"Could not open file %1: the output %2 would overwrite %2, a numbered file of the recorder"_s
                .arg(Path(u"flight.csv"_s), Path(name)));
    }
}

TEST_F(RecorderTest, StateOfAValueChangesNothing) {
    Make();
    Take(MakeBlock());
    ServerValue<ValueString>(g_vdRecFile).SetState(TValueState::NotMeasured, nullptr);
    Take(MakeBlock());
    EXPECT_EQ(Contents(), HEADER + ROW + ROW);
}

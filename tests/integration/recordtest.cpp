#include "support/printing.h"
#include "support/recordings.h"
#include "support/stationprocess.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

// The recorder of a station, and what a replay makes of its recording.

namespace {

class RecordTest : public testing::Test {
protected:
    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }
    /// Makes the settings of a station, with keys of its section.
    void MakeSettings(const QString& name, const QByteArray& keys) const {
        ASSERT_TRUE(QDir().mkpath(Path(name)));
        WriteFile(Path(name) + u"/Application.ini"_s,
                  "[ZANStations]\nCount=1\n[ZANStations/ZANStation0]\nDeviceAddress=replay\n" + keys);
    }
    [[nodiscard]] StationResult Run(const QString& recording, const QString& settings, const QString& output,
                                    const QStringList& further = {}) const {
        return RunStation(QStringList{u"run"_s, u"--recording"_s, Path(recording), u"--speed"_s, u"max"_s,
                                      u"--config"_s, Path(settings), u"--output"_s, Path(output)} +
                          further);
    }

    /// Measures for some seconds with the simulated device.
    [[nodiscard]] StationResult Simulate(const QStringList& further, const QString& directory = {}) const {
        return RunStation(QStringList{u"run"_s, u"--speed"_s, u"max"_s, u"--duration"_s, u"3"_s,
                                      u"--config"_s, Path(u"config"_s)} +
                              further,
                          directory);
    }

    QTemporaryDir m_directory;
};

} // namespace

TEST_F(RecordTest, ReplayOfARecordGivesTheSameSentencesWhateverItsSourcesAre) {
    WriteFile(Path(u"flight.csv"_s),
              RECORDING_HEADER +
                  QByteArray("1000,121500000,71.5,10.0,90,-52.04,359.9,1.0,-1.0,52.5,5.5,10.0\n"
                             "2000,121500000,0.0,,45,,12.3,4.96,,,,\n"
                             "2000,145000000,0.1,,45,,12.3,4.96,,,,\n"
                             "3000,121500000,0.0,,0,,,,,,,\n"
                             "4000,121500000,10.0,,90,,,5.0,0.0,,,\n"
                             "5000,121500000,10.0,,90,,,,,-33.123456,,\n"));
    MakeSettings(u"measured"_s, {});
    MakeSettings(u"manual"_s,
                 "LocationChoice=2\nLocationLatitude=48.1\nLocationLongitude=11.5\nDFMechOffset=100\n");
    MakeSettings(u"other"_s, "LocationChoice=2\nLocationLatitude=1\nLocationLongitude=2\nDFMechOffset=-77\n");
    for (const QString& settings : {u"measured"_s, u"manual"_s}) {
        const QString record = settings + u".csv"_s;
        const StationResult run = Run(u"flight.csv"_s, settings, settings + u".txt"_s,
                                      {u"--record"_s, Path(record), u"--record-size"_s, u"1"_s});
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        EXPECT_TRUE(run.out.contains(u"recorded                           6\n"_s)) << run.out.toStdString();
        const QByteArray sentences = ReadFile(Path(settings + u".txt"_s));
        EXPECT_EQ(sentences.count("\r\n"), 4);
        for (const QString& replaySettings : {u"other"_s, u"fresh"_s}) {
            const StationResult replay = Run(record, replaySettings, u"replay.txt"_s);
            ASSERT_EQ(replay.exitCode, 0) << replay.err.toStdString();
            EXPECT_EQ(ReadFile(Path(u"replay.txt"_s)), sentences) << settings.toStdString();
        }
    }
    EXPECT_TRUE(ReadFile(Path(u"manual.txt"_s)).contains(",PTM,,LAT, 48.10000,"))
        << "the manual place was used";
    EXPECT_TRUE(ReadFile(Path(u"manual.txt"_s)).contains("CMP,  9.9")) << "the offset was used";
}

TEST_F(RecordTest, RecordIsKeptInTheSettingsUntilAnEmptyNameSwitchesItOff) {
    EXPECT_EQ(Simulate({u"--record"_s, Path(u"record.csv"_s)}).exitCode, 0);
    EXPECT_EQ(Simulate({}).exitCode, 0);
    EXPECT_TRUE(QFile::exists(Path(u"record.000001.csv"_s)));
    EXPECT_EQ(Simulate({u"--record"_s, u""_s}).exitCode, 0);
    EXPECT_FALSE(QFile::exists(Path(u"record.000002.csv"_s)));
}

TEST_F(RecordTest, ReplayIsRecordedOnlyWhenThatRunIsGivenAFile) {
    ASSERT_EQ(Simulate({u"--record"_s, Path(u"record.csv"_s)}).exitCode, 0);
    ASSERT_EQ(Simulate({u"--record-files"_s, u"1"_s}).exitCode, 0);
    const QByteArray numbered = ReadFile(Path(u"record.000001.csv"_s));
    const QByteArray newest = ReadFile(Path(u"record.csv"_s));
    for (const QString& name : {u"record.000001.csv"_s, u"record.csv"_s}) {
        const StationResult replay = Run(name, u"config"_s, u"out"_s);
        EXPECT_EQ(replay.exitCode, 0) << replay.err.toStdString();
        EXPECT_TRUE(replay.err.contains(
            u"warning: the recorder is off in this run: a replay is recorded with --record only\n"_s))
            << replay.err.toStdString();
        EXPECT_EQ(ReadFile(Path(u"record.000001.csv"_s)), numbered);
        EXPECT_EQ(ReadFile(Path(u"record.csv"_s)), newest);
        EXPECT_FALSE(QFile::exists(Path(u"record.000002.csv"_s)));
    }
    const StationResult both =
        Run(u"record.000001.csv"_s, u"config"_s, u"out"_s, {u"--record"_s, Path(u"record.csv"_s)});
    EXPECT_EQ(both.exitCode, 0) << both.err.toStdString();
    EXPECT_EQ(ReadFile(Path(u"record.000001.csv"_s)), numbered) << "the recording that was replayed is kept";
    EXPECT_EQ(ReadFile(Path(u"record.000002.csv"_s)), newest);
    EXPECT_EQ(Simulate({}).exitCode, 0);
    EXPECT_TRUE(QFile::exists(Path(u"record.000003.csv"_s))) << "the recorder is on again";
}

TEST_F(RecordTest, StationMeasuresWhileTheKeptFileOfItsRecorderCannotBeWritten) {
    ASSERT_EQ(Simulate({u"--record"_s, Path(u"record.csv"_s)}).exitCode, 0);
    WriteFile(Path(u"record.csv"_s), "notes");
    const StationResult run = Simulate({u"--output"_s, Path(u"out"_s)});
    EXPECT_EQ(run.exitCode, 1) << "it could not record";
    EXPECT_TRUE(run.err.contains(
        u"Could not open file %1: it is there and is not a recording"_s.arg(Path(u"record.csv"_s))))
        << run.err.toStdString();
    EXPECT_TRUE(ReadFile(Path(u"out"_s)).startsWith("$PLG,"));
    EXPECT_EQ(ReadFile(Path(u"record.csv"_s)), "notes");
    WriteFile(Path(u"record.csv"_s), QByteArray(4096, '\0'));
    const StationResult damaged = Simulate({});
    EXPECT_TRUE(damaged.err.contains(u"File %1 was damaged, and is kept as %2"_s.arg(
        Path(u"record.csv"_s), Path(u"record.damaged.000001.csv"_s))))
        << damaged.err.toStdString();
    EXPECT_TRUE(ReadFile(Path(u"record.csv"_s)).startsWith("time_ms,"));
}

TEST_F(RecordTest, OutputThatIsAFileOfTheKeptRecorderIsRefused) {
    ASSERT_EQ(Simulate({u"--record"_s, Path(u"record.csv"_s)}).exitCode, 0);
    const QByteArray recording = ReadFile(Path(u"record.csv"_s));
    for (const QString& name : {u"record.csv"_s, u"record.000001.csv"_s}) {
        const StationResult run = Simulate({u"--output"_s, Path(name)});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_TRUE(run.err.contains(u"the output %1 would overwrite %1, "_s.arg(Path(name))))
            << run.err.toStdString();
    }
    EXPECT_EQ(ReadFile(Path(u"record.csv"_s)), recording);
    EXPECT_FALSE(QFile::exists(Path(u"record.000001.csv"_s)));
}

TEST_F(RecordTest, PlaceOfTheProcessIsReplacedByTheOneThatItIs) {
    ASSERT_EQ(Simulate({u"--record"_s, u"/proc/self/cwd/record.csv"_s}, m_directory.path()).exitCode, 0);
    EXPECT_TRUE(ReadFile(Path(u"record.csv"_s)).startsWith("time_ms,"));
    EXPECT_FALSE(QFile::exists(Path(u"config/record.csv"_s)));
}

TEST_F(RecordTest, FilesThatARecordWouldDestroyAreRefusedBeforeAnythingIsOpened) {
    const QByteArray recording = RECORDING_HEADER + "1000,121500000,71.5,,90,,,,,,,\n";
    WriteFile(Path(u"flight.csv"_s), recording);
    WriteFile(Path(u"notes.txt"_s), "notes");
    for (const QString& name : {u"flight.csv"_s, u"notes.txt"_s}) {
        const StationResult run = Run(u"flight.csv"_s, u"config"_s, u"out"_s, {u"--record"_s, Path(name)});
        EXPECT_EQ(run.exitCode, 1) << name.toStdString();
        EXPECT_TRUE(run.err.contains(u"the recorder cannot write to "_s + Path(name)))
            << run.err.toStdString();
    }
    for (const auto& [name, reason] :
         {std::pair{Path(u"out"_s), u"the output %1 would overwrite %1, which the recorder writes"_s},
          {u"-"_s,
           u"the recorder cannot write to %1: it is standard output, and a recording needs a file"_s}}) {
        const StationResult run = Run(u"flight.csv"_s, u"config"_s, u"out"_s, {u"--record"_s, name});
        EXPECT_EQ(run.exitCode, 1) << name.toStdString();
        EXPECT_TRUE(run.err.contains(reason.arg(name))) << run.err.toStdString();
    }
    for (const QString& name : {u"Application.ini"_s, u"Application.ini.lock"_s, u"TrafficControl.ini"_s,
                                u"DFSettings.ini"_s, u"station.lock"_s}) {
        const QString own = Path(u"config/"_s + name);
        const StationResult run = Run(u"flight.csv"_s, u"config"_s, u"out"_s, {u"--record"_s, own});
        EXPECT_EQ(run.exitCode, 1) << name.toStdString();
        EXPECT_TRUE(run.err.contains(
            u"the recorder cannot write to %1: it would overwrite %1, which belongs to the station"_s.arg(
                own)))
            << run.err.toStdString();
    }
    EXPECT_EQ(ReadFile(Path(u"flight.csv"_s)), recording);
    EXPECT_EQ(ReadFile(Path(u"notes.txt"_s)), "notes");
    EXPECT_FALSE(QFile::exists(Path(u"out"_s)));
}

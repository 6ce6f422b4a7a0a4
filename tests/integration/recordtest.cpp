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
    WriteFile(Path(u"flight.csv"_s), RECORDING_HEADER + QByteArray("1000,121500000,71.5,,90,,,,,,,\n"));
    EXPECT_EQ(Run(u"flight.csv"_s, u"config"_s, u"out"_s, {u"--record"_s, Path(u"record.csv"_s)}).exitCode,
              0);
    EXPECT_EQ(Run(u"flight.csv"_s, u"config"_s, u"out"_s).exitCode, 0);
    EXPECT_TRUE(QFile::exists(Path(u"record.000001.csv"_s)));
    EXPECT_EQ(Run(u"flight.csv"_s, u"config"_s, u"out"_s, {u"--record"_s, u""_s}).exitCode, 0);
    EXPECT_FALSE(QFile::exists(Path(u"record.000002.csv"_s)));
}

TEST_F(RecordTest, FilesThatARecordWouldDestroyAreRefusedBeforeAnythingIsOpened) {
    const QByteArray recording = RECORDING_HEADER + "1000,121500000,71.5,,90,,,,,,,\n";
    WriteFile(Path(u"flight.csv"_s), recording);
    WriteFile(Path(u"notes.txt"_s), "notes");
    for (const QString& name : {u"flight.csv"_s, u"notes.txt"_s, u"out"_s}) {
        const StationResult run = Run(u"flight.csv"_s, u"config"_s, u"out"_s, {u"--record"_s, Path(name)});
        EXPECT_EQ(run.exitCode, 1) << name.toStdString();
        EXPECT_TRUE(run.err.contains(u"the recorder cannot write to "_s + Path(name)))
            << run.err.toStdString();
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

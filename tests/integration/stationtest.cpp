#include "support/printing.h"
#include "support/pseudoterminal.h"
#include "support/recordings.h"
#include "support/stationprocess.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <csignal>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

// The station as a person runs it: the program itself, real files, a real pseudo terminal.

namespace {

/// The number behind a name in the summary; -1 when the summary does not have it.
int Counted(const StationResult& result, const QString& name) {
    const QRegularExpression line(u"^%1 +(\\d+)$"_s.arg(QRegularExpression::escape(name)),
                                  QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = line.match(result.out);
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

/// What a running station prints as messages until a text has come.
QByteArray MessagesUntil(QProcess& process, const QByteArray& text) {
    QByteArray messages;
    const QDeadlineTimer deadline(PATIENCE_MS);
    while (!messages.contains(text) && !deadline.hasExpired()) {
        process.waitForReadyRead(100);
        messages += process.readAllStandardError();
    }
    return messages;
}

class StationTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_directory.isValid()); }

    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] QStringList RunArguments(const QString& recording, const QStringList& further = {}) const {
        return QStringList{u"run"_s,      u"--recording"_s,  recording,     u"--speed"_s,  u"max"_s,
                           u"--config"_s, Path(u"config"_s), u"--output"_s, Path(u"out"_s)} +
               further;
    }
    /// A recording of the rows given; returns its name.
    QString Record(const QByteArray& rows) {
        const QString name = Path(u"recording.csv"_s);
        WriteFile(name, RECORDING_HEADER + rows);
        return name;
    }

    /// Waits until a running station has written so many sentences to the output.
    void AwaitSentences(QProcess& process, int count) const {
        EXPECT_TRUE(Await(process, [&] { return ReadFile(Path(u"out"_s)).count("\r\n") >= count; }));
    }

    QTemporaryDir m_directory;
};

} // namespace

TEST_F(StationTest, WritesTheSentencesOfARecordingToTheFile) {
    const StationResult result =
        RunStation(RunArguments(Record("1000,121500000,71.5,10.0,90,-52.04,359.9,1.0,-1.0,52.5,5.5,10.0\n"
                                       "2000,121500000,0.0,,45,,,,,,,\n")));
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(
        ReadFile(Path(u"out"_s)),
        QByteArray(
            "$PLG, 71.5,FRQ, 121500000,CMP,359.9,QUA, 90.0,LEV,-52.0,TIM,000001,ELV,10.0,PTC,1.0,RLL,-1.0,"
            "ALT,10.0,PTM,000001,LAT, 52.50000,LON,5.5000000\r\n"
            "$PLG,  0.0,FRQ, 121500000,CMP, -0.1,QUA, 45.0,LEV, -0.5,TIM,000002,ELV,0.0,PTC,0.0,RLL,0.0,"
            "ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000\r\n"));
}

TEST_F(StationTest, CountsEveryBearingByWhatBecameOfIt) {
    const StationResult result =
        RunStation(RunArguments(Record("1000,121500000,10.0,59.9,90,,,0.0,0.0,,,\n"
                                       "2000,121500000,10.0,60.0,90,,,0.0,0.0,,,\n"
                                       "3000,121500000,10.0,10.0,90,,,5.0,0.0,,,\n"
                                       "4000,121500000,10.0,10.0,90,,,4.9,-5.1,,,\n"
                                       "5000,121500000,10.0,,0,,,0.0,0.0,,,\n"
                                       "6000,121500000,10.0,,90,,,,,,,\n"),
                                {u"--pitch-threshold"_s, u"5"_s, u"--roll-threshold"_s, u"5"_s,
                                 u"--overhead-threshold"_s, u"60"_s, u"--connection-speed"_s, u"1"_s}));
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(Counted(result, u"bearings in"_s), 6);
    EXPECT_EQ(Counted(result, u"rejected: pitch/roll"_s), 2);
    EXPECT_EQ(Counted(result, u"rejected: overhead pass"_s), 1);
    EXPECT_EQ(Counted(result, u"without signal"_s), 0);
    EXPECT_EQ(Counted(result, u"marked as unusable"_s), 1)
        << "the one without signal, and none a second time";
    EXPECT_EQ(Counted(result, u"published"_s), 2);
    EXPECT_EQ(Counted(result, u"sentences to file"_s), 2);
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 2);
}

TEST_F(StationTest, RecordingIsNeverDestroyedByTheOutput) {
    const QString recording = Record("1000,121500000,10.0,,90,,,,,,,\n");
    const QByteArray content = ReadFile(recording);
    const QString symbolic = Path(u"symbolic"_s);
    const QString hard = Path(u"hard"_s);
    ASSERT_TRUE(QFile::link(recording, symbolic));
    ASSERT_EQ(::link(recording.toLocal8Bit().constData(), hard.toLocal8Bit().constData()), 0);
    ASSERT_TRUE(QFile::copy(recording, Path(u"kept.bak"_s)));
    for (const auto& [input, output] : {std::pair{recording, recording},
                                        {recording, symbolic},
                                        {symbolic, recording},
                                        {recording, hard},
                                        {Path(u"kept.bak"_s), Path(u"kept"_s)}}) {
        QStringList arguments = RunArguments(input);
        arguments.replace(arguments.indexOf(Path(u"out"_s)), output);
        const StationResult result = RunStation(arguments);
        EXPECT_EQ(result.exitCode, 1) << output.toStdString();
        EXPECT_TRUE(result.err.contains(u"recording"_s) && result.err.contains(output))
            << result.err.toStdString();
        EXPECT_EQ(ReadFile(recording), content);
        EXPECT_EQ(ReadFile(Path(u"kept.bak"_s)), content);
        EXPECT_FALSE(QFile::exists(Path(u"config/Application.ini"_s))) << "nothing was opened";
    }
}

TEST_F(StationTest, RecordingIsNotDestroyedByAnOutputThatIsInTheSettingsEither) {
    const QString recording = Record("1000,121500000,10.0,,90,,,,,,,\n");
    const QByteArray content = ReadFile(recording);
    ASSERT_TRUE(QDir().mkpath(Path(u"config"_s)));
    WriteFile(Path(u"config/Application.ini"_s),
              "FileOutput_Enabled=true\nFileOutput_Address=" + recording.toUtf8() + '\n');
    const QStringList arguments{u"run"_s, u"--recording"_s, recording,        u"--speed"_s,
                                u"max"_s, u"--config"_s,    Path(u"config"_s)};
    EXPECT_EQ(RunStation(arguments).exitCode, 1);
    EXPECT_EQ(ReadFile(recording), content);
    EXPECT_EQ(RunStation(arguments + QStringList{u"--output"_s, u""_s}).exitCode, 0) << "switched off";
    EXPECT_EQ(ReadFile(recording), content);
}

TEST_F(StationTest, RelativeOutputOfTheSettingsCountsFromThereAndDestroysNoRecordingEither) {
    ASSERT_TRUE(QDir().mkpath(Path(u"config"_s)));
    ASSERT_TRUE(QFile::rename(Record("1000,121500000,10.0,,90,,,,,,,\n"), Path(u"config/recording.csv"_s)));
    const QByteArray content = ReadFile(Path(u"config/recording.csv"_s));
    WriteFile(Path(u"config/Application.ini"_s),
              "FileOutput_Enabled=true\nFileOutput_Address=recording.csv\n");
    const StationResult result = RunStation({u"run"_s, u"--recording"_s, Path(u"config/recording.csv"_s),
                                             u"--speed"_s, u"max"_s, u"--config"_s, Path(u"config"_s)});
    EXPECT_EQ(result.exitCode, 1) << result.err.toStdString();
    EXPECT_EQ(ReadFile(Path(u"config/recording.csv"_s)), content);
    EXPECT_FALSE(QFile::exists(Path(u"config/recording.csv.bak"_s)));
}

TEST_F(StationTest, OutputIsNoFileOfTheStationItself) {
    const QString recording = Record("1000,121500000,10.0,,90,,,,,,,\n");
    ASSERT_EQ(RunStation(RunArguments(recording)).exitCode, 0);
    ASSERT_TRUE(QFile::copy(Path(u"config/Application.ini"_s), Path(u"config/TrafficControl.ini"_s)));
    const QByteArray settings = ReadFile(Path(u"config/Application.ini"_s));
    const QStringList logs = QDir(Path(u"config/ZANControl"_s)).entryList(QDir::Files);
    ASSERT_FALSE(logs.isEmpty());
    for (const QString& name : {u"Application.ini"_s, u"TrafficControl.ini"_s, u"station.lock"_s,
                                u"ZANControl/"_s + logs.constFirst()}) {
        QStringList arguments = RunArguments(recording);
        arguments.replace(arguments.indexOf(Path(u"out"_s)), Path(u"config/"_s + name));
        const StationResult result = RunStation(arguments);
        EXPECT_EQ(result.exitCode, 1) << name.toStdString();
        EXPECT_TRUE(result.err.contains(u"belongs to the station"_s)) << result.err.toStdString();
        EXPECT_EQ(ReadFile(Path(u"config/Application.ini"_s)), settings);
    }
}

TEST_F(StationTest, OutputIsNoFileThatTheFirstRunIsAboutToMakeEither) {
    const QString recording = Record("1000,121500000,10.0,,90,,,,,,,\n");
    for (const auto& [name, message] :
         {std::pair{u"Application.ini"_s, u"belongs to the station"_s},
          {u"Application.ini.lock"_s, u"belongs to the station"_s},
          {u"TrafficControl.ini"_s, u"belongs to the station"_s},
          {u"ZANControl/commandlog-replay.txt"_s, u"belongs to the station"_s}}) {
        const QString config = Path(u"fresh-"_s + QFileInfo(name).fileName());
        const StationResult result =
            RunStation({u"run"_s, u"--speed"_s, u"max"_s, u"--config"_s, config, u"--output"_s,
                        config + u'/' + name, u"--recording"_s, recording});
        EXPECT_EQ(result.exitCode, 1) << name.toStdString();
        EXPECT_TRUE(result.err.contains(message)) << result.err.toStdString();
        EXPECT_EQ(QDir(config).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  QStringList{u"station.lock"_s})
            << "nothing is made";
    }
}

TEST_F(StationTest, StationThatTheCountLeavesOutKeepsItsAntennas) {
    const QString recording = Record("1000,121500000,10.0,,90,,,,,,,\n");
    ASSERT_EQ(RunStation(RunArguments(recording)).exitCode, 0);
    QByteArray settings = ReadFile(Path(u"config/Application.ini"_s));
    settings.replace("Count=1\n", "").replace("MinRange=30000001.000", "MinRange=40000000.000");
    WriteFile(Path(u"config/Application.ini"_s), settings);
    const StationResult result = RunStation({u"antennas"_s, u"list"_s, u"--config"_s, Path(u"config"_s)});
    EXPECT_TRUE(result.out.contains(u"40 MHz - 1.3 GHz"_s)) << result.out.toStdString();
    EXPECT_TRUE(result.err.contains(u"ZANStations/Count"_s)) << result.err.toStdString();
    EXPECT_TRUE(ReadFile(Path(u"config/Application.ini"_s)).contains("MinRange=40000000.000"));
}

TEST_F(StationTest, RecordingThatCannotBeReadLeavesTheLastOutputAndTheSettingsAlone) {
    ASSERT_EQ(RunStation(RunArguments(Record("1000,121500000,10.0,,90,,,,,,,\n"))).exitCode, 0);
    const QByteArray sentences = ReadFile(Path(u"out"_s));
    QStringList arguments = RunArguments(Path(u"missing.csv"_s), {u"--interval"_s, u"10"_s});
    EXPECT_EQ(RunStation(arguments).exitCode, 1);
    EXPECT_EQ(ReadFile(Path(u"out"_s)), sentences);
    EXPECT_FALSE(QFile::exists(Path(u"out.bak"_s)));
    EXPECT_TRUE(ReadFile(Path(u"config/Application.ini"_s)).contains("Output_Interval=0\n"));
}

TEST_F(StationTest, SettingOutOfRangeEndsTheRunBeforeItOpensAnything) {
    ASSERT_TRUE(QDir().mkpath(Path(u"config"_s)));
    const QString recording = Record("1000,121500000,10.0,,90,,,,,,,\n");
    const QByteArray station = "[ZANStations]\nCount=1\n[ZANStations/ZANStation0]\nDeviceAddress=replay\n";
    for (const auto& [settings, message] :
         {std::pair{
              QByteArray("Output_Interval=20000\n"),
              u"the setting \"Output_Interval\" is \"20000\"; allowed are whole numbers from 0 to 10000"_s},
          {station + "PitchThreshold=95\n",
           u"the setting \"PitchThreshold\" is \"95\"; allowed is -90 to 90"_s}}) {
        const QByteArray written = "; by hand\n" + settings;
        WriteFile(Path(u"config/Application.ini"_s), written);
        const StationResult result = RunStation(RunArguments(recording));
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.err.contains(message)) << result.err.toStdString();
        EXPECT_EQ(ReadFile(Path(u"config/Application.ini"_s)), written) << "as the operator wrote it";
        EXPECT_FALSE(QFile::exists(Path(u"out"_s)));
        EXPECT_FALSE(QFile::exists(Path(u"config/ZANControl"_s)));
    }
}

TEST_F(StationTest, OtherCommandsLeaveASettingOutOfRangeAsItIs) {
    ASSERT_TRUE(QDir().mkpath(Path(u"config"_s)));
    WriteFile(Path(u"config/Application.ini"_s),
              "[ZANStations]\nCount=1\n[ZANStations/ZANStation0]\nDeviceAddress=replay\nPitchThreshold=95\n");
    const StationResult result = RunStation({u"tree"_s, u"--config"_s, Path(u"config"_s)});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.err.contains(u"warning: the setting \"PitchThreshold\" is \"95\""_s))
        << result.err.toStdString();
    EXPECT_TRUE(result.out.contains(u"/Par/Pos/PitchThreshold\tDouble\t5\t"_s));
    EXPECT_TRUE(ReadFile(Path(u"config/Application.ini"_s)).contains("\nPitchThreshold=95\n"));
}

TEST_F(StationTest, CommandsThatLookLeaveWhatTheyCannotReadToTheByte) {
    const auto run = [this](const QString& command) {
        return RunStation(command.split(u' ') + QStringList{u"--config"_s, Path(u"config"_s)});
    };
    ASSERT_EQ(RunStation(RunArguments(Record("1000,121500000,10.0,,90,,,,,,,\n"))).exitCode, 0);
    const QByteArray stored = ReadFile(Path(u"config/Application.ini"_s));
    const QByteArray frequencies = "[TrafficControlFrequencies]\nTCFrequencyCount=some\n";
    WriteFile(Path(u"config/TrafficControl.ini"_s), frequencies);
    for (const auto& [old, bad] : {std::pair<QByteArray, QByteArray>{"Valid=false", "Valid=maybe"},
                                   {"Threshold=600", "Threshold=6OO"},
                                   {"FileOutput_Enabled=true", "FileOutput_Enabled=maybe"},
                                   {"HwCheckRequirements=false", "HwCheckRequirements=maybe"},
                                   {"SynFastMode=false", "SynFastMode=maybe"},
                                   {"\nEnabled=true", "\nEnabled=maybe"}}) {
        const QByteArray written = "; by hand\n" + QByteArray(stored).replace(old, bad);
        ASSERT_TRUE(written.contains(bad)) << stored.toStdString();
        WriteFile(Path(u"config/Application.ini"_s), written);
        for (const QString& command :
             {u"device"_s, u"antennas list"_s, u"antennas check"_s, u"tune --frequency 100M"_s, u"hardware"_s,
              u"frequencies list"_s, u"doctor"_s, u"tree"_s}) {
            run(command);
            EXPECT_EQ(ReadFile(Path(u"config/Application.ini"_s)), written) << command.toStdString();
            EXPECT_EQ(ReadFile(Path(u"config/TrafficControl.ini"_s)), frequencies);
        }
    }
    EXPECT_EQ(QDir(Path(u"config"_s)).entryList({u"*.damaged*"_s}), QStringList());
}

TEST_F(StationTest, OverheadParametersThatCanBeReadAreUsedBesideOneThatCannot) {
    ASSERT_TRUE(QDir().mkpath(Path(u"config"_s)));
    for (const auto& [settings, threshold, isValid] :
         {std::tuple{"Threshold=450\nValid=maybe\n", u"450"_s, u"0"_s},
          {"Threshold=6OO\nValid=true\n", u"600"_s, u"1"_s},
          {"Threshold=901\nValid=true\n", u"600"_s, u"1"_s}}) {
        WriteFile(Path(u"config/Application.ini"_s), QByteArray("[OverheadPass]\n") + settings);
        const QString tree = RunStation({u"tree"_s, u"--config"_s, Path(u"config"_s)}).out;
        EXPECT_TRUE(tree.contains(u"/OverheadPass/Threshold\tInt\t%1\t"_s.arg(threshold)))
            << settings << tree.toStdString();
        EXPECT_TRUE(tree.contains(u"/OverheadPass/Valid\tBool\t%1\t"_s.arg(isValid))) << settings;
    }
}

TEST_F(StationTest, BearingsWithoutASentenceAreReportedWithTheCause) {
    const QString recording = Record("1000,121500000,10.0,,90,,,,,,,\n");
    StationResult result = RunStation(RunArguments(recording, {u"--interval"_s, u"9000"_s}));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.err.contains(u"1 bearing published, no sentence written: the interval of 9000 ms "
                                    "is longer than the run"_s))
        << result.err.toStdString();
    QStringList withoutOutput = RunArguments(recording, {u"--interval"_s, u"0"_s});
    withoutOutput.replace(withoutOutput.indexOf(Path(u"out"_s)), u""_s);
    result = RunStation(withoutOutput);
    EXPECT_TRUE(result.err.contains(u"1 bearing published, no sentence written: all outputs are off"_s))
        << result.err.toStdString();
    result = RunStation(RunArguments(Record("1000,121500000,10.0,,0,,,,,,,\n")));
    EXPECT_FALSE(result.err.contains(u"no sentence"_s)) << "nothing was published";
}

TEST_F(StationTest, BearingsWithoutASentenceAreReportedWhileTheRunGoesOn) {
    QProcess process;
    QStringList arguments =
        RunArguments(Record("0,121500000,10.0,,90,,,,,,,\n3600000,121500000,20.0,,90,,,,,,,\n"),
                     {u"--interval"_s, u"10000"_s});
    arguments.replace(arguments.indexOf(u"max"_s), u"realtime"_s);
    process.start(QStringLiteral(ZAN_STATION), arguments);
    const QByteArray messages = MessagesUntil(process, "no sentence written yet: the interval is 10000 ms");
    EXPECT_TRUE(messages.contains("the interval is 10000 ms")) << messages.toStdString();
    process.terminate();
    EXPECT_TRUE(process.waitForFinished(PATIENCE_MS));
}

TEST_F(StationTest, OutputThatIsRemovedOrMovedWhileItIsWrittenIsReportedAndBegunAgain) {
    const QByteArray gone =
        "File " + Path(u"out"_s).toUtf8() + " was removed, moved or replaced while sentences were written";
    QProcess process;
    process.start(QStringLiteral(ZAN_STATION), RunArguments(u"-"_s));
    process.write(RECORDING_HEADER + "1000,121500000,10.0,,90,,,,,,,\n");
    AwaitSentences(process, 1);
    ASSERT_TRUE(QFile::rename(Path(u"out"_s), Path(u"out.1"_s)));
    QByteArray messages = MessagesUntil(process, "zanstation: " + gone);
    process.write("2000,121500000,20.0,,90,,,,,,,\n");
    AwaitSentences(process, 1);
    EXPECT_TRUE(ReadFile(Path(u"out.1"_s)).startsWith("$PLG, 10.0"));
    EXPECT_TRUE(ReadFile(Path(u"out"_s)).startsWith("$PLG, 20.0"));
    EXPECT_FALSE(QFile::exists(Path(u"out.bak"_s)));
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    messages += process.readAllStandardError();
    EXPECT_EQ(messages.count("zanstation: " + gone), 1) << messages.toStdString();
    EXPECT_EQ(process.exitCode(), 1);
}

TEST_F(StationTest, RecordingThatTakesThePlaceOfTheOutputIsLeftAlone) {
    // The second row is due after an hour.
    const QString recording = Record("0,121500000,10.0,,90,,,,,,,\n3600000,121500000,20.0,,90,,,,,,,\n");
    const QByteArray content = ReadFile(recording);
    for (const bool isStandardInput : {false, true}) {
        QProcess process;
        QStringList arguments = RunArguments(isStandardInput ? u"-"_s : recording);
        arguments.replace(arguments.indexOf(u"max"_s), u"realtime"_s);
        if (isStandardInput) {
            process.setStandardInputFile(recording);
        }
        process.start(QStringLiteral(ZAN_STATION), arguments);
        AwaitSentences(process, 1);
        ASSERT_TRUE(QFile::remove(Path(u"out"_s)) && QFile::rename(recording, Path(u"out"_s)));
        const QByteArray refused = "Could not open file " + Path(u"out"_s).toUtf8() +
                                   ": another output writes to it, or it is read as a recording";
        EXPECT_TRUE(MessagesUntil(process, "zanstation: " + refused).contains("zanstation: " + refused));
        process.terminate();
        EXPECT_TRUE(process.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(ReadFile(Path(u"out"_s)), content);
        EXPECT_TRUE(QFile::rename(Path(u"out"_s), recording));
    }
}

TEST_F(StationTest, RecordingIsReadFromStandardInput) {
    QProcess process;
    QStringList arguments = RunArguments(u"-"_s);
    process.start(QStringLiteral(ZAN_STATION), arguments);
    process.write(RECORDING_HEADER + "1000,121500000,10.0,,90,,,,,,,\n");
    AwaitSentences(process, 1);
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 1) << "the row is there before the next one comes";
    process.write("2000,121500000,20.0,,90,,,,,,,\n");
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 2);
}

TEST_F(StationTest, StandardOutputTakesTheSentencesOfThisRunAndNothingElse) {
    const QString recording = Record("1000,121500000,71.5,10.0,90,,,,,,,\n");
    ASSERT_EQ(RunStation(RunArguments(recording)).exitCode, 0);
    const QByteArray sentences = ReadFile(Path(u"out"_s));
    const QByteArray settings = ReadFile(Path(u"config/Application.ini"_s));
    QStringList arguments = RunArguments(recording);
    arguments.replace(arguments.indexOf(Path(u"out"_s)), u"-"_s);
    const StationResult result = RunStation(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out.toUtf8(), sentences);
    EXPECT_TRUE(result.err.contains(u"\nsentences to file                  1\n"_s))
        << result.err.toStdString();
    EXPECT_EQ(ReadFile(Path(u"config/Application.ini"_s)), settings) << "it is not kept";
    EXPECT_FALSE(QFile::exists(Path(u"out.bak"_s)));
}

TEST_F(StationTest, FifoWithoutAWriterIsInterruptedLikeAnyRun) {
    const QString fifo = Path(u"fifo"_s);
    ASSERT_EQ(::mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);
    QProcess process;
    process.start(QStringLiteral(ZAN_STATION), RunArguments(fifo));
    EXPECT_TRUE(Await(process, [this] { return QFile::exists(Path(u"out"_s)); }));
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 130);
    EXPECT_FALSE(process.readAllStandardError().contains("fifo")) << "nothing is wrong with it";
}

TEST_F(StationTest, WhatIsWrongWithTheDeviceIsWarnedOf) {
    const QString recording = Record("1000,121500000,10.0,,90,,,,,,,\n2000,121500000,10.0,,90,,,,,,,\n");
    ASSERT_EQ(RunStation(RunArguments(recording)).exitCode, 0);
    const QString name = Path(u"config/Application.ini"_s);
    WriteFile(name, ReadFile(name)
                        .replace("DevType=ZANTIDE", "DevType=ZANTIDY")
                        .replace("HwCheckRequirements=false", "HwCheckRequirements=true")
                        .replace("HwRequiredComponents=", "HwRequiredComponents=RCV09"));
    ASSERT_EQ(
        RunStation({u"antennas"_s, u"disable"_s, u"PX106"_s, u"--config"_s, Path(u"config"_s)}).exitCode, 1);
    const StationResult result = RunStation(RunArguments(recording));
    EXPECT_EQ(result.exitCode, 0);
    for (const QString& warning :
         {u"warning: device type: unknown type \"ZANTIDY\", it is treated as ZANTIDE; known types are "_s,
          u"warning: antenna setup: Frequency range is not entirely covered without gaps."_s,
          u"warning: hardware: required and missing: RCV09"_s,
          u"warning: no enabled antenna serves 121.5 MHz"_s}) {
        EXPECT_EQ(result.err.count(warning), 1) << warning.toStdString() << result.err.toStdString();
    }
}

TEST_F(StationTest, SimulatedRecordingGoesThroughWithEveryFilterAtWork) {
    const QString recording = Path(u"simulated.csv"_s);
    ASSERT_EQ(RunStation({u"simulate"_s, u"--seed"_s, u"7"_s, u"--out"_s, recording}).exitCode, 0);
    const StationResult result = RunStation(RunArguments(recording, {u"--overhead-threshold"_s, u"60"_s}));
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(Counted(result, u"bearings in"_s), 600);
    EXPECT_GT(Counted(result, u"rejected: pitch/roll"_s), 0);
    EXPECT_GT(Counted(result, u"rejected: overhead pass"_s), 0);
    EXPECT_EQ(Counted(result, u"bearings in"_s), Counted(result, u"rejected: pitch/roll"_s) +
                                                     Counted(result, u"rejected: overhead pass"_s) +
                                                     Counted(result, u"published"_s));
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), Counted(result, u"published"_s));
    EXPECT_EQ(Counted(result, u"dropped: file"_s), 0);
}

TEST_F(StationTest, BadLinesAreReportedWithTheirNumberAndTheRestIsUsed) {
    const StationResult result = RunStation(RunArguments(Record("1000,121500000,10.0,,90,,,,,,,\n"
                                                                "2000,121500000,360,,90,,,,,,,\n"
                                                                "3000,abc,10.0,,90,,,,,,,\n"
                                                                "4000,121500000,10.0\n"
                                                                "5000,121500000,20.0,,90,,,,,,,\n")));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(Counted(result, u"bearings in"_s), 2);
    for (const QString& line : {u"line 3"_s, u"line 4"_s, u"line 5"_s}) {
        EXPECT_TRUE(result.err.contains(line)) << result.err.toStdString();
    }
    EXPECT_EQ(result.out.count(u"lines skipped, "_s), 3) << result.out.toStdString();
}

TEST_F(StationTest, RecordingThatCannotBeReadEndsTheRunWithItsName) {
    for (const QString& recording : {Path(u"missing.csv"_s), m_directory.path()}) {
        const StationResult result = RunStation(RunArguments(recording));
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.err.contains(recording)) << result.err.toStdString();
    }
}

TEST_F(StationTest, WrongCommandLineIsRefusedBeforeAnythingIsTouched) {
    const QStringList commandLines[] = {
        {},
        {u"fly"_s},
        {u"run"_s, u"--fly"_s},
        {u"run"_s, u"recording.csv"_s},
        RunArguments(u"x"_s, {u"--speed"_s, u"0"_s}),
        RunArguments(u"x"_s, {u"--speed"_s, u"inf"_s}),
        RunArguments(u"x"_s, {u"--interval"_s, u"-1"_s}),
        RunArguments(u"x"_s, {u"--interval"_s, u"1.5"_s}),
        RunArguments(u"x"_s, {u"--overhead-threshold"_s, u"90.1"_s}),
        RunArguments(u"x"_s, {u"--pitch-threshold"_s, u"nan"_s}),
        RunArguments(u"x"_s, {u"--option"_s, u"=1"_s}),
        {u"simulate"_s},
        {u"simulate"_s, u"--seed"_s, u"x"_s, u"--out"_s, Path(u"x"_s)},
    };
    for (const QStringList& commandLine : commandLines) {
        const StationResult result = RunStation(commandLine);
        EXPECT_EQ(result.exitCode, 2) << commandLine.join(u' ').toStdString();
        EXPECT_FALSE(result.err.isEmpty()) << commandLine.join(u' ').toStdString();
    }
    EXPECT_TRUE(QDir(m_directory.path()).isEmpty());
}

TEST_F(StationTest, HelpAndVersionGoToStandardOutput) {
    for (const QStringList& commandLine :
         {QStringList{u"--help"_s}, QStringList{u"--version"_s}, QStringList{u"run"_s, u"--help"_s},
          QStringList{u"simulate"_s, u"--help"_s}, QStringList{u"tree"_s, u"--help"_s}}) {
        const StationResult result = RunStation(commandLine);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_TRUE(result.out.contains(u"zanstation"_s)) << result.out.toStdString();
        EXPECT_TRUE(result.err.isEmpty()) << result.err.toStdString();
    }
}

TEST_F(StationTest, PreviousOutputIsKeptAndTheSettingsOfTheLastRunHold) {
    const QString recording = Record("1000,121500000,10.0,,90,,,,,,,\n");
    ASSERT_EQ(RunStation(RunArguments(recording)).exitCode, 0);
    const QByteArray sentences = ReadFile(Path(u"out"_s));
    ASSERT_FALSE(sentences.isEmpty());
    const StationResult second = RunStation(
        {u"run"_s, u"--recording"_s, recording, u"--speed"_s, u"max"_s, u"--config"_s, Path(u"config"_s)});
    EXPECT_EQ(second.exitCode, 0) << second.err.toStdString();
    EXPECT_EQ(ReadFile(Path(u"out"_s)), sentences);
    EXPECT_EQ(ReadFile(Path(u"out.bak"_s)), sentences);
}

TEST_F(StationTest, OutputFileThatCannotBeOpenedIsReportedAndFailsTheRun) {
    const StationResult result = RunStation(
        {u"run"_s, u"--recording"_s, Record("1000,121500000,10.0,,90,,,,,,,\n"), u"--speed"_s, u"max"_s,
         u"--config"_s, Path(u"config"_s), u"--output"_s, Path(u"no/such/directory/out"_s)});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(u"no/such/directory/out"_s)) << result.err.toStdString();
    EXPECT_EQ(Counted(result, u"published"_s), 1);
    EXPECT_EQ(Counted(result, u"dropped: file"_s), 1);
}

TEST_F(StationTest, SettingsDirectoryThatCannotBeUsedEndsTheRun) {
    WriteFile(Path(u"config"_s), "a file");
    const StationResult result = RunStation(RunArguments(Record("")));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(u"config"_s)) << result.err.toStdString();
}

TEST_F(StationTest, InterruptedRunEndsWithEverythingWrittenThatCameIn) {
    // The second row is due after an hour.
    const QString recording = Record("0,121500000,10.0,,90,,,,,,,\n3600000,121500000,20.0,,90,,,,,,,\n");
    for (const int signal : {SIGINT, SIGTERM}) {
        QProcess process;
        QStringList arguments = RunArguments(recording);
        arguments.replace(arguments.indexOf(u"max"_s), u"realtime"_s);
        process.start(QStringLiteral(ZAN_STATION), arguments);
        AwaitSentences(process, 1);
        ::kill(static_cast<pid_t>(process.processId()), signal);
        ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 128 + signal) << process.readAllStandardError().toStdString();
        const StationResult result{
            process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()), {}};
        EXPECT_EQ(Counted(result, u"sentences to file"_s), 1);
        EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 1);
        QFile::remove(Path(u"out"_s));
    }
}

TEST_F(StationTest, SerialLineReceivesOneSentenceABearing) {
    const PseudoTerminal line;
    QProcess process;
    process.start(QStringLiteral(ZAN_STATION),
                  {u"run"_s, u"--recording"_s,
                   Record("1000,121500000,71.5,,90,,,,,,,\n2000,121500000,72.5,,90,,,,,,,\n"), u"--speed"_s,
                   u"max"_s, u"--config"_s, Path(u"config"_s), u"--serial"_s, line.path + u":9600,n,8,1"_s});
    QByteArray received;
    EXPECT_TRUE(Await(process, [&] { return (received += line.Read()).count("\r\n") >= 2; }));
    EXPECT_EQ(received, QByteArray("$PLG, 71.5,FRQ, 121500000,CMP, -0.1,QUA, 90.0,LEV, -0.5,TIM,000001\r\n"
                                   "$PLG, 72.5,FRQ, 121500000,CMP, -0.1,QUA, 90.0,LEV, -0.5,TIM,000002\r\n"));
    EXPECT_TRUE(process.state() == QProcess::NotRunning || process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 0);
}

TEST_F(StationTest, IntervalWritesSentencesByTheClock) {
    // One bearing at once, and another one when the first sentences are through.
    QProcess process;
    QStringList arguments =
        RunArguments(Record("0,121500000,10.0,,90,,,,,,,\n3600000,121500000,20.0,,90,,,,,,,\n"),
                     {u"--interval"_s, u"10"_s});
    arguments.replace(arguments.indexOf(u"max"_s), u"realtime"_s);
    process.start(QStringLiteral(ZAN_STATION), arguments);
    AwaitSentences(process, 3);
    process.terminate();
    EXPECT_TRUE(process.waitForFinished(PATIENCE_MS));
}

TEST_F(StationTest, ProgressIsShownWhereItIsAskedFor) {
    const QString recording = Record("1000,121500000,10.0,,90,,,,,,,\n");
    EXPECT_TRUE(RunStation(RunArguments(recording, {u"--option"_s, u"Progress=true"_s}))
                    .err.contains(u"100%  in 1"_s));
    EXPECT_FALSE(RunStation(RunArguments(recording)).err.contains(u"in 1"_s));
}

TEST_F(StationTest, TreeShowsPathTypeAndValueOfWhatAStartPublishes) {
    const StationResult result = RunStation({u"tree"_s, u"--config"_s, Path(u"config"_s)});
    EXPECT_EQ(result.exitCode, 0);
    for (const QString& line : {u"/DEVICES/ZANServer/DevAttr/DevType\tString\tZANTIDE\t1\n"_s,
                                u"/ZANServer/DevAttr/OperationMode\tSelection\tScan\t0\n"_s,
                                u"/ZANServer/Res/DfR/Azimuth\tBearing\t,,,,,\t0\n"_s,
                                u"/ZANServer/OverheadPass/Threshold\tInt\t600\t1\n"_s}) {
        EXPECT_TRUE(result.out.contains(line)) << line.toStdString() << result.out.toStdString();
    }
}

// Recordings of real receivers are not part of the project; where they are at hand, the counts must be those
// that were counted in the files by other means.

class StationRecordTest : public StationTest {
protected:
    void SetUp() override {
        StationTest::SetUp();
        m_recordings = qEnvironmentVariable("ZAN_RECORDINGS");
        if (m_recordings.isEmpty()) {
            GTEST_SKIP() << "ZAN_RECORDINGS does not name a directory of recordings";
        }
    }

    QString m_recordings;
};

TEST_F(StationRecordTest, OverheadPassesOfAnAircraftAreRejectedFromSixtyDegreesOn) {
    const StationResult result =
        RunStation(RunArguments(m_recordings + u"/overhead.csv"_s, {u"--overhead-threshold"_s, u"60"_s}));
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(Counted(result, u"bearings in"_s), 6450);
    EXPECT_EQ(Counted(result, u"rejected: overhead pass"_s), 46);
    EXPECT_EQ(Counted(result, u"rejected: pitch/roll"_s), 0);
    EXPECT_EQ(Counted(result, u"sentences to file"_s), 6404);
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 6404);
}

TEST_F(StationRecordTest, BearingsOfATiltedVehicleAreRejectedFromFiveDegreesOn) {
    const StationResult result = RunStation(RunArguments(
        m_recordings + u"/vehicle.csv"_s, {u"--pitch-threshold"_s, u"5"_s, u"--roll-threshold"_s, u"5"_s}));
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(Counted(result, u"bearings in"_s), 449);
    EXPECT_EQ(Counted(result, u"rejected: pitch/roll"_s), 240);
    EXPECT_EQ(Counted(result, u"sentences to file"_s), 209);
}

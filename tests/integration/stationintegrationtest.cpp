#include "support/printing.h"
#include "support/recordings.h"
#include "support/stationprocess.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <csignal>

using namespace Qt::StringLiterals;

// What the station keeps from run to run, logs, and shares with other programs.

namespace {

const QByteArray RECORDING =
    RECORDING_HEADER + "1000,121500000,71.5,10.0,90,-52.04,359.9,1.0,-1.0,52.5,5.5,10.0\n";

class StationIntegrationTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_directory.isValid());
        WriteFile(Path(u"recording.csv"_s), RECORDING);
    }

    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] QString Config() const { return Path(u"config"_s); }
    StationResult Run(const QStringList& arguments) {
        return RunStation(arguments + QStringList{u"--config"_s, Config()});
    }
    StationResult Replay(const QStringList& further = {}) {
        return Run(QStringList{u"run"_s, u"--recording"_s, Path(u"recording.csv"_s), u"--speed"_s, u"max"_s,
                               u"--output"_s, Path(u"out"_s)} +
                   further);
    }
    [[nodiscard]] QString Settings() const {
        return QString::fromUtf8(ReadFile(Config() + u"/Application.ini"_s));
    }
    /// Changes a line of the settings as a person with an editor does.
    void Edit(const QString& key, const QString& value) {
        QString settings = Settings();
        const QRegularExpression line(u"^"_s + key + u"=.*$"_s, QRegularExpression::MultilineOption);
        ASSERT_TRUE(settings.contains(line)) << key.toStdString();
        WriteFile(Config() + u"/Application.ini"_s, settings.replace(line, key + u'=' + value).toUtf8());
    }

    QTemporaryDir m_directory;
};

} // namespace

TEST_F(StationIntegrationTest, WhatTheOperatorSetsForTheDeviceSurvivesARestart) {
    EXPECT_EQ(Replay({u"--pitch-threshold"_s, u"12.5"_s, u"--roll-threshold"_s, u"7"_s}).exitCode, 0);
    EXPECT_TRUE(Settings().contains(u"\nPitchThreshold=12.5\n"_s)) << Settings().toStdString();
    Edit(u"Declination"_s, u"-35"_s);
    Edit(u"GainControlMode"_s, u"1"_s);
    Edit(u"PreAmplifierHf"_s, u"true"_s);
    const StationResult tree = Run({u"tree"_s});
    for (const QString& line :
         {u"/ZANServer/Par/Pos/PitchThreshold\tDouble\t12.5\t"_s,
          u"/ZANServer/Par/Pos/RollThreshold\tDouble\t7\t"_s, u"/ZANServer/Par/Hea/Declination\tInt\t-35\t"_s,
          u"/ZANServer/Par/Rx/PreAmplifierHf\tBool\t1\t"_s}) {
        EXPECT_TRUE(tree.out.contains(line)) << line.toStdString() << tree.out.toStdString();
    }
    Run({u"device"_s});
    for (const QString& line : {u"\nDeclination=-35\n"_s, u"\nGainControlMode=1\n"_s,
                                u"\nPreAmplifierHf=true\n"_s, u"\nPitchThreshold=12.5\n"_s}) {
        EXPECT_TRUE(Settings().contains(line)) << line.toStdString() << Settings().toStdString();
    }
}

TEST_F(StationIntegrationTest, PositionOfTheLastRunDoesNotPassAsTheCurrentOne) {
    Replay();
    EXPECT_FALSE(Settings().contains(u"=52.5\n"_s))
        << "nor stays it in the settings, which keep what was set";
    WriteFile(Path(u"recording.csv"_s),
              QByteArray(RECORDING).replace("359.9,1.0,-1.0,52.5,5.5,10.0", ",,,,,"));
    Replay();
    const QByteArray sentences = ReadFile(Path(u"out"_s));
    EXPECT_FALSE(sentences.contains("52.5")) << sentences.toStdString();
}

TEST_F(StationIntegrationTest, HardwareIsComparedWithWhatTheSettingsRequire) {
    StationResult result = Run({u"hardware"_s});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.out.contains(u"\nPX106      found, unknown\n"_s)) << result.out.toStdString();
    Edit(u"HwRequiredComponents"_s, u"PX110;RCV01;RCV09"_s);
    Edit(u"HwOptionalComponents"_s, u"PX106;PX333"_s);
    result = Run({u"hardware"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, u"component  state\n"
                          "PX106      optional, found\n"
                          "PX109      found, unknown\n"
                          "PX110      required, found\n"
                          "PX333      optional, missing\n"
                          "RCV01      required, found\n"
                          "RCV03      found, unknown\n"
                          "RCV09      required, missing\n"_s);
    EXPECT_TRUE(result.err.contains(u"missing: RCV09"_s)) << result.err.toStdString();
    EXPECT_TRUE(Settings().contains(u"\nHwRequiredComponents=PX110;RCV01;RCV09\n"_s)) << "and they stay";
}

TEST_F(StationIntegrationTest, RunKeepsACommandLogWithTheSettings) {
    EXPECT_EQ(Replay().exitCode, 0);
    const QString directory = Config() + u"/ZANControl"_s;
    const QString log = QString::fromUtf8(ReadFile(directory + u"/commandlog-replay.txt"_s));
    const QRegularExpression expected(
        u"\\A\\d\\d:\\d\\d:\\d\\d:\\d\\d\\d:\tDF-Address: replay\tReplay of a recording\n\n"
        "[\\d:]+:\topen .*/recording.csv\n[\\d:]+:\ttest speed max\n[\\d:]+:\tmode 3\n[\\d:]+:\tend of the recording\n[\\d:]+:\tmode 0\n\\z"_s);
    EXPECT_TRUE(expected.match(log).hasMatch()) << log.toStdString();
    EXPECT_EQ(Replay().exitCode, 0);
    EXPECT_EQ(QDir(directory).entryList({u"*.bak"_s}).size(), 2);
    EXPECT_FALSE(QDir(m_directory.path()).exists(u"ZANControl"_s));
}

TEST_F(StationIntegrationTest, CommandLogThatCannotBeKeptIsReportedAndHoldsNothingUp) {
    Run({u"device"_s});
    WriteFile(Config() + u"/ZANControl"_s, "a file has the name of the directory");
    const StationResult result = Replay();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err.count(u"no command log: CommandProtocol: Could not open file"_s), 1)
        << result.err.toStdString();
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("$PLG"), 1);
}

TEST_F(StationIntegrationTest, FrequenciesAreImportedAndListed) {
    WriteFile(Path(u"channels.csv"_s), "\xEF\xBB\xBFid,Name,\"Frequency_MHz\",alarm,note\n"
                                       "7,Tower,118.5,1,\n"
                                       "8,\"Ground, \"\"south\"\"\",121.725,0,x\n"
                                       "\n"
                                       "nine,Apron,121.9,0,\n"
                                       "10,Bad,many,0,\n"
                                       "11,Short,121.9\n"
                                       "12,\"Open,121.9,0,\n"
                                       "13,Negative,-1,0,\n"
                                       "14,Satellite,2300.5,true,\n");
    const StationResult import = Run({u"frequencies"_s, u"import"_s, Path(u"channels.csv"_s)});
    EXPECT_EQ(import.exitCode, 0) << import.err.toStdString();
    EXPECT_EQ(import.out, u"imported 3 channels, left out 5 rows\n"_s);
    for (const QString& problem :
         {u"line 5: 'nine' is not a channel number"_s, u"line 6: 'many' is not a frequency"_s,
          u"line 7: 3 fields instead of 5"_s, u"line 8: a quote is not closed"_s,
          u"line 9: '-1' is not a frequency"_s}) {
        EXPECT_TRUE(import.err.contains(problem)) << problem.toStdString() << import.err.toStdString();
    }
    const StationResult list = Run({u"frequencies"_s, u"list"_s});
    EXPECT_EQ(list.exitCode, 0);
    EXPECT_EQ(list.out, u"channel  name             frequency    alarm\n"
                        "7        Tower            118.5 MHz    yes\n"
                        "8        Ground, \"south\"  121.725 MHz  no\n"
                        "14       Satellite        2.3005 GHz   yes\n"_s);
}

TEST_F(StationIntegrationTest, FileThatHoldsNoFrequenciesIsRefusedAndTheListStays) {
    WriteFile(Path(u"good.csv"_s), "name,frequency\nTower,118.5 MHz\n");
    ASSERT_EQ(Run({u"frequencies"_s, u"import"_s, Path(u"good.csv"_s)}).exitCode, 0);
    WriteFile(Path(u"nofrequency.csv"_s), "name\nTower\n");
    WriteFile(Path(u"empty.csv"_s), "");
    for (const auto& [name, word] :
         {std::pair{u"nofrequency.csv"_s, u"frequency column"_s},
          std::pair{u"empty.csv"_s, u"frequency column"_s}, std::pair{u"missing.csv"_s, u"missing.csv"_s}}) {
        const StationResult result = Run({u"frequencies"_s, u"import"_s, Path(name)});
        EXPECT_EQ(result.exitCode, 1) << name.toStdString();
        EXPECT_TRUE(result.err.contains(word)) << result.err.toStdString();
    }
    EXPECT_TRUE(Run({u"frequencies"_s, u"list"_s}).out.contains(u"1        Tower  118.5 MHz  no"_s));
}

TEST_F(StationIntegrationTest, HubIsJoinedThroughTheInstalledClient) {
    const QString components = Path(u"components"_s);
    ASSERT_TRUE(QDir().mkpath(components));
    ASSERT_TRUE(QFile::copy(QStringLiteral(ZAN_TEST_COMPONENTS "/libhubclient.so"),
                            components + u"/libmshclient.so"_s));
    const QString log = Path(u"calls"_s);
    for (const QString& role : {u"receive"_s, u"send"_s}) {
        QFile::remove(log);
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"ZAN_HUB_LOG"_s, log);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(ZAN_STATION), {u"hub"_s, role, u"--name"_s, u"Station 7"_s,
                                                    u"--components"_s, components, u"--config"_s, Config()});
        QByteArray output; // on a pipe, while the program runs on
        EXPECT_TRUE(Await(process, [&] {
            output += process.readAllStandardOutput();
            return ReadFile(log).contains(" Start\n") && output.contains('\n');
        }));
        EXPECT_TRUE(output.startsWith("joined the hub as a ")) << output.toStdString();
        process.terminate();
        ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 143) << process.readAllStandardError().toStdString();
        const QByteArray calls = ReadFile(log);
        EXPECT_TRUE(calls.contains("1 SetClientName Station 7\n")) << calls.toStdString();
        EXPECT_TRUE(calls.contains(role == u"receive" ? "1 SetReceiver true\n" : "1 SetReceiver false\n"));
        EXPECT_TRUE(calls.endsWith("1 destroyed\n")) << calls.toStdString();
        if (role == u"receive") {
            EXPECT_TRUE(calls.contains("1 SetDeviceAddress simulator\n")) << calls.toStdString();
            EXPECT_TRUE(calls.contains("1 SetFrequencyRange 300000,3000000000\n")) << calls.toStdString();
        }
    }
}

TEST_F(StationIntegrationTest, RunningStationJoinsTheHubOfItsSettingsAndWhatIsSetInItsTreeMovesTheOutput) {
    const QString components = Path(u"components"_s);
    ASSERT_TRUE(QDir().mkpath(components));
    ASSERT_TRUE(QFile::copy(QStringLiteral(ZAN_TEST_COMPONENTS "/libhubclient.so"),
                            components + u"/libmshclient.so"_s));
    ASSERT_TRUE(QFile::copy(QFileInfo(QStringLiteral(ZAN_STATION)).path() +
                                u"/../lib/zancommon/components/libzandriver-replay.so"_s,
                            components + u"/libzandriver-replay.so"_s));
    ASSERT_TRUE(QDir().mkpath(Config()));
    WriteFile(Config() + u"/Application.ini"_s, "[General]\nMshReceiver_Enabled=true\n");
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"ZAN_HUB_LOG"_s, Path(u"calls"_s));
    environment.insert(u"ZAN_HUB_SETS"_s, u"/ZANServer/Out/File/FileName "_s + Path(u"moved"_s));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(ZAN_STATION),
                  {u"run"_s, u"--recording"_s, Path(u"recording.csv"_s), u"--speed"_s, u"max"_s,
                   u"--output"_s, Path(u"out"_s), u"--components"_s, components, u"--config"_s, Config()});
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    const QByteArray calls = ReadFile(Path(u"calls"_s));
    EXPECT_TRUE(calls.contains("1 SetReceiver true\n")) << calls.toStdString();
    EXPECT_TRUE(calls.contains("1 SetDeviceAddress replay\n")) << calls.toStdString();
    EXPECT_TRUE(calls.contains("1 SetFrequencyRange 300000,3000000000\n")) << calls.toStdString();
    EXPECT_TRUE(calls.endsWith("1 destroyed\n")) << calls.toStdString();
    EXPECT_EQ(ReadFile(Path(u"out"_s)), "");
    EXPECT_EQ(ReadFile(Path(u"moved"_s)).count("$PLG"), 1);
    EXPECT_TRUE(Settings().contains(u"FileOutput_Address="_s + Path(u"moved"_s))) << Settings().toStdString();
}

TEST_F(StationIntegrationTest, RunningStationWarnsOfAHubThatItHasNoClientFor) {
    ASSERT_TRUE(QDir().mkpath(Config()));
    WriteFile(Config() + u"/Application.ini"_s, "[General]\nMshReceiver_Enabled=true\n");
    const StationResult result = Replay();
    EXPECT_EQ(result.exitCode, 0) << "it measures without";
    EXPECT_TRUE(result.err.contains(u"there is no client of the message hub"_s)) << result.err.toStdString();
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("$PLG"), 1);
}

TEST_F(StationIntegrationTest, RunRefusesAnOutputWhoseNameNoFileHas) {
    const StationResult result = Run(
        {u"run"_s, u"--recording"_s, Path(u"recording.csv"_s), u"--output"_s, u'/' + QString(5000, u'x')});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, u"zanstation: the output has a name of more than 4095 bytes\n"_s);
    EXPECT_TRUE(Settings().isEmpty()) << "nothing is kept";
}

TEST_F(StationIntegrationTest, HubWithoutAClientIsSaidClearly) {
    const StationResult result = Run({u"hub"_s, u"receive"_s, u"--components"_s, Path(u"nowhere"_s)});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(u"there is no client of the message hub"_s)) << result.err.toStdString();
    EXPECT_TRUE(result.err.contains(Path(u"nowhere/libmshclient.so"_s))) << result.err.toStdString();
    EXPECT_EQ(Run({u"hub"_s}).exitCode, 2);
    EXPECT_EQ(Run({u"hub"_s, u"listen"_s}).exitCode, 2);
}

TEST_F(StationIntegrationTest, DoctorTellsOnOneScreenWhatWorks) {
    const StationResult result = Run({u"doctor"_s});
    EXPECT_EQ(result.exitCode, 0) << result.out.toStdString();
    const QStringList lines = result.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 8) << result.out.toStdString();
    EXPECT_EQ(lines[0], u"ok      settings      writable: "_s + Config());
    EXPECT_EQ(lines[1], u"warning driver        the device is simulated: none of its bearings is real. "
                        "\"zanstation run --driver NAME --address ADDRESS\" chooses another one"_s);
    EXPECT_EQ(lines[2], u"ok      device type   ZANTIDE"_s);
    EXPECT_EQ(lines[3], u"ok      device setup  Antenna setup is valid."_s);
    EXPECT_EQ(lines[4], u"none    hardware      not checked"_s);
    EXPECT_TRUE(lines[5].contains(u"serial ports"_s));
    EXPECT_EQ(lines[6], u"ok      broker        listens on giop:tcp:127.0.0.1:"_s);
    EXPECT_TRUE(lines[7].startsWith(u"none    hub client    "_s) && lines[7].contains(u"/libmshclient.so"_s))
        << lines[7].toStdString();
}

TEST_F(StationIntegrationTest, DoctorTellsWhatIsWrongWithTheDevice) {
    Run({u"device"_s});
    Edit(u"DevType"_s, u"ZANTIDY"_s);
    Edit(u"HwCheckRequirements"_s, u"true"_s);
    Edit(u"HwRequiredComponents"_s, u"PX110;RCV09"_s);
    const StationResult result = Run({u"doctor"_s});
    EXPECT_EQ(result.exitCode, 1);
    for (const QString& line :
         {u"BROKEN  device type   unknown type \"ZANTIDY\", it is treated as ZANTIDE; known types are "_s,
          u"\nBROKEN  hardware      required and missing: RCV09\n"_s}) {
        EXPECT_TRUE(result.out.contains(line)) << result.out.toStdString();
    }
    Edit(u"HwRequiredComponents"_s, u"PX110"_s);
    EXPECT_TRUE(Run({u"doctor"_s})
                    .out.contains(u"\nok      hardware      all required components are installed\n"_s));
}

TEST_F(StationIntegrationTest, DoctorTellsWhichSettingsAreOutOfRangeAndLeavesThemAsTheyAre) {
    Run({u"device"_s});
    Edit(u"PitchThreshold"_s, u"95"_s);
    const StationResult result = Run({u"doctor"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.out.contains(
        u"\nBROKEN  settings      the setting \"PitchThreshold\" is \"95\"; allowed is -90 to 90\n"_s))
        << result.out.toStdString();
    EXPECT_TRUE(Settings().contains(u"\nPitchThreshold=95\n"_s));
}

TEST_F(StationIntegrationTest, DoctorLooksIntoARecording) {
    const QStringList doctor{u"doctor"_s, u"--recording"_s, Path(u"recording.csv"_s)};
    EXPECT_TRUE(Run(doctor).out.contains(u"\nok      recording     1 row, 0 lines skipped: "_s));
    WriteFile(Path(u"recording.csv"_s), RECORDING + "nonsense\n");
    StationResult result = Run(doctor);
    EXPECT_TRUE(result.out.contains(u"\nwarning recording     1 row, 1 line skipped: "_s))
        << result.out.toStdString();
    EXPECT_EQ(result.exitCode, 0);
    WriteFile(Path(u"recording.csv"_s), RECORDING + "2000,3500000000,71.5,,90,,,,,,,\n");
    result = Run(doctor);
    EXPECT_TRUE(result.out.contains(u"\nBROKEN  recording     "_s) &&
                result.out.contains(u"recording.csv: no enabled antenna serves 3.5 GHz\n"_s))
        << result.out.toStdString();
    EXPECT_EQ(result.exitCode, 1);
    QFile::remove(Path(u"recording.csv"_s));
    EXPECT_TRUE(Run(doctor).out.contains(u"\nBROKEN  recording     "_s));
}

TEST_F(StationIntegrationTest, DoctorFailsWhenSomethingIsBroken) {
    Run({u"device"_s});
    Run({u"antennas"_s, u"disable"_s, u"PX106"_s});
    const StationResult setup = Run({u"doctor"_s});
    EXPECT_EQ(setup.exitCode, 1);
    EXPECT_TRUE(setup.out.contains(
        u"BROKEN  device setup  Frequency range is not entirely covered without gaps.\n"_s))
        << setup.out.toStdString();
    Run({u"antennas"_s, u"enable"_s, u"PX106"_s});

    qputenv("ORBendPoint", "giop:nonsense:");
    const StationResult broker = Run({u"doctor"_s});
    qunsetenv("ORBendPoint");
    EXPECT_EQ(broker.exitCode, 1);
    EXPECT_TRUE(broker.out.contains(u"giop:nonsense:"_s) && broker.out.contains(u"BROKEN  broker"_s))
        << broker.out.toStdString();
}

TEST_F(StationIntegrationTest, WrongCommandLinesAreRefused) {
    for (const QStringList& command :
         {QStringList{u"frequencies"_s}, QStringList{u"frequencies"_s, u"import"_s},
          QStringList{u"frequencies"_s, u"list"_s, u"all"_s}, QStringList{u"hardware"_s, u"now"_s},
          QStringList{u"doctor"_s, u"now"_s}, QStringList{u"hub"_s, u"send"_s, u"receive"_s}}) {
        const StationResult result = Run(command);
        EXPECT_EQ(result.exitCode, 2) << command.join(u' ').toStdString();
        EXPECT_FALSE(result.err.isEmpty());
    }
    EXPECT_FALSE(QDir(Config()).exists());
}

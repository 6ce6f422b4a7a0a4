#include "support/printing.h"
#include "support/recordings.h"
#include "support/stationprocess.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <csignal>

using namespace Qt::StringLiterals;

// The station with a driver that is loaded when it runs, as a person runs it.

namespace {

const QString HANGS_AT_ITS_END =
    u"zanstation: destroying the driver has not returned within 10 s; the driver is given up\n"_s;

class StationDriverTest : public testing::Test {
protected:
    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] QStringList Arguments(const QStringList& further) const {
        return QStringList{u"run"_s, u"--config"_s, Path(u"config"_s), u"--output"_s, Path(u"out"_s)} +
               further;
    }
    [[nodiscard]] QStringList Wild(const QString& deed) const {
        return Arguments({u"--components"_s, QStringLiteral(ZAN_TEST_DRIVERS), u"--driver"_s, u"wild"_s,
                          u"--address"_s, deed});
    }
    [[nodiscard]] QString Settings() const {
        return QString::fromUtf8(ReadFile(Path(u"config/Application.ini"_s)));
    }
    /// Runs the station until its summary would have so many bearings, ends it, and returns what it printed.
    [[nodiscard]] StationResult RunUntil(const QStringList& arguments, int sentences) const {
        QProcess process;
        process.start(QStringLiteral(ZAN_STATION), arguments);
        EXPECT_TRUE(Await(process, [&] { return ReadFile(Path(u"out"_s)).count("\r\n") >= sentences; }))
            << process.readAllStandardError().toStdString();
        ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
        EXPECT_TRUE(process.waitForFinished(PATIENCE_MS));
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    QTemporaryDir m_directory;
};

} // namespace

TEST_F(StationDriverTest, DeviceThatWasNeverThereFailsTheRun) {
    const StationResult result = RunStation(
        Arguments({u"--driver"_s, u"simulator"_s, u"--address"_s, u"nowhere"_s, u"--duration"_s, u"0.2"_s}));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(
        result.err.contains(u"warning: the device cannot be opened, and is sought again and again: "_s))
        << result.err.toStdString();
    EXPECT_TRUE(result.err.contains(u"zanstation: the device was never there: "_s))
        << result.err.toStdString();
}

TEST_F(StationDriverTest, RunThatEndsBeforeTheDeviceIsOpenFailsAndSaysWhy) {
    const StationResult result = RunStation(Wild(u"slow"_s) + QStringList{u"--duration"_s, u"0.1"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, u"zanstation: the device was never there: it was still being opened\n"_s);
}

TEST_F(StationDriverTest, RunThatEndsWithoutItsDeviceFailsThoughItWasThere) {
    const StationResult result = RunStation(Wild(u"late"_s) + QStringList{u"--duration"_s, u"0.5"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              u"zanstation: warning: the device is lost, and sought again and again: the driver has closed "
              "the link\n"
              "zanstation: the device was lost when the run ended: the driver has closed the link\n"_s);
}

TEST_F(StationDriverTest, DeviceThatIsOpenedAndLostAtOnceIsToldOnce) {
    // The time is the rule: it is opened after 0, 1 and 3 s.
    const StationResult result = RunStation(Wild(u"close"_s) + QStringList{u"--duration"_s, u"3.5"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              u"zanstation: warning: the device is lost, and sought again and again: the driver has closed "
              "the link\n"
              "zanstation: the device was lost when the run ended: the driver has closed the link\n"_s);
}

TEST_F(StationDriverTest, DeviceThatDeliversAfterALossIsThereAgain) {
    EXPECT_TRUE(RunUntil(Wild(u"again"_s), 2).err.contains(u"warning: the device is there again\n"_s));
}

TEST_F(StationDriverTest, DirectoryOfDriversThatIsNotThereIsTold) {
    EXPECT_TRUE(RunStation({u"drivers"_s, u"--components"_s, Path(u"nowhere"_s)})
                    .out.contains(Path(u"nowhere"_s) + u", which is no directory"_s));
}

TEST_F(StationDriverTest, ModeThatTheDriverDoesNotHaveIsRefused) {
    const StationResult result = RunStation(Wild(u"hang"_s) + QStringList{u"--mode"_s, u"ffm"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, u"zanstation: the driver wild does not have the mode ffm; it has scan\n"_s);
    EXPECT_FALSE(Settings().contains(u"[Driver]"_s));
}

TEST_F(StationDriverTest, FirstModeOfADriverThatDoesNotScanIsMeasuredIn) {
    const StationResult result = RunUntil(
        Arguments({u"--components"_s, QStringLiteral(ZAN_TEST_DRIVERS), u"--driver"_s, u"fixed"_s}), 1);
    EXPECT_FALSE(result.err.contains(u"OperationMode"_s)) << result.err.toStdString();
}

TEST_F(StationDriverTest, SerialLineThatIsNoneIsRefusedAndNotKept) {
    const StationResult result =
        RunStation(Arguments({u"--serial"_s, u"nonsense"_s, u"--duration"_s, u"0.1"_s}));
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(result.err.contains(u"nonsense is not the address of a serial line: "_s))
        << result.err.toStdString();
    EXPECT_FALSE(Settings().contains(u"nonsense"_s));
}

TEST_F(StationDriverTest, DriverThatHangsAtTheEndIsToldAndTheRunHasFailed) {
    const StationResult result = RunStation(Wild(u"hang"_s) + QStringList{u"--duration"_s, u"0.2"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(u"given up"_s)) << result.err.toStdString();
}

TEST_F(StationDriverTest, DriverThatHangsWhenItIsDestroyedIsToldAndTheRunHasFailed) {
    const StationResult result = RunStation(Wild(u"hangend"_s) + QStringList{u"--duration"_s, u"0.5"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, HANGS_AT_ITS_END);
    EXPECT_TRUE(result.out.contains(u"bearings in"_s)) << "it ends as it always does";
}

TEST_F(StationDriverTest, DriverThatHangsWhenItIsDestroyedIsToldWhenASignalEndsTheRun) {
    const StationResult result = RunUntil(Wild(u"hangend"_s), 1);
    EXPECT_EQ(result.exitCode, 143);
    EXPECT_EQ(result.err, HANGS_AT_ITS_END);
}

TEST_F(StationDriverTest, DriverThatThrowsWhenItIsDestroyedIsToldAndTheRunHasFailed) {
    const StationResult result = RunStation(Wild(u"throwend"_s) + QStringList{u"--duration"_s, u"0.5"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              u"zanstation: destroying the driver has failed: it threw an exception: no power; the "
              "driver is given up\n"_s);
    EXPECT_TRUE(result.out.contains(u"bearings in"_s)) << "it ends as it always does";
    EXPECT_TRUE(Settings().contains(u"[Driver]"_s)) << "and the settings are saved";
}

TEST_F(StationDriverTest, WithoutADriverItIsTheSimulatedDeviceForAsLongAsItIsToRun) {
    const StationResult result = RunStation(Arguments({u"--speed"_s, u"max"_s, u"--duration"_s, u"60"_s}));
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_GT(ReadFile(Path(u"out"_s)).count("\r\n"), 0);
    EXPECT_FALSE(Settings().contains(u"[Driver]"_s)) << "nothing was chosen";
    EXPECT_TRUE(RunStation({u"tree"_s, u"--config"_s, Path(u"config"_s)})
                    .out.contains(u"/ZANServer/DevAttr/DevName\tString\tSimulated device\t"_s))
        << "and the tree says so";
}

TEST_F(StationDriverTest, SameRunOfTheSimulatedDeviceGivesTheSameSentences) {
    const QStringList arguments = Arguments({u"--speed"_s, u"max"_s, u"--duration"_s, u"60"_s});
    EXPECT_EQ(RunStation(arguments).exitCode, 0);
    const QByteArray first = ReadFile(Path(u"out"_s));
    EXPECT_EQ(RunStation(arguments).exitCode, 0);
    EXPECT_EQ(ReadFile(Path(u"out"_s)), first);
}

TEST_F(StationDriverTest, DriverAndAddressAreKeptAndARecordingIsForOneRun) {
    WriteFile(Path(u"recording.csv"_s), RECORDING_HEADER + "1000,121500000,10.0,,90,,,,,,,\n");
    const QStringList speed{u"--speed"_s, u"max"_s, u"--duration"_s, u"5"_s};
    EXPECT_EQ(RunStation(Arguments(speed +
                                   QStringList{u"--driver"_s, u"simulator"_s, u"--address"_s, u"airfield"_s}))
                  .exitCode,
              0);
    const QString chosen = u"[Driver]\nAddress=airfield\nName=simulator\n"_s;
    EXPECT_TRUE(Settings().contains(chosen)) << Settings().toStdString();
    const StationResult replay =
        RunStation(Arguments({u"--speed"_s, u"max"_s, u"--recording"_s, Path(u"recording.csv"_s)}));
    EXPECT_EQ(replay.exitCode, 0);
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 1);
    EXPECT_TRUE(Settings().contains(chosen)) << Settings().toStdString();
    EXPECT_EQ(RunStation(Arguments(speed)).exitCode, 0);
    EXPECT_TRUE(QDir(Path(u"config/ZANControl"_s)).exists(u"commandlog-airfield.txt"_s));
}

TEST_F(StationDriverTest, AddressThatIsAFileIsKeptWithItsWholeName) {
    WriteFile(Path(u"small.json"_s), R"({"name": "small", "start": "2026-01-01T12:00:00Z",
        "station": {"latitude": 54, "longitude": 7},
        "device": {"type": "ZANTIDE", "antennas": [{"name": "PX106"}], "converters": [{"type": "RCV03"}]}, "emitters": []})");
    QProcess process;
    process.setWorkingDirectory(m_directory.path());
    process.start(QStringLiteral(ZAN_STATION),
                  Arguments({u"--driver"_s, u"simulator"_s, u"--address"_s, u"small.json"_s, u"--speed"_s,
                             u"max"_s, u"--duration"_s, u"1"_s}));
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_FALSE(process.readAllStandardError().contains("lost")) << "it is found";
    EXPECT_TRUE(Settings().contains(u"Address="_s + Path(u"small.json"_s))) << Settings().toStdString();
    const QString log =
        u"config/ZANControl/commandlog-%1.txt"_s.arg(Path(u"small.json"_s).replace(u'/', u'_'));
    EXPECT_TRUE(ReadFile(Path(log)).contains("DF-Address: " + Path(u"small.json"_s).toUtf8() + '\t'))
        << "the log has the address as it is, and its name what a file can be called";
}

TEST_F(StationDriverTest, OtherDriverDoesNotKeepTheAddressOfTheLastOne) {
    const QStringList speed{u"--speed"_s, u"max"_s, u"--duration"_s, u"1"_s};
    RunStation(Wild(u"late"_s) + speed);
    EXPECT_TRUE(Settings().contains(u"[Driver]\nAddress=late\nName=wild\n"_s)) << Settings().toStdString();
    EXPECT_EQ(RunStation(Arguments(speed + QStringList{u"--driver"_s, u"simulator"_s})).exitCode, 0);
    EXPECT_TRUE(Settings().contains(u"[Driver]\nAddress=\nName=simulator\n"_s)) << Settings().toStdString();
}

TEST_F(StationDriverTest, RecordingIsShortForDriverAndAddressSoTheyAreNotGivenWithIt) {
    const StationResult result =
        RunStation(Arguments({u"--recording"_s, u"a.csv"_s, u"--driver"_s, u"simulator"_s}));
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_FALSE(QDir(m_directory.path()).exists(u"out"_s));
}

TEST_F(StationDriverTest, DriverThatIsNotThereIsRefusedWithThePlaceThatWasLookedIn) {
    EXPECT_EQ(RunStation(Arguments({u"--speed"_s, u"max"_s, u"--duration"_s, u"1"_s})).exitCode, 0);
    const QString settings = Settings();
    const QByteArray sentences = ReadFile(Path(u"out"_s));
    for (const QString& name : {u"warp"_s, u"../wild"_s, u""_s}) {
        const StationResult result =
            RunStation(Arguments({u"--components"_s, QStringLiteral(ZAN_TEST_DRIVERS), u"--driver"_s, name,
                                  u"--address"_s, u"x"_s}));
        EXPECT_EQ(result.exitCode, 1) << name.toStdString();
        EXPECT_EQ(Settings(), settings) << name.toStdString();
        EXPECT_EQ(ReadFile(Path(u"out"_s)), sentences) << name.toStdString();
    }
    const StationResult result = RunStation(
        Arguments({u"--components"_s, QStringLiteral(ZAN_TEST_DRIVERS), u"--driver"_s, u"warp"_s}));
    EXPECT_TRUE(result.err.contains(QStringLiteral(ZAN_TEST_DRIVERS) + u"/libzandriver-warp.so"_s))
        << result.err.toStdString();
}

TEST_F(StationDriverTest, TestCommandThatTheDriverDoesNotKnowIsToldAndTheRunGoesOn) {
    const StationResult result = RunUntil(Wild(u"late"_s) + QStringList{u"--speed"_s, u"2"_s}, 1);
    EXPECT_TRUE(result.err.contains(u"the driver refuses \"speed 2\""_s)) << result.err.toStdString();
}

TEST_F(StationDriverTest, DriverThatDeliversFromFourThreadsLosesNothing) {
    const StationResult result = RunUntil(Wild(u"threads"_s), 4000);
    EXPECT_EQ(result.exitCode, 143) << result.err.toStdString();
}

TEST_F(StationDriverTest, DriverThatDeliversAfterStandbyHarmsNothing) {
    EXPECT_EQ(RunUntil(Wild(u"late"_s), 1).exitCode, 143);
}

TEST_F(StationDriverTest, DriverThatThrowsIsToldAndTriedAgain) {
    QProcess process;
    process.start(QStringLiteral(ZAN_STATION), Wild(u"throw"_s));
    QString messages;
    EXPECT_TRUE(Await(process, [&] {
        messages += QString::fromUtf8(process.readAllStandardError());
        return messages.contains(u"the driver threw an exception: no power"_s);
    })) << messages.toStdString();
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 143);
    EXPECT_EQ(RunUntil(Wild(u"throwlater"_s), 1).exitCode, 143);
}

TEST_F(StationDriverTest, TenMillionBearingsInABlockAreProcessedInBoundedMemory) {
    const StationResult result = RunUntil(Wild(u"block"_s) + QStringList{u"--interval"_s, u"10"_s}, 1);
    EXPECT_EQ(result.exitCode, 143) << result.err.toStdString();
}

TEST_F(StationDriverTest, WhatALostDeviceStillDeliversIsNotPassedOn) {
    const StationResult result = RunStation(Wild(u"goeson"_s) + QStringList{u"--duration"_s, u"2"_s});
    EXPECT_TRUE(result.err.contains(u"the device is lost"_s)) << result.err.toStdString();
    EXPECT_TRUE(result.out.contains(QRegularExpression(u"bearings in +1\n"_s))) << result.out.toStdString();
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 1);
}

TEST_F(StationDriverTest, NumbersThatCannotBeAreToldAndMakeNoSentences) {
    const StationResult result = RunUntil(Wild(u"garbage"_s), 1);
    const QByteArray sentence = ReadFile(Path(u"out"_s)).split('\n').first();
    EXPECT_TRUE(sentence.startsWith("$PLG,  0.0,FRQ,         0,CMP, -0.1,QUA, 50.0,"))
        << sentence.toStdString();
    EXPECT_FALSE(ReadFile(Path(u"out"_s)).contains("QUA,32767"));
    for (const QString& what :
         {u"an azimuth of 6553.5"_s, u"a quality of 65535"_s, u"an elevation of 3276.7"_s,
          u"a frequency of 1e+300"_s, u"a heading of 1e+300"_s}) {
        EXPECT_EQ(result.err.count(u"warning: the driver has delivered "_s + what), 1) << what.toStdString();
    }
    EXPECT_FALSE(result.out.contains(QRegularExpression(u"marked as unusable +0\\n"_s)));
}

TEST_F(StationDriverTest, FloodOfErrorsIsToldInFewLines) {
    const StationResult result = RunUntil(Wild(u"errors"_s), 1);
    EXPECT_EQ(result.err.count(u"warning: no lock of the synthesizer\n"_s), 1) << result.err.toStdString();
    EXPECT_EQ(result.err.count(u"warning: overload of sample "_s), 63);
    EXPECT_EQ(result.err.count(u"warning: 999 more times: no lock of the synthesizer\n"_s), 1);
    EXPECT_EQ(result.err.count(u"warning: 937 other lines are left out\n"_s), 1);
}

TEST_F(StationDriverTest, ProgramEndsWithoutWaitingForADriverThatHangs) {
    QProcess process;
    process.start(QStringLiteral(ZAN_STATION), Wild(u"hang"_s));
    EXPECT_TRUE(Await(process, [this] { return QFile::exists(Path(u"out"_s)); }));
    QElapsedTimer timer;
    timer.start();
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_LT(timer.elapsed(), 20'000) << "it has 10 s to end";
    EXPECT_TRUE(Settings().contains(u"[Driver]"_s)) << "and the settings are saved";
}

// Commands to the device

TEST_F(StationDriverTest, CommandTellsWhatTheDeviceReportsOfIt) {
    const QStringList config{u"--config"_s, Path(u"config"_s)};
    const StationResult test = RunStation(QStringList{u"command"_s, u"bit"_s, u"full"_s} + config);
    EXPECT_EQ(test.exitCode, 0) << test.err.toStdString();
    EXPECT_TRUE(test.out.contains(u"DF unit: no error\n"_s)) << test.out.toStdString();
    const StationResult reset = RunStation(QStringList{u"command"_s, u"reset"_s} + config);
    EXPECT_EQ(reset.exitCode, 0);
    EXPECT_EQ(reset.out + reset.err, QString());
}

TEST_F(StationDriverTest, CommandThatTheDeviceRefusesFailsWithItsReason) {
    const QStringList config{u"--config"_s, Path(u"config"_s)};
    for (const auto& [command, reason] :
         {std::pair{u"calibrate 9"_s, u"there is no converter 9"_s},
          {u"test warp"_s, u"\"warp\" is not known"_s},
          {u"fly"_s, u"it is not known; there are: reset"_s},
          {u"calibrate abc"_s, u"calibrate: \"abc\" is not the number of"_s}}) {
        const StationResult result = RunStation(QStringList{u"command"_s} + command.split(u' ') + config);
        EXPECT_EQ(result.exitCode, 1) << command.toStdString();
        EXPECT_TRUE(result.err.contains(reason)) << result.err.toStdString();
    }
    EXPECT_EQ(RunStation(QStringList{u"command"_s} + config).exitCode, 2) << "none is named";
}

TEST_F(StationDriverTest, CommandIsRefusedWhileAStationHasTheDevice) {
    QProcess process;
    process.start(QStringLiteral(ZAN_STATION), Arguments({}));
    EXPECT_TRUE(Await(process, [&] { return ReadFile(Path(u"out"_s)).count("\r\n") > 0; }));
    const StationResult result = RunStation({u"command"_s, u"bit"_s, u"--config"_s, Path(u"config"_s)});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(QString::number(process.processId()))) << result.err.toStdString();
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
}

// Wishes of the command line

TEST_F(StationDriverTest, WishesReachTheDeviceAndAreThoseOfTheNextRun) {
    const QStringList speed{u"--speed"_s, u"max"_s, u"--duration"_s, u"5"_s};
    EXPECT_EQ(
        RunStation(Arguments(speed + QStringList{u"--mode"_s, u"ffm"_s, u"--frequency"_s, u"160.65M"_s}))
            .exitCode,
        0);
    const QByteArray sentences = ReadFile(Path(u"out"_s));
    EXPECT_GT(sentences.count("\r\n"), 0);
    EXPECT_EQ(sentences.count("FRQ, 160650000,"), sentences.count("\r\n")) << sentences.toStdString();
    EXPECT_EQ(RunStation(Arguments(speed)).exitCode, 0);
    EXPECT_EQ(ReadFile(Path(u"out"_s)), sentences);
}

TEST_F(StationDriverTest, WishThatIsMovedIsTold) {
    const StationResult result = RunStation(Arguments({u"--speed"_s, u"max"_s, u"--duration"_s, u"1"_s,
                                                       u"--mode"_s, u"ffm"_s, u"--frequency"_s, u"100k"_s}));
    EXPECT_TRUE(result.err.contains(u"warning: Frequency: asked for 100 kHz, carried out as 300 kHz: "_s))
        << result.err.toStdString();
}

TEST_F(StationDriverTest, WishThatNoDeviceHasIsTold) {
    const StationResult result =
        RunStation(Arguments({u"--speed"_s, u"max"_s, u"--duration"_s, u"1"_s, u"--frequency"_s, u"5G"_s}));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(
        result.err.contains(u"Frequency: asked for 5 GHz, not carried out: it is from 0 Hz to 3.6 GHz"_s))
        << result.err.toStdString();
}

TEST_F(StationDriverTest, WishThatTheDriverDoesNotSupportIsToldWhenItWasAskedFor) {
    const QStringList asked{u"--mode"_s, u"scan"_s, u"--frequency"_s, u"121.5M"_s};
    EXPECT_TRUE(
        RunUntil(Wild(u"late"_s) + asked, 1)
            .err.contains(u"warning: Frequency: asked for 121.5 MHz, not carried out: the driver does not "
                          "support it"_s));
    EXPECT_FALSE(RunUntil(Wild(u"late"_s), 1).err.contains(u"support"_s));
}

TEST_F(StationDriverTest, ChannelOfAScanHasTheFrequencyOfItsRange) {
    EXPECT_EQ(RunStation(Arguments({u"--speed"_s, u"max"_s, u"--duration"_s, u"20"_s, u"--mode"_s, u"scan"_s,
                                    u"--ranges"_s, u"160M:161M:25k"_s}))
                  .exitCode,
              0);
    const QByteArray sentences = ReadFile(Path(u"out"_s));
    EXPECT_GT(sentences.count("\r\n"), 0);
    EXPECT_EQ(sentences.count("FRQ, 160650000,"), sentences.count("\r\n")) << sentences.toStdString();
}

TEST_F(StationDriverTest, WhatIsNoWishIsAWrongCommandLine) {
    for (const QStringList& wish :
         {QStringList{u"--mode"_s, u"fly"_s}, QStringList{u"--frequency"_s, u"high"_s},
          QStringList{u"--ranges"_s, u"118M-137M"_s}, QStringList{u"--ranges"_s, u"137M:118M:25k"_s},
          QStringList{u"--ranges"_s, u"118M:137M:0"_s},
          QStringList{u"--recording"_s, u"a.csv"_s, u"--mode"_s, u"scan"_s}}) {
        EXPECT_EQ(RunStation(Arguments(wish)).exitCode, 2) << wish.join(u' ').toStdString();
    }
}

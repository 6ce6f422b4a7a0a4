#include "support/printing.h"
#include "support/recordings.h"
#include "support/stationprocess.h"
#include "support/tinypipe.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <poll.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

// What programs and scripts rely on: documents, exit codes, signals, the place of the settings, completion.

namespace {

const QByteArray RECORDING =
    RECORDING_HEADER + "0,121500000,71.5,10.0,90,-52.04,359.9,1.0,-1.0,52.5,5.5,10.0\n";

/// The second row is due after an hour.
const char* const ENDLESS = "3600000,121500000,71.5,10.0,90,-52.04,359.9,1.0,-1.0,52.5,5.5,10.0\n";

class StationCommandsTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_directory.isValid());
        WriteFile(Path(u"recording.csv"_s), RECORDING);
        WriteFile(Path(u"endless.csv"_s), RECORDING + ENDLESS);
    }

    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] QString Config() const { return Path(u"config"_s); }
    StationResult Run(const QString& command) {
        return RunStation(command.split(u' ') + QStringList{u"--config"_s, Config()});
    }
    [[nodiscard]] QStringList Replay(const QString& recording, const QStringList& further = {}) const {
        return QStringList{u"run"_s, u"--recording"_s, Path(recording), u"--config"_s,
                           Config(), u"--output"_s,    Path(u"out"_s)} +
               further;
    }

    QTemporaryDir m_directory;
};

/// Gives a program that is not yet started a pipe in place of a standard stream.
void PutInPlace(const TinyPipe& pipe, int stream, QProcess& process) {
    process.setChildProcessModifier([stream, end = pipe.WriteEnd()] { ::dup2(end, stream); });
}

/// Runs a program with what is to be in its environment; a null text takes the variable out.
StationResult RunWith(const QList<std::pair<QString, QString>>& variables, const QString& program,
                      const QStringList& arguments) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : {u"XDG_CONFIG_HOME"_s, u"STATE_DIRECTORY"_s, u"CONFIGURATION_DIRECTORY"_s}) {
        environment.remove(name);
    }
    for (const auto& [name, value] : variables) {
        environment.insert(name, value);
    }
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(PATIENCE_MS) || process.exitStatus() != QProcess::NormalExit) {
        return {};
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

/// Waits until a running program has written its first sentence.
void AwaitSentence(QProcess& process, const QString& file) {
    EXPECT_TRUE(Await(process, [&file] { return !ReadFile(file).isEmpty(); }));
}

/// The document that Python reads, printed by it again; null when it reads none.
QJsonDocument ThroughPython(const QString& text) {
    QProcess python;
    python.start(u"python3"_s, {u"-c"_s, u"import json, sys; print(json.dumps(json.load(sys.stdin)))"_s});
    python.write(text.toUtf8());
    python.closeWriteChannel();
    return python.waitForFinished(PATIENCE_MS) && python.exitCode() == 0
               ? QJsonDocument::fromJson(python.readAllStandardOutput())
               : QJsonDocument();
}

} // namespace

TEST_F(StationCommandsTest, EachDocumentIsReadByOthers) {
    WriteFile(Path(u"channels.csv"_s), "name,frequency_mhz\nTower,118.5\n");
    Run(u"device"_s);
    const QStringList commands{
        u"device --json"_s,
        u"antennas list --json"_s,
        u"antennas check --json"_s,
        u"antennas repair --json"_s,
        u"antennas range PX106 30.000001M 1.3G --json"_s,
        u"tune --frequency 145.5M --json"_s,
        u"tune --mode 5 --frequency 3M --json"_s,
        u"tune --mode scan --start 25M --stop 35M --json"_s,
        u"hardware --json"_s,
        u"frequencies import %1 --json"_s.arg(Path(u"channels.csv"_s)),
        u"frequencies list --json"_s,
        u"doctor --json"_s,
        u"run --speed max --output %1 --recording %2 --json"_s.arg(Path(u"out"_s), Path(u"recording.csv"_s)),
    };
    for (const QString& command : commands) {
        const StationResult result = Run(command);
        EXPECT_TRUE(ThroughPython(result.out).isObject())
            << command.toStdString() << result.out.toStdString() << result.err.toStdString();
        EXPECT_TRUE(Run(command.split(u' ').constFirst() + u" --help"_s).out.contains(u"  --json  "_s))
            << command.toStdString();
    }
}

TEST_F(StationCommandsTest, DeviceForProgramsHasNumbersInHzAndNothingMadeUp) {
    const QJsonDocument device = ThroughPython(Run(u"device --json"_s).out);
    EXPECT_EQ(device[u"address"_s], u"simulator"_s);
    EXPECT_EQ(device[u"type"_s], u"ZANTIDE"_s);
    EXPECT_EQ(device[u"options"_s], (QJsonArray{u"ZAN-HFR"_s}));
    EXPECT_EQ(device[u"channels"_s], 60000);
    EXPECT_EQ(device[u"valid"_s], true);
    EXPECT_EQ(device[u"verdict"_s], u"Antenna setup is valid."_s);
    EXPECT_EQ(device[u"hf_up_to_hz"_s], 30e6);
    EXPECT_EQ(device[u"vuhf_from_hz"_s], 30000001.0);
    EXPECT_EQ(device[u"antennas"_s][1], (QJsonObject{{u"name"_s, u"PX106"_s},
                                                     {u"enabled"_s, true},
                                                     {u"lowest_hz"_s, 30000001.0},
                                                     {u"highest_hz"_s, 1.3e9},
                                                     {u"converter"_s, u"RCV03"_s},
                                                     {u"methods"_s, QJsonArray{u"COR"_s}},
                                                     {u"supported"_s, true}}));
    EXPECT_EQ(device[u"modes"_s][2],
              (QJsonObject{{u"mode"_s, u"scan"_s}, {u"lowest_hz"_s, 300e3}, {u"highest_hz"_s, 3e9}}));
}

TEST_F(StationCommandsTest, AntennasForProgramsTellTheSetupTheVerdictAndWhatARepairHasChanged) {
    EXPECT_EQ(Run(u"antennas range PX106 20M 1.3G --json"_s).exitCode, 1);
    QJsonDocument document = ThroughPython(Run(u"antennas list --json"_s).out);
    EXPECT_EQ(document[u"valid"_s], false);
    EXPECT_EQ(document[u"verdict"_s], u"Frequency ranges are overlapping."_s);
    EXPECT_EQ(document[u"antennas"_s].toArray().size(), 3);
    EXPECT_EQ(document[u"antennas"_s][1][u"covers_from_hz"_s], 20e6);
    EXPECT_EQ(document[u"antennas"_s][1][u"covers_to_hz"_s], 1.3e9);
    EXPECT_EQ(document[u"repaired"_s], QJsonArray());
    const QJsonDocument proposed = ThroughPython(Run(u"antennas repair --dry-run --json"_s).out);
    const StationResult repair = Run(u"antennas repair --json"_s);
    EXPECT_EQ(repair.exitCode, 0);
    EXPECT_EQ(proposed, ThroughPython(repair.out));
    document = ThroughPython(repair.out);
    EXPECT_EQ(document[u"valid"_s], true);
    EXPECT_EQ(document[u"repaired"_s].toArray().size(), 1);
    EXPECT_EQ(document[u"repaired"_s][0][u"lowest_hz"_s], 30000001.0);
}

TEST_F(StationCommandsTest, TuneForProgramsTellsWhatIsValidAndTheExitCodeWhetherItWasMoved) {
    const StationResult moved = Run(u"tune --mode scan --start 25M --stop 35M --adjust up --json"_s);
    EXPECT_EQ(moved.exitCode, 3);
    QJsonDocument document = ThroughPython(moved.out);
    EXPECT_EQ(
        document[u"asked"_s],
        (QJsonObject{
            {u"mode"_s, u"scan"_s}, {u"start_hz"_s, 25e6}, {u"stop_hz"_s, 35e6}, {u"adjust"_s, u"up"_s}}));
    EXPECT_EQ(document[u"valid"_s], (QJsonObject{{u"start_hz"_s, 30000001.0}, {u"stop_hz"_s, 40000001.0}}));
    EXPECT_EQ(document[u"changes"_s][0][u"by_hz"_s], 5000001.0);
    EXPECT_EQ(document[u"antenna"_s][u"name"_s], u"PX106"_s);
    EXPECT_EQ(document[u"sample_mode"_s], 8);
    EXPECT_EQ(document[u"realtime_bandwidth_hz"_s], 100e3);
    EXPECT_EQ(document[u"resolution_bandwidths_hz"_s][0], 20.0);
    EXPECT_FALSE(document.object().contains(u"problem"_s));

    const StationResult served = Run(u"tune --frequency 145.5M --json"_s);
    EXPECT_EQ(served.exitCode, 0);
    document = ThroughPython(served.out);
    EXPECT_EQ(document[u"valid"_s], (QJsonObject{{u"frequency_hz"_s, 145.5e6}}));
    EXPECT_EQ(document[u"changes"_s], QJsonArray());

    const StationResult unserved = Run(u"tune --mode 5 --frequency 3M --json"_s);
    EXPECT_EQ(unserved.exitCode, 1);
    document = ThroughPython(unserved.out);
    EXPECT_EQ(document[u"problem"_s], u"the device serves no range in this mode"_s);
    for (const QString& absent : {u"valid"_s, u"antenna"_s, u"sample_mode"_s, u"realtime_bandwidth_hz"_s}) {
        EXPECT_FALSE(document.object().contains(absent)) << absent.toStdString();
    }
}

TEST_F(StationCommandsTest, HardwareDoctorAndRunForProgramsTellWhatTheyTellPeople) {
    const QJsonDocument hardware = ThroughPython(Run(u"hardware --json"_s).out);
    EXPECT_EQ(hardware[u"complete"_s], true);
    EXPECT_EQ(
        hardware[u"components"_s][0],
        (QJsonObject{
            {u"name"_s, u"PX106"_s}, {u"required"_s, false}, {u"optional"_s, false}, {u"found"_s, true}}));

    const QJsonDocument doctor = ThroughPython(Run(u"doctor --json"_s).out);
    EXPECT_EQ(doctor[u"findings"_s][0], (QJsonObject{{u"name"_s, u"settings"_s},
                                                     {u"verdict"_s, u"ok"_s},
                                                     {u"text"_s, u"writable: "_s + Config()}}));

    WriteFile(Path(u"recording.csv"_s), RECORDING + "nonsense\n");
    const StationResult run = RunStation(Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s, u"--json"_s}));
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QJsonDocument summary = ThroughPython(run.out);
    for (const auto& [name, count] :
         {std::pair{u"bearings_in"_s, 1}, std::pair{u"rejected_pitch_roll"_s, 0},
          std::pair{u"rejected_overhead_pass"_s, 0}, std::pair{u"without_signal"_s, 0},
          std::pair{u"marked_as_unusable"_s, 0}, std::pair{u"published"_s, 1},
          std::pair{u"sentences_to_file"_s, 1}, std::pair{u"sentences_to_serial_line"_s, 0},
          std::pair{u"dropped_file"_s, 0}, std::pair{u"dropped_serial_line"_s, 0}}) {
        EXPECT_EQ(summary[name], count) << name.toStdString() << run.out.toStdString();
    }
    EXPECT_EQ(summary[u"lines_skipped"_s].toArray().size(), 1) << run.out.toStdString();
}

TEST_F(StationCommandsTest, ZeroIsPrintedWithoutASign) {
    for (const QString& format : {QString(), u" --json"_s}) {
        const StationResult result = Run(u"tune --frequency -0.0"_s + format);
        EXPECT_FALSE(result.out.isEmpty()) << result.err.toStdString();
        EXPECT_FALSE(result.out.contains(u"-0"_s)) << result.out.toStdString();
    }
}

TEST_F(StationCommandsTest, ImportReplacesTheListWithItsNamesAndNeedsNone) {
    WriteFile(Path(u"five.csv"_s),
              "name,frequency_mhz\nTower,118.5\nGround,121.7\nApron,121.9\nRadar,119.1\nATIS,126.0\n");
    WriteFile(Path(u"two.csv"_s), "frequency_mhz,alarm\n121.5,1\n243,0\n");
    ASSERT_EQ(Run(u"frequencies import "_s + Path(u"five.csv"_s)).exitCode, 0);
    EXPECT_EQ(Run(u"frequencies list"_s).out, u"channel  name    frequency  alarm\n"
                                              "1        Tower   118.5 MHz  no\n"
                                              "2        Ground  121.7 MHz  no\n"
                                              "3        Apron   121.9 MHz  no\n"
                                              "4        Radar   119.1 MHz  no\n"
                                              "5        ATIS    126 MHz    no\n"_s);
    const StationResult import = Run(u"frequencies import "_s + Path(u"two.csv"_s));
    EXPECT_EQ(import.exitCode, 0) << import.err.toStdString();
    EXPECT_EQ(Run(u"frequencies list"_s).out, u"channel  name  frequency  alarm\n"
                                              "1        -     121.5 MHz  yes\n"
                                              "2        -     243 MHz    no\n"_s);
    const QJsonDocument list = ThroughPython(Run(u"frequencies list --json"_s).out);
    EXPECT_EQ(list[u"channels"_s].toArray().size(), 2);
    EXPECT_EQ(list[u"channels"_s][0],
              (QJsonObject{{u"channel"_s, 1}, {u"frequency_hz"_s, 121.5e6}, {u"alarm"_s, true}}));
}

TEST_F(StationCommandsTest, TwoImportsAtOnceLeaveTheListOfOneOfThem) {
    WriteFile(Path(u"a.csv"_s), "name,frequency_mhz\nTower,118.5\nGround,121.7\nApron,121.9\n");
    WriteFile(Path(u"b.csv"_s), "name,frequency_mhz\nATIS,126.0\nRadar,119.1\n");
    const auto arguments = [this](const QString& name) {
        return QStringList{u"frequencies"_s, u"import"_s, Path(name), u"--config"_s, Config()};
    };
    ASSERT_EQ(RunStation(arguments(u"a.csv"_s)).exitCode, 0);
    const QByteArray listOfA = ReadFile(Config() + u"/TrafficControl.ini"_s);
    ASSERT_EQ(RunStation(arguments(u"b.csv"_s)).exitCode, 0);
    const QString shownOfB = Run(u"frequencies list"_s).out;
    ASSERT_EQ(RunStation(arguments(u"a.csv"_s)).exitCode, 0);
    const QString shownOfA = Run(u"frequencies list"_s).out;
    for (int round = 0; round < 15; ++round) {
        WriteFile(Config() + u"/TrafficControl.ini"_s, listOfA);
        QProcess a;
        QProcess b;
        b.start(QStringLiteral(ZAN_STATION), arguments(u"b.csv"_s));
        a.start(QStringLiteral(ZAN_STATION), arguments(u"a.csv"_s));
        ASSERT_TRUE(a.waitForFinished(PATIENCE_MS));
        ASSERT_TRUE(b.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(a.exitCode(), 0);
        EXPECT_EQ(b.exitCode(), 0);
        const QString shown = Run(u"frequencies list"_s).out;
        EXPECT_TRUE(shown == shownOfA || shown == shownOfB) << shown.toStdString();
    }
}

TEST_F(StationCommandsTest, ImportWithoutOneUsableRowLeavesTheListAloneAndFails) {
    WriteFile(Path(u"good.csv"_s), "name,frequency_mhz\nTower,118.5\n");
    ASSERT_EQ(Run(u"frequencies import "_s + Path(u"good.csv"_s)).exitCode, 0);
    const QByteArray before = ReadFile(Config() + u"/TrafficControl.ini"_s);
    for (const char* const content : {"name,frequency_mhz\n", "name,frequency_mhz\nTower,many\n"}) {
        WriteFile(Path(u"bad.csv"_s), content);
        const StationResult result = Run(u"frequencies import "_s + Path(u"bad.csv"_s));
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.err.contains(u"the list is not changed"_s)) << result.err.toStdString();
        EXPECT_EQ(ReadFile(Config() + u"/TrafficControl.ini"_s), before);
    }
}

TEST_F(StationCommandsTest, SimulationOverwritesOnlyWhereItIsToldTo) {
    const QString file = Path(u"flight.csv"_s);
    const QStringList simulate{u"simulate"_s, u"--rows"_s, u"1"_s, u"--out"_s, file};
    EXPECT_EQ(RunStation(simulate).exitCode, 0);
    WriteFile(file, "precious");
    const StationResult refused = RunStation(simulate);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains(file) && refused.err.contains(u"--force"_s))
        << refused.err.toStdString();
    EXPECT_EQ(ReadFile(file), "precious");
    EXPECT_EQ(RunStation(simulate + QStringList{u"--force"_s}).exitCode, 0);
    EXPECT_TRUE(ReadFile(file).startsWith("time_ms,"));
}

TEST_F(StationCommandsTest, SignalEndsARunWithEverythingWrittenAndItsOwnExitCode) {
    for (const auto& [signal, exitCode] :
         {std::pair{SIGINT, 130}, std::pair{SIGTERM, 143}, std::pair{SIGHUP, 129}}) {
        QProcess process;
        process.start(QStringLiteral(ZAN_STATION), Replay(u"endless.csv"_s));
        AwaitSentence(process, Path(u"out"_s));
        ::kill(static_cast<pid_t>(process.processId()), signal);
        ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), exitCode);
        EXPECT_TRUE(process.readAllStandardOutput().simplified().contains(" sentences to file 1 "));
        EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 1);
        QFile::remove(Path(u"out"_s));
    }
}

TEST_F(StationCommandsTest, FurtherSignalsDoNotCutTheEndShort) {
    // The second signal comes at different moments of the end: the pause is what is tried out.
    for (unsigned long pauseMs = 0; pauseMs < 24; pauseMs += 3) {
        QProcess process;
        process.start(QStringLiteral(ZAN_STATION), Replay(u"endless.csv"_s));
        AwaitSentence(process, Path(u"out"_s));
        const auto id = static_cast<pid_t>(process.processId());
        ::kill(id, SIGTERM);
        QThread::msleep(pauseMs);
        ::kill(id, SIGHUP); // its number is its own until it is waited for
        ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 143);
        EXPECT_TRUE(process.readAllStandardOutput().simplified().contains(" sentences to file 1 "));
        QFile::remove(Path(u"out"_s));
    }
}

TEST_F(StationCommandsTest, FileOfLimitedSizeHoldsWholeSentencesAndFailsTheRun) {
    QByteArray recording = RECORDING;
    for (int row = 0; row < 200; ++row) {
        recording += QByteArray(ENDLESS).replace("3600000", QByteArray::number(4000000 + row));
    }
    WriteFile(Path(u"long.csv"_s), recording);
    QProcess process;
    process.setChildProcessModifier([] {
        const rlimit limit{20480, 20480};
        setrlimit(RLIMIT_FSIZE, &limit);
    });
    process.start(QStringLiteral(ZAN_STATION), Replay(u"long.csv"_s, {u"--speed"_s, u"max"_s}));
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(process.readAllStandardError().contains("File too large"));
    const QByteArray sentences = ReadFile(Path(u"out"_s));
    EXPECT_GT(sentences.size(), 10000);
    EXPECT_TRUE(sentences.endsWith("\r\n"));
}

TEST_F(StationCommandsTest, ClosedStandardStreamsAreNotReplacedByWhateverIsOpenedNext) {
    QProcess reader;
    reader.setChildProcessModifier([] { ::close(STDIN_FILENO); });
    reader.start(QStringLiteral(ZAN_STATION), {u"run"_s, u"--recording"_s, u"-"_s, u"--config"_s, Config()});
    ASSERT_TRUE(reader.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(reader.exitCode(), 1);
    QProcess writer;
    writer.setChildProcessModifier([] { ::close(STDOUT_FILENO); });
    QStringList arguments = Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s});
    arguments.replace(arguments.indexOf(Path(u"out"_s)), u"-"_s);
    writer.start(QStringLiteral(ZAN_STATION), arguments);
    ASSERT_TRUE(writer.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(writer.exitCode(), 1);
    EXPECT_TRUE(writer.readAllStandardError().contains("Bad file descriptor"));
}

TEST_F(StationCommandsTest, AnswerThatCannotBePrintedFailsTheCommand) {
    const auto expectFailure = [](QProcess& process, const QStringList& arguments, const QByteArray& reason) {
        process.start(QStringLiteral(ZAN_STATION), arguments);
        ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(process.exitCode(), 1) << arguments.join(u' ').toStdString();
        EXPECT_EQ(process.readAllStandardError(),
                  "zanstation: standard output cannot be written: " + reason + '\n');
    };
    for (const QString& command : {u"device"_s, u"device --json"_s, u"tree"_s, u"catalogue antennas"_s,
                                   u"--help"_s, u"help"_s, u"--version"_s, u"help run"_s, u"run --help"_s}) {
        QStringList arguments = command.split(u' ');
        if (!command.contains(u"help"_s) && !command.startsWith(u'-')) {
            arguments += {u"--config"_s, Config()};
        }
        QProcess full;
        full.setStandardOutputFile(u"/dev/full"_s);
        expectFailure(full, arguments, "No space left on device");
        QProcess closed;
        closed.setChildProcessModifier([] { ::close(STDOUT_FILENO); });
        expectFailure(closed, arguments, "Bad file descriptor");
    }
}

TEST_F(StationCommandsTest, RunGoesOnWithoutAReaderOfItsMessages) {
    QByteArray rows; // each bad row is reported
    for (int i = 1; i <= 300; ++i) {
        rows += RECORDING.split('\n').at(1) + '\n' + "not a row\n";
    }
    WriteFile(Path(u"bad.csv"_s), RECORDING + rows);
    for (const bool isGone : {true, false}) {
        const TinyPipe messages;
        if (isGone) {
            messages.StopReading();
        } else {
            messages.Fill();
        }
        QProcess process;
        PutInPlace(messages, STDERR_FILENO, process);
        process.start(QStringLiteral(ZAN_STATION),
                      Replay(u"bad.csv"_s, {u"--speed"_s, u"max"_s, u"--option"_s, u"Progress=true"_s}));
        ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 0);
        EXPECT_TRUE(process.readAllStandardOutput().simplified().contains(" sentences to file 301 "));
        EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 301);
    }
}

TEST_F(StationCommandsTest, RunWhoseMessagesNobodyTakesEndsBySignal) {
    WriteFile(Path(u"endlessbad.csv"_s), RECORDING + "bad\n" + ENDLESS);
    const TinyPipe messages;
    messages.Fill();
    QProcess process;
    PutInPlace(messages, STDERR_FILENO, process);
    process.start(QStringLiteral(ZAN_STATION),
                  Replay(u"endlessbad.csv"_s, {u"--option"_s, u"Progress=true"_s}));
    AwaitSentence(process, Path(u"out"_s));
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 143);
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 1);
}

TEST_F(StationCommandsTest, LostMessagesAreCountedForTheReaderThatTakesSomeAgain) {
    const TinyPipe messages;
    messages.Fill();
    QProcess process;
    PutInPlace(messages, STDERR_FILENO, process);
    // The settings of before are bad, and it is warned of two keys at the start.
    ASSERT_TRUE(QDir().mkpath(Config()));
    WriteFile(Config() + u"/Application.ini"_s, "[General]\nNobodyKnowsOne=1\nNobodyKnowsTwo=2\n");
    process.start(QStringLiteral(ZAN_STATION), Replay(u"endless.csv"_s));
    AwaitSentence(process, Path(u"out"_s));
    EXPECT_TRUE(messages.Read().startsWith("xxx"));
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    const QByteArray taken = messages.Read();
    EXPECT_TRUE(taken.contains(" lines of messages were lost\n")) << taken.toStdString();
}

TEST_F(StationCommandsTest, ResultsThatNobodyTakesAreWaitedForUntilASignalEndsThat) {
    const TinyPipe results;
    results.Fill();
    QProcess process;
    PutInPlace(results, STDOUT_FILENO, process);
    process.start(QStringLiteral(ZAN_STATION), Replay(u"endless.csv"_s));
    AwaitSentence(process, Path(u"out"_s));
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 143) << "the signal that has ended the run ends the waiting, too";

    QProcess device;
    PutInPlace(results, STDOUT_FILENO, device);
    device.start(QStringLiteral(ZAN_STATION), {u"device"_s, u"--config"_s, Config()});
    EXPECT_FALSE(device.waitForFinished(1500));
    EXPECT_TRUE(results.Read().startsWith("xxx"));
    ASSERT_TRUE(device.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(device.exitCode(), 0);
    EXPECT_TRUE(results.Read().startsWith("device "));

    results.Fill();
    QProcess run;
    PutInPlace(results, STDOUT_FILENO, run);
    run.start(QStringLiteral(ZAN_STATION), Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s}));
    EXPECT_FALSE(run.waitForFinished(1500));
    ::kill(static_cast<pid_t>(run.processId()), SIGTERM);
    ASSERT_TRUE(run.waitForFinished(PATIENCE_MS)) << "a run that is done and cannot say so";
}

TEST_F(StationCommandsTest, ReaderThatHasEnoughOfAnAnswerEndsItWithoutAMessage) {
    const TinyPipe results;
    results.StopReading();
    QProcess process;
    PutInPlace(results, STDOUT_FILENO, process);
    process.start(QStringLiteral(ZAN_STATION), {u"tree"_s, u"--config"_s, Config()});
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 141);
    EXPECT_EQ(process.readAllStandardError(), "");
}

TEST_F(StationCommandsTest, ArgumentThatIsNoTextIsRefused) {
    const QByteArray script = "exec \"$0\" simulate --out $'" + Path(u"inv\\xff.csv"_s).toUtf8() + "'";
    QProcess bash;
    bash.start(u"bash"_s, {u"-c"_s, QString::fromUtf8(script), QStringLiteral(ZAN_STATION)});
    ASSERT_TRUE(bash.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(bash.exitCode(), 2);
    EXPECT_EQ(bash.readAllStandardError(), "zanstation: an argument is not UTF-8 text\n");
    EXPECT_EQ(QDir(m_directory.path()).entryList({u"*inv*"_s}), QStringList());
}

TEST_F(StationCommandsTest, OptionThatIsGivenTwiceIsRefused) {
    StationResult result = Run(u"tune --frequency 1M --frequency 200M"_s);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err, u"zanstation: --frequency is given twice\n"_s);
    result = Run(u"device --json --json"_s);
    EXPECT_EQ(result.err, u"zanstation: --json is given twice\n"_s);
    EXPECT_EQ(Run(u"device --option Trace=true --option Progress=true"_s).exitCode, 0);
}

TEST_F(StationCommandsTest, RefusalsQuoteTheBeginningOfALongArgument) {
    const QString endless(120'000, u'x');
    for (const QString& command :
         {endless, u"device --"_s + endless, u"device "_s + endless, u"tune --frequency "_s + endless,
          u"run --interval "_s + endless, u"antennas enable "_s + endless,
          u"antennas range PX106 1M "_s + endless}) {
        const QString said = RunStation(command.split(u' ')).err.section(u'\n', 0, 0);
        EXPECT_TRUE(said.contains(QString(150, u'x') + u""_s)) << said.toStdString();
        EXPECT_TRUE(said.contains(u"..."_s)) << said.toStdString();
        EXPECT_LT(said.size(), 400);
    }
}

TEST_F(StationCommandsTest, CurrentDirectoryByTheNameOfTheSystemIsThatOfTheStart) {
    QProcess process;
    process.setWorkingDirectory(m_directory.path());
    QStringList arguments = Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s});
    arguments.replace(arguments.indexOf(Path(u"out"_s)), u"/proc/self/cwd/out"_s);
    process.start(QStringLiteral(ZAN_STATION), arguments);
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(ReadFile(Path(u"out"_s)).count("\r\n"), 1);
}

TEST_F(StationCommandsTest, HangupThatIsIgnoredAtTheStartStaysIgnored) {
    QProcess process;
    process.start(u"nohup"_s, QStringList{QStringLiteral(ZAN_STATION)} + Replay(u"endless.csv"_s));
    AwaitSentence(process, Path(u"out"_s));
    const QByteArray status = ReadFile(u"/proc/%1/status"_s.arg(process.processId()));
    const qulonglong ignored = status.mid(status.indexOf("SigIgn:") + 8, 16).toULongLong(nullptr, 16);
    EXPECT_TRUE(ignored & (1U << (SIGHUP - 1))) << status.toStdString();
    ::kill(static_cast<pid_t>(process.processId()), SIGHUP);
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM); // what ends it
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 143);
}

TEST_F(StationCommandsTest, SecondStationOnTheSettingsIsRefusedAndTheOtherCommandsAreNot) {
    QProcess first;
    first.start(QStringLiteral(ZAN_STATION), Replay(u"endless.csv"_s));
    AwaitSentence(first, Path(u"out"_s));
    const StationResult second =
        Run(u"run --speed max --output %1 --recording %2"_s.arg(Path(u"other"_s), Path(u"recording.csv"_s)));
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_TRUE(second.err.contains(u"process %1\n"_s.arg(first.processId()))) << second.err.toStdString();
    EXPECT_FALSE(QFile::exists(Path(u"other"_s)));
    EXPECT_EQ(Run(u"device"_s).exitCode, 0);
    EXPECT_EQ(Run(u"antennas check"_s).exitCode, 0);
    EXPECT_EQ(Run(u"doctor"_s).exitCode, 0);

    // One that is killed leaves nothing behind that holds the next one up.
    first.kill();
    ASSERT_TRUE(first.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(RunStation(Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s})).exitCode, 0);
}

TEST_F(StationCommandsTest, OutputToARecordingThatAnotherStationReplaysIsRefusedAndNotKept) {
    QProcess first;
    first.start(QStringLiteral(ZAN_STATION), Replay(u"endless.csv"_s));
    AwaitSentence(first, Path(u"out"_s));
    const QByteArray recording = ReadFile(Path(u"endless.csv"_s));
    const StationResult second =
        RunStation({u"run"_s, u"--speed"_s, u"max"_s, u"--recording"_s, Path(u"recording.csv"_s),
                    u"--config"_s, Path(u"other"_s), u"--output"_s, Path(u"endless.csv"_s), u"--quiet"_s});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_TRUE(
        second.err.startsWith(u"zanstation: the output %1 is in use by "_s.arg(Path(u"endless.csv"_s))))
        << second.err.toStdString();
    EXPECT_EQ(ReadFile(Path(u"endless.csv"_s)), recording);
    EXPECT_FALSE(ReadFile(Path(u"other/Application.ini"_s)).contains("endless.csv"));
    first.terminate();
    EXPECT_TRUE(first.waitForFinished(PATIENCE_MS));
}

TEST_F(StationCommandsTest, SecondStationOnTheOutputIsRefusedAndTouchesNothing) {
    QProcess first;
    first.start(QStringLiteral(ZAN_STATION), Replay(u"endless.csv"_s));
    AwaitSentence(first, Path(u"out"_s));
    const QByteArray sentences = ReadFile(Path(u"out"_s));
    const StationResult second =
        RunStation({u"run"_s, u"--speed"_s, u"max"_s, u"--recording"_s, Path(u"recording.csv"_s),
                    u"--config"_s, Path(u"other"_s), u"--output"_s, Path(u"out"_s), u"--quiet"_s});
    EXPECT_EQ(second.exitCode, 1);
    const QString inUse = u"zanstation: the output %1 is in use by "_s.arg(Path(u"out"_s));
    EXPECT_TRUE(second.err == inUse + u"process %1\n"_s.arg(first.processId()) ||
                second.err == inUse + u"another process\n"_s) // where the system does not say
        << second.err.toStdString();
    EXPECT_EQ(ReadFile(Path(u"out"_s)), sentences);
    EXPECT_FALSE(QFile::exists(Path(u"out.bak"_s)));
    EXPECT_FALSE(QFile::exists(Path(u"other/Application.ini"_s))) << "nothing was opened";
    first.kill();
    ASSERT_TRUE(first.waitForFinished(PATIENCE_MS));
}

TEST_F(StationCommandsTest, LockWithoutTheNumberOfItsProcessRefusesTheSecondAllTheSame) {
    Run(u"device"_s);
    QFile file(Config() + u"/station.lock"_s);
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    ASSERT_EQ(::flock(file.handle(), LOCK_EX), 0);
    const StationResult result = RunStation(Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s}));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(u"another process"_s)) << result.err.toStdString();
}

TEST_F(StationCommandsTest, LockThatCannotBeTakenEndsTheRun) {
    Run(u"device"_s);
    ASSERT_TRUE(QDir().mkdir(Config() + u"/station.lock"_s));
    const StationResult result = RunStation(Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s}));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(u"station.lock"_s)) << result.err.toStdString();
    EXPECT_FALSE(QFile::exists(Path(u"out"_s)));
}

TEST_F(StationCommandsTest, SettingsGoWhereServiceManagerAndUserSay) {
    struct Case {
        QList<std::pair<QString, QString>> environment;
        QString directory;
    };
    const QString home = Path(u"home"_s);
    for (const Case& each : {
             Case{{{u"HOME"_s, home}}, home + u"/.config/zanstation"_s},
             Case{{{u"HOME"_s, home}, {u"XDG_CONFIG_HOME"_s, Path(u"xdg"_s)}}, Path(u"xdg/zanstation"_s)},
             Case{{{u"HOME"_s, home + u'2'}, {u"XDG_CONFIG_HOME"_s, u"relative"_s}},
                  home + u"2/.config/zanstation"_s},
             Case{{{u"HOME"_s, home}, {u"CONFIGURATION_DIRECTORY"_s, Path(u"etc"_s)}}, Path(u"etc"_s)},
             Case{{{u"HOME"_s, home},
                   {u"STATE_DIRECTORY"_s, Path(u"state"_s) + u':' + Path(u"more"_s)},
                   {u"CONFIGURATION_DIRECTORY"_s, Path(u"etc2"_s)}},
                  Path(u"state"_s)},
         }) {
        const StationResult result = RunWith(each.environment, QStringLiteral(ZAN_STATION), {u"device"_s});
        EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
        EXPECT_TRUE(QFile::exists(each.directory + u"/Application.ini"_s)) << each.directory.toStdString();
    }
}

TEST_F(StationCommandsTest, SettingsNeverGoToTheRootDirectory) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root becomes a user whom the user database does not know";
    }
    for (const QString& home : {u"/"_s, u""_s, u"relative"_s}) {
        const StationResult result =
            RunWith({{u"HOME"_s, home}, {u"XDG_CONFIG_HOME"_s, u"/"_s}}, u"setpriv"_s,
                    {u"--reuid"_s, u"54321"_s, QStringLiteral(ZAN_STATION), u"device"_s});
        EXPECT_EQ(result.exitCode, 1) << result.out.toStdString();
        EXPECT_TRUE(result.err.contains(u"there is no directory for the settings"_s))
            << result.err.toStdString();
    }
    EXPECT_FALSE(QFile::exists(u"/.config/zanstation"_s));
    EXPECT_FALSE(QFile::exists(u"/zanstation"_s));
}

TEST_F(StationCommandsTest, QuietRunTellsErrorsOnly) {
    WriteFile(Path(u"recording.csv"_s), RECORDING + "nonsense\n");
    const StationResult quiet =
        RunStation(Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s, u"--quiet"_s}));
    EXPECT_EQ(quiet.exitCode, 0);
    EXPECT_EQ(quiet.out, QString());
    EXPECT_EQ(quiet.err, QString());
    const StationResult failing =
        RunStation(Replay(u"missing.csv"_s, {u"--speed"_s, u"max"_s, u"--quiet"_s}));
    EXPECT_EQ(failing.exitCode, 1);
    EXPECT_TRUE(failing.err.contains(u"missing.csv"_s)) << failing.err.toStdString();
    EXPECT_FALSE(Run(u"device --quiet"_s).out.isEmpty()) << "what was asked for is printed";
}

TEST_F(StationCommandsTest, QuietCommandTellsWhyItFails) {
    QStringList run = Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s, u"--quiet"_s});
    for (const QString& output : {Path(u"no/such/directory/out"_s), u"/dev/full"_s}) {
        run.replace(run.indexOf(u"--output"_s) + 1, output);
        const StationResult result = RunStation(run);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.err.startsWith(u"zanstation: "_s) && result.err.contains(output))
            << result.err.toStdString();
        EXPECT_EQ(result.err.count(u'\n'), 1) << result.err.toStdString();
    }
    QProcess process;
    process.start(QStringLiteral(ZAN_STATION), {u"run"_s, u"--recording"_s, u"-"_s, u"--config"_s, Config(),
                                                u"--output"_s, u""_s, u"--quiet"_s});
    process.write("bad\n");
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_EQ(process.readAllStandardError().count('\n'), 1) << "the header that is none";
}

TEST_F(StationCommandsTest, SettingsThatCannotBeSavedOrReadAreReportedQuietlyToo) {
    WriteFile(Path(u"channels.csv"_s), "name,frequency_mhz\nTower,118.5\n");
    const QString import = u"frequencies import "_s + Path(u"channels.csv"_s);
    ASSERT_EQ(Run(u"device"_s).exitCode, 0);
    ASSERT_TRUE(QDir(Config()).mkdir(u"TrafficControl.ini"_s));
    const StationResult unsaved = Run(import + u" --quiet"_s);
    EXPECT_EQ(unsaved.exitCode, 1);
    EXPECT_TRUE(unsaved.err.contains(u"TrafficControl.ini"_s)) << unsaved.err.toStdString();

    const QString settings = Config() + u"/Application.ini"_s;
    WriteFile(settings, "nonsense\n" + ReadFile(settings));
    const StationResult damaged = Run(u"antennas check --quiet"_s);
    EXPECT_EQ(damaged.exitCode, 0);
    EXPECT_TRUE(damaged.err.contains(settings + u".damaged-1"_s)) << damaged.err.toStdString();
}

TEST_F(StationCommandsTest, ImportIsReportedOnlyWhenItIsSaved) {
    WriteFile(Path(u"channels.csv"_s), "name,frequency_mhz\nTower,118.5\n");
    const QString import = u"frequencies import "_s + Path(u"channels.csv"_s);
    EXPECT_EQ(Run(import).out, u"imported 1 channel, left out 0 rows\n"_s);
    ASSERT_TRUE(QFile::remove(Config() + u"/TrafficControl.ini"_s) &&
                QDir(Config()).mkdir(u"TrafficControl.ini"_s));
    for (const QString& format : {QString(), u" --json"_s}) {
        const StationResult result = Run(import + format);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.out, QString());
    }
}

TEST_F(StationCommandsTest, DoctorLooksIntoNoStream) {
    const QString fifo = Path(u"fifo"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    for (const QString& stream : {fifo, u"-"_s, u"/dev/null"_s}) {
        const StationResult result = Run(u"doctor --recording "_s + stream);
        EXPECT_EQ(result.exitCode, 2) << stream.toStdString();
        EXPECT_TRUE(result.err.contains(u"not a stream"_s) && result.err.contains(u'\'' + stream + u'\''))
            << result.err.toStdString();
    }
    EXPECT_TRUE(Run(u"doctor --recording "_s + Path(u"missing.csv"_s)).out.contains(u"missing.csv"_s));
}

TEST_F(StationCommandsTest, AntennasThatOthersChangeMeanwhileStayAsTheyAreThen) {
    ASSERT_EQ(Run(u"antennas check"_s).exitCode, 0);
    const QString settings = Config() + u"/Application.ini"_s;
    QLockFile lock(settings + u".lock"_s);
    ASSERT_TRUE(lock.tryLock(0));
    const int watch = ::inotify_init1(IN_CLOEXEC);
    ASSERT_GE(::inotify_add_watch(watch, QFile::encodeName(settings + u".lock"_s).constData(), IN_OPEN), 0);
    QProcess process;
    process.start(QStringLiteral(ZAN_STATION),
                  {u"antennas"_s, u"range"_s, u"PX106"_s, u"40M"_s, u"1.3G"_s, u"--config"_s, Config()});
    // Whoever asks for the lock has read the settings, and writes them when he has it.
    pollfd asked{watch, POLLIN, 0};
    ASSERT_EQ(::poll(&asked, 1, PATIENCE_MS), 1);
    WriteFile(settings, ReadFile(settings).replace("MinRange=300000.000", "MinRange=400000.000"));
    lock.unlock();
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    const QByteArray saved = ReadFile(settings);
    EXPECT_TRUE(saved.contains("MinRange=400000.000")) << saved.toStdString();
    EXPECT_TRUE(saved.contains("MinRange=40000000.000")) << saved.toStdString();
    ::close(watch);
}

TEST_F(StationCommandsTest, NormalRunPrintsNoTraceOfDoingWell) {
    Run(u"device"_s);
    QDir(Config()).mkdir(u"ZANControl"_s);
    for (int i = 0; i < 20; ++i) { // so that the oldest of them is deleted
        WriteFile(Config() + u"/ZANControl/%1.bak"_s.arg(i), "");
    }
    const QStringList run = Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s});
    EXPECT_EQ(RunStation(run).err, QString());
    EXPECT_TRUE(RunStation(run + QStringList{u"--option"_s, u"Trace=true"_s})
                    .err.contains(u"delete the oldest backup"_s));
}

TEST_F(StationCommandsTest, BandOfAnyWidthIsCalledSoInTheTrace) {
    Run(u"device"_s);
    QByteArray settings = ReadFile(Config() + u"/Application.ini"_s);
    WriteFile(Config() + u"/Application.ini"_s,
              settings.replace("ConverterTypeName=RCV01", "ConverterTypeName=RCV02"));
    const StationResult result = Run(u"device --option Trace=true"_s);
    EXPECT_TRUE(result.err.contains(u"fRealtimeBw=any\n"_s)) << result.err.toStdString();
    EXPECT_FALSE(result.err.contains(u"fRealtimeBw=-"_s)) << result.err.toStdString();
}

TEST_F(StationCommandsTest, StationSpeaksEnglishWhateverTheLanguage) {
    // A German locale of this test's own, for the machine may have none.
    ASSERT_EQ(
        QProcess::execute(u"localedef"_s, {u"-i"_s, u"de_DE"_s, u"-f"_s, u"UTF-8"_s, Path(u"de_DE.UTF-8"_s)}),
        0);
    for (const QString& locale : {u"C"_s, u"de_DE.UTF-8"_s}) {
        const QList<std::pair<QString, QString>> environment{
            {u"LOCPATH"_s, m_directory.path()}, {u"LC_ALL"_s, locale}, {u"LANGUAGE"_s, u"de"_s}};
        const StationResult check = RunWith(environment, QStringLiteral(ZAN_STATION),
                                            {u"antennas"_s, u"check"_s, u"--config"_s, Config()});
        EXPECT_EQ(check.out, u"Antenna setup is valid.\n"_s);
        const QString recording = Path(u"recording.csv/below"_s);
        const StationResult run = RunWith(environment, QStringLiteral(ZAN_STATION),
                                          {u"run"_s, u"--recording"_s, recording, u"--config"_s, Config()});
        EXPECT_TRUE(run.err.contains(u"Not a directory"_s)) << run.err.toStdString();
    }
}

TEST_F(StationCommandsTest, EmptyNamesAreRefused) {
    struct Case {
        QStringList arguments;
        QString message;
    };
    for (const Case& each : {
             Case{{u"run"_s, u"--recording"_s, u""_s}, u"--recording needs the name of a file"_s},
             Case{{u"doctor"_s, u"--recording="_s}, u"--recording needs the name of a file"_s},
             Case{{u"doctor"_s, u"--components"_s, u""_s}, u"--components needs the name of a directory"_s},
             Case{{u"simulate"_s, u"--out"_s, u""_s}, u"--out needs the name of a file"_s},
             Case{{u"device"_s, u"--config"_s, u""_s}, u"--config needs the name of a directory"_s},
             Case{{u"frequencies"_s, u"import"_s, u""_s}, u"import needs the name of a file"_s},
         }) {
        const StationResult result = RunStation(each.arguments);
        EXPECT_EQ(result.exitCode, 2) << each.message.toStdString();
        EXPECT_EQ(result.err, u"zanstation: "_s + each.message + u'\n');
        EXPECT_EQ(result.out, QString());
    }
}

TEST_F(StationCommandsTest, EmptyOutputSwitchesTheFileOffWithoutAWordOfItsOwn) {
    const StationResult result =
        RunStation({u"run"_s, u"--recording"_s, Path(u"recording.csv"_s), u"--config"_s, Config(),
                    u"--speed"_s, u"max"_s, u"--output"_s, u""_s});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err,
              u"zanstation: warning: no output is switched on: name one with --output or --serial\n"
              "zanstation: warning: 1 bearing published, no sentence written: all outputs are off\n"_s);
}

TEST_F(StationCommandsTest, CommandsThatOnlyLookLeaveTheSettingsAsTheyAre) {
    QFile example(QStringLiteral(ZAN_EXAMPLE_SETTINGS));
    ASSERT_TRUE(example.open(QFile::ReadOnly));
    const QByteArray settings = example.readAll();
    ASSERT_TRUE(QDir().mkpath(Config()));
    const QString file = Config() + u"/Application.ini"_s;
    WriteFile(file, settings);
    for (const QString& command :
         {u"device"_s, u"antennas list"_s, u"antennas check"_s, u"tune --frequency 100M"_s, u"hardware"_s,
          u"frequencies list"_s, u"doctor"_s, u"tree"_s, u"hub receive --components /nowhere"_s}) {
        EXPECT_NE(Run(command).exitCode, 2) << command.toStdString();
        EXPECT_EQ(ReadFile(file), settings) << command.toStdString();
    }
}

TEST_F(StationCommandsTest, ImportWarnsOfChannelNumbersThatAreInSeveralRowsAndKeepsThemAll) {
    WriteFile(Path(u"channels.csv"_s),
              "channel,name,frequency_mhz\n7,A,118.1\n8,B,118.2\n7,C,118.3\n9,D,118.4\n"
              "9,E,118.5\n7,F,118.6\n");
    const StationResult result = Run(u"frequencies import "_s + Path(u"channels.csv"_s));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err,
              u"zanstation: warning: 2 channel numbers are in several rows, which are all imported: "
              "number 7 in 3 rows, number 9 in 2 rows\n"_s);
    EXPECT_EQ(result.out, u"imported 6 channels, left out 0 rows\n"_s);
    EXPECT_EQ(Run(u"frequencies list"_s).out, u"channel  name  frequency  alarm\n"
                                              "7        A     118.1 MHz  no\n"
                                              "8        B     118.2 MHz  no\n"
                                              "7        C     118.3 MHz  no\n"
                                              "9        D     118.4 MHz  no\n"
                                              "9        E     118.5 MHz  no\n"
                                              "7        F     118.6 MHz  no\n"_s);
}

TEST_F(StationCommandsTest, ManyRepeatedChannelNumbersAreNamedInOneLine) {
    QByteArray rows = "channel,frequency_mhz\n";
    for (int i = 0; i < 40; ++i) {
        rows += QByteArray::number(i / 2) + ",118.1\n";
    }
    WriteFile(Path(u"channels.csv"_s), rows);
    const StationResult result = Run(u"frequencies import "_s + Path(u"channels.csv"_s));
    EXPECT_EQ(result.err.count(u'\n'), 1);
    EXPECT_TRUE(result.err.contains(u"20 channel numbers are in several rows"_s)) << result.err.toStdString();
    EXPECT_TRUE(result.err.endsWith(u", number 9 in 2 rows, ...\n"_s)) << result.err.toStdString();
}

TEST_F(StationCommandsTest, OneOfAThingIsCalledByItsSingular) {
    WriteFile(Path(u"channels.csv"_s), "name,frequency_mhz\nTower,118.5\nonly one field\n");
    const StationResult result = Run(u"frequencies import "_s + Path(u"channels.csv"_s));
    EXPECT_EQ(result.out, u"imported 1 channel, left out 1 row\n"_s);
    EXPECT_EQ(result.err, u"zanstation: warning: line 3: 1 field instead of 2\n"_s);
}

TEST_F(StationCommandsTest, DoctorAndRunWarnOfSettingsThatDoNotMeanWhatTheySeemTo) {
    RunStation(Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s}));
    const QString file = Config() + u"/Application.ini"_s;
    QByteArray settings = ReadFile(file);
    settings.replace("Name=PX106", "Name=PX1O6");
    settings.replace("DFAlgorithm=COR", "DFAlgorithm=CORR");
    settings.replace("LocationChoice=0", "LocationChoice=2");
    WriteFile(file, "MshCentralPort=0\n" + settings);
    const StationResult doctor = Run(u"doctor"_s);
    const StationResult run = RunStation(Replay(u"recording.csv"_s, {u"--speed"_s, u"max"_s}));
    EXPECT_EQ(run.exitCode, 0);
    for (const QString& warning :
         {u"the setting \"MshCentralPort\" is \"0\"; allowed are whole numbers from 1 to 65535, and the "
          u"default is "
          "used\n"_s,
          u"the setting \"SystemConfiguration/Antenna1/Name\" is \"PX1O6\"; allowed are the models of "
          "\"zanstation catalogue antennas\", and the nearest one is \"PX106\"\n"_s,
          u"the setting \"SystemConfiguration/Antenna1/DFAlgorithm\" is \"CORR\"; allowed are WAT, COR, "
          u"COR8, COR8O, "
          "COR9, SUPR, VEC, VMI, VMR, separated by \",\"\n"_s,
          u"LocationChoice is 2 (Manual), and LocationLatitude and LocationLongitude are not set: the "
          u"station has "
          "no position\n"_s}) {
        EXPECT_TRUE(doctor.out.contains(u"warning settings      "_s + warning)) << doctor.out.toStdString();
        EXPECT_EQ(run.err.count(u"zanstation: warning: "_s + warning), 1) << run.err.toStdString();
    }
}

TEST_F(StationCommandsTest, HelpOfACommandIsPrintedBothWays) {
    for (const QString& command : {u"run"_s, u"tune"_s, u"tree"_s}) {
        const StationResult help = RunStation({u"help"_s, command});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_EQ(help.out, RunStation({command, u"--help"_s}).out);
    }
    EXPECT_EQ(RunStation({u"help"_s}).out, RunStation({u"--help"_s}).out);
    EXPECT_EQ(RunStation({u"help"_s, u"--help"_s}).out, RunStation({u"--help"_s}).out);
    for (const QStringList& further : {QStringList{u"--json"_s}, {u"device"_s, u"extra"_s}}) {
        const StationResult wrong = RunStation(QStringList{u"help"_s} + further);
        EXPECT_EQ(wrong.exitCode, 2);
        EXPECT_EQ(wrong.out, QString());
        EXPECT_EQ(
            wrong.err,
            u"zanstation: help takes the name of one command and no options: zanstation help COMMAND\n"_s);
    }
    const StationResult unknown = RunStation({u"help"_s, u"fly"_s});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_TRUE(unknown.err.contains(u"'fly'"_s)) << unknown.err.toStdString();
}

namespace {

/// The options that a text names.
QSet<QString> FindOptions(const QString& text) {
    static const QRegularExpression option(u"--[a-z]+(-[a-z]+)*"_s);
    QSet<QString> options;
    for (const QRegularExpressionMatch& match : option.globalMatch(text)) {
        options.insert(match.captured());
    }
    return options;
}

} // namespace

TEST_F(StationCommandsTest, ManualNamesEveryOptionOfEveryCommandInItsSynopsis) {
    const QString manual = QString::fromUtf8(ReadFile(QStringLiteral(ZAN_MANUAL))).remove(u'\\');
    const QString synopsis = manual.section(u".SH SYNOPSIS\n"_s, 1).section(u".SH "_s, 0, 0);
    const QSet<QString> common = FindOptions(synopsis.section(u".PP\n"_s, 1));
    EXPECT_EQ(common, (QSet<QString>{u"--config"_s, u"--quiet"_s, u"--option"_s, u"--help"_s}));
    for (const QString& command :
         {u"device"_s, u"antennas"_s, u"tune"_s, u"catalogue"_s, u"hardware"_s, u"run"_s, u"simulate"_s,
          u"frequencies"_s, u"hub"_s, u"doctor"_s, u"tree"_s}) {
        QSet<QString> named = common;
        for (const QString& line : synopsis.section(u".PP\n"_s, 0, 0).split(u".br\n"_s)) {
            if (line.startsWith(u".B zanstation "_s + command)) {
                named += FindOptions(line);
            }
        }
        const QString help = RunStation({command, u"--help"_s}).out;
        static const QRegularExpression listed(u"^  (?:-\\w, )?(--\\S+)"_s,
                                               QRegularExpression::MultilineOption);
        QSet<QString> there;
        for (const QRegularExpressionMatch& match : listed.globalMatch(help)) {
            there.insert(match.captured(1));
        }
        EXPECT_EQ(named, there) << command.toStdString() << (there - named).values().join(u' ').toStdString();
    }
}

namespace {

/// What bash offers for the last of the words.
QStringList Complete(const QStringList& words, const QString& directory) {
    QProcess bash;
    bash.setWorkingDirectory(directory);
    bash.start(u"bash"_s,
               QStringList{u"-c"_s,
                           u"source \"$0\"; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _zanstation; "
                           "printf '%s\\n' \"${COMPREPLY[@]}\""_s,
                           QStringLiteral(ZAN_COMPLETION), QStringLiteral(ZAN_STATION)} +
                   words);
    bash.waitForFinished(PATIENCE_MS);
    EXPECT_EQ(bash.readAllStandardError(), "");
    QStringList offered = QString::fromUtf8(bash.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    offered.sort();
    return offered;
}

} // namespace

TEST_F(StationCommandsTest, BashCompletesCommandsOptionsValuesAndFiles) {
    const QString here = m_directory.path();
    WriteFile(Path(u"two words.csv"_s), "");
    ASSERT_TRUE(QDir(here).mkdir(u"settings"_s));
    const QStringList commands = Complete({u""_s}, here);
    for (const QString& command :
         {u"device"_s, u"antennas"_s, u"tune"_s, u"catalogue"_s, u"hardware"_s, u"run"_s, u"simulate"_s,
          u"frequencies"_s, u"hub"_s, u"doctor"_s, u"tree"_s, u"help"_s}) {
        EXPECT_TRUE(commands.contains(command)) << command.toStdString();
    }
    EXPECT_EQ(Complete({u"ca"_s}, here), QStringList{u"catalogue"_s});
    EXPECT_EQ(Complete({u"help"_s, u"d"_s}, here), (QStringList{u"device"_s, u"doctor"_s, u"drivers"_s}));
    EXPECT_EQ(Complete({u"simulate"_s, u"--"_s}, here),
              (QStringList{u"--components"_s, u"--config"_s, u"--duration"_s, u"--force"_s, u"--frequency"_s,
                           u"--help"_s, u"--mode"_s, u"--option"_s, u"--out"_s, u"--quiet"_s, u"--ranges"_s,
                           u"--rows"_s, u"--scenario"_s, u"--seed"_s}));
    EXPECT_EQ(Complete({u"simulate"_s, u"--scenario"_s, u""_s}, here),
              (QStringList{u"airfield"_s, u"overflight"_s, u"ship"_s}));
    EXPECT_EQ(Complete({u"run"_s, u"--pitch"_s}, here), QStringList{u"--pitch-threshold"_s});
    EXPECT_EQ(Complete({u"run"_s, u"--speed"_s, u""_s}, here), (QStringList{u"max"_s, u"realtime"_s}));
    EXPECT_EQ(Complete({u"tune"_s, u"--adjust"_s, u""_s}, here),
              (QStringList{u"down"_s, u"none"_s, u"up"_s}));
    EXPECT_EQ(Complete({u"tune"_s, u"--mode"_s, u"s"_s}, here), (QStringList{u"scan"_s, u"search"_s}));
    EXPECT_EQ(Complete({u"antennas"_s, u""_s}, here),
              (QStringList{u"check"_s, u"disable"_s, u"enable"_s, u"list"_s, u"range"_s, u"repair"_s}));
    EXPECT_EQ(Complete({u"run"_s, u"--json/touch "_s + Path(u"typed"_s) + u" && true /e#"_s, u""_s}, here),
              QStringList());
    EXPECT_FALSE(QFile::exists(Path(u"typed"_s))) << "what was typed is not run";
    EXPECT_EQ(Complete({u"antennas"_s, u"--json"_s, u"--config=settings"_s, u"c"_s}, here),
              QStringList{u"check"_s});
    EXPECT_EQ(Complete({u"antennas"_s, u"repair"_s, u"--d"_s}, here), QStringList{u"--dry-run"_s});
    EXPECT_EQ(Complete({u"run"_s, u"--recording"_s, u"two"_s}, here), QStringList{u"two words.csv"_s});
    EXPECT_EQ(Complete({u"device"_s, u"--config"_s, u"s"_s}, here), QStringList{u"settings"_s});
    EXPECT_EQ(Complete({u"frequencies"_s, u"import"_s, u"two"_s}, here), QStringList{u"two words.csv"_s});
    EXPECT_EQ(Complete({u"fly"_s, u"--"_s}, here), QStringList());
}

TEST_F(StationCommandsTest, BashCompletesBehindAnEqualsSign) {
    WriteFile(Path(u"two words.csv"_s), "");
    const QString here = m_directory.path();
    EXPECT_EQ(Complete({u"run"_s, u"--recording"_s, u"="_s, u"two"_s}, here),
              QStringList{u"two words.csv"_s});
    EXPECT_EQ(Complete({u"tune"_s, u"--adjust"_s, u"="_s}, here),
              (QStringList{u"down"_s, u"none"_s, u"up"_s}));
}

TEST_F(StationCommandsTest, BashCompletesTheAntennasOfTheStation) {
    const QString here = m_directory.path();
    EXPECT_EQ(Complete({u"antennas"_s, u"--config"_s, u"config"_s, u"range"_s, u""_s}, here), QStringList());
    EXPECT_FALSE(QFile::exists(Config())) << "no station is made for that";
    Run(u"device"_s);
    QByteArray settings = ReadFile(Config() + u"/Application.ini"_s);
    WriteFile(Config() + u"/Application.ini"_s, settings.replace("Name=PX109", "Name=PX122 (A/P)"));
    for (const QStringList& config : {QStringList{u"config"_s}, {u"="_s, u"config"_s}}) {
        const QStringList words =
            QStringList{u"antennas"_s, u"--config"_s} + config + QStringList{u"enable"_s, u""_s};
        EXPECT_EQ(Complete(words, here), (QStringList{u"PX106"_s, u"PX110"_s, u"PX122\\ \\(A/P\\)"_s}));
    }
    EXPECT_EQ(Complete({u"antennas"_s, u"--config"_s, u"config"_s, u"disable"_s, u"PX11"_s}, here),
              QStringList{u"PX110"_s});
    EXPECT_EQ(Complete({u"antennas"_s, u"--config"_s, u"config"_s, u"range"_s, u"PX110"_s, u""_s}, here),
              QStringList());
    EXPECT_EQ(
        Complete({u"antennas"_s, u"enable"_s, u"--json"_s, u"--config"_s, u"config"_s, u"PX11"_s}, here),
        QStringList{u"PX110"_s})
        << "options may come between";
}

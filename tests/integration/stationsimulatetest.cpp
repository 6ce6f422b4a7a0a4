#include "support/stationprocess.h"
#include "support/tinypipe.h"
#include "zancommon/driverrecords.h"
#include "zancommon/recordingreader.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <set>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;
using KvZANCommon::RecordedBearing;
using KvZANCommon::RecordingReader;

// `zanstation simulate` as a person runs it.

namespace {

constexpr quint64 BEGIN = 1767268800000; // of the scenarios: 2026-01-01 12:00:00 UTC

class StationSimulateTest : public testing::Test {
protected:
    [[nodiscard]] QString Path(const QString& name) const { return m_directory.filePath(name); }

    /// Runs `simulate` with an output of its own.
    StationResult Simulate(const QStringList& options = {}) {
        return RunStation(QStringList{u"simulate"_s, u"--out"_s, m_out, u"--force"_s} + options);
    }
    /// The same; returns the rows, all of which can be read.
    std::vector<RecordedBearing> SimulateRows(const QStringList& options = {}) {
        const StationResult result = Simulate(options);
        EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
        std::vector<RecordedBearing> rows;
        RecordingReader reader;
        EXPECT_TRUE(reader.Open(m_out)) << reader.GetErrorText().toStdString();
        while (const std::optional<RecordedBearing> row = reader.Next()) {
            rows.push_back(*row);
        }
        EXPECT_EQ(reader.GetBadLineCount(), 0U);
        return rows;
    }
    static std::set<double> FrequenciesOf(const std::vector<RecordedBearing>& rows) {
        std::set<double> frequencies;
        for (const RecordedBearing& row : rows) {
            frequencies.insert(row.frequency);
        }
        return frequencies;
    }
    /// A scenario with a station at 55 N 5 E and an emitter in the east; returns the name of its file.
    [[nodiscard]] QString Scenario(const QByteArray& more = {}) const {
        WriteFile(Path(u"scenario.json"_s),
                  R"({"station": {"latitude": 55, "longitude": 5, "altitude": 20},
                      "device": {"type": "ZANTIDE", "options": ["ZAN-HFR", "ZANTIDE-SR"],
                                 "frequency": 127.5e6, "converters": [{"type": "RCV03"}],
                                 "antennas": [{"name": "PX115SR", "converter": 0}]},
                      "emitters": [{"name": "east", "frequency": 127.5e6, "power": 40, "latitude": 55,
                                    "longitude": 5.2, "altitude": 500},
                                   {"name": "south", "frequency": 127.5e6, "power": 38, "latitude": 54.9,
                                    "longitude": 5, "altitude": 500}])" +
                      more + "}");
        return Path(u"scenario.json"_s);
    }

    QTemporaryDir m_directory;
    QString m_out = m_directory.filePath(u"out.csv"_s);
};

} // namespace

TEST_F(StationSimulateTest, TheDefaultIsAMinuteOfTheOverflight) {
    const std::vector<RecordedBearing> rows = SimulateRows();
    ASSERT_EQ(rows.size(), 600U);
    EXPECT_EQ(rows.front().timeMs, BEGIN + 100);
    EXPECT_EQ(rows.back().timeMs, BEGIN + 60'000);
    EXPECT_EQ(FrequenciesOf(rows), std::set{127.5e6});
    double highest = 0.0;
    for (const RecordedBearing& row : rows) {
        highest = std::max(highest, row.elevation.value_or(0.0));
        EXPECT_TRUE(row.heading && row.pitch && row.roll && row.latitude && row.longitude && row.altitude);
        EXPECT_EQ(row.mode, EMODE_FFM);
        EXPECT_FALSE(row.emitter);
        EXPECT_FALSE(row.positionTimeMs);
    }
    EXPECT_GT(highest, 80.0) << "nearly overhead";
    const auto north = [](const RecordedBearing& row) {
        return std::fmod(row.azimuth + *row.heading, 360.0);
    };
    EXPECT_NEAR(north(rows.front()), 274.0, 5.0) << "from the west";
    EXPECT_NEAR(north(rows.back()), 86.0, 5.0) << "to the east";
}

TEST_F(StationSimulateTest, TheSameOptionsGiveTheSameFileToTheByte) {
    const std::vector<QStringList> cases{
        {},
        {u"--scenario"_s, u"ship"_s, u"--mode"_s, u"search"_s},
        {u"--mode"_s, u"scan"_s, u"--ranges"_s, u"118M:137M:25k"_s, u"--seed"_s, u"9"_s},
        {u"--scenario"_s, Scenario(R"(, "faults": [{"kind": "lostlink", "at": 5, "for": 10}])")}};
    for (const QStringList& options : cases) {
        ASSERT_EQ(Simulate(options).exitCode, 0);
        const QByteArray first = ReadFile(m_out);
        ASSERT_EQ(Simulate(options).exitCode, 0);
        EXPECT_EQ(ReadFile(m_out), first) << options.join(u' ').toStdString();
        EXPECT_GT(first.count('\n'), 100);
        ASSERT_EQ(Simulate(options.contains(u"--seed"_s) ? options.first(4)
                                                         : options + QStringList{u"--seed"_s, u"123"_s})
                      .exitCode,
                  0);
        EXPECT_NE(ReadFile(m_out), first) << "another seed";
    }
}

TEST_F(StationSimulateTest, TheSeedOfTheScenarioIsTheDefault) {
    ASSERT_EQ(Simulate().exitCode, 0);
    const QByteArray file = ReadFile(m_out);
    ASSERT_EQ(Simulate({u"--seed"_s, u"3"_s}).exitCode, 0); // that of overflight
    EXPECT_EQ(ReadFile(m_out), file);
}

TEST_F(StationSimulateTest, RowsEndTheRecordingAndTheDurationDoesNotBindThem) {
    EXPECT_EQ(SimulateRows({u"--rows"_s, u"7"_s}).size(), 7U);
    EXPECT_EQ(SimulateRows({u"--rows"_s, u"1000"_s}).size(), 1000U);
    const QStringList both{u"--rows"_s, u"1000"_s, u"--duration"_s, u"2"_s};
    EXPECT_EQ(SimulateRows(both).size(), 20U);
    EXPECT_TRUE(Simulate(both).err.contains(u"the duration was over after 20 of 1000 rows"_s));
}

TEST_F(StationSimulateTest, AScanFindsTheEmittersOnTheirFrequencies) {
    const std::vector<RecordedBearing> rows =
        SimulateRows({u"--scenario"_s, u"ship"_s, u"--mode"_s, u"scan"_s, u"--ranges"_s,
                      u"156M:162.05M:25k,118M:137M:25k"_s, u"--duration"_s, u"130"_s});
    EXPECT_EQ(FrequenciesOf(rows), (std::set{123.1e6, 127.5e6, 132.125e6, 156.8e6, 160.65e6, 161.975e6}));
    EXPECT_TRUE(std::ranges::all_of(rows, [](const RecordedBearing& row) {
        return row.quality > 0.0 && row.mode == EMODE_SCAN;
    })) << "a bearing only where there is a signal";
}

TEST_F(StationSimulateTest, WidebandHasTheFrequencyOfTheChannel) {
    const std::vector<RecordedBearing> rows = SimulateRows(
        {u"--scenario"_s, u"airfield"_s, u"--mode"_s, u"wideband"_s, u"--frequency"_s, u"119.7M"_s});
    EXPECT_TRUE(FrequenciesOf(rows).contains(119.6e6));
    EXPECT_TRUE(
        std::ranges::all_of(rows, [](const RecordedBearing& row) { return row.mode == EMODE_WIDEBAND_FFM; }));
}

TEST_F(StationSimulateTest, AFixedFrequencyIsTheOneThatIsWished) {
    const QStringList ship{u"--scenario"_s, u"ship"_s, u"--frequency"_s};
    EXPECT_EQ(FrequenciesOf(SimulateRows(ship + QStringList{u"160.65M"_s})), std::set{160.65e6});
    const StationResult refused = Simulate(ship + QStringList{u"50G"_s});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains(u"--frequency: no antenna serves"_s)) << refused.err.toStdString();
}

TEST_F(StationSimulateTest, ASearchHoldsAtWhatItFinds) {
    const std::set<double> found =
        FrequenciesOf(SimulateRows({u"--scenario"_s, u"ship"_s, u"--mode"_s, u"search"_s}));
    EXPECT_TRUE(found.contains(127.5e6) && found.contains(160.65e6));
}

TEST_F(StationSimulateTest, SuperResolutionHasARowForEachEmitter) {
    const std::vector<RecordedBearing> rows =
        SimulateRows({u"--scenario"_s, Scenario(R"(, "wishes": [{"at": 0, "superResolution": true}])")});
    ASSERT_GE(rows.size(), 3U);
    EXPECT_EQ(rows[0].emitter, 0.0);
    EXPECT_NEAR(rows[0].azimuth, 90.0, 5.0);
    EXPECT_EQ(rows[1].emitter, 1.0);
    EXPECT_NEAR(rows[1].azimuth, 180.0, 5.0);
    EXPECT_FALSE(rows[2].emitter) << "the bearing of the strongest";
}

TEST_F(StationSimulateTest, FaultsOfTheScenarioTakeTheirTimeAndNoMore) {
    const auto simulate = [this](const QByteArray& faults) {
        return SimulateRows({u"--scenario"_s, Scenario(", \"faults\": [" + faults + "]")});
    };
    // Silence from 10 s to 15 s, and a link that is lost from 20 s to 35 s, by two faults.
    std::vector<RecordedBearing> rows = simulate(R"({"kind": "silence", "at": 10, "for": 5},
        {"kind": "lostlink", "at": 20, "for": 10}, {"kind": "lostlink", "at": 25, "for": 10})");
    const auto isWithin = [&rows](quint64 first, quint64 last) {
        return std::ranges::any_of(rows, [=](const RecordedBearing& row) {
            return row.timeMs > BEGIN + first && row.timeMs < BEGIN + last;
        });
    };
    EXPECT_FALSE(isWithin(10'000, 15'000));
    EXPECT_FALSE(isWithin(20'000, 35'000));
    EXPECT_EQ(rows.size(), 400U);
    EXPECT_EQ(rows.back().timeMs, BEGIN + 60'000);

    EXPECT_EQ(simulate(R"({"kind": "lostlink", "at": 10, "for": 1e9})").size(), 100U);
    EXPECT_EQ(simulate(R"({"kind": "lostlink", "at": 0, "for": 10})").front().timeMs, BEGIN + 10'100);
    EXPECT_EQ(simulate(R"({"kind": "slow", "at": 0, "for": 1e9, "delay": 0.01})").size(), 600U);
}

TEST_F(StationSimulateTest, ARecordingOfSilenceHasNoRowsAndSaysSo) {
    const QStringList options{u"--scenario"_s,
                              Scenario(R"(, "faults": [{"kind": "silence", "at": 0, "for": 1e9}])")};
    EXPECT_TRUE(SimulateRows(options).empty());
    EXPECT_EQ(Simulate(options).err,
              u"zanstation: warning: nothing was heard: the recording has no rows\n"_s);
}

TEST_F(StationSimulateTest, ChannelsWhoseFrequenciesAreNotKnownAreRefused) {
    const QString error =
        u"zanstation: the scenario lets the device measure channels that were not asked for: "
        "ask for them with --ranges\n"_s;
    const QByteArray toRanges =
        R"(, "wishes": [{"at": 5, "mode": "scan", "ranges": [{"start": 127e6, "step": 25e3, "stop": 128e6}]}])";
    StationResult result = Simulate({u"--scenario"_s, Scenario(toRanges)});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, error);
    EXPECT_FALSE(QFile::exists(m_out));
    // Ranges that are asked for are kept.
    EXPECT_EQ(FrequenciesOf(
                  SimulateRows({u"--scenario"_s, Scenario(toRanges), u"--ranges"_s, u"127.1M:128M:25k"_s})),
              std::set{127.5e6});

    const QString toWideband = Scenario(R"(, "wishes": [{"at": 5, "mode": "wideband"}])");
    EXPECT_EQ(Simulate({u"--scenario"_s, toWideband}).err, error);
    const QString toBandwidth = Scenario(
        R"(, "wishes": [{"at": 5, "resolutionBandwidth": 5e3}, {"at": 6, "resolutionBandwidth": 1e5}])");
    EXPECT_EQ(Simulate({u"--scenario"_s, toBandwidth, u"--mode"_s, u"wideband"_s}).err, error);
}

TEST_F(StationSimulateTest, WhatCannotBeSimulatedIsRefusedWithAReasonAndWithoutAFile) {
    WriteFile(Path(u"hostile.json"_s), R"({"station": {"latitude": 1e99}})");
    struct Case {
        QStringList options;
        int exitCode;
        QString reason;
    };
    for (const Case& each :
         {Case{
              {u"--scenario"_s, u"nowhere"_s},
              1,
              u"nowhere: cannot be opened: there is no such file; built in are airfield, overflight, ship"_s},
          Case{{u"--scenario"_s, u"/dev/zero"_s}, 1, u"/dev/zero: cannot be opened: it is not a file"_s},
          Case{{u"--scenario"_s, Path(u"hostile.json"_s)}, 1, u"latitude"_s},
          Case{{u"--scenario"_s, u""_s}, 2, u"--scenario needs the name of a file"_s},
          Case{{u"--duration"_s, u"0"_s}, 2, u"--duration takes a number from 0.001 to 1e+06, not '0'"_s},
          Case{{u"--duration"_s, u"-1"_s}, 2, u"--duration takes"_s},
          Case{{u"--duration"_s, u"1e9"_s}, 2, u"--duration takes"_s},
          Case{{u"--duration"_s, u"nan"_s}, 2, u"--duration takes"_s},
          Case{{u"--rows"_s, u"0"_s}, 2, u"--rows takes"_s},
          Case{{u"--seed"_s, u"-1"_s}, 2, u"--seed takes"_s},
          Case{{u"--mode"_s, u"fly"_s}, 2, u"--mode takes"_s},
          Case{{u"--mode"_s, u"tdma"_s}, 1, u"the simulated device does not have the mode tdma"_s},
          Case{{u"--mode"_s, u"0"_s}, 1, u"the simulated device does not have the mode 0"_s},
          Case{{u"--mode"_s, u"scan"_s}, 2, u"--mode scan needs --ranges"_s},
          Case{{u"--ranges"_s, u"1M:2M"_s}, 2, u"--ranges takes"_s},
          Case{{u"--ranges"_s, u"118M:137M:10"_s}, 2, u"more than 60000 channels"_s},
          Case{{u"--ranges"_s, u"1M:2M:10k"_s}, 1, u"--ranges: no antenna serves 1000000 Hz"_s},
          Case{{u"--components"_s, m_directory.path()}, 1, u"libzandriver-simulator.so"_s}}) {
        const StationResult result = Simulate(each.options);
        EXPECT_EQ(result.exitCode, each.exitCode) << each.reason.toStdString();
        EXPECT_TRUE(result.err.startsWith(u"zanstation: "_s) && result.err.contains(each.reason))
            << result.err.toStdString();
        EXPECT_FALSE(QFile::exists(m_out));
    }
}

TEST_F(StationSimulateTest, TheScenarioIsNotOverwritten) {
    const QString scenario = Scenario();
    const QByteArray content = ReadFile(scenario);
    const StationResult result =
        RunStation({u"simulate"_s, u"--scenario"_s, scenario, u"--out"_s, scenario, u"--force"_s});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, u"zanstation: "_s + scenario + u" is the scenario\n"_s);
    EXPECT_EQ(ReadFile(scenario), content);
}

TEST_F(StationSimulateTest, NoSettingsAreNeededAndNoneAreMade) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"HOME"_s);
    environment.remove(u"XDG_CONFIG_HOME"_s);
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(m_directory.path());
    process.start(QStringLiteral(ZAN_STATION), {u"simulate"_s, u"--out"_s, u"out.csv"_s, u"--config"_s,
                                                Path(u"config"_s), u"--rows"_s, u"1"_s});
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{u"out.csv"_s});
}

TEST_F(StationSimulateTest, StandardOutputGetsTheSameRows) {
    ASSERT_EQ(Simulate().exitCode, 0);
    const StationResult result = RunStation({u"simulate"_s, u"--out"_s, u"-"_s});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out.toUtf8(), ReadFile(m_out));
    const StationResult failed =
        RunStation({u"simulate"_s, u"--out"_s, u"-"_s, u"--scenario"_s, u"nowhere"_s});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(failed.out, QString());
}

TEST_F(StationSimulateTest, AFullDiskLeavesWholeRowsAndAnError) {
    const auto bash = [this](const QString& script) {
        QProcess process;
        process.start(u"bash"_s, {u"-c"_s, script, QStringLiteral(ZAN_STATION), m_out});
        process.waitForFinished(PATIENCE_MS);
        return StationResult{process.exitCode(), {}, QString::fromUtf8(process.readAllStandardError())};
    };
    StationResult result = bash(u"ulimit -f 10; exec \"$0\" simulate --out - >\"$1\""_s); // KiB
    EXPECT_EQ(result.exitCode, 1);
    // A program that is measured for coverage has a word to say about its own files behind it.
    EXPECT_TRUE(result.err.startsWith(u"zanstation: standard output cannot be written: File too large\n"_s))
        << result.err.toStdString();
    const QByteArray written = ReadFile(m_out);
    EXPECT_GT(written.size(), 8000);
    EXPECT_TRUE(written.endsWith(",1,\n")) << written.last(100).toStdString();

    result = bash(u"exec \"$0\" simulate --out - >/dev/full"_s);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, u"zanstation: standard output cannot be written: No space left on device\n"_s);

    WriteFile(m_out, "precious");
    result = bash(u"ulimit -f 10; exec \"$0\" simulate --out \"$1\" --force"_s);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains(u"cannot be written: File too large"_s)) << result.err.toStdString();
    EXPECT_EQ(ReadFile(m_out), "precious");
    EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"out.csv"_s});
}

TEST_F(StationSimulateTest, AReaderThatHasEnoughEndsItWithoutAMessage) {
    const TinyPipe rows;
    rows.StopReading();
    QProcess process;
    process.setChildProcessModifier([&rows] { ::dup2(rows.WriteEnd(), STDOUT_FILENO); });
    process.start(QStringLiteral(ZAN_STATION), {u"simulate"_s, u"--out"_s, u"-"_s});
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(process.exitCode(), 141);
    EXPECT_EQ(process.readAllStandardError(), "");
}

TEST_F(StationSimulateTest, ASlowReaderGetsWholeRowsAndASignalDoesNotWaitForIt) {
    const TinyPipe rows;
    QProcess process;
    process.setChildProcessModifier([&rows] { ::dup2(rows.WriteEnd(), STDOUT_FILENO); });
    process.start(QStringLiteral(ZAN_STATION),
                  {u"simulate"_s, u"--out"_s, u"-"_s, u"--duration"_s, u"1e6"_s});
    QByteArray read;
    ASSERT_TRUE(Await(process, [&] {
        read += rows.Read();
        return read.size() > 20'000;
    }));
    ::kill(static_cast<pid_t>(process.processId()), SIGTERM);
    ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
    EXPECT_TRUE(process.exitStatus() == QProcess::CrashExit || process.exitCode() == 143);
    for (QByteArray rest = rows.Read(); !rest.isEmpty(); rest = rows.Read()) {
        read += rest;
    }
    EXPECT_TRUE(read.endsWith('\n')) << read.last(100).toStdString();
}

TEST_F(StationSimulateTest, ASignalLeavesWhatWasThere) {
    WriteFile(m_out, "precious");
    for (const auto& [signal, exitCode] : {std::pair{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}}) {
        QProcess process;
        process.start(QStringLiteral(ZAN_STATION),
                      {u"simulate"_s, u"--out"_s, m_out, u"--force"_s, u"--duration"_s, u"1e6"_s});
        // The new recording has no name before its end.
        const QString counters = u"/proc/%1/io"_s.arg(process.processId());
        ASSERT_TRUE(Await(process, [&counters] {
            const QByteArray text = ReadFile(counters);
            return text.mid(text.indexOf("wchar: ") + 7).split('\n').constFirst().toInt() > 100'000;
        }));
        ::kill(static_cast<pid_t>(process.processId()), signal);
        ASSERT_TRUE(process.waitForFinished(PATIENCE_MS));
        EXPECT_EQ(process.exitCode(), exitCode);
        EXPECT_EQ(process.readAllStandardError(), "");
        EXPECT_EQ(ReadFile(m_out), "precious");
        EXPECT_EQ(QDir(m_directory.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"out.csv"_s});
    }
}

#include "connections/outputfile.h"
#include "zancommon/recordingwriter.h"
#include "zancommon/zancharacteristics.h"
#include "zanserver/driverchoice.h"
#include "zanserver/operationmodetext.h"
#include "zanserver/scanranges.h"
#include "zanstation/commandline.h"
#include "zanstation/devicewishes.h"
#include "zanstation/exitcodes.h"
#include "zanstation/rowstream.h"
#include "zanstation/signalwatcher.h"
#include "zanstation/simulation.h"

#include <QFileInfo>

#include <csignal>
#include <optional>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using KvZANCommon::RecordedBearing;
using KvZANCommon::RecordingColumn;

namespace {

constexpr QStringView STANDARD_OUTPUT = u"-";
constexpr double DEFAULT_DURATION = 60.0; // seconds
constexpr double LONGEST_DURATION = 1e6;
constexpr qint64 MOST_ROWS = 1'000'000'000'000;

/// Mode and emitter. The time of the position is that of what a station has used; here is none.
constexpr std::span<const RecordingColumn> FURTHER_COLUMNS =
    std::span(KvZANCommon::FURTHER_RECORDING_COLUMNS).first(2);

/// Takes the options of the command line. Nothing, with a message, when one cannot be used.
std::optional<SimulationOptions> ReadOptions(const CommandLine& line) {
    SimulationOptions options;
    options.scenario = *line.Text(u"scenario"_s); // has a default
    constexpr qint64 LARGEST_SEED = 1'000'000'000'000;
    constexpr double SHORTEST_DURATION = 0.001;
    std::optional<double> duration = line.IsSet(u"rows"_s) ? LONGEST_DURATION : DEFAULT_DURATION;
    const std::optional<DeviceWishes> wishes = DeviceWishes::Read(line);
    if (!wishes || !line.Number(u"seed"_s, qint64{0}, LARGEST_SEED, options.seed) ||
        !line.Number(u"duration"_s, SHORTEST_DURATION, LONGEST_DURATION, duration)) {
        return {};
    }
    options.duration = std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(*duration));
    options.mode = static_cast<EMode>(wishes->mode.value_or(OPMODE_FFM));
    options.frequency = wishes->frequency;
    double channels = 0.0;
    for (const QString& text : wishes->ranges) {
        QString fault;
        options.ranges.push_back(*ScanRanges::Parse(text, fault));
        channels += ScanRanges::CountChannels(options.ranges.back());
    }
    if (channels > ZANCharacteristics::MAX_CHANNEL_COUNT_DEFAULT) {
        CommandLine::Refuse(u"--ranges: there would be more than %1 channels"_s.arg(
            ZANCharacteristics::MAX_CHANNEL_COUNT_DEFAULT));
        return {};
    }
    ScanRanges::Number(options.ranges);
    if (options.mode == EMODE_SCAN && options.ranges.empty()) {
        CommandLine::Refuse(u"--mode scan needs --ranges, such as 118M:137M:25k"_s);
        return {};
    }
    return options;
}

/// Whether the recording may be written where it is wanted; says why not.
bool MayWrite(const CommandLine& line, const QString& fileName, const QString& scenario) {
    if (OutputFile::IsSameFile(fileName, scenario)) {
        Console::Error(fileName + u" is the scenario"_s);
        return false;
    }
    if (!line.IsSet(u"force"_s) && QFileInfo(fileName).isFile()) {
        Console::Error(fileName + u" exists already; --force overwrites it"_s);
        return false;
    }
    return true;
}

/// Gives the rows of a simulation to a function until there are enough, or it returns false. Returns the
/// exit code, with messages.
int Simulate(const CommandLine& line, const SimulationOptions& options, qint64 rowCount,
             const Simulation::TakeRow& write) {
    line.TakeComponentDirectory();
    QString fault;
    DriverComponentPtr driver = DriverLibrary::Load(DriverChoice::SIMULATOR.toString(), fault);
    if (!driver) {
        Console::Error(fault);
        return EXIT_FAILED;
    }
    if (!driver->Describe().modes.contains(options.mode)) {
        Console::Error(u"the simulated device does not have the mode "_s +
                       OperationModeText::Format(static_cast<EOperationMode>(options.mode)));
        return EXIT_FAILED;
    }
    int exitCode = EXIT_OK;
    bool isWritten = true;
    qint64 rows = 0;
    const SignalWatcher signals;
    Simulation simulation(std::move(driver), options, [&](const RecordedBearing& row) {
        isWritten = write(row);
        return isWritten && ++rows < rowCount;
    });
    QObject::connect(&signals, &SignalWatcher::Interrupted, &simulation, [&](int signal) {
        exitCode = ExitCodeOf(signal);
        simulation.Stop();
    });
    if (!simulation.Run()) {
        Console::Error(simulation.GetErrorText());
        return EXIT_FAILED;
    }
    if (isWritten && exitCode == EXIT_OK && rows == 0) {
        Console::Warn(u"nothing was heard: the recording has no rows"_s);
    } else if (isWritten && exitCode == EXIT_OK && line.IsSet(u"rows"_s) && rows < rowCount) {
        Console::Warn(u"the duration was over after %1 of %2 rows"_s.arg(rows).arg(rowCount));
    }
    return exitCode;
}

int SimulateToFile(const CommandLine& line, const SimulationOptions& options, qint64 rowCount,
                   const QString& fileName) {
    KvZANCommon::RecordingWriter writer;
    const auto write = [&writer](const RecordedBearing& row) { return writer.Write(row); };
    bool isWritten = writer.Open(fileName, FURTHER_COLUMNS);
    const int exitCode = isWritten ? Simulate(line, options, rowCount, write) : EXIT_FAILED;
    isWritten = writer.GetErrorText().isEmpty();
    if (isWritten && exitCode == EXIT_OK) {
        isWritten = writer.Commit();
    }
    if (!isWritten) {
        Console::Error(writer.GetErrorText());
        return EXIT_FAILED;
    }
    return exitCode;
}

int SimulateToStandardOutput(const CommandLine& line, const SimulationOptions& options, qint64 rowCount) {
    RowStream stream(FURTHER_COLUMNS);
    const auto write = [&stream](const RecordedBearing& row) { return stream.Write(row); };
    const int exitCode = Simulate(line, options, rowCount, write);
    if (exitCode == EXIT_OK) { // after a signal nobody waits for the reader
        stream.Flush();
    }
    if (!stream.GetErrorText().isEmpty()) {
        Console::Error(stream.GetErrorText());
        return EXIT_FAILED;
    }
    return stream.HasNoReader() && exitCode == EXIT_OK ? ExitCodeOf(SIGPIPE) : exitCode;
}

} // namespace

namespace Commands {

int Simulate(const QStringList& arguments) {
    CommandLine line(
        u"simulate"_s,
        u"Writes a recording of what the simulated device hears in a scenario, as fast as the machine can. "
        u"The "
        "same options give the same recording. Needs no settings, and changes none."_s,
        QList<QCommandLineOption>{
            {u"scenario"_s, u"Scenario that is built in, or the file of one (default: overflight)."_s,
             u"airfield|overflight|ship|FILE"_s, u"overflight"_s},
            {u"duration"_s,
             u"Seconds of the scenario's time (default: %1; with --rows as long as it takes)."_s.arg(
                 DEFAULT_DURATION),
             u"S"_s}} +
            DeviceWishes::GetOptions() +
            QList<QCommandLineOption>{
                {u"seed"_s, u"Seed of the random noise (default: that of the scenario)."_s, u"N"_s},
                {u"rows"_s, u"Ends the recording after so many rows."_s, u"N"_s},
                {u"out"_s, u"File to write; \"-\" is standard output."_s, u"FILE"_s},
                {u"force"_s, u"Overwrites an existing file."_s},
                CommandLine::ComponentsOption()});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    const std::optional<SimulationOptions> options = ReadOptions(line);
    std::optional<qint64> rowCount = MOST_ROWS;
    if (!options || !line.Number(u"rows"_s, qint64{1}, MOST_ROWS, rowCount)) {
        return EXIT_USAGE;
    }
    const std::optional<QString> fileName = line.Text(u"out"_s);
    if (!fileName) {
        return CommandLine::Refuse(u"--out is missing: name the file for the recording"_s);
    }
    if (*fileName == STANDARD_OUTPUT) {
        return SimulateToStandardOutput(line, *options, *rowCount);
    }
    return MayWrite(line, *fileName, options->scenario) ? SimulateToFile(line, *options, *rowCount, *fileName)
                                                        : EXIT_FAILED;
}

} // namespace Commands

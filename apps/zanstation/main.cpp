#include "kwbase/errorhandler.h"
#include "tolmappstartup/appoptions.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "zanstation/antennascommand.h"
#include "zanstation/cataloguecommand.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/devicecommand.h"
#include "zanstation/doctorcommand.h"
#include "zanstation/exitcodes.h"
#include "zanstation/frequenciescommand.h"
#include "zanstation/hardwarecommand.h"
#include "zanstation/hubcommand.h"
#include "zanstation/operationmodetext.h"
#include "zanstation/passsimulator.h"
#include "zanstation/recordingwriter.h"
#include "zanstation/runcommand.h"
#include "zanstation/station.h"
#include "zanstation/tunecommand.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QTextStream>
#include <QTranslator>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

const QString& Usage() {
    static const QString usage =
        u"Usage: zanstation COMMAND [OPTION...]\n"
        "\n"
        "Runs the common library of a direction-finding application on recorded bearings.\n"
        "\n"
        "Commands:\n"
        "  device       prints what the station's device is and can do\n"
        "  antennas     shows, checks, repairs and changes the antenna setup\n"
        "  tune         finds the nearest valid frequency or range, and what serves it\n"
        "  catalogue    prints a table of the device catalogue\n"
        "  hardware     compares the device's components with those required\n"
        "  run          replays a recording through driver, filters and outputs\n"
        "  simulate     writes the recording of an emitter that passes the station\n"
        "  frequencies  imports and lists the traffic-control frequencies\n"
        "  hub          joins the message hub as a receiver or a sender\n"
        "  doctor       tells what works on this machine\n"
        "  tree         prints the value tree after start-up\n"
        "\n"
        "zanstation COMMAND --help tells the options of a command.\n"
        "zanstation --version tells the version.\n"_s;
    return usage;
}

void Print(const QString& text) {
    QTextStream(stdout) << text;
}

bool WriteSimulation(quint64 seed, quint64 rowCount, const QString& fileName) {
    PassSimulator simulator(seed, rowCount);
    RecordingWriter writer;
    bool isWritten = writer.Open(fileName);
    while (isWritten) {
        const std::optional<RecordedBearing> bearing = simulator.Next();
        if (!bearing) {
            isWritten = writer.Commit();
            break;
        }
        isWritten = writer.Write(*bearing);
    }
    if (!isWritten) {
        Console::Error(writer.GetErrorText());
    }
    return isWritten;
}

int Simulate(const QStringList& arguments) {
    CommandLine line(
        u"simulate"_s, u"Writes the recording of an emitter that passes the station: one row a second."_s,
        {{u"seed"_s, u"Number that the noise is drawn from."_s, u"N"_s},
         {u"rows"_s, u"Number of rows (default: %1)."_s.arg(PassSimulator::DEFAULT_ROW_COUNT), u"N"_s},
         {u"out"_s, u"File to write."_s, u"FILE"_s}});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    constexpr qint64 LARGEST = 1'000'000'000'000;
    std::optional<qint64> seed = 1;
    std::optional<qint64> rows = static_cast<qint64>(PassSimulator::DEFAULT_ROW_COUNT);
    if (!line.Number(u"seed"_s, qint64{0}, LARGEST, seed) ||
        !line.Number(u"rows"_s, qint64{1}, LARGEST, rows)) {
        return EXIT_USAGE;
    }
    const std::optional<QString> fileName = line.Text(u"out"_s);
    if (!fileName) {
        return CommandLine::Refuse(u"--out is missing: where shall the recording go?"_s);
    }
    return WriteSimulation(static_cast<quint64>(*seed), static_cast<quint64>(*rows), *fileName) ? EXIT_OK
                                                                                                : EXIT_FAILED;
}

/// "realtime", "max", or how many times faster than recorded.
std::optional<double> ReadPace(const QString& text) {
    if (text == u"realtime") {
        return 1.0;
    }
    if (text == u"max") {
        return ReplayDriver::AS_FAST_AS_POSSIBLE;
    }
    bool isNumber = false;
    const double pace = text.toDouble(&isNumber);
    return isNumber && pace > 0.0 && std::isfinite(pace) ? std::optional(pace) : std::nullopt;
}

int Run(const QStringList& arguments) {
    CommandLine line(
        u"run"_s,
        u"Replays a recording through driver, adapter, filters and outputs. What is not given here stays as "
        "it is in the settings; what is given for outputs and thresholds is kept there."_s,
        {{u"recording"_s, u"Recording to replay (default: a simulated one)."_s, u"FILE"_s},
         {u"speed"_s, u"Pace: realtime, how many times faster, or max."_s, u"realtime|N|max"_s,
          u"realtime"_s},
         {u"output"_s,
          u"File for the sentences; \"\" switches it off. The previous file is kept as FILE.bak."_s,
          u"FILE"_s},
         {u"serial"_s,
          u"Serial line for the sentences, such as /dev/ttyUSB0:9600,n,8,1; \"\" switches it off."_s,
          u"ADDRESS"_s},
         {u"interval"_s, u"Milliseconds from sentence to sentence; 0: one with each bearing."_s, u"MS"_s},
         {u"pitch-threshold"_s, u"Rejects bearings from this pitch on, in degrees."_s, u"DEG"_s},
         {u"roll-threshold"_s, u"Rejects bearings from this roll on, in degrees."_s, u"DEG"_s},
         {u"overhead-threshold"_s, u"Rejects bearings from this elevation on, in degrees."_s, u"DEG"_s},
         {u"connection-speed"_s, u"From 1 on, bearings without quality are marked as unusable."_s, u"N"_s}});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    RunOptions options;
    const std::optional<double> pace = ReadPace(*line.Text(u"speed"_s));
    if (!pace) {
        return CommandLine::Refuse(u"--speed takes realtime, max or a number above 0"_s);
    }
    options.pace = *pace;
    options.output = line.Text(u"output"_s);
    if (options.output && !options.output->isEmpty()) {
        options.output = QFileInfo(*options.output).absoluteFilePath();
    }
    options.serial = line.Text(u"serial"_s);
    constexpr int LONGEST_INTERVAL = 10000;
    if (!line.Number(u"interval"_s, 0, LONGEST_INTERVAL, options.interval) ||
        !line.Number(u"pitch-threshold"_s, 0.0, 90.0, options.pitchThreshold) ||
        !line.Number(u"roll-threshold"_s, 0.0, 180.0, options.rollThreshold) ||
        !line.Number(u"overhead-threshold"_s, 0.0, 90.0, options.overheadThreshold) ||
        !line.Number(u"connection-speed"_s, 0, std::numeric_limits<int>::max(), options.connectionSpeed)) {
        return EXIT_USAGE;
    }
    if (!line.OpenStore()) {
        return EXIT_FAILED;
    }
    const QString configDirectory = QFileInfo(*line.Text(u"config"_s)).absoluteFilePath();
    if (const std::optional<QString> recording = line.Text(u"recording"_s)) {
        options.recording = QFileInfo(*recording).absoluteFilePath();
    } else {
        options.recording = configDirectory + u"/example.csv"_s;
        if (!QFileInfo::exists(options.recording) &&
            !WriteSimulation(1, PassSimulator::DEFAULT_ROW_COUNT, options.recording)) {
            return EXIT_FAILED;
        }
    }
    // The command log is kept below the current directory: with the settings.
    QDir::setCurrent(configDirectory);
    const int exitCode = RunCommand(options).Run();
    return CfgCenter::Close() || exitCode != EXIT_OK ? exitCode : EXIT_FAILED;
}

/// Does something with the station that the settings describe.
int WithStation(const CommandLine& line, const std::function<int()>& work) {
    if (!line.OpenStore()) {
        return EXIT_FAILED;
    }
    int exitCode = EXIT_OK;
    {
        const Station station;
        exitCode = work();
    }
    return CfgCenter::Close() || exitCode != EXIT_OK ? exitCode : EXIT_FAILED;
}

int PrintTree(const QStringList& arguments) {
    CommandLine line(
        u"tree"_s, u"Prints the value tree after start-up: path, type, value and number of observers."_s, {});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    return WithStation(line, [] {
        QTextStream out(stdout);
        Tree::Instance()->Dump(out);
        return EXIT_OK;
    });
}

int Catalogue(const QStringList& arguments) {
    const QString tables = CatalogueCommand::GetTableNames().join(u'|');
    CommandLine line(u"catalogue"_s, u"Prints a table of the device catalogue."_s,
                     {{u"json"_s, u"For programs: an array of objects, frequencies and bandwidths in Hz."_s}},
                     tables);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    if (line.Positional().size() != 1 ||
        !CatalogueCommand::Print(line.Positional().constFirst(), line.IsSet(u"json"_s))) {
        return CommandLine::Refuse(u"which table? "_s + tables);
    }
    return EXIT_OK;
}

int Device(const QStringList& arguments) {
    CommandLine line(u"device"_s,
                     u"Prints what the station's device is: type, options, antennas and whether it supports "
                     "them, limits per mode, and where the converters change."_s,
                     {});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    return WithStation(line, [] {
        PrintDevice(Station::GetCharacteristics());
        return EXIT_OK;
    });
}

int Antennas(const QStringList& arguments) {
    const QString actions = u"list|check|repair|enable NAME|disable NAME|range NAME LOW HIGH"_s;
    CommandLine line(u"antennas"_s,
                     u"Works on the antenna setup in the station's settings. Fails when the setup is not "
                     "valid."_s,
                     {}, actions);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    const auto* const action = AntennasCommand::FindAction(line.Positional().value(0));
    if (!action || line.Positional().size() != 1 + action->argumentCount) {
        return CommandLine::Refuse(u"what shall be done? "_s + actions);
    }
    return WithStation(line, [&line] { return AntennasCommand::Run(line.Positional()); });
}

/// Reads how a range shall be moved off the border of two antennas.
std::optional<ZANCharacteristics::EAdjustMode> ReadAdjustMode(const QString& text) {
    constexpr auto LEAVE = static_cast<ZANCharacteristics::EAdjustMode>(2);
    if (text == u"down") {
        return ZANCharacteristics::ADJUST_DOWN;
    }
    if (text == u"up") {
        return ZANCharacteristics::ADJUST_UP;
    }
    return text == u"none" ? std::optional(LEAVE) : std::nullopt;
}

int TuneTo(const QStringList& arguments) {
    CommandLine line(
        u"tune"_s,
        u"Moves a frequency, or a range from --start to --stop, to the nearest valid one, and tells what was "
        "changed and why, and what receives it. Frequencies: 145.5M, 145.5 MHz, 300k, 1e6."_s,
        {{u"mode"_s, u"ffm, wideband, scan, search, tdma, or a number from 0 to 14."_s, u"MODE"_s, u"ffm"_s},
         {u"frequency"_s, u"The frequency wanted."_s, u"F"_s},
         {u"bandwidth"_s,
          u"Band around it that the antenna must hold in wideband mode (default: the realtime bandwidth)."_s,
          u"B"_s},
         {u"start"_s, u"Start of the range wanted."_s, u"F"_s},
         {u"stop"_s, u"Stop of the range wanted."_s, u"F"_s},
         {u"adjust"_s, u"Where a range that straddles two antennas goes: down, up, or none."_s,
          u"down|up|none"_s, u"down"_s}});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    TuneRequest request;
    std::optional<double> start;
    std::optional<double> stop;
    if (!line.Frequency(u"frequency"_s, request.frequency) ||
        !line.Frequency(u"bandwidth"_s, request.bandwidth) || !line.Frequency(u"start"_s, start) ||
        !line.Frequency(u"stop"_s, stop)) {
        return EXIT_USAGE;
    }
    const std::optional<EOperationMode> mode = OperationModeText::Parse(*line.Text(u"mode"_s));
    if (!mode) {
        return CommandLine::Refuse(u"--mode takes ffm, wideband, scan, search, tdma or a number to 14"_s);
    }
    request.adjustName = *line.Text(u"adjust"_s);
    const std::optional adjustMode = ReadAdjustMode(request.adjustName);
    if (!adjustMode) {
        return CommandLine::Refuse(u"--adjust takes down, up or none"_s);
    }
    const bool isRange = start && stop && *start <= *stop && !request.bandwidth;
    const bool isFrequency = !start && !stop && !line.IsSet(u"adjust"_s);
    if (request.frequency ? !isFrequency : !isRange) {
        return CommandLine::Refuse(
            u"--frequency (with --bandwidth), or --start and --stop (with --adjust), the lower one first"_s);
    }
    request.mode = *mode;
    request.adjustMode = *adjustMode;
    request.start = start.value_or(0.0);
    request.stop = stop.value_or(0.0);
    return WithStation(line, [&request] { return Tune(Station::GetCharacteristics(), request); });
}

int Hardware(const QStringList& arguments) {
    CommandLine line(u"hardware"_s,
                     u"Compares the components that the device reports with those that the settings require. "
                     "Fails when a required one is missing."_s,
                     {});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    return WithStation(line, PrintHardware);
}

int Frequencies(const QStringList& arguments) {
    const QString actions = u"import FILE|list"_s;
    CommandLine line(
        u"frequencies"_s,
        u"Imports the traffic-control frequencies from a CSV file with a name and a frequency column, "
        "or lists them."_s,
        {}, actions);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    const QStringList words = line.Positional();
    if (words.value(0) == u"import" && words.size() == 2) {
        return WithStation(line, [&words] { return FrequenciesCommand::Import(words.at(1)); });
    }
    if (words == QStringList{u"list"_s}) {
        return WithStation(line, FrequenciesCommand::List);
    }
    return CommandLine::Refuse(u"what shall be done? "_s + actions);
}

/// The directory of the components that are installed with the program.
QString GetComponentDirectory() {
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/" ZAN_COMPONENT_DIR));
}

QCommandLineOption ComponentsOption() {
    return {u"components"_s, u"Directory of the component libraries."_s, u"DIR"_s, GetComponentDirectory()};
}

int Hub(const QStringList& arguments) {
    const QString roles = u"receive|send"_s;
    CommandLine line(
        u"hub"_s, u"Joins the message hub through the installed client component, until it is interrupted."_s,
        {ComponentsOption(), {u"name"_s, u"Name at the hub."_s, u"NAME"_s}}, roles);
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    const QString role = line.Positional().value(0);
    if (line.Positional().size() != 1 || (role != u"receive" && role != u"send")) {
        return CommandLine::Refuse(u"in which role? "_s + roles);
    }
    CfgCenter::SetComponentDirectory(QFileInfo(*line.Text(u"components"_s)).absoluteFilePath());
    return WithStation(line,
                       [&] { return JoinHub(role == u"receive", line.Text(u"name"_s).value_or(QString())); });
}

int Doctor(const QStringList& arguments) {
    CommandLine line(u"doctor"_s, u"Tells what works on this machine. Fails when something is broken."_s,
                     {ComponentsOption()});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    CfgCenter::SetComponentDirectory(QFileInfo(*line.Text(u"components"_s)).absoluteFilePath());
    return WithStation(line, [&line] { return RunDoctor(*line.Text(u"config"_s)); });
}

/// A command of the program.
struct Command {
    QStringView name;
    int (*run)(const QStringList& arguments) = nullptr;
};

constexpr std::array<Command, 11> COMMANDS{{
    {u"device", Device},
    {u"antennas", Antennas},
    {u"tune", TuneTo},
    {u"catalogue", Catalogue},
    {u"hardware", Hardware},
    {u"frequencies", Frequencies},
    {u"hub", Hub},
    {u"doctor", Doctor},
    {u"run", Run},
    {u"simulate", Simulate},
    {u"tree", PrintTree},
}};

/// Shows trace lines on standard error. The library traces every question that it has no sample mode for; the
/// commands say that in their own words, so these lines are for those who ask for the whole trace.
void ShowTrace() {
    ErrorHandler::Instance().SetSink([](const QString& line) {
        if (!line.contains("No sample mode matching"_L1) || AppOptions::GetBoolean(u"Trace"_s, false)) {
            qInfo().noquote() << line;
        }
    });
}

/// Has the sentences of the library in the language of the user, where there is a translation.
void InstallTranslation(QTranslator& translator) {
    if (translator.load(QLocale(), u"zancommon"_s, u"_"_s, u":/translations"_s)) {
        QCoreApplication::installTranslator(&translator);
    }
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"zanstation"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(ZAN_VERSION));

    const QStringList arguments = QCoreApplication::arguments();
    const QString command = arguments.value(1);
    if (command == u"--version" || command == u"-v") {
        Print(u"zanstation "_s + QCoreApplication::applicationVersion() + u'\n');
        return EXIT_OK;
    }
    if (command == u"--help" || command == u"-h") {
        Print(Usage());
        return EXIT_OK;
    }
    const QStringList rest = QStringList(u"zanstation "_s + command) + arguments.mid(2);
    const auto* const found = std::ranges::find(COMMANDS, command, &Command::name);
    if (found != COMMANDS.end()) {
        QTranslator translator;
        InstallTranslation(translator);
        ShowTrace();
        return found->run(rest);
    }
    QTextStream(stderr) << (command.isEmpty() ? QString() : u"zanstation: no command '%1'\n\n"_s.arg(command))
                        << Usage();
    return EXIT_USAGE;
}

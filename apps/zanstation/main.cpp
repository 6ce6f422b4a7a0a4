#include "tolmappstartup/appoptions.h"
#include "tolmappstartup/cfgcenter.h"
#include "valueframework/tree.h"
#include "zanstation/console.h"
#include "zanstation/passsimulator.h"
#include "zanstation/recordingwriter.h"
#include "zanstation/runcommand.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTextStream>

#include <cmath>
#include <functional>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr int EXIT_OK = 0;
constexpr int EXIT_FAILED = 1;
constexpr int EXIT_USAGE = 2;

const QString& Usage() {
    static const QString usage =
        u"Usage: zanstation COMMAND [OPTION...]\n"
        "\n"
        "Runs the common library of a direction-finding application on recorded bearings.\n"
        "\n"
        "Commands:\n"
        "  run       replays a recording through driver, filters and outputs\n"
        "  simulate  writes the recording of an emitter that passes the station\n"
        "  tree      prints the value tree after start-up\n"
        "\n"
        "zanstation COMMAND --help tells the options of a command.\n"
        "zanstation --version tells the version.\n"_s;
    return usage;
}

/// Reads the options of one command. Ends the program's work for a wrong command line, and for --help.
class CommandLine {
public:
    CommandLine(const QString& command, const QString& description, const QList<QCommandLineOption>& options)
        : m_usage(u"Usage: zanstation "_s + command + u" [OPTION...]"_s) {
        m_parser.setApplicationDescription(description);
        m_parser.addOptions(options);
        m_parser.addOption({{u"h"_s, u"help"_s}, u"Tells the options of this command."_s});
        m_parser.addOption({u"config"_s, u"Directory of the settings."_s, u"DIR"_s,
                            QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)});
        m_parser.addOption(
            {u"option"_s,
             u"Application option, NAME or NAME=VALUE. Progress=true shows the progress bar even "
             "where nobody watches."_s,
             u"NAME"_s});
    }

    /// The exit code when there is nothing more to do.
    std::optional<int> Parse(const QStringList& arguments) {
        if (!m_parser.parse(arguments)) {
            return Refuse(m_parser.errorText());
        }
        if (m_parser.isSet(u"help"_s)) {
            const QString help = m_parser.helpText();
            Print(m_usage + help.sliced(help.indexOf(u'\n')));
            return EXIT_OK;
        }
        if (!m_parser.positionalArguments().isEmpty()) {
            return Refuse(u"what is '%1' for?"_s.arg(m_parser.positionalArguments().constFirst()));
        }
        for (const QString& option : m_parser.values(u"option"_s)) {
            if (!AppOptions::SetOption(option)) {
                return Refuse(u"--option needs a name: '%1'"_s.arg(option));
            }
        }
        return {};
    }

    static int Refuse(const QString& why) {
        Console::Error(why);
        return EXIT_USAGE;
    }

    static void Print(const QString& text) { QTextStream(stdout) << text; }

    /// The text of an option: the one given, its default, or nothing.
    [[nodiscard]] std::optional<QString> Text(const QString& name) const {
        return m_parser.values(name).isEmpty() ? std::nullopt : std::optional(m_parser.value(name));
    }

    /// Reads a number into a variable when the option is given. False, with a message, when it is none, or
    /// not between the bounds.
    template <class T>
    bool Number(const QString& name, T minimum, T maximum, std::optional<T>& number) const {
        if (!m_parser.isSet(name)) {
            return true;
        }
        bool isNumber = false;
        const double value = m_parser.value(name).toDouble(&isNumber);
        if (!isNumber || !(value >= static_cast<double>(minimum) && value <= static_cast<double>(maximum)) ||
            (std::is_integral_v<T> && value != std::floor(value))) {
            Refuse(u"--%1 takes a%2 number from %3 to %4, not '%5'"_s.arg(
                name, std::is_integral_v<T> ? u" whole"_s : QString(), QString::number(minimum),
                QString::number(maximum), m_parser.value(name)));
            return false;
        }
        number = static_cast<T>(value);
        return true;
    }

    [[nodiscard]] bool OpenStore() const {
        if (!CfgCenter::SetConfigDirectory(m_parser.value(u"config"_s))) {
            Console::Error(CfgCenter::GetLastError());
            return false;
        }
        return true;
    }

private:
    const QString m_usage;
    QCommandLineParser m_parser;
};

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
        u"it "
        "is in the settings; --output, --serial, --interval and --overhead-threshold are kept there."_s,
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
    if (const std::optional<QString> recording = line.Text(u"recording"_s)) {
        options.recording = *recording;
    } else {
        options.recording = *line.Text(u"config"_s) + u"/example.csv"_s;
        if (!QFileInfo::exists(options.recording) &&
            !WriteSimulation(1, PassSimulator::DEFAULT_ROW_COUNT, options.recording)) {
            return EXIT_FAILED;
        }
    }
    const int exitCode = RunCommand(options).Run();
    return CfgCenter::Close() || exitCode != EXIT_OK ? exitCode : EXIT_FAILED;
}

int PrintTree(const QStringList& arguments) {
    CommandLine line(
        u"tree"_s, u"Prints the value tree after start-up: path, type, value and number of observers."_s, {});
    if (const std::optional<int> exitCode = line.Parse(arguments)) {
        return *exitCode;
    }
    if (!line.OpenStore()) {
        return EXIT_FAILED;
    }
    const Station station;
    QTextStream out(stdout);
    Tree::Instance()->Dump(out);
    return EXIT_OK;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"zanstation"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(ZAN_VERSION));

    const QStringList arguments = QCoreApplication::arguments();
    const QString command = arguments.value(1);
    if (command == u"--version" || command == u"-v") {
        CommandLine::Print(u"zanstation "_s + QCoreApplication::applicationVersion() + u'\n');
        return EXIT_OK;
    }
    if (command == u"--help" || command == u"-h") {
        CommandLine::Print(Usage());
        return EXIT_OK;
    }
    const QStringList rest = QStringList(u"zanstation "_s + command) + arguments.mid(2);
    if (command == u"run") {
        return Run(rest);
    }
    if (command == u"simulate") {
        return Simulate(rest);
    }
    if (command == u"tree") {
        return PrintTree(rest);
    }
    QTextStream(stderr) << (command.isEmpty() ? QString() : u"zanstation: no command '%1'\n\n"_s.arg(command))
                        << Usage();
    return EXIT_USAGE;
}

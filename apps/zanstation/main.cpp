#include "kwbase/standarderror.h"
#include "kwbase/standardstream.h"
#include "zanserver/driverthread.h"
#include "zanstation/commandline.h"
#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/journal.h"
#include "zanstation/signalwatcher.h"
#include "zanstation/stationtrace.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

using namespace Qt::StringLiterals;

// clang-format off
// The commands of the program, in the order of its help: the function that is the command, its name, and what it does.
// Each function is in the source of its name, with its options, its help and its work; it takes the program's name and
// its own as the first argument, and returns the exit code.
#define ZAN_COMMANDS(ROW) \
    ROW(Device, u"device", u"prints what the station's device is and can do") \
    ROW(Antennas, u"antennas", u"shows, checks, repairs and changes the antenna setup") \
    ROW(Tune, u"tune", u"finds the nearest valid frequency or range, and what serves it") \
    ROW(Catalogue, u"catalogue", u"prints a table of the device catalogue") \
    ROW(Drivers, u"drivers", u"lists the drivers, and why one cannot be used") \
    ROW(Hardware, u"hardware", u"compares the device's components with those required") \
    ROW(Command, u"command", u"gives the device a command, such as a built-in test") \
    ROW(Run, u"run", u"measures with a device, through filters and outputs") \
    ROW(Simulate, u"simulate", u"writes a recording of what the simulated device hears") \
    ROW(Frequencies, u"frequencies", u"imports and lists the traffic-control frequencies") \
    ROW(Hub, u"hub", u"joins the message hub as a receiver or a sender") \
    ROW(Doctor, u"doctor", u"checks what works on this machine") \
    ROW(PrintTree, u"tree", u"prints the value tree after start-up")
// clang-format on

namespace Commands {

#define ZAN_DECLARE_COMMAND(function, name, summary) int function(const QStringList& arguments);
ZAN_COMMANDS(ZAN_DECLARE_COMMAND)
#undef ZAN_DECLARE_COMMAND

} // namespace Commands

namespace {

/// A command of the program.
struct Command {
    QStringView name;
    QStringView summary; ///< what it does, for the program's help
    int (*run)(const QStringList& arguments) = nullptr;
};

#define ZAN_COMMAND_ROW(function, name, summary) Command{name, summary, Commands::function},
constexpr std::array COMMANDS{ZAN_COMMANDS(ZAN_COMMAND_ROW)};
#undef ZAN_COMMAND_ROW

QString GetUsage() {
    QString usage = u"Usage: zanstation COMMAND [OPTION...]\n"
                    "\n"
                    "Runs a direction-finding station: a device, a simulated one, or a recording.\n"
                    "\n"
                    "Commands:\n"_s;
    for (const Command& command : COMMANDS) {
        usage += u"  "_s + command.name.toString().leftJustified(13) + command.summary.toString() + u'\n';
    }
    return usage + u"\n"
                   "zanstation help COMMAND (or COMMAND --help) prints the options of a command.\n"
                   "zanstation --version prints the version.\n"_s;
}

/// Turns "help COMMAND" into "COMMAND --help", and "help" into the program's own help. Nothing for other
/// arguments.
std::optional<QStringList> ReadHelp(const QStringList& topics) {
    if (topics.isEmpty() || topics == QStringList{u"--help"_s} || topics == QStringList{u"-h"_s}) {
        return QStringList{u"--help"_s};
    }
    return topics.size() == 1 && !topics.constFirst().startsWith(u'-')
               ? std::optional(QStringList{topics.constFirst(), u"--help"_s})
               : std::nullopt;
}

/// Carries out the command line. Returns the exit code.
int Work(QStringList arguments) {
    if (arguments.value(0) == u"--version" || arguments.value(0) == u"-v") {
        Console::PrintText(u"zanstation "_s + QCoreApplication::applicationVersion() + u'\n');
        return EXIT_OK;
    }
    if (arguments.value(0) == u"help") {
        const std::optional<QStringList> help = ReadHelp(arguments.mid(1));
        if (!help) {
            Console::Error(u"help takes the name of one command and no options: zanstation help COMMAND"_s);
            return EXIT_USAGE;
        }
        arguments = *help;
    }
    const QString command = arguments.value(0);
    if (command == u"--help" || command == u"-h") {
        Console::PrintText(GetUsage());
        return EXIT_OK;
    }
    const auto* const found = std::ranges::find(COMMANDS, command, &Command::name);
    if (found != COMMANDS.end()) {
        StationTrace::Show();
        return found->run(QStringList(u"zanstation "_s + command) + arguments.mid(1));
    }
    if (!command.isEmpty()) {
        Console::Error(u"unknown command "_s + CommandLine::Quote(command));
        StandardError::Write("\n");
    }
    StandardError::Write(GetUsage().toStdString());
    return EXIT_USAGE;
}

/// Prints the remaining results, or a message when that is not possible. Returns the exit code.
int Finish(int exitCode) {
    constexpr std::chrono::seconds PATIENCE(1);
    int error = Console::Flush(PATIENCE);
    if (error == EWOULDBLOCK && exitCode < ExitCodeOf(SIGHUP)) { // not when a signal has ended the work
        SignalWatcher::LetSignalsEndTheProgram();
        error = Console::Flush(StandardStream::FOREVER);
    }
    if (error != 0 && error != EPIPE) {
        Console::Error(u"standard output cannot be written: "_s + qt_error_string(error));
    }
    StandardError::TellLoss();
    if (error == 0 || exitCode != EXIT_OK) {
        return exitCode;
    }
    return error == EPIPE ? ExitCodeOf(SIGPIPE) : EXIT_FAILED; // a reader may stop when it has read enough
}

/// Qt's messages and the trace go to standard error like all others.
void WriteQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    const QByteArray lines = qFormatLogMessage(type, context, message).toUtf8() + '\n';
    StandardError::Write(Journal::Mark(Journal::PriorityOf(type), lines).toStdString());
}

/// Whether Qt has decoded the program's arguments without loss: a name that is not UTF-8 would become another
/// name.
bool AreArgumentsText(int argc, char** argv) {
    return std::all_of(argv + std::min(argc, 1), argv + argc, [](const char* argument) {
        return QFile::encodeName(QFile::decodeName(argument)) == argument;
    });
}

/// Opens standard descriptors that are closed: otherwise the next file or pipe would get their numbers, and
/// some libraries open one before `main`. Reading from the replacement gives nothing, and writing to it
/// fails.
__attribute__((no_sanitize("address", "undefined", "thread"))) void KeepStandardDescriptors() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            ::open("/dev/null", O_RDONLY);
        }
    }
}

// Called before the libraries are initialised.
[[gnu::section(".preinit_array"),
  gnu::used]] void (*const keepStandardDescriptors)() = KeepStandardDescriptors;

} // namespace

int main(int argc, char** argv) {
    // Reaching the limit of the file size is an error, as on a full disk, and must not end the program.
    std::signal(SIGXFSZ, SIG_IGN);
    // Nor must a reader that goes away.
    std::signal(SIGPIPE, SIG_IGN);
    qInstallMessageHandler(WriteQtMessage);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"zanstation"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(ZAN_VERSION));
    // The program's messages are English, so the system's error texts in them must be English, too.
    std::setlocale(LC_MESSAGES, "C");

    if (!AreArgumentsText(argc, argv)) {
        Console::Error(u"an argument is not UTF-8 text"_s);
        return Finish(EXIT_USAGE);
    }
    const int exitCode = Finish(Work(QCoreApplication::arguments().mid(1)));
    if (ZANServer::DriverThread::HasGivenUpAny()) {
        // Its thread still uses what the end of the process would destroy.
        std::_Exit(exitCode == EXIT_OK ? EXIT_FAILED : exitCode);
    }
    return exitCode;
}

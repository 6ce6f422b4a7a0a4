#include "zanstation/console.h"
#include "zanstation/exitcodes.h"
#include "zanstation/stationtrace.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTextStream>

#include <algorithm>
#include <array>
#include <clocale>
#include <csignal>
#include <cstdio>
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
    ROW(Hardware, u"hardware", u"compares the device's components with those required") \
    ROW(Run, u"run", u"replays a recording through driver, filters and outputs") \
    ROW(Simulate, u"simulate", u"writes the recording of an emitter that passes the station") \
    ROW(Frequencies, u"frequencies", u"imports and lists the traffic-control frequencies") \
    ROW(Hub, u"hub", u"joins the message hub as a receiver or a sender") \
    ROW(Doctor, u"doctor", u"tells what works on this machine") \
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
                    "Runs the common library of a direction-finding application on recorded bearings.\n"
                    "\n"
                    "Commands:\n"_s;
    for (const Command& command : COMMANDS) {
        usage += u"  "_s + command.name.toString().leftJustified(13) + command.summary.toString() + u'\n';
    }
    return usage + u"\n"
                   "zanstation help COMMAND (or COMMAND --help) tells the options of a command.\n"
                   "zanstation --version tells the version.\n"_s;
}

/// "help COMMAND" is "COMMAND --help", and "help" the program's own help. Nothing when it is asked otherwise.
std::optional<QStringList> ReadHelp(const QStringList& topics) {
    if (topics.isEmpty() || topics == QStringList{u"--help"_s} || topics == QStringList{u"-h"_s}) {
        return QStringList{u"--help"_s};
    }
    return topics.size() == 1 && !topics.constFirst().startsWith(u'-')
               ? std::optional(QStringList{topics.constFirst(), u"--help"_s})
               : std::nullopt;
}

void Print(const QString& text) {
    QTextStream(stdout) << text;
}

/// Whether all that was printed has left the program. Says why when it has not.
bool IsPrinted() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return true;
    }
    Console::Error(u"standard output cannot be written"_s);
    return false;
}

/// A standard descriptor that is closed would be given to the next file or pipe that is opened, which some
/// libraries do before `main`. What takes its place holds nothing, and takes nothing: what is printed there
/// fails.
__attribute__((no_sanitize("address", "undefined", "thread"))) void KeepStandardDescriptors() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            ::open("/dev/null", O_RDONLY);
        }
    }
}

// Runs before the libraries are initialised.
[[gnu::section(".preinit_array"),
  gnu::used]] void (*const keepStandardDescriptors)() = KeepStandardDescriptors;

} // namespace

int main(int argc, char** argv) {
    // Beyond a limit of its size a file cannot be written, as on a full disk, and that ends no program.
    std::signal(SIGXFSZ, SIG_IGN);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"zanstation"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(ZAN_VERSION));
    // The program speaks English, so the system's reasons within its sentences are English, too.
    std::setlocale(LC_MESSAGES, "C");

    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.value(0) == u"--version" || arguments.value(0) == u"-v") {
        Print(u"zanstation "_s + QCoreApplication::applicationVersion() + u'\n');
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
        Print(GetUsage());
        return EXIT_OK;
    }
    const auto* const found = std::ranges::find(COMMANDS, command, &Command::name);
    if (found != COMMANDS.end()) {
        StationTrace::Show();
        const int exitCode = found->run(QStringList(u"zanstation "_s + command) + arguments.mid(1));
        return IsPrinted() || exitCode != EXIT_OK ? exitCode : EXIT_FAILED;
    }
    QTextStream(stderr) << (command.isEmpty() ? QString() : u"zanstation: no command '%1'\n\n"_s.arg(command))
                        << GetUsage();
    return EXIT_USAGE;
}

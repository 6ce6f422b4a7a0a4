#include "kwbase/errorhandler.h"
#include "tolmappstartup/appoptions.h"
#include "zanstation/commands.h"
#include "zanstation/exitcodes.h"

#include <QCoreApplication>
#include <QDebug>
#include <QLocale>
#include <QStringList>
#include <QTextStream>
#include <QTranslator>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

/// A command of the program.
struct Command {
    QStringView name;
    QStringView summary; ///< what it does, for the program's help
    int (*run)(const QStringList& arguments) = nullptr;
};

/// In the order of the program's help.
constexpr std::array<Command, 11> COMMANDS{{
    {u"device", u"prints what the station's device is and can do", Commands::Device},
    {u"antennas", u"shows, checks, repairs and changes the antenna setup", Commands::Antennas},
    {u"tune", u"finds the nearest valid frequency or range, and what serves it", Commands::Tune},
    {u"catalogue", u"prints a table of the device catalogue", Commands::Catalogue},
    {u"hardware", u"compares the device's components with those required", Commands::Hardware},
    {u"run", u"replays a recording through driver, filters and outputs", Commands::Run},
    {u"simulate", u"writes the recording of an emitter that passes the station", Commands::Simulate},
    {u"frequencies", u"imports and lists the traffic-control frequencies", Commands::Frequencies},
    {u"hub", u"joins the message hub as a receiver or a sender", Commands::Hub},
    {u"doctor", u"tells what works on this machine", Commands::Doctor},
    {u"tree", u"prints the value tree after start-up", Commands::PrintTree},
}};

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
                   "zanstation COMMAND --help tells the options of a command.\n"
                   "zanstation --version tells the version.\n"_s;
}

void Print(const QString& text) {
    QTextStream(stdout) << text;
}

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
        Print(GetUsage());
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
                        << GetUsage();
    return EXIT_USAGE;
}

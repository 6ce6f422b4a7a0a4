#include "zanstation/commandline.h"

#include "tolmappstartup/appoptions.h"
#include "tolmappstartup/cfgcenter.h"
#include "tolmappstartup/configdirectory.h"
#include "zanserver/frequencytext.h"
#include "zanserver/station.h"
#include "zanstation/exitcodes.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

QString Shorten(const QString& text) {
    constexpr qsizetype MOST = 200;
    return text.size() <= MOST ? text : text.first(MOST) + u"..."_s;
}

} // namespace

CommandLine::CommandLine(const QString& command, const QString& description,
                         const QList<QCommandLineOption>& options, const QString& positional)
    : m_usage(u"Usage: zanstation "_s + command + (positional.isEmpty() ? QString() : u' ' + positional) +
              u" [OPTION...]"_s)
    , m_takesArguments(!positional.isEmpty()) {
    m_parser.setApplicationDescription(description);
    m_parser.addOptions(options);
    m_parser.addOption({{u"h"_s, u"help"_s}, u"Prints the options of this command."_s});
    m_parser.addOption({u"config"_s, u"Directory of the settings."_s, u"DIR"_s});
    m_parser.addOption(
        {u"quiet"_s, u"Prints errors only: no warnings, no progress, and no summary of what was done."_s});
    m_parser.addOption({u"option"_s,
                        u"Application option, NAME or NAME=VALUE. Progress=true shows the progress bar even "
                        "when standard error is not a terminal, Trace=true the whole trace."_s,
                        u"NAME"_s});
}

std::optional<int> CommandLine::Parse(const QStringList& arguments) {
    if (!m_parser.parse(arguments)) {
        return Refuse(Shorten(m_parser.errorText()));
    }
    for (const QString& name : m_parser.optionNames()) {
        if (name != u"option" && m_parser.optionNames().count(name) > 1) {
            return Refuse(u"--%1 is given twice"_s.arg(name));
        }
    }
    if (m_parser.isSet(u"help"_s)) {
        const QString help = m_parser.helpText();
        Console::PrintText(m_usage + help.sliced(help.indexOf(u'\n')));
        return EXIT_OK;
    }
    if (!m_takesArguments && !Positional().isEmpty()) {
        return Refuse(u"unexpected argument %1"_s.arg(Quote(Positional().constFirst())));
    }
    if (m_parser.isSet(u"quiet"_s)) {
        Console::BeQuiet();
    }
    // Only for the output an empty name has a meaning: it switches the output off.
    for (const auto& [name, kind] : {std::pair{u"config"_s, u"directory"_s},
                                     {u"components"_s, u"directory"_s},
                                     {u"recording"_s, u"file"_s},
                                     {u"out"_s, u"file"_s},
                                     {u"scenario"_s, u"file"_s}}) {
        if (m_parser.optionNames().contains(name) && m_parser.value(name).isEmpty()) {
            return Refuse(u"--%1 needs the name of a %2"_s.arg(name, kind));
        }
    }
    for (const QString& option : m_parser.values(u"option"_s)) {
        if (!AppOptions::SetOption(option)) {
            return Refuse(u"--option needs a name: "_s + Quote(option));
        }
    }
    return {};
}

int CommandLine::Refuse(const QString& why) {
    Console::Error(why);
    return EXIT_USAGE;
}

QString CommandLine::Quote(const QString& argument) {
    return u'\'' + Shorten(argument) + u'\'';
}

std::optional<QString> CommandLine::Text(const QString& name) const {
    return m_parser.values(name).isEmpty() ? std::nullopt : std::optional(m_parser.value(name));
}

bool CommandLine::Frequency(const QString& name, std::optional<double>& frequency) const {
    if (!m_parser.isSet(name)) {
        return true;
    }
    frequency = FrequencyText::Parse(m_parser.value(name));
    if (!frequency) {
        Refuse(u"--%1 takes a frequency such as 145.5M, 145.5 MHz, 300k or 1e6, not %2"_s.arg(
            name, Quote(m_parser.value(name))));
    }
    return frequency.has_value();
}

QString CommandLine::GetConfigDirectory() const {
    const std::optional<QString> given = Text(u"config"_s);
    return given ? QFileInfo(*given).absoluteFilePath() : GetDefaultConfigDirectory();
}

bool CommandLine::OpenStore() const {
    const QString directory = GetConfigDirectory();
    if (directory.isEmpty()) {
        Console::Error(u"there is no directory for the settings: neither HOME nor XDG_CONFIG_HOME names one; "
                       "name it with --config"_s);
        return false;
    }
    if (!CfgCenter::SetConfigDirectory(directory)) {
        Console::Error(CfgCenter::GetLastError());
        return false;
    }
    return true;
}

int CommandLine::WithStation(const std::function<int()>& work) const {
    if (!OpenStore()) {
        return EXIT_FAILED;
    }
    int exitCode = EXIT_OK;
    {
        const Station station;
        Console::Warn(station.GetWarnings());
        exitCode = work();
    }
    return CfgCenter::Close() || exitCode != EXIT_OK ? exitCode : EXIT_FAILED;
}

QCommandLineOption CommandLine::JsonOption() {
    return {u"json"_s, u"For programs: one JSON document, with frequencies and bandwidths in Hz."_s};
}

bool CommandLine::AsJson() const {
    return m_parser.isSet(u"json"_s);
}

QCommandLineOption CommandLine::ComponentsOption() {
    // The components that are installed with the program.
    const QString directory =
        QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/" ZAN_COMPONENT_DIR));
    return {u"components"_s, u"Directory of the component libraries."_s, u"DIR"_s, directory};
}

void CommandLine::TakeComponentDirectory() const {
    CfgCenter::SetComponentDirectory(QFileInfo(m_parser.value(u"components"_s)).absoluteFilePath());
}

bool CommandLine::RefuseNumber(const QString& name, const QString& kind, const QString& minimum,
                               const QString& maximum) const {
    Refuse(u"--%1 takes a%2 number from %3 to %4, not %5"_s.arg(name, kind, minimum, maximum,
                                                                Quote(m_parser.value(name))));
    return false;
}

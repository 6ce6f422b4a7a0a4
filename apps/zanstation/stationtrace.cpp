#include "zanstation/stationtrace.h"

#include "kwbase/errorhandler.h"
#include "tolmappstartup/appoptions.h"
#include "zancommon/zancharacteristics.h"
#include "zanstation/console.h"

#include <QDebug>
#include <QString>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

/// Lines that say that all is well, or what the commands say in their own words.
constexpr std::array<QStringView, 7> USUAL{
    u"No sample mode matching",        u"CommandProtocol: Going to delete the oldest backup file.",
    u"SerialInterface::OnOpen",        u"SerialInterface::OnClose",
    u"SerialInterface::OnRead",        u"The component \"",
    u"The configuration directory \"",
};

/// Where the lines come from that tell what became of a settings file: what could not be saved, and what of
/// it could not be read.
constexpr QStringView SETTINGS_ORIGIN = u"tolmappstartup\\settingsfile(";

/// The bandwidth that restricts nothing is a number of 309 digits, and cut off to an integer the least of
/// them.
QString NameAnyBandwidth(QString line) {
    static const QString number = QString::asprintf("fRealtimeBw=%f", ZANCharacteristics::fBANDWIDTH_ANY);
    return line.replace(number, u"fRealtimeBw=any"_s)
        .replace("fRealtimeBw=-2147483648"_L1, "fRealtimeBw=any"_L1);
}

bool IsShown(const QString& line) {
    if (line.startsWith(SETTINGS_ORIGIN)) {
        return true; // that settings are lost is an error, which is told in any case
    }
    const bool isUsual =
        std::ranges::any_of(USUAL, [&line](QStringView usual) { return line.contains(usual); });
    return !Console::IsQuiet() && (!isUsual || AppOptions::GetBoolean(u"Trace"_s, false));
}

void ShowLine(const QString& line) {
    if (IsShown(line)) {
        qInfo().noquote() << NameAnyBandwidth(line);
    }
}

} // namespace

void StationTrace::Show() {
    ErrorHandler::Instance().SetSink(ShowLine);
}

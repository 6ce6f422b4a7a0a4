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

/// Lines about normal events, or about failures that the commands report themselves.
constexpr std::array<QStringView, 8> USUAL{
    u"No sample mode matching",
    u"No sample mode found",
    u"CommandProtocol: Going to delete the oldest backup file.",
    u"SerialInterface::OnOpen",
    u"SerialInterface::OnClose",
    u"SerialInterface::OnRead",
    u"The component \"",
    u"The configuration directory \"",
};

/// The origin of lines about settings files: what could not be saved, and what could not be read.
constexpr QStringView SETTINGS_ORIGIN = u"tolmappstartup\\settingsfile(";

/// Names the bandwidth that restricts nothing: as a number it has 309 digits, or it is the lowest integer.
QString NameAnyBandwidth(QString line) {
    static const QString number = QString::asprintf("fRealtimeBw=%f", ZANCharacteristics::fBANDWIDTH_ANY);
    return line.replace(number, u"fRealtimeBw=any"_s)
        .replace("fRealtimeBw=-2147483648"_L1, "fRealtimeBw=any"_L1);
}

bool IsShown(const QString& line) {
    if (line.startsWith(SETTINGS_ORIGIN)) {
        return true; // lost settings are an error, which is always shown
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

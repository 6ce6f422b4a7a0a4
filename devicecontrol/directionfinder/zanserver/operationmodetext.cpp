#include "zanserver/operationmodetext.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace ZANServer::OperationModeText {

namespace {

struct ModeName {
    QStringView name;
    EOperationMode mode = OPMODE_ANY;
};

constexpr std::array<ModeName, 6> MODE_NAMES{{
    {u"any", OPMODE_ANY},
    {u"ffm", OPMODE_FFM},
    {u"wideband", OPMODE_WIDEBAND_FFM},
    {u"scan", OPMODE_SCAN},
    {u"search", OPMODE_SEARCH},
    {u"tdma", OPMODE_TDMA},
}};

} // namespace

std::optional<EOperationMode> Parse(const QString& text) {
    const auto* const named = std::ranges::find_if(MODE_NAMES, [&text](const ModeName& each) {
        return each.mode != OPMODE_ANY && each.name.compare(text, Qt::CaseInsensitive) == 0;
    });
    if (named != MODE_NAMES.end()) {
        return named->mode;
    }
    constexpr int HIGHEST_MODE = 14;
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    return isNumber && number >= 0 && number <= HIGHEST_MODE
               ? std::optional(static_cast<EOperationMode>(number))
               : std::nullopt;
}

QString Format(EOperationMode mode) {
    const auto* const named = std::ranges::find(MODE_NAMES, mode, &ModeName::mode);
    return named == MODE_NAMES.end() ? QString::number(mode) : named->name.toString();
}

} // namespace ZANServer::OperationModeText

#include "zanserver/frequencytext.h"

#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace ZANServer::FrequencyText {

namespace {

struct Unit {
    QStringView name;
    QStringView shortName;
    double factor = 1.0;
};

// "Hz" must come last, because all the others end with it.
constexpr std::array<Unit, 4> UNITS{{
    {u"GHz", u"G", 1e9},
    {u"MHz", u"M", 1e6},
    {u"kHz", u"k", 1e3},
    {u"Hz", u"", 1.0},
}};

} // namespace

std::optional<double> Parse(const QString& text) {
    QStringView number = QStringView(text).trimmed();
    double factor = 1.0;
    for (const Unit& unit : UNITS) {
        const QStringView name = number.endsWith(unit.name, Qt::CaseInsensitive) ? unit.name : unit.shortName;
        if (number.endsWith(name,
                            Qt::CaseInsensitive)) { // the short name of Hz is empty, so it always matches
            number = number.chopped(name.size()).trimmed();
            factor = unit.factor;
            break;
        }
    }
    bool isNumber = false;
    const double frequency = number.toDouble(&isNumber) * factor;
    return isNumber && frequency >= 0.0 && std::isfinite(frequency) ? std::optional(frequency) : std::nullopt;
}

QString Format(double frequency) {
    constexpr int DIGITS = 12;
    for (const Unit& unit : UNITS) {
        if (std::abs(frequency) >= unit.factor) {
            return QString::number(frequency / unit.factor, 'g', DIGITS) + u' ' + unit.name.toString();
        }
    }
    return QString::number(frequency + 0.0, 'g', DIGITS) + u" Hz"_s; // adding 0.0 turns -0.0 into 0.0
}

QString FormatRange(double low, double high) {
    return Format(low) + u" - "_s + Format(high);
}

} // namespace ZANServer::FrequencyText

#include "krakensdr/recordparser.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace KrakenSdr {

namespace {

/// The fields in front of the spectrum.
enum Field : std::size_t {
    TIME,
    BEARING,
    CONFIDENCE,
    LEVEL,
    FREQUENCY,
    ARRAY,
    LATENCY,
    STATION,
    LATITUDE,
    LONGITUDE,
    FIRST_HEADING,
    SECOND_HEADING,
    MAIN_HEADING,
    SPECTRUM = 17
};

constexpr std::string_view NOTHING = "R";

/// A number that a field may hold.
struct NumberField {
    Field place = TIME;
    QStringView name;
    double minimum = 0.0;
    double maximum = 0.0;
    bool isRequired = false;
    bool isNoneOutOfRange = false; ///< else the line is refused
};

constexpr double FULL_CIRCLE = 360.0;
constexpr double LAST_TIME = 253402300799999.0; // the end of the year 9999
constexpr double RADIO_LIMIT = 3e12;            // 3000 GHz, the upper end of radio waves
constexpr NumberField TIME_FIELD{TIME, u"time", 0.0, LAST_TIME, true};
constexpr NumberField BEARING_FIELD{BEARING, u"bearing", 0.0, FULL_CIRCLE, true};
constexpr NumberField CONFIDENCE_FIELD{CONFIDENCE, u"confidence", 0.0, 1e9, true};
constexpr NumberField LEVEL_FIELD{LEVEL, u"level", -1e4, 1e4, false};
constexpr NumberField FREQUENCY_FIELD{FREQUENCY, u"frequency", 1.0, RADIO_LIMIT, true};
constexpr NumberField LATITUDE_FIELD{LATITUDE, u"latitude", -90.0, 90.0, false};
constexpr NumberField LONGITUDE_FIELD{LONGITUDE, u"longitude", -180.0, 180.0, false};
constexpr NumberField FIRST_HEADING_FIELD{FIRST_HEADING, u"heading", -FULL_CIRCLE, FULL_CIRCLE, false, true};
constexpr NumberField SECOND_HEADING_FIELD{SECOND_HEADING, u"heading", -FULL_CIRCLE,
                                           FULL_CIRCLE,    false,      true};

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

/// What a message repeats of a field: its beginning, without what a terminal cannot show.
QString Quoted(std::string_view text) {
    constexpr std::size_t MAX_QUOTED = 40;
    const std::string_view front = text.substr(0, MAX_QUOTED);
    QString quoted = QString::fromUtf8(front.data(), static_cast<qsizetype>(front.size()));
    for (QChar& character : quoted) {
        character = character.isPrint() ? character : u'?';
    }
    return u'"' + quoted + u'"';
}

bool ReadNumber(std::string_view text, double& value) {
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, value);
    return next == end && error == std::errc{} && std::isfinite(value);
}

/// Degrees from 0 to below 360.
double Normalized(double degrees) {
    const double rest = std::fmod(degrees + FULL_CIRCLE, FULL_CIRCLE);
    return rest < FULL_CIRCLE ? rest : 0.0;
}

bool IsSecondHeading(std::string_view name) {
    constexpr std::string_view COMPASS = "compass";
    return std::ranges::equal(
        name, COMPASS, [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a) == b; });
}

/// The fields of a line without the blanks around them; fewer than there should be, or one more, when there
/// are not as many.
class Fields {
public:
    explicit Fields(std::string_view line) {
        while (m_count < m_fields.size()) {
            const std::size_t comma = line.find(',');
            m_fields[m_count++] = Trimmed(line.substr(0, comma));
            if (comma == std::string_view::npos) {
                return;
            }
            line.remove_prefix(comma + 1);
        }
        ++m_count;
    }
    [[nodiscard]] std::size_t Count() const { return m_count; }
    std::string_view operator[](std::size_t place) const { return m_fields[place]; }

private:
    std::array<std::string_view, RecordParser::FIELD_COUNT> m_fields;
    std::size_t m_count = 0;
};

std::optional<BadRecord> ReadField(const NumberField& field, std::string_view text,
                                   std::optional<double>& value) {
    value.reset();
    if (text == NOTHING) {
        return field.isRequired ? std::optional(BadRecord::Missing) : std::nullopt;
    }
    double number = 0.0;
    if (!ReadNumber(text, number)) {
        return BadRecord::NotANumber;
    }
    if (number < field.minimum || number > field.maximum) {
        return field.isNoneOutOfRange ? std::nullopt : std::optional(BadRecord::OutOfRange);
    }
    value = number;
    return {};
}

} // namespace

bool RecordParser::Parse(std::string_view line, Record& record) {
    const Fields fields(line);
    if (fields.Count() != FIELD_COUNT) {
        return Refuse(BadRecord::FieldCount,
                      u"%1 fields instead of %2%3"_s
                          .arg(fields.Count() < FIELD_COUNT ? QString::number(fields.Count()) : u"more"_s)
                          .arg(FIELD_COUNT)
                          .arg(u": "_s + Quoted(line)));
    }
    std::optional<double> time;
    std::optional<double> bearing;
    std::optional<double> confidence;
    std::optional<double> frequency;
    std::optional<double> firstHeading;
    std::optional<double> secondHeading;
    using Target = std::pair<const NumberField*, std::optional<double>*>;
    const std::array<Target, 9> targets{{{&TIME_FIELD, &time},
                                         {&BEARING_FIELD, &bearing},
                                         {&CONFIDENCE_FIELD, &confidence},
                                         {&LEVEL_FIELD, &record.level},
                                         {&FREQUENCY_FIELD, &frequency},
                                         {&LATITUDE_FIELD, &record.latitude},
                                         {&LONGITUDE_FIELD, &record.longitude},
                                         {&FIRST_HEADING_FIELD, &firstHeading},
                                         {&SECOND_HEADING_FIELD, &secondHeading}}};
    for (const auto& [field, value] : targets) {
        if (const std::optional<BadRecord> fault = ReadField(*field, fields[field->place], *value)) {
            return Refuse(*fault, u"field %1 (%2): %3: %4"_s.arg(QString::number(field->place + 1),
                                                                 field->name, GetReasonText(*fault),
                                                                 Quoted(fields[field->place])));
        }
    }
    record.timeMs = static_cast<quint64>(*time);
    record.bearing = Normalized(*bearing);
    record.confidence = *confidence;
    record.frequency = *frequency;
    record.station = fields[STATION] == NOTHING ? std::string_view() : fields[STATION];
    if (!record.latitude || !record.longitude || (*record.latitude == 0.0 && *record.longitude == 0.0)) {
        record.latitude.reset();
        record.longitude.reset();
    }
    const std::string_view mainHeading = fields[MAIN_HEADING];
    if (mainHeading == NOTHING || mainHeading.empty()) {
        record.heading = firstHeading ? firstHeading : secondHeading;
    } else {
        record.heading = IsSecondHeading(mainHeading) ? secondHeading : firstHeading;
    }
    if (record.heading) {
        record.heading = Normalized(*record.heading);
    }
    record.hasSpectrum = true;
    for (std::size_t i = 0; i < Record::DIRECTIONS; ++i) {
        const std::string_view text = fields[SPECTRUM + i];
        double value = 0.0;
        if (text == NOTHING) {
            record.hasSpectrum = false;
        } else if (ReadNumber(text, value)) {
            record.spectrum[i] = static_cast<float>(value);
        } else {
            return Refuse(BadRecord::NotANumber, u"field %1 (spectrum): %2: %3"_s.arg(
                                                     QString::number(SPECTRUM + i + 1),
                                                     GetReasonText(BadRecord::NotANumber), Quoted(text)));
        }
    }
    return true;
}

bool RecordParser::Refuse(BadRecord fault, const QString& text) {
    m_fault = fault;
    m_faultText = text;
    return false;
}

QString RecordParser::GetReasonText(BadRecord reason) {
    // In the order of the reasons.
    static constexpr std::array<QStringView, 6> TEXTS{
        u"wrong number of fields", u"not a number",  u"out of range",
        u"required value missing", u"line too long", u"more lines than frequencies"};
    static_assert(TEXTS.size() == static_cast<std::size_t>(BadRecord::COUNT));
    return TEXTS[static_cast<std::size_t>(reason)].toString();
}

} // namespace KrakenSdr

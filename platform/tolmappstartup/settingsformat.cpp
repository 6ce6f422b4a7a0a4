#include "tolmappstartup/settingsformat.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// A letter after a backslash, and the character that the escape means.
using Escape = std::pair<char16_t, char16_t>;

constexpr auto ESCAPES =
    std::to_array<Escape>({{u'\\', u'\\'}, {u'"', u'"'}, {u'n', u'\n'}, {u'r', u'\r'}, {u't', u'\t'}});
// Further escapes that QSettings writes.
constexpr auto FOREIGN_ESCAPES =
    std::to_array<Escape>({{u'a', u'\a'}, {u'b', u'\b'}, {u'f', u'\f'}, {u'v', u'\v'}, {u'0', u'\0'}});

constexpr int HEXADECIMAL = 16;
constexpr qsizetype CODE_UNIT_DIGITS = 4; // in \uXXXX and %UXXXX
constexpr qsizetype BYTE_DIGITS = 2;      // in %XX, and the minimum in \xXX

constexpr QStringView GENERAL = u"General"; // the section of the keys without a section

bool IsComment(QStringView text) {
    return text.startsWith(u';') || text.startsWith(u'#');
}

bool IsControl(QChar c) {
    return c.category() == QChar::Other_Control;
}

bool IsHexDigit(QChar c) {
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

// Characters that need no escape, in any name and any format.
bool IsPlain(QChar c) {
    return c.unicode() < 0x80 && (c.isLetterOrNumber() || c == u'_' || c == u'-' || c == u'.');
}

bool IsGeneral(QStringView section) {
    return section.compare(GENERAL, Qt::CaseInsensitive) == 0;
}

QStringView SectionOf(QStringView key) {
    return key.first(std::max<qsizetype>(key.lastIndexOf(u'/'), 0));
}

bool IsLoneSurrogate(QStringView text, qsizetype i) {
    if (text[i].isHighSurrogate()) {
        return i + 1 == text.size() || !text[i + 1].isLowSurrogate();
    }
    return text[i].isLowSurrogate() && (i == 0 || !text[i - 1].isHighSurrogate());
}

// Reads a number of this many hexadecimal digits at a position of a text; nothing when there are fewer.
std::optional<char16_t> ReadCodeUnit(QStringView text, qsizetype at, qsizetype digits) {
    if (at + digits > text.size() ||
        !std::all_of(text.begin() + at, text.begin() + at + digits, IsHexDigit)) {
        return std::nullopt;
    }
    return text.sliced(at, digits).toUShort(nullptr, HEXADECIMAL);
}

// Names
// -------------------------------------------------------------------------------------------------------

struct NameEscape {
    QChar c;
    qsizetype length;
};

// The escape at a position of a section name or key, if there is one.
std::optional<NameEscape> ReadNameEscape(QStringView name, qsizetype at) {
    if (name[at] == u'\\') {
        return NameEscape{u'/', 1};
    }
    if (name[at] != u'%') {
        return std::nullopt;
    }
    const bool isLong = at + 1 < name.size() && name[at + 1] == u'U';
    const qsizetype lead = isLong ? 2 : 1;
    const qsizetype digits = isLong ? CODE_UNIT_DIGITS : BYTE_DIGITS;
    if (const auto codeUnit = ReadCodeUnit(name, at + lead, digits)) {
        return NameEscape{QChar(*codeUnit), lead + digits};
    }
    return std::nullopt;
}

QString UnescapeName(QStringView name) {
    QString result;
    result.reserve(name.size());
    for (qsizetype i = 0; i < name.size();) {
        const auto escape = ReadNameEscape(name, i);
        result += escape ? escape->c : name[i];
        i += escape ? escape->length : 1;
    }
    return result;
}

// Characters that must be escaped everywhere in a section name or key.
bool IsSpecialInName(QChar c) {
    return QStringView(u"=[]:;\"").contains(c) || c == QChar::ByteOrderMark || IsControl(c);
}

// One of the names between the slashes of a key.
QString EscapeOneName(QStringView name) {
    const qsizetype begin =
        std::find_if_not(name.begin(), name.end(), [](QChar c) { return c.isSpace(); }) - name.begin();
    const qsizetype end = begin + name.trimmed().size();
    QString result;
    result.reserve(name.size());
    for (qsizetype i = 0; i < name.size(); ++i) {
        const QChar c = name[i];
        const bool isOuterBlank = i < begin || i >= end;
        const bool isMark = i == 0 && (c == u'#' || (c == u'%' && IsGeneral(name.sliced(1))));
        if (!isOuterBlank && !isMark && !IsSpecialInName(c) && !ReadNameEscape(name, i)) {
            result += c;
        } else if (c.unicode() > 0xFF) {
            result +=
                u"%U"_s + QString::number(c.unicode(), HEXADECIMAL).rightJustified(CODE_UNIT_DIGITS, u'0');
        } else {
            result += u'%' + QString::number(c.unicode(), HEXADECIMAL).rightJustified(BYTE_DIGITS, u'0');
        }
    }
    return result;
}

QString EscapeName(QStringView name) {
    if (std::all_of(name.begin(), name.end(), [](QChar c) { return IsPlain(c) || c == u'/'; })) {
        return name.toString();
    }
    QStringList names;
    for (const QStringView each : name.split(u'/')) {
        names += EscapeOneName(each);
    }
    return names.join(u'/');
}

// Whether a section name or key, with its escapes, is valid in a file.
bool IsWrittenName(QStringView text) {
    const auto isUsable = [](QStringView name) {
        return !name.isEmpty() && name == name.trimmed() && !IsComment(name);
    };
    const auto isForbidden = [](QChar c) {
        return c == u'=' || c == u'[' || c == u']' || c == QChar::ByteOrderMark || IsControl(c);
    };
    const auto names = text.split(u'/');
    return std::none_of(text.begin(), text.end(), isForbidden) &&
           std::all_of(names.begin(), names.end(), isUsable);
}

// Decodes a name from a file; nothing when it is not valid.
std::optional<QString> ReadName(QStringView text) {
    QString name = UnescapeName(text);
    const bool hasAllNames = !name.startsWith(u'/') && !name.endsWith(u'/') && !name.contains(u"//");
    if (!IsWrittenName(text) || !hasAllNames || !name.isValidUtf16()) {
        return std::nullopt;
    }
    return name;
}

// Values
// ------------------------------------------------------------------------------------------------------

// Reads the escape at a position of a value, after its backslash. False when there is none.
template <std::size_t N>
bool ReadLetter(const std::array<Escape, N>& escapes, QStringView text, qsizetype& i, QString& result) {
    const auto* const escape =
        std::find_if(escapes.begin(), escapes.end(), [&](const Escape& e) { return text[i] == e.first; });
    if (escape == escapes.end()) {
        return false;
    }
    result += QChar(escape->second);
    ++i;
    return true;
}

bool ReadNumber(QStringView text, qsizetype& i, QString& result) {
    const QStringView digits = text.sliced(i + 1);
    const qsizetype count = std::find_if_not(digits.begin(), digits.end(), IsHexDigit) - digits.begin();
    if (text[i] != u'x' || count == 0) {
        return false;
    }
    // Extra digits overflow, as in QSettings.
    result +=
        QChar(digits.first(count).last(std::min(count, CODE_UNIT_DIGITS)).toUShort(nullptr, HEXADECIMAL));
    i += 1 + count;
    return true;
}

QString Unescape(QStringView text) {
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size();) {
        const QChar c = text[i++];
        if (c != u'\\' || i == text.size()) {
            result += c;
            continue;
        }
        const auto codeUnit = text[i] == u'u' ? ReadCodeUnit(text, i + 1, CODE_UNIT_DIGITS) : std::nullopt;
        if (codeUnit) {
            result += QChar(*codeUnit);
            i += 1 + CODE_UNIT_DIGITS;
        } else if (!ReadLetter(ESCAPES, text, i, result) && !ReadNumber(text, i, result)) {
            result += c;
        }
    }
    return result.startsWith(u"@@") ? result.sliced(1) : result;
}

bool IsEscaped(QStringView text, qsizetype i) {
    return IsControl(text[i]) || text[i] == QChar::ByteOrderMark || IsLoneSurrogate(text, i);
}

QString Quote(QStringView text) {
    QString result = text.startsWith(u'@') ? u"\"@"_s : u"\""_s;
    bool isBehindNumber = false; // a digit that follows would become part of it
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        const auto* const escape =
            std::find_if(ESCAPES.begin(), ESCAPES.end(), [&](const Escape& e) { return c == e.second; });
        const bool isNumber =
            escape == ESCAPES.end() && (IsEscaped(text, i) || (isBehindNumber && IsHexDigit(c)));
        if (isNumber) {
            result += u"\\x"_s + QString::number(c.unicode(), HEXADECIMAL).rightJustified(BYTE_DIGITS, u'0');
        } else if (escape != ESCAPES.end()) {
            result += u'\\';
            result += QChar(escape->first);
        } else {
            result += c;
        }
        isBehindNumber = isNumber;
    }
    return result + u'"';
}

bool NeedsQuotes(QStringView text) {
    if (text != text.trimmed() || text.startsWith(u'@')) {
        return true;
    }
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (QStringView(u",;\\\"").contains(text[i]) || IsEscaped(text, i)) {
            return true;
        }
    }
    return false;
}

// The position of the quote that closes the one at the front; -1 when there is none.
qsizetype FindClosingQuote(QStringView text) {
    for (qsizetype i = 1; i < text.size(); ++i) {
        if (text[i] == u'\\') {
            ++i;
        } else if (text[i] == u'"') {
            return i;
        }
    }
    return -1;
}

// What QSettings writes
// ---------------------------------------------------------------------------------------

// One text of a list; nothing when QSettings does not write it like this.
std::optional<QString> ReadForeignText(QStringView value, qsizetype& i) {
    const bool isQuoted = i < value.size() && value[i] == u'"';
    const QChar end = isQuoted ? u'"' : u',';
    i += isQuoted ? 1 : 0;
    const qsizetype begin = i;
    QString text;
    while (i < value.size() && value[i] != end) {
        const QChar c = value[i++];
        if (c == u'"' || (!isQuoted && (c == u';' || c == u'='))) {
            return std::nullopt;
        }
        if (c != u'\\') {
            text += c;
        } else if (i == value.size() ||
                   !(ReadLetter(ESCAPES, value, i, text) || ReadLetter(FOREIGN_ESCAPES, value, i, text) ||
                     ReadNumber(value, i, text))) {
            return std::nullopt;
        }
    }
    if (isQuoted) {
        if (i == value.size()) {
            return std::nullopt;
        }
        ++i;
    } else if (i > begin && (value[begin] == u' ' || value[i - 1] == u' ')) {
        return std::nullopt;
    }
    return text;
}

// The text of a value in one of QSettings' typed forms, which begin with "@".
QString ReadForeignType(const QString& text) {
    constexpr QStringView TEXT = u"@String(";
    if (text == u"@Invalid()") {
        return u""_s;
    }
    if (text.startsWith(TEXT) && text.endsWith(u')')) {
        return text.sliced(TEXT.size()).chopped(1);
    }
    return text.startsWith(u"@@") ? text.sliced(1) : text;
}

// Reads a value as QSettings writes it; nothing when QSettings does not write it like this.
std::optional<QString> ReadForeignValue(QStringView value) {
    QStringList texts;
    for (qsizetype i = 0;; i += 2) {
        const auto text = ReadForeignText(value, i);
        if (!text) {
            return std::nullopt;
        }
        texts += ReadForeignType(*text);
        if (i == value.size()) {
            return texts.join(u',');
        }
        if (!value.sliced(i).startsWith(u", ")) {
            return std::nullopt;
        }
    }
}

bool IsForeignName(QStringView name) {
    return !name.isEmpty() && std::all_of(name.begin(), name.end(),
                                          [](QChar c) { return IsPlain(c) || c == u'%' || c == u'\\'; });
}

// Lines
// -------------------------------------------------------------------------------------------------------

struct Line {
    QString text;
    bool isUtf8;
};

Line DecodeLine(QByteArrayView bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(bytes);
    return {std::move(text), !decoder.hasError()};
}

template <class Visitor>
void ForEachLine(QByteArrayView bytes, Visitor visit) {
    while (!bytes.isEmpty()) {
        const qsizetype end = bytes.indexOf('\n');
        QByteArrayView line = end < 0 ? bytes : bytes.first(end);
        visit(line.endsWith('\r') ? line.chopped(1) : line);
        bytes = end < 0 ? QByteArrayView() : bytes.sliced(end + 1);
    }
}

bool IsWrittenByQSettings(QByteArrayView bytes) {
    bool isForeign = true;
    bool hasSection = false;
    ForEachLine(bytes, [&](QByteArrayView line) {
        if (!isForeign) {
            return;
        }
        const auto [text, isUtf8] = DecodeLine(line);
        if (text.startsWith(u'[')) {
            hasSection = true;
            isForeign =
                isUtf8 && text.endsWith(u']') && IsForeignName(QStringView(text).sliced(1).chopped(1));
        } else if (!text.trimmed().isEmpty() && !IsComment(text)) {
            const qsizetype split = std::max<qsizetype>(text.indexOf(u'='), 0);
            isForeign = isUtf8 && hasSection && IsForeignName(QStringView(text).first(split)) &&
                        ReadForeignValue(QStringView(text).sliced(split + 1));
        }
    });
    return isForeign;
}

class Parser {
public:
    explicit Parser(bool isForeign)
        : m_isForeign(isForeign) {}

    void ReadLine(QByteArrayView line);
    ParsedSettings TakeResult() { return std::move(m_result); }

private:
    void ReadSection(QStringView text);
    void ReadEntry(QStringView text);
    std::optional<QString> ReadValue(QStringView value);
    void ReportDamage(const QString& reason) { m_result.damage.append({m_lineNumber, reason}); }

    ParsedSettings m_result;
    bool m_isForeign; // the whole file is as QSettings writes it
    int m_lineNumber = 0;
    std::optional<QString> m_section = QString(); // the prefix of the keys; nothing when it could not be read
};

void Parser::ReadLine(QByteArrayView line) {
    ++m_lineNumber;
    const auto [text, isUtf8] = DecodeLine(line);
    const QStringView trimmed = QStringView(text).trimmed();
    if (trimmed.startsWith(u'[')) {
        m_section.reset(); // until the name has been read
    }
    if (!isUtf8) {
        ReportDamage(u"is not UTF-8 text"_s);
    } else if (text.contains(QChar::Null)) {
        ReportDamage(u"holds a NUL byte"_s);
    } else if (trimmed.startsWith(u'[')) {
        ReadSection(trimmed);
    } else if (!trimmed.isEmpty() && !IsComment(trimmed)) {
        ReadEntry(text);
    }
}

void Parser::ReadSection(QStringView text) {
    const qsizetype end = text.indexOf(u']');
    const QStringView written = text.sliced(1, (end < 0 ? text.size() : end) - 1).trimmed();
    const QStringView rest = end < 0 ? QStringView() : text.sliced(end + 1).trimmed();
    const auto name = written.startsWith(u'%') && IsGeneral(written.sliced(1))
                          ? std::optional(written.sliced(1).toString())
                          : ReadName(written);
    if (!name) {
        ReportDamage(u"has no usable section name"_s);
        return;
    }
    // The name can be used in spite of the damage, so that the keys below it are not lost.
    m_section = IsGeneral(written) ? QString() : *name + u'/';
    if (end < 0) {
        ReportDamage(u"opens a section name and does not close it with \"]\""_s);
    } else if (!rest.isEmpty() && !IsComment(rest)) {
        ReportDamage(u"has text after the section name"_s);
    }
}

void Parser::ReadEntry(QStringView text) {
    const qsizetype split = text.indexOf(u'=');
    if (split < 0) {
        ReportDamage(u"is neither a section nor a comment nor key=value"_s);
        return;
    }
    const auto name = ReadName(text.first(split).trimmed());
    if (!name) {
        ReportDamage(u"has no usable key"_s);
        return;
    }
    if (!m_section) {
        ReportDamage(u"is below a section name that could not be read"_s);
        return;
    }
    const QString key = *m_section + *name;
    const auto place = m_result.texts.lowerBound(key);
    if (place != m_result.texts.end() && place.key() == key) {
        ReportDamage(u"repeats the key \""_s + key + u"\"; the later value counts"_s);
    }
    if (const auto value = ReadValue(text.sliced(split + 1))) {
        m_result.texts.insert(place, key, *value);
    }
}

// Nothing when the value could not be read.
std::optional<QString> Parser::ReadValue(QStringView value) {
    if (m_isForeign) {
        return ReadForeignValue(value);
    }
    value = value.trimmed();
    const qsizetype quote = value.startsWith(u'"') ? FindClosingQuote(value) : 0;
    if (quote < 0) {
        ReportDamage(u"opens a double quote and does not close it"_s);
        return std::nullopt;
    }
    return quote > 0 && quote == value.size() - 1 ? Unescape(value.sliced(1, quote - 1)) : value.toString();
}

} // namespace

ParsedSettings ParseSettings(QByteArrayView bytes) {
    constexpr QByteArrayView BYTE_ORDER_MARK("\xEF\xBB\xBF");
    if (bytes.startsWith(BYTE_ORDER_MARK)) {
        bytes = bytes.sliced(BYTE_ORDER_MARK.size());
    }
    Parser parser(IsWrittenByQSettings(bytes));
    ForEachLine(bytes, [&](QByteArrayView line) { parser.ReadLine(line); });
    return parser.TakeResult();
}

QByteArray FormatSettings(const SettingsTexts& texts) {
    QMap<QString, QString> linesOfSection; // keys without a section come first
    QString* lines = nullptr;              // those of the section of the key before, mostly the same section
    QStringView section;
    for (auto text = texts.constBegin(); text != texts.constEnd(); ++text) {
        const QStringView sectionBefore = std::exchange(section, SectionOf(text.key()));
        if (!lines || section != sectionBefore) {
            lines = &linesOfSection[section.toString()];
        }
        *lines += EscapeName(QStringView(text.key()).sliced(section.isEmpty() ? 0 : section.size() + 1));
        *lines += u'=';
        *lines += NeedsQuotes(*text) ? Quote(*text) : *text;
        *lines += u'\n';
    }
    QString file;
    for (auto each = linesOfSection.constBegin(); each != linesOfSection.constEnd(); ++each) {
        const QString& name = each.key();
        const QString written = name.isEmpty()    ? GENERAL.toString()
                                : IsGeneral(name) ? u'%' + name
                                                  : EscapeName(name);
        file += (file.isEmpty() ? u"["_s : u"\n["_s) + written + u"]\n"_s + *each;
    }
    return file.toUtf8();
}

bool IsSettingsKey(QStringView key) {
    // Python's configparser would give the keys of its section DEFAULT to all sections.
    const QStringView section = SectionOf(key);
    return IsWrittenName(key) && key.isValidUtf16() && EscapeName(key) == key && !IsGeneral(section) &&
           section != u"DEFAULT";
}

std::optional<bool> ParseBoolean(QStringView text) {
    if (text.compare(u"true", Qt::CaseInsensitive) == 0 || text == u"1") {
        return true;
    }
    if (text.compare(u"false", Qt::CaseInsensitive) == 0 || text == u"0") {
        return false;
    }
    return std::nullopt;
}

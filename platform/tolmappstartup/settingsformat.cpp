#include "tolmappstartup/settingsformat.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// The letters after a backslash, and what they stand for.
constexpr auto ESCAPES = std::to_array<std::pair<char16_t, char16_t>>(
    {{u'\\', u'\\'}, {u'"', u'"'}, {u'n', u'\n'}, {u'r', u'\r'}, {u't', u'\t'}});

constexpr qsizetype CODE_UNIT_DIGITS = 4; // of \uXXXX

bool IsComment(QStringView text) {
    return text.startsWith(u';') || text.startsWith(u'#');
}

bool IsControl(QChar c) {
    return c.category() == QChar::Other_Control;
}

bool IsLoneSurrogate(QStringView text, qsizetype i) {
    if (text[i].isHighSurrogate()) {
        return i + 1 == text.size() || !text[i + 1].isLowSurrogate();
    }
    return text[i].isLowSurrogate() && (i == 0 || !text[i - 1].isHighSurrogate());
}

QString Unescape(QStringView text) {
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'\\' || i + 1 == text.size()) {
            result += text[i];
            continue;
        }
        const QChar letter = text[i + 1];
        const auto* const escape =
            std::find_if(ESCAPES.begin(), ESCAPES.end(), [&](const auto& e) { return letter == e.first; });
        if (escape != ESCAPES.end()) {
            result += QChar(escape->second);
            ++i;
            continue;
        }
        const QStringView digits = text.sliced(std::min(i + 2, text.size())).left(CODE_UNIT_DIGITS);
        bool isNumber = false;
        const ushort codeUnit = digits.toUShort(&isNumber, 16);
        if (letter == u'u' && isNumber && digits.size() == CODE_UNIT_DIGITS) {
            result += QChar(codeUnit);
            i += 1 + CODE_UNIT_DIGITS;
        } else {
            result += text[i];
        }
    }
    return result;
}

QString Quote(QStringView text) {
    QString result = u"\""_s;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        const auto* const escape =
            std::find_if(ESCAPES.begin(), ESCAPES.end(), [&](const auto& e) { return c == e.second; });
        if (escape != ESCAPES.end()) {
            result += u'\\';
            result += QChar(escape->first);
        } else if (IsControl(c) || IsLoneSurrogate(text, i)) {
            result += u"\\u"_s + QString::number(c.unicode(), 16).rightJustified(CODE_UNIT_DIGITS, u'0');
        } else {
            result += c;
        }
    }
    return result + u'"';
}

bool NeedsQuotes(QStringView text) {
    return text != text.trimmed() || text.startsWith(u'"') || !text.isValidUtf16() ||
           std::any_of(text.begin(), text.end(), IsControl);
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

class Parser {
public:
    void ReadLine(QByteArrayView line);
    ParsedSettings TakeResult() { return std::move(m_result); }

private:
    void ReadSection(QStringView text);
    void ReadEntry(QStringView text);
    void ReportDamage(const QString& reason) { m_result.damage.append({m_lineNumber, reason}); }

    ParsedSettings m_result;
    int m_lineNumber = 0;
    std::optional<QString> m_section = QString(); // the prefix of the keys; none: it could not be read
};

void Parser::ReadLine(QByteArrayView line) {
    ++m_lineNumber;
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString decoded = decoder(line);
    const QStringView text = QStringView(decoded).trimmed();
    if (decoder.hasError() || text.contains(QChar::Null)) {
        ReportDamage(decoder.hasError() ? u"is no UTF-8 text"_s : u"holds a NUL byte"_s);
        if (text.startsWith(u'[')) {
            m_section.reset();
        }
    } else if (text.startsWith(u'[')) {
        ReadSection(text);
    } else if (!text.isEmpty() && !IsComment(text)) {
        ReadEntry(text);
    }
}

void Parser::ReadSection(QStringView text) {
    const qsizetype end = text.indexOf(u']');
    const QStringView name = text.sliced(1, (end < 0 ? text.size() : end) - 1).trimmed();
    const QStringView rest = end < 0 ? QStringView() : text.sliced(end + 1).trimmed();
    if (!IsSettingsKey(name)) {
        m_section.reset();
        ReportDamage(u"has no usable section name"_s);
        return;
    }
    // The name is certain enough to go on with, so that the keys below it are not lost.
    m_section = name.toString() + u'/';
    if (end < 0) {
        ReportDamage(u"opens a section name and does not close it with \"]\""_s);
    } else if (!rest.isEmpty() && !IsComment(rest)) {
        ReportDamage(u"has text behind the section name"_s);
    }
}

void Parser::ReadEntry(QStringView text) {
    const qsizetype split = text.indexOf(u'=');
    if (split < 0) {
        ReportDamage(u"is neither a section nor a comment nor key=value"_s);
        return;
    }
    const QStringView name = text.first(split).trimmed();
    if (!IsSettingsKey(name)) {
        ReportDamage(u"has no usable key"_s);
        return;
    }
    if (!m_section) {
        ReportDamage(u"stands below a section name that could not be read"_s);
        return;
    }
    QStringView value = text.sliced(split + 1).trimmed();
    const QString key = *m_section + name.toString();
    if (m_result.values.contains(key)) {
        ReportDamage(u"repeats the key \""_s + key + u"\"; the later value counts"_s);
    }
    if (!value.startsWith(u'"')) {
        m_result.values.insert(key, value.toString());
        return;
    }
    const qsizetype quote = FindClosingQuote(value);
    if (quote < 0) {
        ReportDamage(u"opens a double quote and does not close it"_s);
    } else if (quote == value.size() - 1) {
        m_result.values.insert(key, Unescape(value.sliced(1, quote - 1)));
    } else {
        m_result.values.insert(key, value.toString());
    }
}

} // namespace

ParsedSettings ParseSettings(QByteArrayView bytes) {
    constexpr QByteArrayView BYTE_ORDER_MARK("\xEF\xBB\xBF");
    if (bytes.startsWith(BYTE_ORDER_MARK)) {
        bytes = bytes.sliced(BYTE_ORDER_MARK.size());
    }
    Parser parser;
    while (!bytes.isEmpty()) {
        const qsizetype end = bytes.indexOf('\n');
        parser.ReadLine(end < 0 ? bytes : bytes.first(end));
        bytes = end < 0 ? QByteArrayView() : bytes.sliced(end + 1);
    }
    return parser.TakeResult();
}

QByteArray FormatSettings(const QSettings::SettingsMap& values) {
    QMap<QString, QString> linesOfSection;
    for (auto entry = values.begin(); entry != values.end(); ++entry) {
        const QString& key = entry.key();
        const QString value = entry.value().toString();
        const qsizetype slash = key.lastIndexOf(u'/');
        QString& lines = linesOfSection[key.left(std::max<qsizetype>(slash, 0))];
        lines += key.mid(slash + 1) + u'=' + (NeedsQuotes(value) ? Quote(value) : value) + u'\n';
    }
    QString text;
    for (auto section = linesOfSection.begin(); section != linesOfSection.end(); ++section) {
        if (!section.key().isEmpty()) { // keys without a section come first: they sort before all sections
            text += (text.isEmpty() ? u"["_s : u"\n["_s) + section.key() + u"]\n"_s;
        }
        text += section.value();
    }
    return text.toUtf8();
}

bool IsSettingsKey(QStringView key) {
    const auto isUsable = [](QStringView name) {
        return !name.isEmpty() && name == name.trimmed() && !IsComment(name);
    };
    const auto isForbidden = [](QChar c) {
        return c == u'=' || c == u'[' || c == u']' || c == QChar::ByteOrderMark || IsControl(c);
    };
    const auto names = key.split(u'/');
    return key.isValidUtf16() && std::none_of(key.begin(), key.end(), isForbidden) &&
           std::all_of(names.begin(), names.end(), isUsable);
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

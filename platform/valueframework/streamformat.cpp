#include "valueframework/streamformat.h"

#include <algorithm>

namespace {

/// Stricter than Qt's number reading, which accepts signs, blanks and "0x" as well.
bool IsHexDigit(QChar c) {
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f');
}

} // namespace

void AppendEscaped(QString& out, QStringView text) {
    for (const QChar c : text) {
        if (c == u'\\') {
            out += QStringView(u"\\\\");
        } else if (c == u'\n') {
            out += QStringView(u"\\n");
        } else if (c == u'\t') {
            out += QStringView(u"\\t");
        } else if (c == u';' || c.category() == QChar::Other_Control) {
            out += QStringView(u"\\u");
            out += QString::number(c.unicode(), 16).rightJustified(4, u'0');
        } else {
            out += c;
        }
    }
}

bool TakeEscaped(QString& out, QStringView text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'\\') {
            out += text[i];
            continue;
        }
        if (++i == text.size()) {
            return false;
        }
        switch (text[i].unicode()) {
        case u'\\':
            out += u'\\';
            break;
        case u'n':
            out += u'\n';
            break;
        case u't':
            out += u'\t';
            break;
        case u'u': {
            const QStringView digits = text.mid(i + 1, 4);
            if (digits.size() < 4 || !std::all_of(digits.begin(), digits.end(), IsHexDigit)) {
                return false;
            }
            out += QChar(digits.toUShort(nullptr, 16));
            i += 4;
            break;
        }
        default:
            return false;
        }
    }
    return true;
}

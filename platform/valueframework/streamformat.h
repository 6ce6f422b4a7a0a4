#pragma once

/// \file

#include "zanplatform_export.h"

#include <QString>

/// Appends a text so that it holds no control character and no ";": those, and the backslash, are escaped by
/// a backslash and "n" (line feed), "t" (tab), a backslash, or "u" and four hexadecimal digits in lower case.
ZANPLATFORM_EXPORT void AppendEscaped(QString& out, QStringView text);
/// Undoes `AppendEscaped`: appends the text that was escaped. False when an escape is not complete or not
/// known; what stands in front of it has then been appended.
[[nodiscard]] ZANPLATFORM_EXPORT bool TakeEscaped(QString& out, QStringView text);

/// How several elements of a type stand in one text: each by its own format, escaped, with ";" behind each.
template <class T, class Format>
struct StreamFormat {
    static void Append(QString& out, const T& element) {
        AppendEscaped(out, Format::ToString(element));
        out += u';';
    }
    /// Takes the first element off the front of a text. False, with both arguments in an undefined state,
    /// when none stands there that the format reads.
    [[nodiscard]] static bool Take(QStringView& text, T& element) {
        const qsizetype end = text.indexOf(u';');
        QString unescaped;
        if (end < 0 || !TakeEscaped(unescaped, text.first(end)) || !Format::FromString(unescaped, element)) {
            return false;
        }
        text = text.sliced(end + 1);
        return true;
    }
};

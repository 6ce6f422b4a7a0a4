#pragma once

/// \file

#include "zanplatform_export.h"

#include <QString>

/// Appends a text with its control characters, ";" and backslashes escaped: a backslash followed by "n" (line
/// feed), "t" (tab), another backslash, or "u" and four hexadecimal digits in lower case.
ZANPLATFORM_EXPORT void AppendEscaped(QString& out, QStringView text);
/// Undoes `AppendEscaped`: appends the text that was escaped. False when an escape is incomplete or unknown;
/// the text before it has been appended then.
[[nodiscard]] ZANPLATFORM_EXPORT bool TakeEscaped(QString& out, QStringView text);

/// How several elements of a type are written in one text: each in its own format, escaped, followed by ";".
template <class T, class Format>
struct StreamFormat {
    static void Append(QString& out, const T& element) {
        AppendEscaped(out, Format::ToString(element));
        out += u';';
    }
    /// Takes the first element from the front of a text. False, with both arguments in an undefined state,
    /// when the format cannot read one there.
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

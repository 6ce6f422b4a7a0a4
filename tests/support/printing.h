#pragma once

#include <QString>

#include <ostream>

/// Makes GoogleTest print strings as text.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

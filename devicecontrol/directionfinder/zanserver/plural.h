#pragma once

#include <QString>

namespace ZANServer {

/// A number of things in words: "1 row", "2 rows".
/// \param thing one of them, which takes an s
inline QString Plural(quint64 count, const QString& thing) {
    return QString::number(count) + u' ' + thing + (count == 1 ? QString() : QStringLiteral("s"));
}

} // namespace ZANServer

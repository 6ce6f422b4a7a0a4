#pragma once

#include <QString>

namespace ZANServer {

/// A number and a noun in singular or plural: "1 row", "2 rows".
/// \param thing the singular; the plural is formed with an s
inline QString Plural(quint64 count, const QString& thing) {
    return QString::number(count) + u' ' + thing + (count == 1 ? QString() : QStringLiteral("s"));
}

} // namespace ZANServer

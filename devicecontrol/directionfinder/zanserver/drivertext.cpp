#include "zanserver/drivertext.h"

#include <algorithm>
#include <cstring>

namespace ZANServer {

QString Bounded(const QString& text, qsizetype bytes) {
    QString line = WithoutControls(text.first(std::min(text.size(), bytes))).simplified();
    while (line.toUtf8().size() > bytes) {
        line.chop(1);
    }
    return line;
}

QString WhatOf(const std::exception& exception) {
    constexpr std::size_t MOST_BYTES = 1000; // read at all
    const char* const what = exception.what();
    const auto size = static_cast<qsizetype>(::strnlen(what, MOST_BYTES));
    return Bounded(QString::fromLocal8Bit(what, size));
}

QString WithoutControls(QString text) {
    std::ranges::replace_if(
        text, [](QChar c) { return c.category() == QChar::Other_Control; }, u' ');
    return text;
}

} // namespace ZANServer

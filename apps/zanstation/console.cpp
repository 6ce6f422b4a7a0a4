#include "zanstation/console.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

bool isProgressShown = false;
bool isQuiet = false;
bool isStandardOutputTaken = false;

/// Texts from recordings and settings may hold anything: control characters must not reach the terminal.
QByteArray Printable(QString text) {
    for (QChar& c : text) {
        if (c.category() == QChar::Other_Control) {
            c = u'?';
        }
    }
    return text.toLocal8Bit();
}

void WriteToStandardError(const QString& text) {
    if (isProgressShown) {
        Console::EndProgress();
    }
    std::fprintf(stderr, "zanstation: %s\n", Printable(text).constData());
}

} // namespace

namespace Console {

void Print(const QString& line) {
    std::fprintf(isStandardOutputTaken ? stderr : stdout, "%s\n", Printable(line).constData());
}

void PrintToStandardError() {
    isStandardOutputTaken = true;
}

void PrintJson(const QJsonDocument& document) {
    std::fputs(document.toJson().constData(), isStandardOutputTaken ? stderr : stdout);
}

void Tell(const QString& line) {
    if (!isQuiet) {
        Print(line);
    }
}

void Warn(const QString& text) {
    if (!isQuiet) {
        WriteToStandardError(u"warning: "_s + text);
    }
}

void Warn(const QStringList& texts) {
    for (const QString& text : texts) {
        Warn(text);
    }
}

void Error(const QString& text) {
    WriteToStandardError(text);
}

void BeQuiet() {
    isQuiet = true;
}

bool IsQuiet() {
    return isQuiet;
}

bool IsTerminal() {
    return ::isatty(STDERR_FILENO) != 0;
}

void ShowProgress(double fraction, const QString& text) {
    constexpr int WIDTH = 20;
    const int filled = static_cast<int>(std::clamp(fraction, 0.0, 1.0) * WIDTH);
    const QString bar = QString(filled, u'#') + QString(WIDTH - filled, u'.');
    // The escape sequence clears what a longer line left.
    std::fprintf(stderr, "\r[%s] %3.0f%%  %s\033[K", bar.toLatin1().constData(), fraction * 100.0,
                 Printable(text).constData());
    isProgressShown = true;
}

void EndProgress() {
    std::fputc('\n', stderr);
    isProgressShown = false;
}

} // namespace Console

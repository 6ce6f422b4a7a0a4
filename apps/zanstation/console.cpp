#include "zanstation/console.h"

#include "kwbase/standarderror.h"
#include "kwbase/standardstream.h"
#include "zanstation/journal.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

bool isProgressShown = false;
bool isQuiet = false;
bool isStandardOutputTaken = false;
QByteArray unprinted; // results that have not been printed yet
int printError = 0;   // the `errno` of why they cannot be printed

/// Texts from recordings and settings may contain anything: control characters must not reach the terminal.
QByteArray Printable(QString text) {
    for (QChar& c : text) {
        if (c.category() == QChar::Other_Control) {
            c = u'?';
        }
    }
    return text.toLocal8Bit();
}

std::string_view View(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

void WriteToStandardError(Journal::Priority priority, const QString& text) {
    if (isProgressShown) {
        Console::EndProgress();
    }
    StandardError::Write(View(Journal::Mark(priority, "zanstation: " + Printable(text) + '\n')));
}

} // namespace

namespace Console {

void Print(const QString& line) {
    unprinted += Printable(line) + '\n';
    if (::isatty(STDOUT_FILENO) != 0) {
        Flush(std::chrono::milliseconds(0));
    }
}

void PrintText(const QString& text) {
    unprinted += text.toLocal8Bit();
}

void PrintToStandardError() {
    isStandardOutputTaken = true;
}

void PrintJson(const QJsonDocument& document) {
    unprinted += document.toJson();
}

int Flush(std::chrono::milliseconds patience) {
    static StandardStream stream(isStandardOutputTaken ? STDERR_FILENO : STDOUT_FILENO);
    if (printError == 0 || printError == EWOULDBLOCK) {
        const std::size_t printed = stream.Write(View(unprinted), patience);
        unprinted.remove(0, static_cast<qsizetype>(printed));
        printError = unprinted.isEmpty() ? 0 : stream.GetError();
    }
    return printError;
}

void Tell(const QString& line) {
    if (!isQuiet) {
        Print(line);
    }
}

void Warn(const QString& text) {
    if (!isQuiet) {
        WriteToStandardError(Journal::Priority::Warning, u"warning: "_s + text);
    }
}

void Warn(const QStringList& texts) {
    for (const QString& text : texts) {
        Warn(text);
    }
}

void Error(const QString& text) {
    WriteToStandardError(Journal::Priority::Error, text);
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
    // The escape sequence clears the rest of a longer line.
    const QString line =
        u"\r[%1] %2%  "_s.arg(bar, QString::number(fraction * 100.0, 'f', 0).rightJustified(3));
    StandardError::Draw(View(line.toLatin1() + Printable(text) + "\033[K"));
    isProgressShown = true;
}

void EndProgress() {
    StandardError::Draw("\n");
    isProgressShown = false;
}

} // namespace Console

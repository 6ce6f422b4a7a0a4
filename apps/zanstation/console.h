#pragma once

#include <QJsonDocument>
#include <QString>
#include <QStringList>

#include <chrono>

/// The output of the program: results on standard output, everything else on standard error, so that results
/// can be piped. Results are kept until they are flushed (on a terminal at once); messages are written at
/// once, and are lost when their reader takes nothing.
namespace Console {

/// A line on standard output.
void Print(const QString& line);
/// From now on `Print` prints to standard error, because standard output is used for something else.
void PrintToStandardError();
/// A text of several lines, such as a help text; control characters are not replaced.
void PrintText(const QString& text);
/// A document for programs, printed as by `Print`.
void PrintJson(const QJsonDocument& document);
/// Prints what is left to be printed. Waits for the reader so long.
/// \return 0, or the number of the error: EWOULDBLOCK when the reader has not taken all of it, EPIPE when
///         it is gone
int Flush(std::chrono::milliseconds patience);
/// A line about what was done, printed as by `Print`, but not with --quiet.
void Tell(const QString& line);
/// "zanstation: warning: ..." on standard error, but not with --quiet.
void Warn(const QString& text);
/// Several warnings.
void Warn(const QStringList& texts);
/// "zanstation: ..." on standard error.
void Error(const QString& text);

/// From now on only errors and requested results are printed (--quiet).
void BeQuiet();
[[nodiscard]] bool IsQuiet();

/// Whether standard error is a terminal.
bool IsTerminal();
/// Draws the progress line again: a bar for a fraction of 0 to 1, and a text.
void ShowProgress(double fraction, const QString& text);
/// Leaves the progress line on the terminal and goes to the next line.
void EndProgress();

} // namespace Console

#pragma once

#include <QJsonDocument>
#include <QString>
#include <QStringList>

#include <chrono>

/// What the station says to the person who started it: results on standard output, everything else on
/// standard error, so that results can be piped. Results are kept until they are flushed (on a terminal at
/// once); messages are written at once, and lost when their reader takes nothing.
namespace Console {

/// A line on standard output.
void Print(const QString& line);
/// From now on `Print` prints to standard error: standard output carries something else.
void PrintToStandardError();
/// A text of several lines, such as a help; control characters stay as they are.
void PrintText(const QString& text);
/// A document for programs, as `Print`.
void PrintJson(const QJsonDocument& document);
/// Prints what is left to be printed. Waits for the reader so long.
/// \return 0, or the number of the error: EWOULDBLOCK when the reader has not taken all of it, EPIPE when it
/// is
///         gone
int Flush(std::chrono::milliseconds patience);
/// A line about what was done, as `Print`. Not said where the user wants it quiet.
void Tell(const QString& line);
/// "zanstation: warning: ..." on standard error. Not said where the user wants it quiet.
void Warn(const QString& text);
/// Several of them.
void Warn(const QStringList& texts);
/// "zanstation: ..." on standard error.
void Error(const QString& text);

/// From now on only errors are told, and what was asked for.
void BeQuiet();
[[nodiscard]] bool IsQuiet();

/// Whether somebody watches standard error.
bool IsTerminal();
/// Draws the progress line again: a bar for a fraction of 0 to 1, and a text.
void ShowProgress(double fraction, const QString& text);
/// Leaves the progress line as it stands and goes to the next one.
void EndProgress();

} // namespace Console

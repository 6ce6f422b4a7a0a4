#pragma once

#include <QString>

/// Traces a problem that the operator should know about, and remembers it as the latest one.
/// \param sourceFile path below the source root without extension
void ReportProblem(const QString& problem, const QString& sourceFile, unsigned line);
/// The latest problem that was reported; empty when there was none.
[[nodiscard]] QString GetLastProblem();

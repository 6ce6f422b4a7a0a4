#pragma once

#include "kwbase/tracesource.h"

/// Traces a problem that the operator should know about, and remembers it as the latest one.
/// \param source that of the caller; the line is that of the call
void ReportProblem(const QString& problem, const TraceSource& source, unsigned line = __builtin_LINE());
/// The latest problem that was reported; empty when there was none.
[[nodiscard]] QString GetLastProblem();

#include "tolmappstartup/problemreport.h"

namespace {

QString lastProblem;

} // namespace

void ReportProblem(const QString& problem, const TraceSource& source, unsigned line) {
    lastProblem = problem;
    source.Information([&problem] { return problem; }, line);
}

QString GetLastProblem() {
    return lastProblem;
}

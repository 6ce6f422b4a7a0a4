#include "tolmappstartup/problemreport.h"

#include "kwbase/errorhandler.h"

namespace {

QString lastProblem;

} // namespace

void ReportProblem(const QString& problem, const QString& sourceFile, unsigned line) {
    lastProblem = problem;
    TraceInformation([&] { return problem; }, sourceFile, line);
}

QString GetLastProblem() {
    return lastProblem;
}

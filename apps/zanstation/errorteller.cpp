#include "zanstation/errorteller.h"

#include "zanstation/console.h"

#include <chrono>
#include <string>

namespace {

void WarnOfLines(const std::string& lines) {
    Console::Warn(QString::fromStdString(lines).split(u'\n', Qt::SkipEmptyParts));
}

} // namespace

void ErrorTeller::Tell(QString error) {
    error.replace(u'\n', u' '); // one error, one line
    WarnOfLines(m_errors.Add(error.toStdString(), std::chrono::steady_clock::now()));
}

void ErrorTeller::TellRest() {
    WarnOfLines(m_errors.TakeCounts());
}

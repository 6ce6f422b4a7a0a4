#pragma once

#include <QString>

#include <vector>

namespace ZANServer {

/// The result of a check, as a text for the operator.
struct Finding {
    enum class Severity {
        Ok,
        Absent,  ///< missing, which may be all right
        Warning, ///< probably a mistake; the valid parts are used
        Error    ///< wrong
    };

    Severity severity = Severity::Ok;
    QString text;
};

using Findings = std::vector<Finding>;

} // namespace ZANServer

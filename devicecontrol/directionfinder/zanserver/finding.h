#pragma once

#include <QString>

#include <vector>

namespace ZANServer {

/// Something that was looked into, in words for the operator.
struct Finding {
    enum class Severity {
        Ok,
        Absent,  ///< not there, which need not be wrong
        Warning, ///< probably not meant so; what is sound is used all the same
        Error    ///< wrong
    };

    Severity severity = Severity::Ok;
    QString text;
};

using Findings = std::vector<Finding>;

} // namespace ZANServer

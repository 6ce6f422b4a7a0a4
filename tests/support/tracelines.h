#pragma once

#include "kwbase/errorhandler.h"

#include <QString>
#include <QStringList>

/// Collects the trace lines that are written while it lives.
class TraceLines {
public:
    TraceLines()
        : m_mask(ErrorHandler::Instance().GetTraceMask()) {
        ErrorHandler::Instance().SetSink([this](const QString& line) { lines.append(line); });
    }
    TraceLines(const TraceLines&) = delete;
    TraceLines& operator=(const TraceLines&) = delete;
    ~TraceLines() {
        ErrorHandler::Instance().SetSink({});
        ErrorHandler::Instance().SetTraceMask(m_mask);
    }

    QStringList lines;

private:
    unsigned m_mask;
};

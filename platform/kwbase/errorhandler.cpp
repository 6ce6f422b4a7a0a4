#include "kwbase/errorhandler.h"

#include <QLoggingCategory>

#include <atomic>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

Q_LOGGING_CATEGORY(lcTrace, "zan.trace")

std::atomic<unsigned> traceMask{TraceBit::INFORMATION | TraceBit::ASSERTION};

} // namespace

ErrorHandler& ErrorHandler::Instance() {
    static ErrorHandler handler;
    return handler;
}

unsigned ErrorHandler::GetTraceMask() const {
    return traceMask.load(std::memory_order_relaxed);
}

void ErrorHandler::SetTraceMask(unsigned mask) {
    traceMask.store(mask, std::memory_order_relaxed);
}

void ErrorHandler::SetSink(Sink sink) {
    m_sink = std::move(sink);
}

void ErrorHandler::Write(const QString& line) const {
    if (m_sink) {
        m_sink(line);
    } else {
        qCInfo(lcTrace).noquote() << line;
    }
}

void _Q_Trace(const QString& message, const QString& sourceFile, unsigned short line) {
    _Q_TraceOld(sourceFile + u'(' + QString::number(line) + u"): "_s + message);
}

void _Q_TraceOld(const QString& line) {
    ErrorHandler::Instance().Write(line);
}

void _Q_assert(const wchar_t* expression, const wchar_t* sourceFile, unsigned short line) {
    if (ErrorHandler::Instance().GetTraceMask() & TraceBit::ASSERTION) {
        _Q_Trace(u"Assertion failed: "_s + QString::fromWCharArray(expression),
                 QString::fromWCharArray(sourceFile), line);
    }
}

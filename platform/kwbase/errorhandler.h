#pragma once

/// \file

#include "zanplatform_export.h"

#include <QString>

#include <functional>

/// The bits of the trace mask. A line is written only when its bit is set.
namespace TraceBit {
inline constexpr unsigned ASSERTION = 0x02;   ///< failed assertions
inline constexpr unsigned INFORMATION = 0x20; ///< information and warnings
} // namespace TraceBit

/// The process-wide handler of diagnostic lines: the mask that selects them and the sink that takes them.
class ZANPLATFORM_EXPORT ErrorHandler {
public:
    /// Takes one finished line. Called on the thread that traces, and so from several threads at a time.
    using Sink = std::function<void(const QString& line)>;

    /// The one handler of the process, from any thread.
    static ErrorHandler& Instance();

    /// The mask in force. It is read again for each message, from any thread. At start-up both bits are set.
    [[nodiscard]] unsigned GetTraceMask() const;
    void SetTraceMask(unsigned mask);

    /// Replaces the sink; an empty one brings back the default, Qt's logging in the category "zan.trace".
    /// Call it while only one thread runs.
    void SetSink(Sink sink);
    /// Hands a finished line to the sink, whatever the mask. From any thread.
    void Write(const QString& line) const;

private:
    ErrorHandler() = default;
    Sink m_sink;
};

/// Writes one trace line with its origin: a path below the source root without extension, and a line number.
/// The caller tests the mask before it builds the message; `TraceSource` does both. From any thread.
ZANPLATFORM_EXPORT void _Q_Trace(const QString& message, const QString& sourceFile, unsigned short line);
/// Writes one finished trace line, whatever the mask. From any thread.
ZANPLATFORM_EXPORT void _Q_TraceOld(const QString& line);
/// Reports a failed assertion. Written when the mask has `TraceBit::ASSERTION`; the program goes on. The
/// texts are not null. From any thread.
ZANPLATFORM_EXPORT void _Q_assert(const wchar_t* expression, const wchar_t* sourceFile, unsigned short line);

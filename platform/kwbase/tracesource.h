#pragma once

#include "kwbase/errorhandler.h"

#include <QStringView>

/// The origin of the lines that a source file traces. Each source file has one:
///
///     constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\stationcfg");
///
/// The line number is that of the call. Where the number of a message is fixed, because readers of the trace
/// know the message by it, the call passes it. From any thread. (`std::source_location` would do, but clang
/// 14 does not have it.)
class TraceSource {
public:
    /// \param path below the source root without extension, with backslashes; a literal
    constexpr explicit TraceSource(QStringView path)
        : m_path(path) {}

    /// For exceptions that name the same source.
    [[nodiscard]] QString GetPath() const { return m_path.toString(); }

    /// Traces information or a warning under `TraceBit::INFORMATION`.
    /// \param makeMessage makes the QString; it is called only when the line is written, so that nothing is
    ///        formatted for a line that nobody reads
    /// \param line only the lowest 16 bits are written
    template <class MakeMessage>
    void Information(MakeMessage makeMessage, unsigned line = __builtin_LINE()) const {
        if (ErrorHandler::Instance().GetTraceMask() & TraceBit::INFORMATION) {
            _Q_Trace(makeMessage(), GetPath(), static_cast<unsigned short>(line));
        }
    }

    /// Reports a failed assertion under `TraceBit::ASSERTION`; the program goes on.
    void Assertion(const wchar_t* expression, unsigned line = __builtin_LINE()) const {
        _Q_assert(expression, GetPath().toStdWString().c_str(), static_cast<unsigned short>(line));
    }

private:
    QStringView m_path;
};

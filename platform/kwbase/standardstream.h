#pragma once

#include "zanplatform_export.h"

#include <chrono>
#include <cstddef>
#include <string_view>

/// Standard output or standard error of the program, written with direct system calls, so that a reader that
/// takes nothing (a pipe, a terminal) blocks the program only for as long as the caller allows. For one
/// thread. SIGPIPE is left to the program, which must ignore it.
class ZANPLATFORM_EXPORT StandardStream {
public:
    static constexpr std::chrono::milliseconds FOREVER{-1};

    /// \param descriptor STDOUT_FILENO or STDERR_FILENO. A pipe and a terminal are opened a second time,
    /// where the system allows it, so that writing does not wait and other programs that use them are not
    /// affected.
    explicit StandardStream(int descriptor);

    /// Writes text. Waits for room, in total no longer than `patience`.
    /// \return the number of bytes that were taken. When some were not, `GetError` gives the reason:
    ///         EWOULDBLOCK when the reader takes nothing, EPIPE when it is gone.
    std::size_t Write(std::string_view text, std::chrono::milliseconds patience);
    [[nodiscard]] int GetError() const { return m_error; }

private:
    [[nodiscard]] ZANPLATFORM_NO_EXPORT bool WaitForRoom(int milliseconds) const;

    int m_descriptor;
    int m_error = 0;
};

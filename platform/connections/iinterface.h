#pragma once

#include "zanplatform_export.h"

#include <QtGlobal>

/// An open communication interface that sends. The caller that opened it owns it and closes it by deleting
/// it. What still waits to be sent is sent first, which blocks the thread: on a serial line for about 5 s at
/// most, and for no more than 1 s in which nothing is sent.
///
/// All operations belong to the thread that opened the interface, whose event loop does the sending.
class ZANPLATFORM_EXPORT IInterface {
public:
    IInterface() = default;
    IInterface(const IInterface&) = delete;
    IInterface& operator=(const IInterface&) = delete;
    virtual ~IInterface();

    /// Whether `Write` would take this data now. False while too much earlier data waits to be sent (a slow
    /// line drops data, so that it does not pile up), after an error, for null and for a negative length. On
    /// a serial line at most 4096 bytes wait, so a longer block is never taken.
    [[nodiscard]] virtual bool IsReadyToWrite(const char* data, int length) const = 0;
    /// Takes a copy of `length` bytes for sending, as a whole or not at all, and returns at once. False when
    /// they are not taken.
    virtual bool Write(const char* data, int length) = 0;
    /// How many of the bytes that `Write` took have not been passed to the operating system: they wait or,
    /// after an error or `Finish`, will never be sent.
    [[nodiscard]] virtual qint64 GetUnsentCount() const { return 0; }
    /// Sends what waits, as the destructor does, and takes nothing more; `GetUnsentCount` is then the number
    /// of bytes that were lost.
    virtual void Finish() {}
};

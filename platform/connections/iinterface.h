#pragma once

#include "zanplatform_export.h"

/// An open communication interface that sends. Whoever had it opened owns it and closes it by deleting it,
/// on the thread that opened it. What still waits to be sent is sent first, unless the line stands still.
class ZANPLATFORM_EXPORT IInterface {
public:
    IInterface() = default;
    IInterface(const IInterface&) = delete;
    IInterface& operator=(const IInterface&) = delete;
    virtual ~IInterface();

    /// Whether `Write` would take this data now. False while too much of what was written before waits to be
    /// sent, so that a slow line drops data instead of piling it up; and after an error.
    [[nodiscard]] virtual bool IsReadyToWrite(const char* data, int length) const = 0;
    /// Takes the data for sending, as a whole or not at all, and returns at once. False when it is not taken.
    virtual bool Write(const char* data, int length) = 0;
};

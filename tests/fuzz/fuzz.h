#pragma once

#include "kwbase/errorhandler.h"

#include <QCoreApplication>
#include <QString>

#include <cstddef>
#include <cstdint>

// What the fuzzing targets share. A target takes any bytes as one kind of input from outside, and must
// neither crash, hang, nor grow; what it answers is not looked at beyond that, except for what it promises of
// any input.

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// The bytes as the text that a file or a command line would give.
inline QString TextOf(const std::uint8_t* data, std::size_t size) {
    return QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

/// Ends the process where something does not hold that was promised of any input.
inline void Require(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

/// Called once before the first input. Trace lines are made, but nobody reads them.
[[gnu::used]] inline int LLVMFuzzerInitialize(int* argc, char*** argv) {
    static QCoreApplication application(*argc, *argv);
    ErrorHandler::Instance().SetSink([](const QString&) {});
    return 0;
}

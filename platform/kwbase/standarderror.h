#pragma once

#include "zanplatform_export.h"

#include <string_view>

/// The only way to standard error for a program that goes on whether or not its messages are read. Nothing
/// waits: what the reader does not take at once is lost. From any thread.
namespace StandardError {

/// Writes whole lines, each with its line feed. The number of lines that were lost is written before the next
/// line that is taken: "3 lines of messages were lost".
ZANPLATFORM_EXPORT void Write(std::string_view lines);
/// Writes text that is soon replaced, such as a progress line; it is not counted when it is lost.
ZANPLATFORM_EXPORT void Draw(std::string_view text);
/// Writes at the end of the program how many lines were lost, if the reader takes that line.
ZANPLATFORM_EXPORT void TellLoss();

} // namespace StandardError

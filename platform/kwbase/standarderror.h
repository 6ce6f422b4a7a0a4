#pragma once

#include "zanplatform_export.h"

#include <string_view>

/// The one way to standard error of a program that works on, whether or not somebody reads what it says
/// there. Nothing waits: what the reader does not take at once is lost. From any thread.
namespace StandardError {

/// Writes lines, each with its end. How many were lost is written in front of the next one that is taken: "3
/// lines of messages were lost".
ZANPLATFORM_EXPORT void Write(std::string_view lines);
/// Writes something that is soon replaced, such as a progress line; it does not count when it is lost.
ZANPLATFORM_EXPORT void Draw(std::string_view text);
/// Says at the end of the program how many lines were lost, if a reader takes that.
ZANPLATFORM_EXPORT void TellLoss();

} // namespace StandardError

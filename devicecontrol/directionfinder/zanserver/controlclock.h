#pragma once

#include <chrono>
#include <functional>

namespace ZANServer {

/// The time by which the control paces its calls; tests bring their own.
using ControlClock = std::function<std::chrono::steady_clock::time_point()>;

} // namespace ZANServer

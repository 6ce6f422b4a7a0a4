#pragma once

#include <functional>

/// How often an action allocates memory in this thread, in whatever way. The test is linked with
/// `allocations.cpp`.
long AllocationsOf(const std::function<void()>& action);

#pragma once

// The exit codes of the program.

inline constexpr int EXIT_OK = 0;
inline constexpr int EXIT_FAILED = 1;
inline constexpr int EXIT_USAGE = 2;
inline constexpr int EXIT_MOVED = 3; ///< the request is served only after it was moved

/// The code with which shells report a program that a signal has ended: 130 for SIGINT, 143 for SIGTERM, 129
/// for SIGHUP.
constexpr int ExitCodeOf(int signal) {
    return 128 + signal;
}

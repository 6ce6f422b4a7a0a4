#pragma once

// What the program returns to the shell.

inline constexpr int EXIT_OK = 0;
inline constexpr int EXIT_FAILED = 1;
inline constexpr int EXIT_USAGE = 2;
inline constexpr int EXIT_MOVED = 3; ///< what was wished is served elsewhere only

/// As a shell reports a program that a signal has ended: 130 for SIGINT, 143 for SIGTERM, 129 for SIGHUP.
constexpr int ExitCodeOf(int signal) {
    return 128 + signal;
}

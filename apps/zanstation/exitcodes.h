#pragma once

// What the program returns to the shell.

inline constexpr int EXIT_OK = 0;
inline constexpr int EXIT_FAILED = 1;
inline constexpr int EXIT_USAGE = 2;
inline constexpr int EXIT_INTERRUPTED = 130; ///< as a shell reports a program that SIGINT has ended

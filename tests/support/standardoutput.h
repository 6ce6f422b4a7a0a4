#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

/// Puts a descriptor in place of the program's standard output while it lives.
class StandardOutput {
public:
    explicit StandardOutput(int replacement) {
        std::fflush(stdout);
        m_saved = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
        EXPECT_GE(m_saved, 0);
        EXPECT_EQ(dup2(replacement, STDOUT_FILENO), STDOUT_FILENO);
    }
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    ~StandardOutput() {
        std::fflush(stdout);
        dup2(m_saved, STDOUT_FILENO);
        close(m_saved);
    }

private:
    int m_saved = -1;
};

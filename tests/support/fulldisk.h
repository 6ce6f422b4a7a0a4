#pragma once

#include <gtest/gtest.h>

#include <QtGlobal>

#include <sys/resource.h>

#include <csignal>

/// No file grows beyond a number of bytes while it lives: what a program sees of a full disk.
class FullDisk {
public:
    explicit FullDisk(qint64 bytes)
        : m_pOldHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_oldLimit), 0);
        rlimit limit = m_oldLimit;
        limit.rlim_cur = static_cast<rlim_t>(bytes);
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &m_oldLimit);
        std::signal(SIGXFSZ, m_pOldHandler);
    }

private:
    void (*m_pOldHandler)(int);
    rlimit m_oldLimit{};
};

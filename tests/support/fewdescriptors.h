#pragma once

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <fcntl.h>
#include <unistd.h>

/// The process can open a number of files more and no others while it lives.
class FewDescriptors {
public:
    explicit FewDescriptors(unsigned count) {
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &m_oldLimit), 0);
        // The next file gets the lowest number that is free; those behind it are taken to be free, too.
        const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
        EXPECT_GE(next, 0);
        close(next);
        rlimit limit = m_oldLimit;
        limit.rlim_cur = static_cast<rlim_t>(next) + count;
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;
    ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &m_oldLimit); }

private:
    rlimit m_oldLimit{};
};

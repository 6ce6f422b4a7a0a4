#pragma once

#include <QByteArray>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <unistd.h>

/// The smallest pipe that the system has.
class TinyPipe {
public:
    TinyPipe() {
        EXPECT_EQ(::pipe2(m_ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
        EXPECT_EQ(::fcntl(m_ends[1], F_SETPIPE_SZ, 4096), 4096);
        // What the program gets waits as usual.
        EXPECT_EQ(::fcntl(m_ends[1], F_SETFL, 0), 0);
    }
    TinyPipe(const TinyPipe&) = delete;
    TinyPipe& operator=(const TinyPipe&) = delete;
    ~TinyPipe() {
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }

    [[nodiscard]] int WriteEnd() const { return m_ends[1]; }
    void Fill() const { EXPECT_EQ(::write(m_ends[1], QByteArray(4096, 'x').constData(), 4096), 4096); }
    [[nodiscard]] QByteArray Read() const {
        QByteArray bytes(4096, '\0');
        bytes.truncate(std::max<ssize_t>(::read(m_ends[0], bytes.data(), 4096), 0));
        return bytes;
    }
    void StopReading() const {
        const int nowhere = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        ::dup3(nowhere, m_ends[0], O_CLOEXEC);
        ::close(nowhere);
    }

private:
    std::array<int, 2> m_ends{};
};

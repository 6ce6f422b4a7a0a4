#pragma once

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

/// A serial line without hardware: the code under test opens its path, the test holds the far end.
class PseudoTerminal {
public:
    PseudoTerminal()
        : m_farEnd(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        EXPECT_GE(m_farEnd, 0);
        EXPECT_EQ(grantpt(m_farEnd), 0);
        EXPECT_EQ(unlockpt(m_farEnd), 0);
        path = QString::fromLocal8Bit(ptsname(m_farEnd));
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal() { Unplug(); }

    void Unplug() {
        if (m_farEnd >= 0) {
            close(std::exchange(m_farEnd, -1));
        }
    }
    /// What has arrived at the far end since the last call.
    [[nodiscard]] QByteArray Read() const {
        QByteArray bytes(65536, '\0');
        const ssize_t count = read(m_farEnd, bytes.data(), static_cast<size_t>(bytes.size()));
        bytes.truncate(std::max<ssize_t>(count, 0));
        return bytes;
    }
    /// As `Read`, but waits until so many bytes have arrived, which the system may bring after the write has
    /// returned.
    [[nodiscard]] QByteArray Read(qsizetype count) const {
        constexpr int DEADLINE_MS = 30'000;
        QByteArray bytes;
        pollfd farEnd{m_farEnd, POLLIN, 0};
        while (bytes.size() < count && poll(&farEnd, 1, DEADLINE_MS) == 1) {
            const QByteArray arrived = Read();
            if (arrived.isEmpty()) {
                break;
            }
            bytes += arrived;
        }
        return bytes;
    }
    /// Whether the program that had opened the path has closed it.
    [[nodiscard]] bool IsClosed() const {
        pollfd farEnd{m_farEnd, POLLIN, 0};
        return poll(&farEnd, 1, 0) == 1 && (farEnd.revents & POLLHUP) != 0;
    }
    /// How many bytes the line took; below 0 when none.
    [[nodiscard]] qint64 Write(const QByteArray& bytes) const {
        return write(m_farEnd, bytes.constData(), static_cast<size_t>(bytes.size()));
    }
    /// As the program that has opened the path set it up.
    [[nodiscard]] termios Settings() const {
        termios settings{};
        EXPECT_EQ(tcgetattr(m_farEnd, &settings), 0);
        return settings;
    }

    QString path;

private:
    int m_farEnd;
};

/// Stops a line, so that it takes nothing of what is written to it. It is made before the code under test
/// opens the line for itself alone.
class LineStop {
public:
    explicit LineStop(const PseudoTerminal& line)
        : m_nearEnd(open(line.path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_GE(m_nearEnd, 0);
    }
    LineStop(const LineStop&) = delete;
    LineStop& operator=(const LineStop&) = delete;
    ~LineStop() { close(m_nearEnd); }

    void Stop() const { EXPECT_EQ(tcflow(m_nearEnd, TCOOFF), 0); }
    void GoOn() const { EXPECT_EQ(tcflow(m_nearEnd, TCOON), 0); }

private:
    int m_nearEnd;
};

#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

/// A FIFO at a name, and the end of it from which a test reads.
class Fifo {
public:
    explicit Fifo(const QString& name)
        : m_name(QFile::encodeName(name)) {
        EXPECT_EQ(mkfifo(m_name.constData(), 0600), 0);
    }
    Fifo(const Fifo&) = delete;
    Fifo& operator=(const Fifo&) = delete;
    ~Fifo() { StopReading(); }

    void StartReading() {
        m_reader = open(m_name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        EXPECT_GE(m_reader, 0);
    }
    void StopReading() {
        if (m_reader >= 0) {
            close(std::exchange(m_reader, -1));
        }
    }
    /// What has arrived since the last call.
    [[nodiscard]] QByteArray Read() const {
        QByteArray bytes(1 << 20, '\0'); // more than a pipe holds
        const ssize_t count = read(m_reader, bytes.data(), static_cast<std::size_t>(bytes.size()));
        bytes.truncate(std::max<ssize_t>(count, 0));
        return bytes;
    }

private:
    QByteArray m_name;
    int m_reader = -1;
};

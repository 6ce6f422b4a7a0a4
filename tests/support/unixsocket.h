#pragma once

#include <QFile>
#include <QString>

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>

#include <unistd.h>

/// A socket at a name in the file system: neither a file nor a directory, and nothing that can be opened.
class UnixSocket {
public:
    explicit UnixSocket(const QString& name) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        QFile::encodeName(name).toStdString().copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    UnixSocket(const UnixSocket&) = delete;
    UnixSocket& operator=(const UnixSocket&) = delete;
    ~UnixSocket() { close(m_socket); }

private:
    int m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// The service manager's end of the notifications of a service.
class NotifySocket {
public:
    /// \param name as in NOTIFY_SOCKET: the path of a socket, or "@" and the name of an abstract one
    explicit NotifySocket(const QByteArray& name) {
        m_address.sun_family = AF_UNIX;
        std::ranges::copy(name, m_address.sun_path);
        if (name.startsWith('@')) {
            m_address.sun_path[0] = '\0';
        }
        m_length =
            static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + static_cast<std::size_t>(name.size()));
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&m_address), m_length), 0);
    }
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;
    ~NotifySocket() { close(m_socket); }

    /// Has no more room, as when the service manager hangs, until the next `Take`.
    void Fill() {
        int sent = 0;
        do { // one sender may have less room for what is on the way than this end takes
            sent = 0;
            const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
            while (sendto(sender, "X", 1, 0, reinterpret_cast<sockaddr*>(&m_address), m_length) == 1) {
                ++sent;
            }
            EXPECT_EQ(errno, EAGAIN);
            close(sender);
        } while (sent > 0);
    }

    /// The notifications that have come since the last call.
    QByteArrayList Take() {
        QByteArrayList notifications;
        std::array<char, 4096> buffer{};
        ssize_t size = 0;
        while ((size = recv(m_socket, buffer.data(), buffer.size(), MSG_DONTWAIT)) >= 0) {
            notifications += QByteArray(buffer.data(), static_cast<qsizetype>(size));
        }
        return notifications;
    }

    /// The next notification; empty when none comes for far longer than any test needs.
    QByteArray Await() {
        constexpr int PATIENCE_MS = 30'000;
        pollfd waiting{m_socket, POLLIN, 0};
        std::array<char, 4096> buffer{};
        if (poll(&waiting, 1, PATIENCE_MS) != 1) {
            return {};
        }
        const ssize_t size = recv(m_socket, buffer.data(), buffer.size(), 0);
        return {buffer.data(), static_cast<qsizetype>(std::max(size, ssize_t{0}))};
    }

    /// The next notification that begins with a text.
    QByteArray Await(const QByteArray& begin) {
        QByteArray notification = Await();
        while (!notification.isEmpty() && !notification.startsWith(begin)) {
            notification = Await();
        }
        return notification;
    }

private:
    sockaddr_un m_address{};
    socklen_t m_length = 0;
    int m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

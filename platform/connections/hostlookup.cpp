#include "connections/hostlookup.h"

#include <QObject>

#include <array>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <netdb.h>
#include <sys/socket.h>

using namespace Qt::StringLiterals;

/// What both threads know. The one that asks may be the last to let go of it.
struct HostLookup::Shared {
    std::mutex mutex;
    std::unique_ptr<QObject> receiver; // gone when nobody waits for the answer any more
    std::function<void(const Result&)> done;
};

HostLookup::HostLookup(const QString& host, std::function<void(const Result&)> done, Resolver resolve)
    : m_shared(std::make_shared<Shared>()) {
    m_shared->receiver = std::make_unique<QObject>();
    m_shared->done = std::move(done);
    const auto answer = [](const std::shared_ptr<Shared>& shared, const Result& result) {
        const std::scoped_lock lock(shared->mutex);
        if (shared->receiver) {
            QMetaObject::invokeMethod(
                shared->receiver.get(), [done = shared->done, result] { done(result); },
                Qt::QueuedConnection);
        }
    };
    try {
        std::thread([shared = m_shared, name = host.toStdString(), ask = std::move(resolve), answer] {
            answer(shared, ask(name));
        }).detach();
    } catch (const std::system_error& error) {
        answer(m_shared, {{}, QString::fromLocal8Bit(error.what())});
    }
}

HostLookup::~HostLookup() {
    const std::scoped_lock lock(m_shared->mutex);
    m_shared->receiver.reset();
    m_shared->done = {};
}

HostLookup::Result HostLookup::AskSystem(const std::string& host) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* first = nullptr;
    if (const int error = getaddrinfo(host.c_str(), nullptr, &hints, &first); error != 0) {
        return {{}, QString::fromLocal8Bit(gai_strerror(error))};
    }
    Result result;
    for (const addrinfo* each = first; each; each = each->ai_next) {
        std::array<char, NI_MAXHOST> text{};
        if (getnameinfo(each->ai_addr, each->ai_addrlen, text.data(), text.size(), nullptr, 0,
                        NI_NUMERICHOST) == 0) {
            result.addresses.append(QString::fromLatin1(text.data()));
        }
    }
    freeaddrinfo(first);
    if (result.addresses.isEmpty()) {
        result.error = u"it has no address"_s;
    }
    return result;
}

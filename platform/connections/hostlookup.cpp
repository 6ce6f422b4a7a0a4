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
    std::unique_ptr<Receiver> receiver; // gone when nobody waits for the answer any more
    Result result;
};

/// Where the answer arrives.
class HostLookup::Receiver final : public QObject {
public:
    Receiver(Shared& shared, std::function<void(const Result&)> done)
        : m_shared(shared)
        , m_done(std::move(done)) {}

    void TakeResult() {
        Result result;
        {
            const std::scoped_lock lock(m_shared.mutex);
            result = m_shared.result;
        }
        const auto done = m_done; // it may destroy this object
        done(result);
    }

private:
    Shared& m_shared;
    const std::function<void(const Result&)> m_done;
};

HostLookup::HostLookup(const QString& host, std::function<void(const Result&)> done, Resolver resolve)
    : m_shared(std::make_shared<Shared>()) {
    m_shared->receiver = std::make_unique<Receiver>(*m_shared, std::move(done));
    const auto answer = [](Shared& shared, Result result) {
        const std::scoped_lock lock(shared.mutex);
        if (shared.receiver) {
            shared.result = std::move(result);
            QMetaObject::invokeMethod(shared.receiver.get(), &Receiver::TakeResult, Qt::QueuedConnection);
        }
    };
    try {
        std::thread([shared = m_shared, name = host.toStdString(), ask = std::move(resolve), answer] {
            answer(*shared, ask(name));
        }).detach();
    } catch (const std::system_error& error) {
        answer(*m_shared, {{}, QString::fromLocal8Bit(error.what())});
    }
}

HostLookup::~HostLookup() {
    std::unique_ptr<Receiver> receiver;
    const std::scoped_lock lock(m_shared->mutex);
    receiver.swap(m_shared->receiver);
}

HostLookup::Result HostLookup::AskSystem(const std::string& host) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* first = nullptr;
    Result result;
    if (const int error = getaddrinfo(host.c_str(), nullptr, &hints, &first); error != 0) {
        result.error = QString::fromLocal8Bit(gai_strerror(error));
        return result;
    }
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

#include "zanserver/driverlink.h"

#include "zanserver/drivertext.h"

#include <QEventLoop>

#include <algorithm>
#include <exception>
#include <string>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace ZANServer {

namespace {

/// Opens the device. Returns why it could not be opened; empty when it is open.
QString Initialize(KvZANCommon::IDriver& driver, const QString& deviceAddress) {
    try {
        std::string address = deviceAddress.toStdString();
        const int result = driver.Initialize(address, false);
        if (result == 0) {
            return {};
        }
        const QString reason = Bounded(driver.GetLastError());
        return reason.isEmpty() ? u"the driver could not open the device (code %1)"_s.arg(result) : reason;
    } catch (const std::exception& exception) {
        return u"the driver threw an exception: "_s + WhatOf(exception);
    } catch (...) {
        return u"the driver threw an exception"_s;
    }
}

/// Threads that a driver has started may outlive it, and deliver to its receiver to the end of the process.
void KeepToTheEnd(const std::shared_ptr<DriverReceiver>& receiver) {
    static auto& receivers = *new std::vector<std::shared_ptr<DriverReceiver>>;
    receivers.push_back(receiver);
}

} // namespace

DriverLink::DriverLink(DriverThread::Factory factory, QString address, const QString& stationAddress,
                       Kind kind, std::chrono::milliseconds firstDelay, DriverThread::Timeout timeout)
    : m_address(std::move(address))
    , m_kind(kind)
    , m_firstDelay(firstDelay)
    , m_delay(firstDelay)
    , m_receiver(std::make_shared<DriverReceiver>(stationAddress))
    , m_thread(std::move(factory), m_receiver, std::move(timeout)) {
    connect(&m_thread, &DriverThread::Failed, this, &DriverLink::OnFailed);
    connect(&m_thread, &DriverThread::GivenUp, this, &DriverLink::OnGivenUp);
    connect(m_receiver.get(), &DriverReceiver::LinkClosed, this, &DriverLink::OnLinkClosed);
    connect(m_receiver.get(), &DriverReceiver::Opening, this, [this] { m_isOpening = true; });
    connect(m_receiver.get(), &DriverReceiver::ErrorReported, this,
            [this](const KvZANCommon::ErrorStruct& error) {
                if (error.fatal && m_isOpening) {
                    Lose(error.text);
                }
            });
    connect(m_receiver.get(), &DriverReceiver::BlockReceived, this, &DriverLink::OnDelivered);
    connect(m_receiver.get(), &DriverReceiver::PositionReceived, this, &DriverLink::OnDelivered);
    m_nextAttempt.setSingleShot(true);
    m_nextAttempt.callOnTimeout(this, &DriverLink::Connect);
}

DriverLink::~DriverLink() {
    Close();
    KeepToTheEnd(m_receiver);
}

void DriverLink::Open() {
    Connect();
}

void DriverLink::SetState(State state, const QString& reason) {
    m_state = state;
    m_reason = reason;
    Q_EMIT StateChanged();
}

void DriverLink::Connect() {
    SetState(State::Connecting, m_reason);
    m_isOpening = false;
    m_hasDelivered = false;
    m_hasClosedWhileConnecting = false;
    const auto failure = std::make_shared<QString>();
    m_thread.Post(
        DriverCall::Initialize,
        [failure, address = m_address, receiver = m_receiver](KvZANCommon::IDriver& driver) {
            receiver->MarkOpening();
            *failure = Initialize(driver, address);
        },
        [this, failure] { OnInitialized(*failure); });
}

void DriverLink::OnInitialized(const QString& failure) {
    if (m_state != State::Connecting) {
        return;
    }
    if (!failure.isEmpty()) {
        Lose(failure);
        return;
    }
    m_connected.start();
    SetState(State::Connected, {});
    Q_EMIT Connected();
    TellIfThereAgain();
    if (m_hasClosedWhileConnecting) {
        OnLinkClosed();
    }
}

void DriverLink::Lose(const QString& reason) {
    if (m_state != State::Connected && m_state != State::Connecting) {
        return;
    }
    if (m_state == State::Connected && m_hasDelivered && m_connected.hasExpired(GetLongestDelay().count())) {
        m_delay = m_firstDelay;
    }
    if (m_kind == Kind::Device) {
        m_nextAttempt.start(m_delay);
    }
    m_delay = std::min(2 * m_delay, GetLongestDelay());
    SetState(State::Lost, reason);
    if (!std::exchange(m_isLossTold, true)) {
        Q_EMIT Lost(reason);
    }
}

std::chrono::milliseconds DriverLink::GetLongestDelay() const {
    return m_firstDelay * (LONGEST_DELAY / FIRST_DELAY);
}

void DriverLink::OnFailed(DriverCall kind, const QString& reason) {
    if (kind == DriverCall::Create) {
        Lose(reason);
    } else {
        Q_EMIT CallFailed(reason);
    }
}

void DriverLink::OnGivenUp(const QString& reason) {
    m_nextAttempt.stop();
    if (m_state != State::Closed || m_isClosing) {
        SetState(State::GivenUp, reason);
        Q_EMIT GivenUp(reason);
    }
}

void DriverLink::OnLinkClosed() {
    if (!m_isOpening) {
        return;
    }
    if (m_state == State::Connecting) {
        m_hasClosedWhileConnecting = true;
    } else if (m_kind == Kind::Device) {
        Lose(u"the driver has closed the link"_s);
    } else if (m_state == State::Connected) {
        SetState(State::Closed, {});
        Q_EMIT Ended();
    }
}

void DriverLink::OnDelivered() {
    m_hasDelivered = m_isOpening;
    TellIfThereAgain();
}

/// What a driver delivers while it opens the device may arrive before the answer that the device is open.
void DriverLink::TellIfThereAgain() {
    if (m_state == State::Connected && m_hasDelivered && std::exchange(m_isLossTold, false)) {
        Q_EMIT ThereAgain();
    }
}

void DriverLink::Close() {
    m_nextAttempt.stop();
    if (std::exchange(m_isClosed, true) || m_thread.IsGivenUp()) {
        return;
    }
    m_state = State::Closed;
    m_isClosing = true;
    m_thread.BeginEnd();
    // The receiver goes on meanwhile: a driver that waits for room in its queue could not be stopped.
    QEventLoop loop;
    connect(&m_thread, &DriverThread::GivenUp, &loop, &QEventLoop::quit);
    connect(&m_thread, &DriverThread::Failed, &loop, [&loop](DriverCall kind) {
        if (kind == DriverCall::SetMode || kind == DriverCall::Create) {
            loop.quit();
        }
    });
    m_thread.Post(
        DriverCall::SetMode, [](KvZANCommon::IDriver& driver) { driver.SetMode(EMODE_STANDBY); },
        [&loop] { loop.quit(); });
    loop.exec();
    m_receiver->PassOnWaiting();
    m_receiver->CutOff();
    m_thread.End();
    m_isClosing = false;
}

} // namespace ZANServer

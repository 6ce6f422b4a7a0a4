#include "zancommon/serialinterface.h"

#include "connections/iinterface.h"
#include "connections/interfacecreator.h"
#include "kwbase/tracesource.h"

#include <QTimer>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The context under which the interfaces of the outputs are opened.
constexpr quint64 CONTEXT = 10000;

// The line numbers of the notices are fixed: readers of the trace look for them.
constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\serialinterface");

} // namespace

SerialInterface::SerialInterface(QString address, unsigned short retryMs, unsigned short second)
    : m_pTimer(new QTimer(this))
    , m_address(std::move(address))
    , m_retryMs(retryMs)
    , m_second(second) {
    connect(m_pTimer, &QTimer::timeout, this, &SerialInterface::SlotOnTimer);
    Open();
}

SerialInterface::~SerialInterface() {
    delete m_pInterface;
    StopRetryTimer();
    delete m_pTimer;
}

bool SerialInterface::Open() {
    if (m_pInterface) {
        return true;
    }
    m_pInterface = CInterfaceCreator::CreateInterface(m_address, this, CONTEXT, false);
    if (!m_pInterface) {
        StartRetryTimer();
    }
    return m_pInterface != nullptr;
}

void SerialInterface::SlotOnTimer() {
    Open();
}

bool SerialInterface::WriteToInterface(const char* data, int length) {
    if (!m_pInterface || !m_pInterface->IsReadyToWrite(data, length)) {
        return false;
    }
    if (!m_pInterface->Write(data, length)) {
        TRACE.Information([] { return u"RS232Output:  SerialInterface::WriteToInterface: FAILED\n"_s; });
        return false;
    }
    m_unsent.push_back(length);
    m_unsentBytes += length;
    CountSent();
    return true;
}

SerialInterface::Counts SerialInterface::GetCounts() {
    CountSent();
    return m_counts;
}

void SerialInterface::Close() {
    if (m_pInterface) {
        m_pInterface->Finish();
        CountRestAsLost();
        delete std::exchange(m_pInterface, nullptr);
    }
    StopRetryTimer();
}

void SerialInterface::CountSent() {
    const qint64 unsent = m_pInterface ? m_pInterface->GetUnsentCount() : 0;
    while (!m_unsent.empty() && m_unsentBytes - m_unsent.front() >= unsent) {
        m_unsentBytes -= m_unsent.front();
        m_unsent.pop_front();
        ++m_counts.sent;
    }
}

void SerialInterface::CountRestAsLost() {
    CountSent();
    m_counts.lost += m_unsent.size();
    m_unsent.clear();
    m_unsentBytes = 0;
}

void SerialInterface::OnOpen() {
    TRACE.Information([] { return u"RS232Output: SerialInterface::OnOpen\n"_s; }, 81);
    StopRetryTimer();
}

void SerialInterface::OnClose() {
    TRACE.Information([] { return u"RS232Output: SerialInterface::OnClose\n"_s; }, 89);
}

void SerialInterface::OnRead() {
    TRACE.Information([] { return u"RS232Output: SerialInterface::OnRead\n"_s; }, 94);
}

void SerialInterface::OnError() {
    TRACE.Information([] { return u"RS232Output: SerialInterface::OnError\n"_s; }, 99);
    CountRestAsLost();
    delete std::exchange(m_pInterface, nullptr);
    StartRetryTimer();
}

void SerialInterface::StartRetryTimer() {
    if (!m_pTimer->isActive()) {
        m_pTimer->start(m_retryMs);
    }
}

void SerialInterface::StopRetryTimer() {
    if (m_pTimer->isActive()) {
        m_pTimer->stop();
    }
}

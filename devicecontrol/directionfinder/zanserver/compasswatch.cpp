#include "zanserver/compasswatch.h"

#include "zanserver/deviceproperties.h"

#include <algorithm>
#include <memory>
#include <utility>

using KvZANCommon::IDriver;

namespace ZANServer {

std::optional<double> ReadCompass(IDriver& driver, unsigned long compass) {
    constexpr unsigned long CIRCLE = 3600; // tenths of a degree
    unsigned long value = CIRCLE;
    return driver.ReadCompass(compass, value) == 0 && value < CIRCLE
               ? std::optional(static_cast<double>(value) / 10.0)
               : std::nullopt;
}

CompassWatch::CompassWatch(DriverErrands& errands, ControlClock now, Milliseconds maxAge)
    : m_errands(errands)
    , m_now(std::move(now))
    , m_maxAge(maxAge)
    , m_interval(std::min(INTERVAL, maxAge / 3)) {
    m_timer.setSingleShot(true);
    m_timer.callOnTimeout([this] { WatchDue(); });
}

void CompassWatch::Start(const std::vector<DeviceReading::Compass>& compasses) {
    Stop();
    const Milliseconds now = Now();
    for (const DeviceReading::Compass& each : compasses) {
        m_compasses.push_back(
            {static_cast<unsigned long>(each.property.handle), CurrentReading<double>(m_maxAge)});
        if (each.value) {
            m_compasses.back().reading.Take({}, {}, *each.value, now);
        }
    }
    m_nextRound = now + m_interval;
    Show();
}

void CompassWatch::Stop() {
    ++m_device;
    m_compasses.clear();
    m_timer.stop();
}

void CompassWatch::WatchDue() {
    if (!m_compasses.empty() && !m_isUnderWay && Now() >= m_nextRound) {
        Ask(0);
    }
    Show();
}

void CompassWatch::Ask(std::size_t number) {
    struct Answer {
        bool hasReturned = false;
        std::optional<double> value;
    };
    const auto answer = std::make_shared<Answer>();
    m_isUnderWay = true;
    m_errands.Call(
        DriverCall::Query,
        [answer, compass = m_compasses[number].handle](IDriver& driver) {
            answer->value = ReadCompass(driver, compass);
            driver.ClearLastError(); // a compass without a reading is no fault of the device
            answer->hasReturned = true;
        },
        [this, answer, number, device = m_device] {
            m_isUnderWay = false;
            if (device != m_device) {
                return;
            }
            std::size_t next = number + 1;
            if (!answer->hasReturned) {
                DeviceProperties::PublishCompass(m_compasses[number].handle, {});
                m_compasses.erase(m_compasses.begin() + static_cast<std::ptrdiff_t>(number));
                next = number;
            } else if (answer->value) {
                m_compasses[number].reading.Take({}, {}, *answer->value, Now());
            }
            if (next < m_compasses.size()) {
                Ask(next);
            } else {
                m_nextRound = Now() + m_interval;
            }
            Show();
        });
}

void CompassWatch::Show() {
    if (m_compasses.empty()) {
        return;
    }
    const Milliseconds now = Now();
    Milliseconds next = m_isUnderWay ? m_interval : std::max(m_nextRound - now, Milliseconds(1));
    for (const auto& [handle, reading] : m_compasses) {
        DeviceProperties::PublishCompass(handle, reading.Get(now));
        if (const auto rest = reading.GetRest(now)) {
            next = std::min(next, *rest + Milliseconds(1));
        }
    }
    m_timer.start(next);
}

std::chrono::milliseconds CompassWatch::Now() const {
    return std::chrono::duration_cast<Milliseconds>(m_now().time_since_epoch());
}

} // namespace ZANServer

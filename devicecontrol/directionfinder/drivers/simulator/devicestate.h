#pragma once

#include "simulator/devicesettings.h"
#include "simulator/faults.h"
#include "simulator/simulatedclock.h"

#include <atomic>
#include <mutex>

namespace Simulator {

/// What the operations of the driver and the thread that measures have in common.
class DeviceState {
public:
    explicit DeviceState(const Scenario& scenario)
        : faults(scenario.faults)
        , m_settings(MakeInitialSettings(scenario)) {}

    Faults faults;
    SimulatedClock clock;
    std::atomic<long> readCount = 0;
    std::atomic<bool> isLinkLost = false;

    [[nodiscard]] double GetSeconds() const { return std::chrono::duration<double>(clock.GetTime()).count(); }

    [[nodiscard]] DeviceSettings GetSettings() const {
        const std::lock_guard lock(m_mutex);
        return m_settings;
    }
    template <class Function>
    void Change(Function function) {
        const std::lock_guard lock(m_mutex);
        function(m_settings);
        ++m_version;
    }
    /// Another number after every change.
    [[nodiscard]] quint64 GetVersion() const { return m_version; }

    [[nodiscard]] KvZANCommon::GPSStruct GetFix() const {
        const std::lock_guard lock(m_mutex);
        return m_fix;
    }
    void SetFix(const KvZANCommon::GPSStruct& fix) {
        const std::lock_guard lock(m_mutex);
        m_fix = fix;
    }

private:
    mutable std::mutex m_mutex;
    DeviceSettings m_settings;
    std::atomic<quint64> m_version = 1;
    KvZANCommon::GPSStruct m_fix;
};

} // namespace Simulator

#pragma once

#include <zancommon/driverdescription.h>
#include <zancommon/ilegacydrivercallback.h>
#include <zancommon/nulllegacydriver.h>

#include <QString>

#include <atomic>
#include <string>
#include <thread>

/// A driver of the older kind whose device, "demo", measures three known bearings in two blocks.
class ExampleDriver final : public KvZANCommon::NullLegacyDriver {
public:
    static constexpr long OK = 0;
    static constexpr long FAILED = -2;

    /// \param callback gets all notifications, mostly on the driver's own thread; outlives the driver
    explicit ExampleDriver(KvZANCommon::ILegacyDriverCallback& callback)
        : m_callback(callback) {}
    ExampleDriver(const ExampleDriver&) = delete;
    ExampleDriver& operator=(const ExampleDriver&) = delete;
    ~ExampleDriver();

    static KvZANCommon::DriverDescription Describe();

    int Initialize(std::string& address, bool simulation) override;
    QString GetLastError() override { return m_lastError; }
    void ClearLastError() override { m_lastError.clear(); }
    /// Standby stops the measurement, every other mode starts it again.
    long SetMode(EMode mode) override;
    /// Hz; used from the next start on.
    long SetFrequency(double frequency) override;
    long GetFrequency(double& frequency) override;
    /// Blocks since the start. From any thread.
    long GetReadCount() override { return m_blockCount; }

private:
    void Stop();
    void Measure(double frequency);
    void Deliver(unsigned long long time, double frequency, std::initializer_list<Bearing> bearings);

    KvZANCommon::ILegacyDriverCallback& m_callback;
    QString m_lastError;
    double m_frequency = 100e6;
    std::atomic<long> m_blockCount = 0;
    std::atomic<bool> m_isStopping = false;
    std::thread m_thread;
};

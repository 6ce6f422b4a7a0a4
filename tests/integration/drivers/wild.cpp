#include "zancommon/drivercomponent.h"
#include "zancommon/idrivercallback.h"
#include "zancommon/nulldriver.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr unsigned TEN_MILLIONS = 10'000'000;

/// A driver that does what no driver should. Its address says what.
class Wild final : public KvZANCommon::NullDriver {
public:
    static KvZANCommon::DriverDescription Describe() {
        return {QStringLiteral("wild"),
                QStringLiteral("does what no driver should"),
                QStringLiteral("DEED"),
                QStringLiteral("hang"),
                {EMODE_SCAN}};
    }

    Wild() = default;
    Wild(const Wild&) = delete;
    Wild& operator=(const Wild&) = delete;
    ~Wild() override {
        if (m_deed == "hangend") {
            Hang();
        }
        if (m_deed == "throwend") {
            Throw();
        }
    }

    void SetCallback(KvZANCommon::IDriverCallback* callback) override { m_callback = callback; }

    int Initialize(std::string& address, bool /*simulation*/) override {
        m_deed = address;
        if (m_deed == "hang") {
            Hang();
        }
        if (m_deed == "goeson" && std::exchange(m_wasOpen, true)) {
            return -1; // never again
        }
        if (m_deed == "throw") {
            Throw();
        }
        if (m_deed == "slow") {
            std::this_thread::sleep_for(std::chrono::seconds(3));
        }
        if (m_deed == "close") { // like a server that accepts a connection, and closes it at once
            m_callback->CloseDataLink();
        }
        return 0;
    }

    long SetMode(EMode mode) override {
        if (mode == EMODE_STANDBY) {
            if (m_deed == "late") {
                std::thread([callback = m_callback] {
                    Deliver(*callback, 5);
                }).detach(); // outlives the driver
            }
            return 0;
        }
        if (m_deed == "refuse") {
            return -2;
        }
        if (m_deed == "slow" || m_deed == "close") {
            return 0;
        }
        if (m_deed == "hangend" || m_deed == "throwend") {
            Deliver(*m_callback, 1);
            return 0;
        }
        if (m_deed == "threads") {
            std::array<std::thread, 4> threads;
            for (std::thread& thread : threads) {
                thread = std::thread([this] {
                    for (int i = 0; i < 1000; ++i) {
                        Deliver(*m_callback, 1);
                    }
                });
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
        } else if (m_deed == "garbage") {
            DeliverGarbage(*m_callback);
        } else {
            if (m_deed == "errors") {
                ReportErrors(*m_callback);
            }
            Deliver(*m_callback, m_deed == "block" ? TEN_MILLIONS : 1);
        }
        m_callback->CloseDataLink();
        if (m_deed == "goeson") {
            Deliver(*m_callback, 100);
            m_callback->fillGPSData(52.5, 13.4, 1000, true, 7, 1);
        }
        return m_deed == "throwlater" ? throw 1 : 0;
    }

private:
    [[noreturn]] static void Hang() {
        for (;;) {
            std::this_thread::sleep_for(std::chrono::hours(1));
        }
    }

    [[noreturn]] static void Throw() { throw std::runtime_error("no power"); }

    /// Bearings whose numbers cannot be, and a good one without a frequency.
    static void DeliverGarbage(KvZANCommon::IDriverCallback& callback) {
        std::vector<Bearing> bearings(4);
        for (Bearing& bearing : bearings) {
            bearing.quality = 50;
        }
        bearings[0].azimuth = 65535;
        bearings[1].quality = 65535;
        bearings[2].elevation = 32767;
        KvZANCommon::StatusStruct status;
        status.frequency = 1e300;
        status.heading = 1e300;
        unsigned long long time = 1000;
        callback.fillScanBuffer(0, time, 0, static_cast<unsigned>(bearings.size()), bearings.data(), status);
    }

    static void ReportErrors(KvZANCommon::IDriverCallback& callback) {
        KvZANCommon::ErrorStruct error;
        for (int i = 0; i < 1000; ++i) {
            error.text = QStringLiteral("no lock of\nthe synthesizer");
            callback.reportError(error);
            error.text = QStringLiteral("overload of sample %1").arg(i);
            callback.reportError(error);
        }
    }

    static void Deliver(KvZANCommon::IDriverCallback& callback, unsigned count) {
        std::vector<Bearing> bearings(count);
        for (Bearing& bearing : bearings) {
            bearing.quality = 50;
        }
        KvZANCommon::StatusStruct status;
        status.frequency = 121.5e6;
        unsigned long long time = 1000;
        callback.fillScanBuffer(0, time, 0, count, bearings.data(), status);
    }

    KvZANCommon::IDriverCallback* m_callback = nullptr;
    std::string m_deed;
    bool m_wasOpen = false;
};

} // namespace

ZAN_DEFINE_DRIVER(Wild)

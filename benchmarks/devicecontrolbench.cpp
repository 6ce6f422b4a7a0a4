#include "zanserver/devicecontrol.h"

#include "allocationcounter.h"
#include "support/devicetree.h"
#include "support/sleepingthread.h"
#include "zancommon/nulldriver.h"

#include <benchmark/benchmark.h>

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <unistd.h>

// From the change of a wish to its hand-over to the driver's thread. The yardstick is what cannot be avoided:
// the adjustment of the frequency and one virtual call of the driver. No wish waits: the clock lets each
// pass. As with an operator's wishes, the driver's thread sleeps, and an event handler of the main thread
// makes them. The loop wakes the driver's thread when it goes on, once for all wishes; that takes what
// `WakeUp` takes.

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

class TunedDriver final : public KvZANCommon::NullDriver {
public:
    long SetFrequency(double frequency) override {
        m_frequency.store(frequency, std::memory_order_relaxed);
        return 0;
    }

    [[nodiscard]] double GetTuned() const { return m_frequency.load(std::memory_order_relaxed); }

private:
    std::atomic<double> m_frequency = 0.0;
};

/// The device, its control, and a clock that lets every wish pass at once.
class Station {
public:
    Station() {
        DeviceTree::SetAntennas({MakeAntenna(u"PX110"_s, u"RCV01"_s, 300e3, 30e6),
                                 MakeAntenna(u"PX106"_s, u"RCV03"_s, 30000001.0, 1300e6)});
        DeviceTree::DeviceValue<ValueString>(StdDeviceDefinition::g_vdDevOptions)->SetValue(u"ZAN-HFR"_s);
        ZANOptions::Instance()->ReadFromValueTree(ZANPath::Device(StdDeviceDefinition::g_vdDevOptions));
        DeviceTree::Connect();
        m_thread.Post(DriverCall::Query, [this](KvZANCommon::IDriver&) { m_driversThread = gettid(); });
        m_control.emplace(m_thread, u"device"_s,
                          DeviceControl::Options{false, [this] { return m_now += std::chrono::seconds(1); }});
        m_control->OnConnected();
        for (int i = 0; i < 1000; ++i) { // far more steps than there are
            Settle();
        }
    }

    void Settle() {
        m_thread.Wait();
        QCoreApplication::processEvents();
    }
    void PostNothing() {
        m_thread.Post(DriverCall::Query, [](KvZANCommon::IDriver&) {});
    }
    /// Waits until the driver's thread sleeps.
    void AwaitSleep() const { ::AwaitSleep(m_driversThread); }
    static ValueNumericDouble& Frequency() {
        return *DeviceTree::ServerValue<ValueNumericDouble>(StdDeviceDefinition::g_vdFrequency);
    }
    [[nodiscard]] double GetTuned() const { return m_driver->GetTuned(); }

private:
    DeviceTree m_tree;
    std::chrono::steady_clock::time_point m_now;
    TunedDriver* m_driver = nullptr;
    pid_t m_driversThread = 0;
    DriverThread m_thread{[this] {
                              auto driver = std::make_unique<TunedDriver>();
                              m_driver = driver.get();
                              return driver;
                          },
                          std::make_shared<DriverReceiver>(u"device"_s)};
    std::optional<DeviceControl> m_control;
};

Station& GetStation() {
    static Station station;
    return station;
}

double NextFrequency() {
    static int step = 0;
    return 100e6 + 25e3 * (++step % 100);
}

/// The driver, behind an interface that hides it from the compiler.
KvZANCommon::IDriver* HiddenDriver() {
    static TunedDriver driver;
    KvZANCommon::IDriver* hidden = &driver;
    benchmark::DoNotOptimize(hidden);
    return hidden;
}

void AdjustAndCall(benchmark::State& state) {
    GetStation();
    ZANCharacteristics& device = ZANInformationCenter::Instance()->GetZANCharacteristics();
    const AllocationCounter allocations(state);
    for (auto _ : state) {
        double frequency = NextFrequency();
        double bandwidth = 0.0;
        device.ToNextValidFrequency(OPMODE_0, frequency, bandwidth);
        benchmark::DoNotOptimize(HiddenDriver()->SetFrequency(frequency));
    }
}

using Clock = std::chrono::steady_clock;

void HandOver(benchmark::State& state) {
    Station& station = GetStation();
    ValueNumericDouble& value = Station::Frequency();
    std::size_t allocations = 0;
    for (auto _ : state) {
        const double frequency = NextFrequency();
        station.AwaitSleep();
        const std::size_t before = GetAllocationCount();
        const auto begin = Clock::now();
        value.SetValue(frequency);
        const auto end = Clock::now();
        allocations += GetAllocationCount() - before;
        while (station.GetTuned() != frequency) {
            station.Settle();
        }
        station.Settle();
        state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
    }
    state.counters["allocations"] =
        static_cast<double>(allocations) / static_cast<double>(state.iterations());
}

/// What the loop does for the driver's thread when it goes on.
void WakeUp(benchmark::State& state) {
    Station& station = GetStation();
    for (auto _ : state) {
        station.AwaitSleep();
        station.PostNothing();
        const auto begin = Clock::now();
        Q_EMIT QAbstractEventDispatcher::instance()->awake();
        const auto end = Clock::now();
        station.Settle();
        state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
    }
}

// Each one waits for its answer, which takes far longer than what is measured.
constexpr int ITERATIONS = 2000;

BENCHMARK(AdjustAndCall);
BENCHMARK(HandOver)->UseManualTime()->Iterations(ITERATIONS);
BENCHMARK(WakeUp)->UseManualTime()->Iterations(ITERATIONS);

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    QTimer::singleShot(0, &application, [] {
        benchmark::RunSpecifiedBenchmarks();
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

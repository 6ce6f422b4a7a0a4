#include "zanserver/devicecontrol.h"

#include "allocationcounter.h"
#include "support/devicetree.h"
#include "zancommon/nulldriver.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>

// From the change of a wish to its hand-over to the driver's thread. The yardstick is what cannot be avoided:
// the adjustment of the frequency and one virtual call of the driver. No wish waits: the
// clock lets each pass.

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
    DriverThread& GetThread() { return m_thread; }
    static ValueNumericDouble& Frequency() {
        return *DeviceTree::ServerValue<ValueNumericDouble>(StdDeviceDefinition::g_vdFrequency);
    }
    [[nodiscard]] double GetTuned() const { return m_driver->GetTuned(); }

private:
    DeviceTree m_tree;
    std::chrono::steady_clock::time_point m_now;
    TunedDriver* m_driver = nullptr;
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
    for (auto _ : state) {
        double frequency = NextFrequency();
        double bandwidth = 0.0;
        device.ToNextValidFrequency(OPMODE_0, frequency, bandwidth);
        benchmark::DoNotOptimize(HiddenDriver()->SetFrequency(frequency));
    }
}

void HandOver(benchmark::State& state) {
    using Clock = std::chrono::steady_clock;
    Station& station = GetStation();
    ValueNumericDouble& value = Station::Frequency();
    std::size_t allocations = 0;
    for (auto _ : state) {
        const double frequency = NextFrequency();
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

// Each one waits for its answer, which takes far longer than what is measured.
constexpr int ITERATIONS = 2000;

BENCHMARK(AdjustAndCall);
BENCHMARK(HandOver)->UseManualTime()->Iterations(ITERATIONS);

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}

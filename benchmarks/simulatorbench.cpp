// What the simulated device computes for a bearing: blocks of 64 channels of a scan, in the shipped scenario
// of a ship, with a callback that takes nothing. Its yardstick is BearingWay/64 (bearingwaybench), the way of
// such a bearing to the output.

#include "simulator/measurement.h"
#include "simulator/scenarioreader.h"
#include "zancommon/nulldrivercallback.h"

#include <benchmark/benchmark.h>

using namespace Simulator;

namespace {

/// Interrupts the measurement after a number of bearings.
class Counter final : public KvZANCommon::NullDriverCallback {
public:
    explicit Counter(SimulatedClock& clock)
        : m_clock(clock) {}

    void fillScanBuffer(long, unsigned long long&, unsigned, unsigned count, Bearing* bearings,
                        KvZANCommon::StatusStruct&) override {
        benchmark::DoNotOptimize(bearings);
        m_rest -= count;
        if (m_rest <= 0) {
            m_clock.Interrupt();
        }
    }
    void Begin(long count) { m_rest = count; }

private:
    SimulatedClock& m_clock;
    long m_rest = 0;
};

/// \param occupied whether something is heard in each channel
void Simulate(benchmark::State& state, bool occupied) {
    constexpr long BEARINGS = 16384;
    constexpr double STEP = 25e3;
    constexpr double START = 118e6;
    const unsigned blockSize = static_cast<unsigned>(state.range());
    Scenario scenario = ScenarioReader().ReadFile({}).value_or(Scenario());
    scenario.device.ranges = {{START, STEP, START + (blockSize - 1) * STEP}};
    if (occupied) {
        Emitter wide = scenario.emitters.front();
        wide.frequency = START + blockSize * STEP / 2.0;
        wide.bandwidth = 2.0 * blockSize * STEP;
        wide.power = 60.0;
        wide.schedule = {};
        scenario.emitters.push_back(wide);
    }
    DeviceState device(scenario);
    Counter counter(device.clock);
    Measurement measurement(scenario, device, counter);
    device.clock.SetPace(SimulatedClock::AS_FAST_AS_POSSIBLE);
    while (state.KeepRunningBatch(BEARINGS)) {
        counter.Begin(BEARINGS);
        device.clock.Resume();
        measurement.Run(EMODE_SCAN);
    }
}

void SimulatorScan(benchmark::State& state) {
    Simulate(state, false);
}
BENCHMARK(SimulatorScan)->Arg(64)->MeasureProcessCPUTime();

void SimulatorScanAllHeard(benchmark::State& state) {
    Simulate(state, true);
}
BENCHMARK(SimulatorScanAllHeard)->Arg(64)->MeasureProcessCPUTime();

} // namespace

BENCHMARK_MAIN();

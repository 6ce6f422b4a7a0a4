#include "zancommon/legacydriveradapter.h"

#include "support/stubdrivers.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>

// The cost of a driver call through the adapter. The yardstick of each operation is the direct virtual call
// of the same operation on the same object: the cost in an application without a legacy driver.

namespace KvZANCommon {
namespace {

constexpr unsigned BLOCK = 64;

/// Copies each block, as an application does.
class CopyingCallback final : public StubCallback {
public:
    void fillScanBuffer(long /*range*/, unsigned long long& /*time*/, unsigned /*firstChannel*/,
                        unsigned count, Bearing* bearings, StatusStruct& status) override {
        std::copy_n(bearings, count, m_bearings.begin());
        m_status = status;
        benchmark::ClobberMemory();
    }

private:
    std::array<Bearing, BLOCK> m_bearings;
    StatusStruct m_status;
};

class Wired {
public:
    Wired() {
        m_adapter.SetLegacyDriver(&m_legacyDriver);
        m_adapter.SetCallback(&m_callback);
    }

    // The compiler must not know the classes behind the interfaces.
    template <class Interface>
    static Interface* Hidden(Interface* object) {
        benchmark::DoNotOptimize(object);
        return object;
    }

    ILegacyDriver* LegacyDriver() { return Hidden<ILegacyDriver>(&m_legacyDriver); }
    IDriverCallback* Callback() { return Hidden<IDriverCallback>(&m_callback); }
    IDriver* AdaptedDriver() { return Hidden<IDriver>(&m_adapter); }
    ILegacyDriverCallback* AdaptedCallback() { return Hidden<ILegacyDriverCallback>(&m_adapter); }

private:
    StubLegacyDriver m_legacyDriver;
    CopyingCallback m_callback;
    LegacyDriverAdapter m_adapter;
};

template <class Callback>
void DeliverBlocks(benchmark::State& state, Callback* callback) {
    std::array<Bearing, BLOCK> bearings;
    StatusStruct status;
    unsigned long long time = 0;
    for (auto _ : state) {
        callback->fillScanBuffer(1, time, 0, BLOCK, bearings.data(), status);
    }
    state.SetItemsProcessed(state.iterations() * BLOCK);
}

void BlockOf64Bearings_Direct(benchmark::State& state) {
    Wired wired;
    DeliverBlocks(state, wired.Callback());
}
BENCHMARK(BlockOf64Bearings_Direct);

void BlockOf64Bearings_Adapter(benchmark::State& state) {
    Wired wired;
    DeliverBlocks(state, wired.AdaptedCallback());
}
BENCHMARK(BlockOf64Bearings_Adapter);

template <class Driver>
void SetFrequencies(benchmark::State& state, Driver* driver) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(driver->SetFrequency(1e8));
    }
}

void EmptyCall_Direct(benchmark::State& state) {
    Wired wired;
    SetFrequencies(state, wired.LegacyDriver());
}
BENCHMARK(EmptyCall_Direct);

void EmptyCall_Adapter(benchmark::State& state) {
    Wired wired;
    SetFrequencies(state, wired.AdaptedDriver());
}
BENCHMARK(EmptyCall_Adapter);

template <class Driver>
void SetAntennaSetups(benchmark::State& state, Driver* driver) {
    AntennaSetupStruct setup;
    setup.subRanges.resize(3);
    for (auto _ : state) {
        benchmark::DoNotOptimize(driver->SetAntennaSetup(setup));
    }
}

void AntennaSetupByValue_Direct(benchmark::State& state) {
    Wired wired;
    SetAntennaSetups(state, wired.LegacyDriver());
}
BENCHMARK(AntennaSetupByValue_Direct);

void AntennaSetupByValue_Adapter(benchmark::State& state) {
    Wired wired;
    SetAntennaSetups(state, wired.AdaptedDriver());
}
BENCHMARK(AntennaSetupByValue_Adapter);

} // namespace
} // namespace KvZANCommon

BENCHMARK_MAIN();

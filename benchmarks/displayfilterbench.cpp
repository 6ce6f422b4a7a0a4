// The sectors that a device filters out. The yardstick is a simple sweep over the same boundaries that only
// counts them.

#include "zancommon/displayfilterrange.h"

#include "valueframework/tree.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>

using namespace Qt::StringLiterals;

namespace {

DeviceFilterRange MakeRange(std::int64_t count) {
    std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same sectors each time
    std::uniform_real_distribution<double> azimuth(0.0, 359.99);
    DeviceFilterRange range{20e6, 3e9, {}};
    for (std::int64_t i = 0; i < count; ++i) {
        const double from = azimuth(random);
        range.acceptedSectors.emplace_back(from, std::min(from + 0.1, 359.99));
    }
    return range;
}

void BareSweep(benchmark::State& state) {
    const DeviceFilterRange range = MakeRange(state.range(0));
    for (auto _ : state) {
        auto sectors = range.acceptedSectors;
        std::vector<double> boundaries{0.0, 359.99};
        for (const auto& [from, to] : sectors) {
            boundaries.push_back(from);
            boundaries.push_back(to);
        }
        std::sort(boundaries.begin(), boundaries.end());
        std::sort(sectors.begin(), sectors.end());
        double reached = 0.0;
        std::size_t next = 0;
        int gaps = 0;
        for (const double boundary : boundaries) {
            for (; next < sectors.size() && sectors[next].first <= boundary; ++next) {
                reached = std::max(reached, sectors[next].second);
            }
            gaps += boundary >= reached ? 1 : 0;
        }
        benchmark::DoNotOptimize(gaps);
    }
}

void FilterRange(benchmark::State& state) {
    const DeviceFilterRange range = MakeRange(state.range(0));
    DisplayFilterRange display(u"Ranges"_s, u"/Bench"_s);
    for (auto _ : state) {
        display.Reset();
        display.AddDeviceFilterRange(range);
        display.Publish();
    }
    Tree::Instance()->Clear();
}

BENCHMARK(BareSweep)->Arg(10)->Arg(1000);
BENCHMARK(FilterRange)->Arg(10)->Arg(1000);

} // namespace

BENCHMARK_MAIN();

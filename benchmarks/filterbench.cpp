// The block filters. The yardstick is memset of the same bytes: the lowest cost of writing the block.

#include "valueframework/tree.h"
#include "zancommon/bearing.h"
#include "zancommon/connectionspeedfilter.h"
#include "zancommon/pitchrollfilter.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// A block in which half of the bearings are rejected, in random order.
std::vector<Bearing> RandomBlock(std::size_t count) {
    std::mt19937 random(20240229);
    std::vector<Bearing> block(count);
    for (Bearing& bearing : block) {
        bearing.azimuth = static_cast<quint16>(random() % 3600);
        bearing.marker = static_cast<qint16>(random());
        bearing.quality = static_cast<quint16>(random() % 2 == 0 ? 0 : 1 + random() % 100);
    }
    return block;
}

/// Runs `filter(count, bearings)` on a block repeatedly. A filter has the same work in every run, so the
/// block is not restored in between.
template <class Filter>
void Run(benchmark::State& state, Filter filter) {
    const auto count = static_cast<unsigned>(state.range(0));
    std::vector<Bearing> block = RandomBlock(count);
    Bearing* bearings = block.data();
    for (auto _ : state) {
        benchmark::DoNotOptimize(bearings);
        filter(count, bearings);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<qint64>(count * sizeof(Bearing)));
}

void Memset(benchmark::State& state) {
    Run(state, [](unsigned count, void* block) { std::memset(block, 0, count * sizeof(Bearing)); });
}

void PitchRoll(benchmark::State& state) {
    const KvZANCommon::PitchRollFilter filter;
    Run(state, [&filter](unsigned count, Bearing* bearings) { filter.Apply(count, bearings); });
}

void ConnectionSpeed(benchmark::State& state) {
    KvZANCommon::ConnectionSpeedFilter filter;
    auto speed = std::make_unique<ValueInt>(1);
    speed->SetName(u"Speed"_s, nullptr);
    Tree::Instance()->InsertValue(u"/"_s, std::move(speed));
    filter.SetConnectionSpeedValuePath(u"/Speed"_s);
    Run(state, [&filter](unsigned count, Bearing* bearings) { filter.Apply(count, bearings); });
    Tree::Instance()->Clear();
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    for (const int count : {1, 64, 1000, 60000}) {
        benchmark->Arg(count);
    }
}

BENCHMARK(Memset)->Apply(Sizes);
BENCHMARK(PitchRoll)->Apply(Sizes);
BENCHMARK(ConnectionSpeed)->Apply(Sizes);

} // namespace

BENCHMARK_MAIN();

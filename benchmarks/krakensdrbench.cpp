// Parses one record of a KrakenSDR. The yardstick is a bare loop of from_chars over the same 377 fields.

#include "krakensdr/recordparser.h"
#include "support/receiverrecords.h"

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstring>

using namespace KrakenSdr;

namespace {

std::string_view GetLine() {
    static const QByteArray line = ReceiverRecord().Line().chopped(1);
    return {line.constData(), static_cast<std::size_t>(line.size())};
}

void KrakenRecord(benchmark::State& state) {
    RecordParser parser;
    Record record;
    while (state.KeepRunning()) {
        if (!parser.Parse(GetLine(), record)) {
            state.SkipWithError("not a record");
        }
        benchmark::DoNotOptimize(record);
    }
}
BENCHMARK(KrakenRecord);

void BareFields(benchmark::State& state) {
    while (state.KeepRunning()) {
        const char* position = GetLine().data();
        const char* const end = position + GetLine().size();
        while (position < end) {
            const void* const comma = std::memchr(position, ',', static_cast<std::size_t>(end - position));
            const char* const fieldEnd = comma ? static_cast<const char*>(comma) : end;
            double value = 0.0;
            std::from_chars(position, fieldEnd, value);
            benchmark::DoNotOptimize(value);
            position = fieldEnd + 2;
        }
    }
}
BENCHMARK(BareFields);

} // namespace

BENCHMARK_MAIN();

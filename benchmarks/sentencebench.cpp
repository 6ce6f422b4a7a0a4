// Builds the whole line of one bearing, head and tail, with DFDataSentence. The yardsticks build the same
// line with snprintf and with chained QString::arg. The goal is half the time of snprintf.

#include "zancommon/dfdatasentence.h"

#include <QByteArray>
#include <QString>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <string_view>

using namespace Qt::StringLiterals;

namespace {

struct Fields {
    DFDataSentence::Head head;
    DFDataSentence::Tail tail;
};

constexpr quint64 FIRST_TIME = 1527695886000;
constexpr std::size_t COUNT = 1024; // varied, so that branches cannot be predicted from the sentence before

const std::array<Fields, COUNT>& Bearings() {
    static const std::array<Fields, COUNT> bearings = [] {
        std::array<Fields, COUNT> all;
        for (std::size_t i = 0; i < COUNT; ++i) {
            const int n = static_cast<int>(i);
            all[i].head = {.azimuth = n * 37 % 3600,
                           .frequency = 118000000.0 + n * 8333.33,
                           .heading = n * 11 % 3600,
                           .quality = n % 101,
                           .level = -n * 13 % 10000,
                           .time = FIRST_TIME + i * 777};
            all[i].tail = {.elevation = n % 900,
                           .pitch = n * 0.017 - 8.0,
                           .roll = 10.0 - n * 0.019,
                           .altitude = n * 10.7,
                           .positionTime = FIRST_TIME + i * 500,
                           .latitude = 48.1 + n * 0.0001237,
                           .longitude = 11.5 - n * 0.0001731};
        }
        return all;
    }();
    return bearings;
}

std::string_view WithSnprintf(const Fields& bearing, std::array<char, 4096>& buffer) {
    const auto second = [](const DFDataSentence::Time& time) {
        return static_cast<int>(*time / 1000 % 86400);
    };
    const DFDataSentence::Head& head = bearing.head;
    const DFDataSentence::Tail& tail = bearing.tail;
    const int time = second(head.time);
    const int position = second(tail.positionTime);
    const int length = std::snprintf(
        buffer.data(), buffer.size(),
        "$PLG,%5.1f,FRQ,%10.0f,CMP,%5.1f,QUA,%5.1f,LEV,%5.1f,TIM,%02d%02d%02d,ELV,%3.1f,PTC,%3.1f,RLL,%3.1f,"
        "ALT,%3.1f,PTM,%02d%02d%02d,LAT,%9.5f,LON,%9.7f\r\n",
        head.azimuth / 10.0, head.frequency, head.heading / 10.0, static_cast<double>(head.quality),
        head.level / 100.0, time / 3600, time / 60 % 60, time % 60, tail.elevation / 10.0, tail.pitch,
        tail.roll, tail.altitude, position / 3600, position / 60 % 60, position % 60, tail.latitude,
        tail.longitude);
    return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string_view WithSentence(const Fields& bearing, DFDataSentence& sentence) {
    sentence.Begin(bearing.head);
    sentence.AddTail(bearing.tail);
    sentence.EndLine();
    return sentence.GetText();
}

void Snprintf(benchmark::State& state) {
    std::array<char, 4096> buffer{};
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(WithSnprintf(Bearings()[i++ % COUNT], buffer));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Snprintf);

void QStringArg(benchmark::State& state) {
    const auto time = [](const DFDataSentence::Time& stamp) {
        const auto second = static_cast<int>(*stamp / 1000 % 86400);
        return u"%1%2%3"_s.arg(second / 3600, 2, 10, QChar(u'0'))
            .arg(second / 60 % 60, 2, 10, QChar(u'0'))
            .arg(second % 60, 2, 10, QChar(u'0'));
    };
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        const auto& [head, tail] = Bearings()[i++ % COUNT];
        const QByteArray line =
            (u"$PLG,%1,FRQ,%2,CMP,%3,QUA,%4,LEV,%5,TIM,%6"_s.arg(head.azimuth / 10.0, 5, 'f', 1)
                 .arg(head.frequency, 10, 'f', 0)
                 .arg(head.heading / 10.0, 5, 'f', 1)
                 .arg(static_cast<double>(head.quality), 5, 'f', 1)
                 .arg(head.level / 100.0, 5, 'f', 1)
                 .arg(time(head.time)) +
             u",ELV,%1,PTC,%2,RLL,%3,ALT,%4,PTM,%5,LAT,%6,LON,%7\r\n"_s.arg(tail.elevation / 10.0, 3, 'f', 1)
                 .arg(tail.pitch, 3, 'f', 1)
                 .arg(tail.roll, 3, 'f', 1)
                 .arg(tail.altitude, 3, 'f', 1)
                 .arg(time(tail.positionTime))
                 .arg(tail.latitude, 9, 'f', 5)
                 .arg(tail.longitude, 9, 'f', 7))
                .toLatin1();
        benchmark::DoNotOptimize(line);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(QStringArg);

void Sentence(benchmark::State& state) {
    DFDataSentence sentence;
    std::array<char, 4096> buffer{};
    std::size_t different = 0; // exact halves, which the C library rounds to the even digit
    for (const Fields& bearing : Bearings()) {
        different += WithSentence(bearing, sentence).size() != WithSnprintf(bearing, buffer).size();
    }
    if (different > 0) {
        state.SkipWithError("the lines differ in more than the last digit of a half");
    }
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(WithSentence(Bearings()[i++ % COUNT], sentence));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Sentence);

} // namespace

BENCHMARK_MAIN();

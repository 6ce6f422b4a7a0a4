// The command log. The yardstick is a rotating file sink of spdlog that is flushed after each line, on the
// same file system: in both cases a line has been passed to the system when the call returns. The limit for
// both is one system call per line.

#include "zancommon/commandprotocol.h"

#include <QDir>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t MAX_BYTES = 20000000;
const std::string LINE = "SetFrequency 145500000 Bandwidth 100000 Antenna PX106 Polarisation Vertical";

/// The directory that both write into; it is made the current directory, which the command log uses.
class LogDirectory {
public:
    LogDirectory() { QDir::setCurrent(m_directory.path()); }
    LogDirectory(const LogDirectory&) = delete;
    LogDirectory& operator=(const LogDirectory&) = delete;
    ~LogDirectory() { QDir::setCurrent(QDir::rootPath()); }

private:
    QTemporaryDir m_directory;
};

void CommandLogLine(benchmark::State& state) {
    const LogDirectory directory;
    CommandProtocol log(u"10.0.0.1"_s, u"Benchmark"_s);
    if (!log.Init()) {
        state.SkipWithError("the log cannot be opened");
    }
    const QString line = QString::fromStdString(LINE);
    for (auto _ : state) {
        benchmark::DoNotOptimize(log.Add(line));
    }
    state.SetItemsProcessed(state.iterations());
}

void SpdlogLine(benchmark::State& state) {
    const LogDirectory directory;
    auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_st>("spdlog.txt", MAX_BYTES, 20);
    spdlog::logger logger("benchmark", sink);
    logger.set_pattern("%H:%M:%S:%e:\t%v");
    logger.flush_on(spdlog::level::trace);
    for (auto _ : state) {
        logger.info(LINE);
    }
    state.SetItemsProcessed(state.iterations());
}

void OneSystemCall(benchmark::State& state) {
    const LogDirectory directory;
    const int file = ::open("plain.txt", O_WRONLY | O_CREAT | O_APPEND, 0600);
    const std::string line = "12:00:00:000:\t" + LINE + '\n';
    for (auto _ : state) {
        benchmark::DoNotOptimize(::write(file, line.data(), line.size()));
    }
    ::close(file);
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(OneSystemCall);
BENCHMARK(SpdlogLine);
BENCHMARK(CommandLogLine);

} // namespace

BENCHMARK_MAIN();

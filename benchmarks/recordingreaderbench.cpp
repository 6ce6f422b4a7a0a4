// Reads a recording of 100000 rows with RecordingReader. The yardstick is a minimal loop that splits the same
// bytes with memchr and converts them with from_chars, without checking or keeping anything.

#include "bearingrow.h"
#include "zancommon/recordingreader.h"
#include "zancommon/recordingwriter.h"

#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstring>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;

namespace {

constexpr quint64 ROW_COUNT = 100000;

/// A recording on disk for the duration of the program.
const QString& RecordingName() {
    static const QTemporaryDir directory;
    static const QString name = [] {
        QString fileName = directory.filePath(u"recording.csv"_s);
        RecordingWriter writer;
        bool isWritten = writer.Open(fileName);
        for (quint64 number = 0; number < ROW_COUNT; ++number) {
            isWritten = isWritten && writer.Write(MakeBearingRow(number));
        }
        return isWritten && writer.Commit() ? fileName : QString();
    }();
    return name;
}

/// The bytes of the recording, read from the file again each time, because the reader does that, too.
QByteArray ReadBytes() {
    QFile file(RecordingName());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void Finish(benchmark::State& state, quint64 rowCount) {
    if (rowCount != ROW_COUNT) {
        state.SkipWithError("rows are missing");
    }
    state.SetItemsProcessed(state.iterations() * static_cast<qint64>(ROW_COUNT));
    state.SetBytesProcessed(state.iterations() * QFile(RecordingName()).size());
}

void BareLoop(benchmark::State& state) {
    quint64 rowCount = 0;
    while (state.KeepRunning()) {
        rowCount = 0;
        const QByteArray bytes = ReadBytes();
        const char* position = bytes.constData();
        const char* const end = position + bytes.size();
        position =
            static_cast<const char*>(std::memchr(position, '\n', static_cast<std::size_t>(end - position))) +
            1;
        while (position < end) {
            const auto* newline = static_cast<const char*>(
                std::memchr(position, '\n', static_cast<std::size_t>(end - position)));
            while (position < newline) {
                const void* comma = std::memchr(position, ',', static_cast<std::size_t>(newline - position));
                const char* const fieldEnd = comma ? static_cast<const char*>(comma) : newline;
                double value = 0.0;
                std::from_chars(position, fieldEnd, value);
                benchmark::DoNotOptimize(value);
                position = fieldEnd + 1;
            }
            position = newline + 1;
            ++rowCount;
        }
    }
    Finish(state, rowCount);
}
BENCHMARK(BareLoop)->Unit(benchmark::kMillisecond);

void Reader(benchmark::State& state) {
    RecordingReader reader;
    while (state.KeepRunning()) {
        reader.Open(RecordingName());
        while (const std::optional<RecordedBearing> bearing = reader.Next()) {
            benchmark::DoNotOptimize(*bearing);
        }
    }
    Finish(state, reader.GetRowCount());
}
BENCHMARK(Reader)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();

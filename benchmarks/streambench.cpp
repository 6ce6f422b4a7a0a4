// Reads 100,000 bearings as the driver of streams does: lines from a file, parsed, put into blocks and
// delivered to a callback that does nothing. Rows of CSV beside the reader of recordings, which does not
// deliver; JSON objects beside Qt's parser, which is given the same lines one by one.

#include "bearingrow.h"
#include "stream/bearingreader.h"
#include "zancommon/nulldrivercallback.h"
#include "zancommon/recordingreader.h"
#include "zancommon/recordingwriter.h"
#include "zancommon/rowblock.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace KvZANCommon;

namespace {

constexpr quint64 ROW_COUNT = 100000;

/// The same bearings as a recording and as objects, on disk for the duration of the program.
struct Files {
    Files() {
        RecordingWriter writer;
        bool isWritten = directory.isValid() && writer.Open(csv);
        for (quint64 number = 0; number < ROW_COUNT; ++number) {
            isWritten = isWritten && writer.Write(MakeBearingRow(number));
        }
        QFile objects(json);
        RecordingReader reader; // of what the rows have been rounded to
        isWritten = isWritten && writer.Commit() && objects.open(QFile::WriteOnly) && reader.Open(csv);
        while (const std::optional<RecordedBearing> bearing = reader.Next()) {
            isWritten = isWritten && objects.write(ToObject(*bearing)) > 0;
        }
        if (!isWritten) {
            csv.clear();
        }
    }

    /// As other programs write it: a name and a number for each column that was measured.
    static QByteArray ToObject(const RecordedBearing& bearing) {
        QByteArray line = "{";
        for (const RecordingColumn& column : RECORDING_COLUMNS) {
            const std::optional<double> value =
                column.IsTime() ? std::optional(static_cast<double>(bearing.timeMs))
                                : (column.required ? bearing.*column.required : bearing.*column.optional);
            if (value) {
                line += '"' + QByteArray(column.name.data(), static_cast<qsizetype>(column.name.size())) +
                        "\": " + QByteArray::number(*value, 'f', std::max(column.decimals, 0)) + ", ";
            }
        }
        line.chop(2);
        return line + "}\n";
    }

    QTemporaryDir directory;
    QString csv = directory.filePath(u"bearings.csv"_s);
    QString json = directory.filePath(u"bearings.json"_s);
};

const Files& GetFiles() {
    static const Files files;
    return files;
}

void Finish(benchmark::State& state, quint64 count) {
    if (count != ROW_COUNT) {
        state.SkipWithError("rows are missing");
    }
    state.SetItemsProcessed(state.iterations() * static_cast<qint64>(ROW_COUNT));
}

class Callback final : public NullDriverCallback {};

/// The way of `StreamDriver` from the line to the callback.
void ReadStream(benchmark::State& state, const QString& name) {
    quint64 count = 0;
    Callback callback;
    LineReader lines;
    Stream::BearingReader reader(lines, [](const QString&) {});
    RowBlock block;
    while (state.KeepRunning()) {
        count = 0;
        lines.OpenFile(name);
        while (const RecordedBearing* row = reader.Next()) {
            ++count;
            if (!block.Add(*row)) {
                block.Deliver(callback);
                block.Add(*row);
            }
        }
        block.Deliver(callback);
    }
    Finish(state, count);
}

void StreamCsv(benchmark::State& state) {
    ReadStream(state, GetFiles().csv);
}
BENCHMARK(StreamCsv)->Unit(benchmark::kMillisecond);

void Recording(benchmark::State& state) {
    RecordingReader reader;
    while (state.KeepRunning()) {
        reader.Open(GetFiles().csv);
        while (const std::optional<RecordedBearing> bearing = reader.Next()) {
            benchmark::DoNotOptimize(*bearing);
        }
    }
    Finish(state, reader.GetRowCount());
}
BENCHMARK(Recording)->Unit(benchmark::kMillisecond);

void StreamJson(benchmark::State& state) {
    ReadStream(state, GetFiles().json);
}
BENCHMARK(StreamJson)->Unit(benchmark::kMillisecond);

void JsonDocument(benchmark::State& state) {
    quint64 count = 0;
    LineReader lines;
    while (state.KeepRunning()) {
        count = 0;
        lines.OpenFile(GetFiles().json);
        std::string_view line;
        while (lines.Next(line) == LineReader::Result::Complete) {
            const QJsonDocument document = QJsonDocument::fromJson(
                QByteArray::fromRawData(line.data(), static_cast<qsizetype>(line.size())));
            benchmark::DoNotOptimize(document.isNull());
            ++count;
        }
    }
    Finish(state, count);
}
BENCHMARK(JsonDocument)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();

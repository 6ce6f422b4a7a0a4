#include "fuzz.h"
#include "stream/bearingreader.h"

#include <QBuffer>

using namespace KvZANCommon;

/// Lines of a live source: any program may send them. What is read can be recorded.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    QBuffer source;
    source.setData(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    source.open(QBuffer::ReadOnly);
    LineReader lines;
    lines.Open(source);
    quint64 told = 0;
    Stream::BearingReader reader(
        lines, [&told](const QString&) { ++told; }, [] { return quint64{1}; });
    while (const RecordedBearing* const bearing = reader.Next()) {
        for (const RecordingColumn& column : RECORDING_COLUMNS) {
            const std::optional<double> value = column.IsTime()   ? static_cast<double>(bearing->timeMs)
                                                : column.required ? bearing->*column.required
                                                                  : bearing->*column.optional;
            Require(!value || column.Holds(*value));
        }
    }
    Require((told > 0) == (reader.GetCounts().GetTotal() > 0));
    return 0;
}

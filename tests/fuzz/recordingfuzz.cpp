#include "fuzz.h"
#include "zancommon/recordingreader.h"

#include <QBuffer>

#include <cmath>

using namespace KvZANCommon;

/// Bearing recordings: any file may be given to the station.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    QByteArray content(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QBuffer file(&content);
    file.open(QIODevice::ReadOnly);
    RecordingReader reader;
    if (reader.Open(file)) {
        while (const std::optional<RecordedBearing> bearing = reader.Next()) {
            Require(std::isfinite(bearing->frequency) && bearing->frequency > 0.0);
            Require(bearing->azimuth >= 0.0 && bearing->azimuth < 360.0);
        }
    }
    return 0;
}

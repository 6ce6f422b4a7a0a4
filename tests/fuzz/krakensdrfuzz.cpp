#include "fuzz.h"
#include "krakensdr/recordreader.h"

#include <cmath>

using namespace KrakenSdr;

/// What a receiver serves: any server may be at its address. Read twice, as it is asked again and again.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    RecordReader reader([](const QString&) {});
    for (int round = 0; round < 2; ++round) {
        reader.Read(body, [](const Record& record) {
            Require(record.bearing >= 0.0 && record.bearing < 360.0);
            Require(std::isfinite(record.frequency) && record.frequency > 0.0);
            Require(std::isfinite(record.confidence) && record.confidence >= 0.0);
            Require(!record.heading || (*record.heading >= 0.0 && *record.heading < 360.0));
            Require(record.latitude.has_value() == record.longitude.has_value());
        });
    }
    return 0;
}

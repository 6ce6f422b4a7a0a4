#pragma once

#include "zancommon/driverrecords.h"

#include <cstddef>
#include <vector>

/// The bearings of one run of the benchmarks.
inline constexpr std::size_t BEARINGS = 16384;
/// The channels of the scan that they belong to.
inline constexpr std::size_t CHANNELS = 512;

/// What a driver does in its thread: delivers all bearings in blocks of this size.
template <class Callback>
void DeliverBearings(Callback& callback, std::size_t blockSize) {
    std::vector<Bearing> block(blockSize);
    KvZANCommon::StatusStruct status;
    status.frequency = 127.5e6;
    status.heading = 358.6;
    status.pitch = 1.1;
    status.roll = 1.9;
    status.latitude = 55.0;
    status.longitude = 5.0;
    status.altitude = 15.0;
    for (std::size_t sent = 0; sent < BEARINGS; sent += blockSize) {
        unsigned long long time = 1767268800000 + sent * 10;
        for (std::size_t i = 0; i < blockSize; ++i) {
            const std::size_t n =
                sent + i; // varied, so that branches cannot be predicted from the bearing before
            block[i].azimuth = static_cast<quint16>(n * 37 % 3600);
            block[i].elevation = static_cast<qint16>(n * 7 % 500);
            block[i].level = static_cast<qint16>(-static_cast<int>(n * 13 % 10000));
            block[i].quality = static_cast<quint16>(1 + n % 100);
        }
        callback.fillScanBuffer(0, time, static_cast<unsigned>(sent % CHANNELS),
                                static_cast<unsigned>(blockSize), block.data(), status);
    }
}

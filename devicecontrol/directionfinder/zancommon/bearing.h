#pragma once

#include <QtGlobal>

#include <limits>
#include <type_traits>

/// One bearing of a scan or TDMA block.
///
/// Blocks of bearings cross the border between driver and application as plain arrays: the order and the
/// width of the members are part of the driver interface.
struct Bearing {
    /// Elevation or level of a bearing without such a measurement.
    static constexpr qint16 NOT_MEASURED = std::numeric_limits<qint16>::min();

    quint16 channel = 0; ///< number of the channel, as the device counts; not used by the library
    quint16 azimuth = 0; ///< tenths of a degree, 0 to 3599, clockwise: see `StatusStruct::heading`
    qint16 elevation = NOT_MEASURED; ///< tenths of a degree
    qint16 level = NOT_MEASURED;     ///< hundredths of a dB
    qint16 marker = 0;               ///< 0: usable, -4000: unusable
    quint16 azimuthSpread = 0;       ///< tenths of a degree
    quint16 averageCount = 0;        ///< number of averaged measurements
    quint16 quality = 0;             ///< 0 to 100, 0: rejected

    bool operator==(const Bearing&) const = default;
};

static_assert(sizeof(Bearing) == 16);
static_assert(std::is_trivially_copyable_v<Bearing> && std::is_standard_layout_v<Bearing>);

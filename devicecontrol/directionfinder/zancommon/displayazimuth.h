#pragma once

/// Azimuths as they are displayed, in tenths of a degree, clockwise from north.
class DisplayAzimuth {
public:
    /// See `ZANCharacteristics::AdjustAzimuthToDisplayMode`.
    static bool Adjust(unsigned short& azimuth, int displayMode);

private:
    [[nodiscard]] static int ValidateAzimuthRange(int azimuth);
};

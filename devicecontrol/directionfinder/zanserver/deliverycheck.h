#pragma once

#include "zanserver/driverreceiver.h"

#include <QStringList>

#include <array>
#include <cstddef>
#include <optional>

namespace ZANServer {

/// Looks for numbers in the blocks of a driver that cannot be, so that they do not become results that look
/// right.
class DeliveryCheck {
public:
    /// Marks bearings as unusable whose azimuth, elevation or quality cannot be. A frequency that cannot be
    /// is not known from now on (NaN), and a heading, pitch or roll that cannot be is not measured.
    /// \return a text for each kind of fault that this is the first of
    QStringList Check(BearingBlock& block);

private:
    enum class Fault : std::size_t { Azimuth, Elevation, Quality, Frequency, Heading, Pitch, Roll, COUNT };

    void CheckBearing(Bearing& bearing);
    void CheckFrequency(double& frequency);
    void CheckAngle(std::optional<double>& angle, double limit, Fault fault, const QString& name);
    void Tell(Fault fault, const QString& what, double number, const QString& consequence);

    std::array<bool, static_cast<std::size_t>(Fault::COUNT)> m_isTold{};
    QStringList m_texts; // that `Check` returns
};

} // namespace ZANServer

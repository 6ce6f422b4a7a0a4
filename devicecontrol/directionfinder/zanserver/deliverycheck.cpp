#include "zanserver/deliverycheck.h"

#include <cmath>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace ZANServer {

namespace {

constexpr double TENTHS = 10.0;

} // namespace

QStringList DeliveryCheck::Check(BearingBlock& block) {
    for (Bearing& bearing : block.bearings) {
        CheckBearing(bearing);
    }
    CheckFrequency(block.status.frequency);
    constexpr double ANY = std::numeric_limits<double>::max();
    constexpr double TWO_CIRCLES = 720.0;
    CheckAngle(block.status.heading, TWO_CIRCLES, Fault::Heading, u"a heading"_s);
    CheckAngle(block.status.pitch, ANY, Fault::Pitch, u"a pitch"_s);
    CheckAngle(block.status.roll, ANY, Fault::Roll, u"a roll"_s);
    return std::exchange(m_texts, {});
}

void DeliveryCheck::CheckBearing(Bearing& bearing) {
    constexpr quint16 HIGHEST_AZIMUTH = 3600; // means 0
    constexpr qint16 HIGHEST_ELEVATION = 900;
    constexpr quint16 HIGHEST_QUALITY = 100;
    constexpr qint16 UNUSABLE = -4000;
    const bool isAzimuth = bearing.azimuth <= HIGHEST_AZIMUTH;
    const bool isElevation =
        bearing.elevation == Bearing::NOT_MEASURED ||
        (bearing.elevation >= -HIGHEST_ELEVATION && bearing.elevation <= HIGHEST_ELEVATION);
    const bool isQuality = bearing.quality <= HIGHEST_QUALITY;
    if (isAzimuth && isElevation && isQuality) {
        return;
    }
    bearing.marker = UNUSABLE;
    const QString consequence = u"such bearings are marked as unusable"_s;
    if (!isAzimuth) {
        Tell(Fault::Azimuth, u"an azimuth"_s, bearing.azimuth / TENTHS, consequence);
    }
    if (!isElevation) {
        Tell(Fault::Elevation, u"an elevation"_s, bearing.elevation / TENTHS, consequence);
    }
    if (!isQuality) {
        Tell(Fault::Quality, u"a quality"_s, bearing.quality, consequence);
    }
}

/// 0 is not told: drivers deliver it that do not know the frequency.
void DeliveryCheck::CheckFrequency(double& frequency) {
    constexpr double RADIO_LIMIT = 3e12; // Hz, the upper end of radio waves
    if (frequency > 0.0 && frequency <= RADIO_LIMIT) {
        return;
    }
    if (frequency != 0.0 && !std::isnan(frequency)) {
        Tell(Fault::Frequency, u"a frequency"_s, frequency, u"such a frequency counts as not known"_s);
    }
    frequency = std::numeric_limits<double>::quiet_NaN();
}

void DeliveryCheck::CheckAngle(std::optional<double>& angle, double limit, Fault fault, const QString& name) {
    if (angle && !(std::abs(*angle) <= limit)) {
        Tell(fault, name, *angle, u"such an angle counts as not measured"_s);
        angle.reset();
    }
}

void DeliveryCheck::Tell(Fault fault, const QString& what, double number, const QString& consequence) {
    if (!std::exchange(m_isTold[static_cast<std::size_t>(fault)], true)) {
        m_texts.append(
            u"the driver has delivered %1 of %2: %3"_s.arg(what, QString::number(number), consequence));
    }
}

} // namespace ZANServer

#include "simulator/bearingmeter.h"

#include "simulator/accuracy.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Simulator {

namespace {

constexpr double TO_RADIANS = std::numbers::pi / 180.0;
constexpr double LEVEL_DEVIATION = 0.5;      // dB, of one measurement
constexpr double QUALITY_DEVIATION = 2.0;    // of 100
constexpr double WORST_FOR_ELEVATION = 10.0; // degrees of deviation

/// Tenths of a degree, 0 to 3599.
int ToTenths(double degrees) {
    constexpr int CIRCLE = 3600;
    const auto tenths = static_cast<int>(std::lround(std::remainder(degrees, 360.0) * 10.0));
    return tenths < 0 ? tenths + CIRCLE : tenths % CIRCLE;
}

/// Hundredths of a dB. The lowest 16-bit number says that there is no level.
qint16 ToLevel(double level) {
    return static_cast<qint16>(std::clamp(std::lround(level * 100.0), -32767L, 32767L));
}

double ToDecibel(double power) {
    return 10.0 * std::log10(power);
}

/// \param azimuth degrees from true north
bool Passes(const KvZANCommon::FilterSettingsStruct& filter, double azimuth, const Bearing& bearing) {
    const int north = ToTenths(azimuth) * 10; // hundredths of a degree
    const bool isInSector = filter.azimuthFrom <= filter.azimuthTo
                                ? north >= filter.azimuthFrom && north <= filter.azimuthTo
                                : north >= filter.azimuthFrom || north <= filter.azimuthTo;
    const int elevation = bearing.elevation * 10;
    const bool isHighEnough = filter.elevationFrom == 0 || elevation >= filter.elevationFrom;
    const bool isLowEnough = bearing.elevation == Bearing::NOT_MEASURED || elevation <= filter.elevationTo;
    const bool isSharp =
        filter.azimuthSpreadMax == 0 || bearing.azimuthSpread * 10 <= filter.azimuthSpreadMax;
    return isInSector && isHighEnough && isLowEnough && isSharp && bearing.quality >= filter.qualityMin;
}

} // namespace

double BearingMeter::GetPower(const Reception::Signal& signal, double frequency, double resolution) {
    const double low = std::max(signal.low, frequency - resolution / 2.0);
    const double high = std::min(signal.high, frequency + resolution / 2.0);
    return high <= low ? 0.0 : signal.power * ((high - low) / (signal.high - signal.low));
}

void BearingMeter::Measure(std::span<const Reception::Signal> signals, double firstFrequency, double step,
                           const Setup& setup, std::span<Bearing> bearings) {
    m_cells.assign(bearings.size(), {});
    for (const Reception::Signal& signal : signals) {
        Add(signal, firstFrequency, step, setup.resolution);
    }
    const double noiseLevel = ToDecibel(setup.noise);
    for (std::size_t i = 0; i < bearings.size(); ++i) {
        bearings[i] = m_cells[i].power > setup.noise ? MakeBearing(m_cells[i], setup) : MakeNoise(noiseLevel);
    }
}

std::vector<Bearing> BearingMeter::Resolve(std::span<const Reception::Signal> signals, double frequency,
                                           const Setup& setup, std::size_t most) {
    std::vector<Cell> cells;
    for (const Reception::Signal& signal : signals) {
        m_cells.assign(1, {});
        Add(signal, frequency, setup.resolution, setup.resolution);
        if (m_cells.front().power > setup.noise) {
            cells.push_back(m_cells.front());
        }
    }
    std::ranges::stable_sort(cells, std::greater(), &Cell::power);
    cells.resize(std::min(cells.size(), most));
    std::vector<Bearing> bearings;
    bearings.reserve(cells.size());
    for (const Cell& cell : cells) {
        bearings.push_back(MakeBearing(cell, setup));
    }
    return bearings;
}

void BearingMeter::Add(const Reception::Signal& signal, double firstFrequency, double step,
                       double resolution) {
    const double east = std::sin(signal.azimuth * TO_RADIANS);
    const double north = std::cos(signal.azimuth * TO_RADIANS);
    const auto last = static_cast<double>(m_cells.size()) - 1.0;
    const double from = std::ceil((signal.low - resolution / 2.0 - firstFrequency) / step);
    const double to = std::floor((signal.high + resolution / 2.0 - firstFrequency) / step);
    for (double i = std::max(from, 0.0); i <= std::min(to, last); ++i) {
        const double power = GetPower(signal, firstFrequency + i * step, resolution);
        Cell& cell = m_cells[static_cast<std::size_t>(i)];
        cell.power += power;
        cell.east += power * east;
        cell.north += power * north;
        if (power > cell.strongest) {
            cell.strongest = power;
            cell.elevation = signal.elevation;
        }
    }
}

// The random numbers are drawn one a statement: within an expression each compiler has an order of its own.

/// Where nothing is heard, there is a level, and an azimuth that means nothing.
Bearing BearingMeter::MakeNoise(double noiseLevel) {
    Bearing bearing;
    bearing.azimuth = static_cast<quint16>(3600.0 * m_random.Uniform());
    bearing.level = ToLevel(noiseLevel + LEVEL_DEVIATION * m_random.Normal());
    return bearing;
}

Bearing BearingMeter::MakeBearing(const Cell& cell, const Setup& setup) {
    Bearing bearing;
    const double levelError = LEVEL_DEVIATION / std::sqrt(setup.averageCount) * m_random.Normal();
    const double level = ToDecibel(cell.power + setup.noise);
    bearing.level = ToLevel(level + levelError);
    bearing.averageCount = static_cast<quint16>(std::min(setup.averageCount, 65535.0));

    double deviation = Accuracy::GetDeviation(setup.method, cell.strongest / setup.noise, setup.averageCount);
    // The others in the channel disturb as noise does, and no average takes them away.
    if (const double others = cell.power - cell.strongest; others > 0.0) {
        deviation = std::hypot(deviation, Accuracy::GetDeviation(setup.method, cell.strongest / others, 1.0));
    }
    // Near the zenith a small error in direction is a large one in azimuth.
    const double azimuthDeviation = deviation / std::max(std::cos(cell.elevation * TO_RADIANS), 0.01);
    const double azimuth =
        std::atan2(cell.east, cell.north) / TO_RADIANS + azimuthDeviation * m_random.Normal();
    bearing.azimuth = static_cast<quint16>(ToTenths(azimuth + setup.azimuthOffset));
    bearing.azimuthSpread = static_cast<quint16>(std::min(std::lround(azimuthDeviation * 10.0), 1800L));
    if (setup.method != METHOD_WAT && deviation <= WORST_FOR_ELEVATION) {
        // A flat array sees little of a height that is near the horizon, and nothing below it.
        const double error =
            deviation / std::max(std::sin(cell.elevation * TO_RADIANS), 0.3) * m_random.Normal();
        bearing.elevation =
            static_cast<qint16>(std::lround(std::clamp(cell.elevation + error, 0.0, 90.0) * 10.0));
    }
    const double quality = Accuracy::GetQuality(deviation) + QUALITY_DEVIATION * m_random.Normal();
    bearing.quality = static_cast<quint16>(std::lround(std::clamp(quality, 1.0, 100.0)));
    if (level < setup.lowestLevel || !Passes(setup.filter, azimuth, bearing)) {
        bearing.quality = 0;
    }
    return bearing;
}

} // namespace Simulator

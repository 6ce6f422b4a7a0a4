#include "zancommon/displayfilterrange.h"

#include "kwbase/tracesource.h"
#include "valueframework/valueaccess.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using ZANPlatform::GetOrCreateValue;

namespace {

constexpr TraceSource TRACE(u"devicecontrol\\directionfinder\\zancommon\\displayfilterrange");

constexpr double NORTH = 0.0;
// The end of the circle. Azimuths have two decimals: this is the last one before north.
constexpr double CIRCLE_END = 359.99;

using Sector = std::pair<double, double>;

/// Splits the sectors that go through north in two.
void SplitAtNorth(std::vector<Sector>& sectors) {
    const std::size_t count = sectors.size(); // the second halves are appended and need not be split
    for (std::size_t i = 0; i < count; ++i) {
        if (sectors[i].first > sectors[i].second) {
            sectors.emplace_back(NORTH, sectors[i].second);
            sectors[i].second = CIRCLE_END;
        }
    }
}

/// Where sectors of the circle begin and end, ascending, each azimuth once.
std::vector<double> GetBoundaries(const std::vector<Sector>& sectors) {
    std::vector<double> boundaries{NORTH, CIRCLE_END};
    for (const auto& [from, to] : sectors) {
        boundaries.push_back(from);
        boundaries.push_back(to);
    }
    // Azimuths outside the circle are not boundaries.
    std::erase_if(boundaries, [](double azimuth) { return azimuth < NORTH || azimuth > CIRCLE_END; });
    std::ranges::sort(boundaries);
    boundaries.erase(std::unique(boundaries.begin(), boundaries.end()), boundaries.end());
    return boundaries;
}

} // namespace

DisplayFilterRange::DisplayFilterRange(const QString& name, const QString& basePath)
    : m_pFilterRangesForDisplay(
          GetOrCreateValue<ValueQuadFloatList>(Tree::PathBelow(basePath, u'/' + name))) {
    if (!m_pFilterRangesForDisplay) {
        TRACE.Assertion(L"m_pFilterRangesForDisplay");
    }
}

DisplayFilterRange::~DisplayFilterRange() = default;

void DisplayFilterRange::Reset() {
    if (!m_pFilterRangesForDisplay) {
        return;
    }
    if (m_pFilterRangesForDisplay->IsTransactionActive()) {
        TRACE.Information(
            [] { return u"DisplayFilterRange::Reset(): Stopping already running transaction."_s; });
        Publish();
    }
    if (m_pFilterRangesForDisplay) { // an observer may have removed it
        m_pFilterRangesForDisplay->StartTransaction(nullptr);
        m_pFilterRangesForDisplay->Clear(nullptr);
    }
}

void DisplayFilterRange::AddDeviceFilterRange(DeviceFilterRange range) {
    if (!m_pFilterRangesForDisplay) {
        return;
    }
    std::vector<Sector>& sectors = range.acceptedSectors;
    std::erase_if(sectors,
                  [](const Sector& sector) { return std::isnan(sector.first) || std::isnan(sector.second); });
    SplitAtNorth(sectors);
    const std::vector<double> boundaries = GetBoundaries(sectors);
    std::ranges::sort(sectors);
    auto next = sectors.begin();
    double acceptedTo = NORTH; // the highest end of the sectors that begin at or before the boundary
    for (std::size_t j = 0; m_pFilterRangesForDisplay && j + 1 < boundaries.size(); ++j) {
        for (; next != sectors.end() && next->first <= boundaries[j]; ++next) {
            acceptedTo = std::max(acceptedTo, next->second);
        }
        if (boundaries[j] >= acceptedTo) {
            m_pFilterRangesForDisplay->PushBack(
                {range.lowerFrequency, range.upperFrequency, boundaries[j], boundaries[j + 1]}, nullptr);
        }
    }
}

void DisplayFilterRange::Publish() {
    if (!m_pFilterRangesForDisplay) {
        return;
    }
    if (!m_pFilterRangesForDisplay->EndTransaction(TChangeCode::Changed, nullptr)) {
        TRACE.Information([] { return u"DisplayFilterRange::Publish(): No active transaction."_s; });
    }
}

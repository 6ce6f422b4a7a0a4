#include "zancommon/connectionspeedfilter.h"

#include "zancommon/bearing.h"

namespace KvZANCommon {

namespace {

constexpr qint16 UNUSABLE = -4000;

/// Sets the marker where the quality is 0. Qualities of 0 come in no order that a branch prediction could
/// learn, and compilers turn a selection back into a branch: so it is done by arithmetic, at eight times the
/// rate.
void MarkIfRejected(Bearing& bearing) {
    // 0 where the quality is 0, else 0xFFFF.
    const auto kept = static_cast<quint16>((0U - bearing.quality) >> 16U);
    const auto difference = static_cast<quint16>(bearing.marker - UNUSABLE);
    bearing.marker = static_cast<qint16>((difference & kept) + UNUSABLE);
}

} // namespace

void ConnectionSpeedFilter::SetConnectionSpeedValuePath(const QString& path) {
    m_pConnectionSpeed.Find(path);
}

void ConnectionSpeedFilter::Apply(unsigned count, Bearing* bearings) const {
    if (!m_pConnectionSpeed || m_pConnectionSpeed->GetValue() < 1) {
        return;
    }
    // Without unrolling the loop's own instructions cost a fourth of the rate.
#pragma GCC unroll 8
    for (unsigned i = 0; i < count; ++i) {
        MarkIfRejected(bearings[i]);
    }
}

} // namespace KvZANCommon

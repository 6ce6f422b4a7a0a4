#pragma once

#include "zanserver_export.h"

#include "zancommon/freqrangedefinition.h"

#include <QString>

#include <optional>
#include <vector>

/// The frequency ranges of a scan as texts: each is a JSON object in one element of the list
/// "/ZANServer/Par/Scan/ScanRanges", so that the list is shown and set as a whole.
///
///     {"start": 118e6, "stop": 137e6, "step": 25e3}
///
/// Frequencies and bandwidths are in Hz, angles in degrees, times in seconds, levels in dB. Everything but
/// start, stop and step may be missing; docs/valuetree.md lists the members.
namespace ZANServer::ScanRanges {

/// The largest number of ranges, and the largest size of the text of one, in UTF-16 code units.
constexpr int MOST_RANGES = 200;
constexpr qsizetype LONGEST_TEXT = 4000;

/// Without index and channels.
/// \param fault why there is none, as a text for the operator
ZANSERVER_EXPORT std::optional<KvZANCommon::FreqRangeDefinition> Parse(const QString& text, QString& fault);
/// Members that have their default are left out.
ZANSERVER_EXPORT QString Format(const KvZANCommon::FreqRangeDefinition& range);

/// The number of channels of a range whose limits and step are valid.
ZANSERVER_EXPORT double CountChannels(const KvZANCommon::FreqRangeDefinition& range);
/// Numbers the ranges from 0, and their channels from 0 on over all of them. The channels must be countable.
ZANSERVER_EXPORT void Number(std::vector<KvZANCommon::FreqRangeDefinition>& ranges);

/// Hz, of a channel as the numbered ranges count; NaN when it is not in the range.
/// \param index of the range, as the driver tells it
ZANSERVER_EXPORT double GetChannelFrequency(const std::vector<KvZANCommon::FreqRangeDefinition>& ranges,
                                            long index, unsigned channel);

/// Whether two ranges are the same in all that a driver is given.
ZANSERVER_EXPORT bool AreEqual(const KvZANCommon::FreqRangeDefinition& first,
                               const KvZANCommon::FreqRangeDefinition& second);

} // namespace ZANServer::ScanRanges

#include "zancommon/zancharacteristics.h"

#include <algorithm>

namespace {

constexpr bool IsClosed(std::span<const EZANConverter> group) {
    return std::ranges::find(group, CONVERTER_NONE) == std::prev(group.end());
}

constexpr bool AreDisjoint(std::span<const EZANConverter> first, std::span<const EZANConverter> second) {
    return std::ranges::none_of(first, [second](EZANConverter converter) {
        return ZANCharacteristics::IsInGroup(second, converter);
    });
}

} // namespace

static_assert(IsClosed(ZANCharacteristics::s_aHF_CONVERTERS));
static_assert(IsClosed(ZANCharacteristics::s_aVUHF_CONVERTERS));
static_assert(AreDisjoint(ZANCharacteristics::s_aHF_CONVERTERS, ZANCharacteristics::s_aVUHF_CONVERTERS));

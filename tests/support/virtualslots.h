#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <numeric>
#include <vector>

/// Place of a virtual operation in its virtual table. Under the Itanium C++ ABI a pointer to a virtual member
/// function holds the offset of its slot and a mark that it is virtual: 1 added to the offset, or to the
/// second word on ARM.
template <class Member>
std::ptrdiff_t VirtualSlot(Member member) {
    std::array<std::ptrdiff_t, 2> words{};
    static_assert(sizeof member == sizeof words);
    std::memcpy(words.data(), &member, sizeof member);
    EXPECT_EQ((words[0] | words[1]) & 1, 1) << "is not virtual";
    return words[0] / static_cast<std::ptrdiff_t>(sizeof(void*));
}

/// Expects that the operations follow one another from a slot on.
template <class... Members>
void ExpectVirtualSlotsFrom(std::ptrdiff_t first, Members... members) {
    std::vector<std::ptrdiff_t> expected(sizeof...(Members));
    std::iota(expected.begin(), expected.end(), first);
    EXPECT_EQ((std::vector<std::ptrdiff_t>{VirtualSlot(members)...}), expected);
}

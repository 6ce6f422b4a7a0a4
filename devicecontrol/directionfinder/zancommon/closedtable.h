#pragma once

#include <span>

/// The rows of a table in front of the one that closes it.
template <class Table>
constexpr auto Rows(Table& table) {
    return std::span(table).first(table.size() - 1);
}

#pragma once

/// \file

#include <span>

/// The rows of a table without the one that closes it, which must exist. Valid as long as the table.
template <class Table>
constexpr auto Rows(Table& table) {
    return std::span(table).first(table.size() - 1);
}

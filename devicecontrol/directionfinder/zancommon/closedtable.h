#pragma once

/// \file

#include <span>

/// The rows of a table in front of the one that closes it, which it has to have. Good as long as the table.
template <class Table>
constexpr auto Rows(Table& table) {
    return std::span(table).first(table.size() - 1);
}

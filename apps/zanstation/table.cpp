#include "zanstation/table.h"

#include "zanstation/console.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

Table::Table(QStringList titles) {
    Add(std::move(titles));
}

void Table::Add(QStringList row) {
    m_rows.push_back(std::move(row));
}

void Table::Print() const {
    std::vector<qsizetype> widths(static_cast<std::size_t>(m_rows.front().size()));
    for (const QStringList& row : m_rows) {
        for (std::size_t column = 0; column < widths.size(); ++column) {
            widths[column] = std::max(widths[column], row.at(static_cast<qsizetype>(column)).size());
        }
    }
    for (const QStringList& row : m_rows) {
        QString line;
        for (std::size_t column = 0; column < widths.size(); ++column) {
            line += row.at(static_cast<qsizetype>(column)).leftJustified(widths[column] + 2);
        }
        while (line.endsWith(u' ')) {
            line.chop(1);
        }
        Console::Print(line);
    }
}

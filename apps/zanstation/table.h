#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/// A table that is printed with aligned columns.
class Table {
public:
    explicit Table(QStringList titles);

    /// Adds a row with as many cells as there are titles.
    void Add(QStringList row);
    /// Prints titles and rows on standard output.
    void Print() const;

private:
    std::vector<QStringList> m_rows; // the titles are the first row
};

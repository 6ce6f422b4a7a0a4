#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QHash>
#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

/// One row of a table of the device catalogue in tests/data/catalogue, its cells by the names of their
/// columns. The elements of a list are in one cell with blanks between them.
class CatalogueRow {
public:
    explicit CatalogueRow(QHash<QString, QString> cells)
        : m_cells(std::move(cells)) {}

    [[nodiscard]] QString Text(const QString& column) const {
        EXPECT_TRUE(m_cells.contains(column)) << column.toStdString();
        return m_cells.value(column);
    }
    template <class T>
    [[nodiscard]] T Value(const QString& column) const {
        return ToNumber<T>(Text(column));
    }
    template <class T>
    [[nodiscard]] std::vector<T> Values(const QString& column) const {
        std::vector<T> values;
        for (const QString& element : Text(column).split(u' ')) {
            values.push_back(ToNumber<T>(element));
        }
        return values;
    }

private:
    template <class T>
    static T ToNumber(const QString& text) {
        bool isNumber = false;
        const double number = text.toDouble(&isNumber);
        EXPECT_TRUE(isNumber) << text.toStdString();
        return static_cast<T>(number);
    }

    QHash<QString, QString> m_cells;
};

/// The rows of a table in order, without the one that closes it.
inline std::vector<CatalogueRow> ReadCatalogue(const char* fileName) {
    QFile file(QString::fromUtf8(ZAN_TEST_DATA "/catalogue/") + QString::fromUtf8(fileName));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << fileName;
    const auto readCells = [&file] { return QString::fromUtf8(file.readLine()).chopped(1).split(u','); };
    std::vector<CatalogueRow> rows;
    const QStringList columns = file.atEnd() ? QStringList() : readCells();
    while (!file.atEnd()) {
        const QStringList cells = readCells();
        EXPECT_EQ(cells.size(), columns.size()) << fileName << ", row " << rows.size();
        QHash<QString, QString> row;
        for (qsizetype i = 0; i < cells.size() && i < columns.size(); ++i) {
            row.insert(columns[i], cells[i]);
        }
        rows.emplace_back(std::move(row));
    }
    EXPECT_FALSE(rows.empty()) << fileName;
    return rows;
}

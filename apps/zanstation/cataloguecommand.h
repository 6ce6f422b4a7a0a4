#pragma once

#include <QString>
#include <QStringList>

/// Prints a table of the device catalogue.
namespace CatalogueCommand {

/// The names of the tables.
QStringList GetTableNames();

/// Prints a table for people, or as an array of JSON objects for programs (frequencies and bandwidths in Hz).
/// False when there is no table of this name.
bool Print(const QString& tableName, bool asJson);

} // namespace CatalogueCommand

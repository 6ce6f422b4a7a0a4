#pragma once

#include "valueframework/valuebase.h"
#include "zancommon_export.h"

#include <QString>

#include <array>
#include <memory>
#include <span>

class ValueDescriptor;

/// Moves the general settings of the DF device (location, preamplifiers, gain control, compass, thresholds,
/// messages) between the value tree, where they live while the device runs, and the station's settings.
///
/// In between they are in one table of the process: `ReadFromValueTree` takes a snapshot of each value,
/// `WriteToCfg` stores the snapshots, `ReadFromCfg` loads them, and `WriteToValueTree` sets the values from
/// them. A row whose value is missing in the tree has no snapshot and is left out everywhere. Belongs to the
/// application's main thread.
class ZANCOMMON_EXPORT ZANSetupData {
public:
    /// A row of the table: a value of the tree and its key in the settings.
    struct DataEntry {
        QString key; ///< in the settings of the station
        /// The descriptor of the value; null when it has the alternative name.
        const ValueDescriptor* descriptor = nullptr;
        QString alternativeName;
        std::unique_ptr<ValueBase> value; ///< the snapshot, of the type of the tree's value

        /// The path of the value below the base path, with a leading slash.
        [[nodiscard]] QString PathBelowBase() const;
    };

    /// \param name     kept only
    /// \param basePath the node that an operation uses when its path is empty; when both are empty, no value
    ///                 is found
    ZANSetupData(QString name, QString basePath);
    ZANSetupData(const ZANSetupData&) = default;
    ZANSetupData& operator=(const ZANSetupData&) = default;
    /// Deletes all snapshots, also those of other objects, because there is only one table.
    virtual ~ZANSetupData();

    /// Takes a snapshot of every value below a node. A row loses its snapshot when its value is missing.
    void ReadFromValueTree(const QString& path);
    /// Sets the values below a node from the snapshots, without notifying the originator. A value that does
    /// not accept its snapshot (a number outside its range) is not changed.
    void WriteToValueTree(IObserver* originator, const QString& path);
    /// Loads the snapshots from the settings of a station (`StationCfg`). A snapshot whose key is missing is
    /// not changed; nor is one whose setting is not valid for the value, which is traced.
    void ReadFromCfg(const QString& station);
    /// Stores the snapshots and the hardware requirements of the tree (`HwStatusTester`) in the settings of a
    /// station, which are created if needed, and saves them.
    void WriteToCfg(const QString& station);
    /// Traces the table: key, path and content of each row.
    void PrintSetupTrace() const;

    /// The rows of the table with the current snapshots. The rows are valid for the whole run, a snapshot
    /// until the next operation.
    [[nodiscard]] static std::span<const DataEntry> GetEntries();

private:
    [[nodiscard]] ZANCOMMON_NO_EXPORT ValueBase* FindValue(const QString& path, const DataEntry* row) const;

    static std::array<DataEntry, 23> s_aDataEntries; // closed by a row without a key

    QString m_name;
    QString m_basePath;
};

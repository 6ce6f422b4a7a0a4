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
/// In between they stand in one table of the process: `ReadFromValueTree` takes a snapshot of each value into
/// it, `WriteToCfg` stores the snapshots, `ReadFromCfg` loads them, and `WriteToValueTree` puts them back. A
/// row whose value the tree does not have has no snapshot and is left out everywhere. Belongs to the
/// application's main thread.
class ZANCOMMON_EXPORT ZANSetupData {
public:
    /// Row of the table: which value of the tree belongs to which key of the settings.
    struct DataEntry {
        QString key; ///< in the settings of the station
        /// The value; null: it has the alternative name.
        const ValueDescriptor* descriptor = nullptr;
        QString alternativeName;
        std::unique_ptr<ValueBase> value; ///< the snapshot, of the type of the tree's value

        /// Where the value stands below the base path, with a slash in front.
        [[nodiscard]] QString PathBelowBase() const;
    };

    /// \param name     kept only
    /// \param basePath the node that is meant where an operation is given an empty path; when both are
    ///                 empty, the tree counts as without values
    ZANSetupData(QString name, QString basePath);
    ZANSetupData(const ZANSetupData&) = default;
    ZANSetupData& operator=(const ZANSetupData&) = default;
    /// Drops all snapshots, those of other objects too: the table is one.
    virtual ~ZANSetupData();

    /// Takes a snapshot of every value below a node. A row loses its snapshot when its value is missing.
    void ReadFromValueTree(const QString& path);
    /// Sets the values below a node from the snapshots, without telling the originator. A value that does not
    /// accept its snapshot (a number outside its range) stays as it is.
    void WriteToValueTree(IObserver* originator, const QString& path);
    /// Loads the snapshots from the settings of a station (`StationCfg`). What is not stored stays as it is,
    /// and so does what is stored but is no content of its value; that is traced.
    void ReadFromCfg(const QString& station);
    /// Stores the snapshots in the settings of a station, which come into being with it, and with them the
    /// hardware requirements that stand in the tree (`HwStatusTester`); then they are saved.
    void WriteToCfg(const QString& station);
    /// Traces the table: key, path and content of each row.
    void PrintSetupTrace() const;

    /// The rows of the table, with the snapshots as they are now. The rows are good for the whole run, a
    /// snapshot until the next operation.
    [[nodiscard]] static std::span<const DataEntry> GetEntries();

private:
    [[nodiscard]] ValueBase* FindValue(const QString& path, const DataEntry* row) const;

    static std::array<DataEntry, 23> s_aDataEntries; // closed by a row without a key

    QString m_name;
    QString m_basePath;
};

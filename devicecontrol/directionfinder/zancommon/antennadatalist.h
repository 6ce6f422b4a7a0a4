#pragma once

#include "zancommon/antennadata.h"
#include "zancommon/zancharacteristicstools.h"

#include <QString>

#include <memory>
#include <set>
#include <vector>

class Node;

/// The antenna setup of one DF device: its entries in order, the search for the antenna of a frequency, and
/// reading and writing the setup in the station's settings and the value tree.
///
/// Frequencies are in Hz. The list owns its entries; a pointer to one is valid until the entry is removed or
/// the list is read again. Belongs to the application's main thread.
class ZANCOMMON_EXPORT AntennaDataList {
public:
    AntennaDataList() = default;
    /// \param basePath  the node that a value-tree operation uses when its path is empty
    /// \param setupName "Default" when it is empty
    AntennaDataList(const QString& basePath, const QString& setupName);
    /// A copy shares the records with its source, so that a change of an entry is visible in both; a record
    /// lives as long as a list holds it. `CopyFrom` copies the records.
    AntennaDataList(const AntennaDataList&) = default;
    AntennaDataList& operator=(const AntennaDataList&) = default;
    virtual ~AntennaDataList();

    /// Removes all entries.
    void Clear();
    /// Takes over paths, name, the permission to save, and a copy of every entry of the other list, sorted.
    void CopyFrom(const AntennaDataList& other);
    /// Appends an entry that was created with `new`, and takes it over; null is ignored. Always true.
    bool AddAntenna(AntennaData* ant);
    /// Appends a copy of an entry, which may be one of this list.
    void AddAntenna(const AntennaData& antenna);
    /// Removes the first entry that has the name of `ant`, even if `ant` is another entry of that name. False
    /// for null, and when no entry has the name. `ant` is not taken over.
    bool DeleteAntenna(AntennaData* ant);

    /// The entries in order; none is null.
    [[nodiscard]] const std::vector<std::shared_ptr<AntennaData>>& GetAntennas() const { return m_antennas; }
    /// The entry at a position counted from 0; null outside the list.
    [[nodiscard]] AntennaData* GetAntennaByIndex(int i) const;
    /// The first entry with the handle, enabled or not; null when there is none.
    [[nodiscard]] AntennaData* GetAntennaByHandle(long h) const;
    /// The first enabled entry whose range holds both frequencies; null when there is none.
    [[nodiscard]] AntennaData* GetAntennaForFreqRange(double lo, double hi) const;
    /// The enabled entry that serves a frequency; null when there is none. Both ends of a range belong to it.
    /// Of several entries the first of the wanted polarisation is returned, or the last when none has it.
    /// \param preferRangeStart the first entry whose range begins at exactly this frequency comes before all
    ///                         others, so that stepping over the end of a range leads to the next antenna
    [[nodiscard]] AntennaData* GetAntennaForFrequency(double f, bool preferRangeStart,
                                                      EZANPolarisation pol) const;
    /// Whether an enabled entry's range holds 10 MHz.
    [[nodiscard]] bool ContainsHFAntenna() const;
    /// The handles of all entries, or of the enabled ones, ascending.
    [[nodiscard]] std::set<long> GetAntennaHandles(bool onlyEnabled) const;
    /// Combines all entries of a handle: the whole coverage, and the span of the ranges of the enabled
    /// entries. When none is enabled, the range is only the lowest frequency, and the result is not enabled.
    /// False when no entry has the handle; `out` is then disabled and otherwise unchanged.
    bool GetCommonAntennaByHandle(long h, AntennaData& out) const;

    /// Sorts by coverage, entries of equal coverage by name. Coverages that lie within one another have no
    /// natural order; equal entries keep their order.
    void SortAntennasByFrequencyRanges();
    /// Moves the beginning of an enabled entry's range up by 1 Hz when the range before it ends there.
    void MakeAntennaRangesDisjoint();
    /// Prepares a new list: switches compasses on when one of the two flags is set (never those of the
    /// families PX104 and PX112), disables entries that repeat the entry before them, and ends an entry where
    /// the next one of the same polarisation begins.
    void SetStartupDefaults(bool compassA, bool compassB);
    /// Traces one line per entry, frequencies in Hz.
    void PrintAntennaTrace() const;
    /// Whether `WriteAntennaSetupToCfg` writes; true at first.
    void allowSave(bool allow) { m_allowSave = allow; }

    /// The largest number of entries that `BuildAntennasFromCfg` reads.
    static constexpr int MAX_ANTENNA_COUNT = 12;

    /// Appends the entries from the settings of a station (`StationCfg`), without handles and polarisations,
    /// which the device provides. A range that does not lie within the coverage becomes the coverage, and the
    /// ranges are made disjoint. Returns the number of sections read, 0 when the station has no settings.
    int BuildAntennasFromCfg(const QString& station);
    /// Sorts the list and applies the operator's choices from the settings to its entries: range, enabled,
    /// compass, mounting. The sections are searched by name, forward only: a section that was passed is not
    /// found again, and one without a name ends the search. Then the ranges are made disjoint. False when the
    /// station has no settings.
    bool ReadAntennaSetupFromCfg(const QString& station);
    /// Writes all entries to the settings of a station, which are created if needed, and saves them: Hz with
    /// three decimals. Sections beyond the new count stay.
    void WriteAntennaSetupToCfg(const QString& station);

    /// Replaces the entries by those of the antenna nodes below a node. Values that an antenna node lacks get
    /// their defaults. Returns the number of entries, 0 when the node is missing.
    int ReadAntennasFromValueTree(const QString& path);
    /// Takes over what an operator has edited in the antenna nodes below a node. The first node is compared
    /// with the first entry, and so on; a node that does not have the entry's name and coverage is traced and
    /// skipped. Returns the number of entries that were updated.
    int UpdateAntennasFromValueTree(const QString& path);
    /// Appends an antenna node for each entry below a node; existing ones stay. When the node is missing, an
    /// assertion is traced for each entry.
    void WriteAntennasToValueTree(const QString& path);
    /// Removes the antenna nodes below a node; other children stay, and so do nodes that observers create
    /// meanwhile.
    void DeleteAllAntennasFromValueTree(const QString& path);

private:
    [[nodiscard]] ZANCOMMON_NO_EXPORT Node* GetNode(const QString& path) const;
    [[nodiscard]] ZANCOMMON_NO_EXPORT std::vector<Node*> GetAntennaNodes(const QString& path) const;

    std::vector<std::shared_ptr<AntennaData>> m_antennas;
    QString m_basePath;
    QString m_setupName;
    ZANCharacteristicsTools m_tools;
    bool m_allowSave = true;
};

#pragma once

#include "tolmappstartup/icfg.h"
#include "valueframework/valuetypes.h"
#include "zancommon_export.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

namespace KvZANCommon {

/// Keeps a list of traffic-control frequencies in a settings file. The sub-configuration
/// "TrafficControlFrequencies" has the number of entries under "TCFrequencyCount", and for each of them a
/// sub-configuration "TCFrequency_0", "TCFrequency_1" and so on with "ChannelID", "Frequency" (Hz) and
/// "Alarm" (1 or 0). Belongs to the application's main thread.
class ZANCOMMON_EXPORT TCFrequencyListPersistency {
public:
    /// \param list is not owned; when it is null, or has been removed from the tree, both operations do
    ///             nothing
    /// \param name of the settings file, as `CfgCenter::CreateCfg` takes it
    /// \param view likewise
    TCFrequencyListPersistency(ValueTrafficControlFrequencyList* list, QString name, ICfg::View view);

    /// Writes the list and saves it, frequencies without their fraction. Entries of a longer earlier list
    /// stay in the file; the count says which are valid. Does nothing when the file cannot be opened, which
    /// `CfgCenter` reports.
    void MakePersistent();
    /// Replaces the list by the one in the file and notifies its observers once, with code 7. The list is not
    /// changed when the file's count is less than 1. An entry that has none of its three keys is left out; in
    /// one that has some, the others are 0. A channel number that does not fit an `int` becomes 0, and is
    /// traced. Does nothing when the file cannot be opened.
    void Restore();

    /// The full name of the sub-configuration of an entry in the settings file, in which applications may
    /// keep further keys: "TrafficControlFrequencies/TCFrequency_0" for the first one.
    [[nodiscard]] static QString GetEntryName(qint64 index);
    /// The full names of the entries that `Restore` takes over, in their order.
    [[nodiscard]] QStringList GetEntryNames() const;

private:
    ZANPlatform::ObservablePtr<ValueTrafficControlFrequencyList> m_pList;
    QString m_name;
    ICfg::View m_view;
};

} // namespace KvZANCommon

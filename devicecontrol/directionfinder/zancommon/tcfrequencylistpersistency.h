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
    /// \param list is not owned; null, and a list that has gone from the tree, make both operations do
    ///             nothing
    /// \param name of the settings file, as `CfgCenter::CreateCfg` takes it
    /// \param view likewise
    TCFrequencyListPersistency(ValueTrafficControlFrequencyList* list, QString name, ICfg::View view);

    /// Writes the list and saves it, frequencies without their fraction. Entries of a longer list before stay
    /// in the file, the count tells which are valid. Nothing when the file cannot be had, which `CfgCenter`
    /// reports.
    void MakePersistent();
    /// Replaces the list by the one in the file and tells its observers once, with code 7. The list stays as
    /// it is when the file's count is less than 1. An entry that has none of its three keys is missing and
    /// left out; of one that has some, the others are 0. A channel number that no `int` holds is 0, and
    /// traced. Nothing when the file cannot be had.
    void Restore();

    /// The whole name of the sub-configuration of an entry in the settings file, under which applications
    /// keep keys of their own: "TrafficControlFrequencies/TCFrequency_0" is that of the first one.
    [[nodiscard]] static QString GetEntryName(qint64 index);
    /// The whole names of the entries that `Restore` takes over, in their order.
    [[nodiscard]] QStringList GetEntryNames() const;

private:
    ZANPlatform::ObservablePtr<ValueTrafficControlFrequencyList> m_pList;
    QString m_name;
    ICfg::View m_view;
};

} // namespace KvZANCommon

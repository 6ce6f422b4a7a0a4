#pragma once

#include "zancommon_export.h"

#include <QList>
#include <QString>

class ZANAbstractInterface;

/// The output interfaces of the application, in the order in which they were added, found by name. Names are
/// compared exactly and case-sensitively.
///
/// The list holds pointers. Only `Remove` deletes an interface; those that are in the list when it is
/// destroyed belong to the application. A copy shares the interfaces. Belongs to the application's main
/// thread.
class ZANCOMMON_EXPORT ZANInterfacesList : public QList<ZANAbstractInterface*> {
public:
    ZANInterfacesList() = default;
    ZANInterfacesList(const ZANInterfacesList&) = default;
    ZANInterfacesList& operator=(const ZANInterfacesList&) = default;
    virtual ~ZANInterfacesList();

    /// Appends an interface. False for null, and when one of its name is in the list.
    bool Add(ZANAbstractInterface* p);
    /// The first interface of this name; null when there is none.
    [[nodiscard]] ZANAbstractInterface* GetInterfaceByName(const QString& name) const;
    /// Removes the first interface of this name from the list and deletes it. False when there is none.
    bool Remove(const QString& name);
    [[nodiscard]] unsigned int Size() const;
    /// Empties the list. The interfaces stay alive.
    void Clear();
};

#include "zancommon/zaninterfaceslist.h"

#include "zancommon/zanabstractinterface.h"

#include <algorithm>

ZANInterfacesList::~ZANInterfacesList() {
    Clear();
}

bool ZANInterfacesList::Add(ZANAbstractInterface* p) {
    if (!p || GetInterfaceByName(p->GetName())) {
        return false;
    }
    append(p);
    return true;
}

ZANAbstractInterface* ZANInterfacesList::GetInterfaceByName(const QString& name) const {
    // Null entries can only have been added by operations of QList.
    const auto found = std::find_if(
        cbegin(), cend(), [&name](ZANAbstractInterface* each) { return each && each->GetName() == name; });
    return found == cend() ? nullptr : *found;
}

bool ZANInterfacesList::Remove(const QString& name) {
    ZANAbstractInterface* const found = GetInterfaceByName(name);
    if (!found) {
        return false;
    }
    // Removed first, so that it cannot be found in the list while it is being destroyed.
    removeOne(found);
    delete found;
    return true;
}

unsigned int ZANInterfacesList::Size() const {
    return static_cast<unsigned int>(size());
}

void ZANInterfacesList::Clear() {
    clear();
}

#pragma once

#include "zancommon/zancharacteristics.h"
#include "zancommon/zaninterfaceslist.h"
#include "zancommon_export.h"

/// Gives access to the objects that exist once in a process: the characteristics of the device, and the list
/// of outputs. Created on first use. Belongs to the application's main thread.
class ZANCOMMON_EXPORT ZANInformationCenter {
public:
    /// The center. It and the references that it returns are valid until `Finalise`. Never null.
    static ZANInformationCenter* Instance();
    /// Destroys the center and what it owns; the outputs in the list belong to the application and are not
    /// destroyed. The next `Instance` creates a new center.
    static void Finalise();

    ZANInformationCenter(const ZANInformationCenter&) = delete;
    ZANInformationCenter& operator=(const ZANInformationCenter&) = delete;
    virtual ~ZANInformationCenter();

    [[nodiscard]] ZANCharacteristics& GetZANCharacteristics() { return m_characteristics; }
    [[nodiscard]] ZANInterfacesList& GetZANInterfaces() { return m_interfaces; }

private:
    ZANInformationCenter() = default;

    static ZANInformationCenter* m_pInstance;

    ZANCharacteristics m_characteristics;
    ZANInterfacesList m_interfaces;
};

#pragma once

#include "zancommon/zancharacteristics.h"
#include "zancommon/zaninterfaceslist.h"
#include "zancommon_export.h"

/// Where the application finds what there is once in a process: the characteristics of the device, and the
/// list of outputs. Made on first use. Belongs to the application's main thread.
class ZANCOMMON_EXPORT ZANInformationCenter {
public:
    /// The center, which is good until `Finalise`, and so are the references that it gives. Never null.
    static ZANInformationCenter* Instance();
    /// Destroys the center and what it owns; the outputs in the list stay alive, they belong to the
    /// application. The next `Instance` makes a fresh one.
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

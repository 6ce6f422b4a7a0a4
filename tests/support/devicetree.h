#pragma once

#include "stddevicedefinition/stddevicedescriptors.h"
#include "valueframework/tree.h"
#include "valueframework/valuetypes.h"
#include "zancommon/antennadatalist.h"
#include "zancommon/zaninformationcenter.h"
#include "zancommon/zanoptions.h"
#include "zancommon/zanvaluenames.h"

#include <QString>

#include <vector>

/// An enabled antenna whose coverage and range are the same. Frequencies in Hz.
inline AntennaData MakeAntenna(const QString& name, const QString& converter, double low, double high) {
    AntennaData antenna;
    antenna.name = name;
    antenna.converterTypeName = converter;
    antenna.minFreq = low;
    antenna.maxFreq = high;
    antenna.minRange = low;
    antenna.maxRange = high;
    return antenna;
}

/// A ZANTIDE device without options and antennas in the value tree, as a device connection publishes it. At
/// its end tree, options and characteristics are as if there had been none.
class DeviceTree {
public:
    DeviceTree() {
        StdDeviceDefinition::CreateBranch(StdDeviceDefinition::EBranch::DEVICE, Path());
        StdDeviceDefinition::CreateBranch(StdDeviceDefinition::EBranch::SERVER, ZANPath::SERVER.toString());
    }
    DeviceTree(const DeviceTree&) = delete;
    DeviceTree& operator=(const DeviceTree&) = delete;
    ~DeviceTree() {
        ZANInformationCenter::Finalise();
        ZANOptions::Finalise();
        Tree::Instance()->Clear();
    }

    static QString Path() { return ZANPath::DEVICE_NODE.toString(); }

    /// A value of the device.
    template <class T>
    static T* DeviceValue(const ValueDescriptor& descriptor) {
        return Tree::Instance()->Find<T>(ZANPath::Device(descriptor));
    }
    /// A value of the server.
    template <class T>
    static T* ServerValue(const ValueDescriptor& descriptor) {
        return Tree::Instance()->Find<T>(ZANPath::Server(descriptor));
    }

    static void SetType(const QString& type) {
        DeviceValue<ValueString>(StdDeviceDefinition::g_vdDevType)->SetValue(type, nullptr);
    }
    /// Replaces the antenna nodes of the device.
    static void SetAntennas(const std::vector<AntennaData>& antennas) {
        AntennaDataList list;
        for (const AntennaData& antenna : antennas) {
            list.AddAntenna(new AntennaData(antenna));
        }
        list.DeleteAllAntennasFromValueTree(Path());
        list.WriteAntennasToValueTree(Path());
    }
    /// Connects the characteristics of the process to the device, which reads everything.
    static ZANCharacteristics& Connect(bool autoUpdate = true) {
        ZANCharacteristics& characteristics = ZANInformationCenter::Instance()->GetZANCharacteristics();
        characteristics.SetBase_ValuePath(Path(), autoUpdate);
        return characteristics;
    }
};

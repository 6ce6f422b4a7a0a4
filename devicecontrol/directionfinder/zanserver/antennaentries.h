#pragma once

#include "kwbase/observable.h"
#include "stddevicedefinition/antbuilder.h"
#include "zancommon/antennadata.h"
#include "zancommon/driverrecords.h"

#include <vector>

/// The antenna nodes of the device as what a driver is given. Belongs to the thread of the tree.
namespace ZANServer::AntennaEntries {

/// The nodes, in the order of the tree.
std::vector<StdDeviceDefinition::StdDeviceTree::Ant> GetNodes();
/// What they hold, in the same order.
std::vector<AntennaData> Read();
/// The setups of a device with the operator's choices: range of use, mounting, polarisation, compass. The
/// entries of one antenna together make its range; an antenna without an enabled entry is left out.
/// \param device what the device has said of its antennas
std::vector<KvZANCommon::AntennaSetupStruct>
ToSetups(const std::vector<AntennaData>& entries, const std::vector<KvZANCommon::AntennaSetupStruct>& device);
/// The entries with the choices that the setups of a device hold. The range of an antenna with several
/// entries goes from that of the lowest to that of the highest one; entries without a setup stay as they are.
std::vector<AntennaData> FromSetups(std::vector<AntennaData> entries,
                                    const std::vector<KvZANCommon::AntennaSetupStruct>& setups);
/// Puts the choices back into the nodes of the same names.
void WriteBack(const std::vector<AntennaData>& entries, IObserver* originator);
/// Has the values that hold the choices observed.
void Observe(IObserver* observer);

} // namespace ZANServer::AntennaEntries

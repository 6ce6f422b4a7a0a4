#include "zanserver/deviceconnection.h"

#include "support/devicetree.h"
#include "support/storedsettings.h"

#include <gtest/gtest.h>

#include <map>

using namespace Qt::StringLiterals;
using namespace ZANServer;

TEST(DeviceConnection, EndOfAnAntennasNameTellsItsPolarisationOrSide) {
    const StoredSettings settings;
    const DeviceTree tree;
    const std::map<QString, EZANPolarisation> expected{{u"PX104_L"_s, POLARISATION_LEFT},
                                                       {u"PX104_R"_s, POLARISATION_RIGHT},
                                                       {u"PX121_H"_s, POLARISATION_HORIZONTAL},
                                                       {u"PX121_V"_s, POLARISATION_VERTICAL},
                                                       {u"PX106"_s, POLARISATION_VERTICAL}};
    const QString address = u"replay"_s;
    AntennaDataList stored;
    for (const auto& [name, polarisation] : expected) {
        stored.AddAntenna(MakeAntenna(name, u"RCV03"_s, 20e6, 1300e6));
    }
    stored.WriteAntennaSetupToCfg(address);

    const DeviceConnection connection(address, u"device"_s);
    AntennaDataList published;
    published.ReadAntennasFromValueTree(DeviceTree::Path());
    std::map<QString, EZANPolarisation> polarisations;
    for (const auto& antenna : published.GetAntennas()) {
        polarisations[antenna->name] = antenna->polarizationMode;
    }
    EXPECT_EQ(polarisations, expected);
}

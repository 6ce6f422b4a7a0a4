#include "zanserver/driverchoice.h"

#include "support/printing.h"
#include "support/storedsettings.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using ZANServer::DriverChoice;

TEST(DriverChoice, WithoutAChoiceItIsTheSimulator) {
    const StoredSettings settings;
    const DriverChoice choice = DriverChoice::FromSettings();
    EXPECT_EQ(choice.name, u"simulator"_s);
    EXPECT_EQ(choice.address, QString());
}

TEST(DriverChoice, IsKeptInASectionOfItsOwn) {
    StoredSettings settings;
    DriverChoice{u"krakensdr"_s, u"http://10.0.0.5:8081"_s}.Store();
    EXPECT_TRUE(
        settings.CloseAndRead().contains(u"[Driver]\nAddress=http://10.0.0.5:8081\nName=krakensdr\n"_s));
    settings.Reopen();
    const DriverChoice choice = DriverChoice::FromSettings();
    EXPECT_EQ(choice.name, u"krakensdr"_s);
    EXPECT_EQ(choice.address, u"http://10.0.0.5:8081"_s);
}

TEST(DriverChoice, SettingsOfADeviceAreThoseOfItsAddressInItsNormalForm) {
    const StoredSettings settings;
    EXPECT_EQ((DriverChoice{u"stream"_s, u"Radio.Example.:5555"_s}).GetStationAddress(),
              u"radio.example:5555"_s);
    EXPECT_EQ((DriverChoice{u"stream"_s, u""_s}).GetStationAddress(), u"stream"_s);
}

TEST(DriverChoice, AllRecordingsShareTheirSettings) {
    const StoredSettings settings;
    EXPECT_EQ((DriverChoice{u"replay"_s, u"/tmp/a.csv"_s}).GetStationAddress(), u"replay"_s);
}

TEST(DriverChoice, SimulatorGoesOnWithTheSettingsOfTheRecordingsUntilItHasItsOwn) {
    StoredSettings settings;
    EXPECT_EQ(DriverChoice().GetStationAddress(), u"simulator"_s);
    settings.Write("[ZANStations]\nCount=1\nZANStation0\\DeviceAddress=replay\n");
    EXPECT_EQ(DriverChoice().GetStationAddress(), u"replay"_s);
    EXPECT_EQ((DriverChoice{u"simulator"_s, u"airfield"_s}).GetStationAddress(), u"airfield"_s);
    settings.Write("[ZANStations]\nCount=2\nZANStation0\\DeviceAddress=replay\n"
                   "ZANStation1\\DeviceAddress=simulator\n");
    EXPECT_EQ(DriverChoice().GetStationAddress(), u"simulator"_s);
}

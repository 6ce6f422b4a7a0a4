#include "zanserver/gpsdsettings.h"

#include "support/printing.h"
#include "support/storedsettings.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace ZANServer;

TEST(GpsdAddress, IsAHostWithOrWithoutAPort) {
    const auto read = [](const QString& text) {
        return GpsdAddress::Read(text).value_or(GpsdAddress()).ToText();
    };
    EXPECT_EQ(read(u"localhost:2947"_s), u"localhost:2947"_s);
    EXPECT_EQ(read(u"ship.example"_s), u"ship.example:2947"_s);
    EXPECT_EQ(read(u"192.0.2.7:10110"_s), u"192.0.2.7:10110"_s);
    EXPECT_EQ(read(u"[2001:db8::7]:10110"_s), u"[2001:db8::7]:10110"_s);
    EXPECT_EQ(read(u"[::1]"_s), u"[::1]:2947"_s);
}

TEST(GpsdAddress, IsNoOtherText) {
    for (const char16_t* text : {u"", u" ", u":2947", u"localhost:", u"localhost:0", u"localhost:65536",
                                 u"localhost:gps", u"a b", u"::1", u"user@localhost:2947",
                                 u"localhost:2947/dev/ttyUSB0", u"gpsd://localhost", u"/dev/ttyUSB0"}) {
        EXPECT_FALSE(GpsdAddress::Read(QString::fromUtf16(text))) << QString::fromUtf16(text).toStdString();
    }
}

TEST(GpsdSettings, HaveTheirDefaultsWithoutAFile) {
    const StoredSettings store;
    const GpsdSettings settings = GpsdSettings::Read();
    EXPECT_EQ(settings.address.ToText(), u"localhost:2947"_s);
    EXPECT_EQ(settings.maxAge, 3s);
    EXPECT_EQ(settings.positionReceiver, QString());
    EXPECT_EQ(settings.headingReceiver, QString());
    EXPECT_TRUE(settings.usePitchAndRoll);
}

TEST(GpsdSettings, AreReadFromTheirSection) {
    StoredSettings store;
    store.Write("[Gpsd]\nAddress=ship.example:2948\nMaxAge=1500\nPositionReceiver=/dev/ttyUSB0\n"
                "HeadingReceiver=/dev/ttyUSB1\nPitchAndRoll=false\n");
    const GpsdSettings settings = GpsdSettings::Read();
    EXPECT_EQ(settings.address.ToText(), u"ship.example:2948"_s);
    EXPECT_EQ(settings.maxAge, 1500ms);
    EXPECT_EQ(settings.positionReceiver, u"/dev/ttyUSB0"_s);
    EXPECT_EQ(settings.headingReceiver, u"/dev/ttyUSB1"_s);
    EXPECT_FALSE(settings.usePitchAndRoll);
}

TEST(GpsdSettings, ThatAreNotAllowedHaveTheirDefaults) {
    StoredSettings store;
    for (const char* age : {"99", "60001", "-1", "soon"}) {
        store.Write("[Gpsd]\nAddress=:\nMaxAge=" + QByteArray(age) + "\n");
        EXPECT_EQ(GpsdSettings::Read().address.ToText(), u"localhost:2947"_s);
        EXPECT_EQ(GpsdSettings::Read().maxAge, 3s) << age;
    }
}

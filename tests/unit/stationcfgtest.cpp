#include "zancommon/stationcfg.h"

#include "kwbase/tolmos.h"
#include "support/devicetree.h"
#include "support/printing.h"
#include "support/storedsettings.h"
#include "support/tracelines.h"
#include "support/treevalues.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;

namespace {

/// A settings file with a count and stations of these addresses, each with its number as "Mark".
QByteArray FileWith(const QByteArray& countLine, const std::vector<QByteArray>& addresses) {
    QByteArray text = "[ZANStations]\n" + countLine + '\n';
    int number = 0;
    for (const QByteArray& address : addresses) {
        const QByteArray index = QByteArray::number(number++);
        text += "[ZANStations/ZANStation" + index + "]\nMark=" + index + '\n';
        if (!address.isEmpty()) {
            text += "DeviceAddress=" + address + '\n';
        }
    }
    return text;
}

class StationCfgTest : public testing::Test {
protected:
    static QString Stored(const QString& key) {
        return CfgCenter::GetAppCfg(ICfg::View::Stations).GetString(u"ZANStations/"_s + key, u"(none)"_s);
    }
    /// The "Mark" of the station that is found; "(none)" when it is found but has none, "null" without one.
    static QString MarkOf(const QString& address, bool create = false) {
        const CfgPtr station(StationCfg::GetStationCfg(address, create));
        return station ? station->GetString(u"Mark"_s, u"(none)"_s) : u"null"_s;
    }

    StoredSettings settings;
    TraceLines trace;
};

// --- sections ---

TEST_F(StationCfgTest, FirstStationIsMadeOnceAndFoundAgain) {
    for (int call = 0; call < 2; ++call) {
        const CfgPtr station(StationCfg::GetStationCfg({}, true));
        ASSERT_TRUE(station);
        EXPECT_EQ(station->GetString(u"DeviceAddress"_s, {}), u"Default"_s);
        EXPECT_EQ(Stored(u"Count"_s), u"1"_s);
        EXPECT_EQ(Stored(u"ZANStation0/DeviceAddress"_s), u"Default"_s);
    }
    EXPECT_EQ(settings.CloseAndRead(),
              u"[ZANStations]\nCount=1\n\n[ZANStations/ZANStation0]\nDeviceAddress=Default\n"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(StationCfgTest, EmptyAddressAndDefaultAreTheSameStation) {
    CfgPtr(StationCfg::GetStationCfg(u"Default"_s, true))->SetString(u"Mark"_s, u"x"_s);
    EXPECT_EQ(MarkOf(u""_s), u"x"_s);
    EXPECT_EQ(MarkOf({}), u"x"_s);
}

TEST_F(StationCfgTest, UnknownStationIsNotMadeUnlessWanted) {
    EXPECT_EQ(StationCfg::GetStationCfg(u"a"_s, false), nullptr);
    EXPECT_EQ(StationCfg::GetStationCfg({}, false), nullptr);
    EXPECT_EQ(settings.Read(), QString());

    const QByteArray text = FileWith("Count=2", {"a", "b"});
    settings.Write(text);
    EXPECT_EQ(StationCfg::GetStationCfg(u"c"_s, false), nullptr);
    EXPECT_EQ(Stored(u"Count"_s), u"2"_s);
    EXPECT_EQ(settings.CloseAndRead(), QString::fromLatin1(text));
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(StationCfgTest, WhatIsStoredWithAStationIsThereInTheNextRun) {
    const QStringList addresses{u"df.ship:5000"_s, u"%1"_s, u" a "_s, u"[x]=\"y\"\nz"_s, u"\u00e4"_s};
    for (const QString& address : addresses) {
        const CfgPtr station(StationCfg::GetStationCfg(address, true));
        ASSERT_TRUE(station);
        station->SetString(u"Mark"_s, u"of "_s + address);
    }
    settings.Reopen();
    EXPECT_EQ(Stored(u"Count"_s), u"5"_s);
    for (const QString& address : addresses) {
        EXPECT_EQ(MarkOf(address), u"of "_s + address);
    }
}

TEST_F(StationCfgTest, SectionsAreSearchedInOrderUpToTheCount) {
    settings.Write(FileWith("Count=6", {"a", "b", "a", "", "B", "c", "d"}));
    const std::pair<QString, QString> cases[] = {
        {u"a"_s, u"0"_s},                               // two stations of one address: the first one
        {u"b"_s, u"1"_s},          {u"B"_s, u"4"_s},    // behind a section without an address
        {u"c"_s, u"5"_s},          {u"d"_s, u"null"_s}, // beyond the count
        {u"A"_s, u"null"_s},       {u"a "_s, u"null"_s},
        {u"Default"_s, u"null"_s}, // a section without an address is nobody's
    };
    for (const auto& [address, mark] : cases) {
        EXPECT_EQ(MarkOf(address), mark) << address.toStdString();
    }
}

TEST_F(StationCfgTest, NewStationTakesTheSectionBehindTheCount) {
    settings.Write(FileWith("Count=2", {"a", "b", "left over"}));
    EXPECT_EQ(MarkOf(u"c"_s, true), u"2"_s);
    EXPECT_EQ(Stored(u"Count"_s), u"3"_s);
    EXPECT_EQ(Stored(u"ZANStation2/DeviceAddress"_s), u"c"_s);
    EXPECT_EQ(MarkOf(u"a"_s), u"0"_s);
}

TEST_F(StationCfgTest, MissingCountIsNone) {
    settings.Write(FileWith("", {"a"}));
    EXPECT_EQ(MarkOf(u"a"_s), u"null"_s);
    EXPECT_EQ(MarkOf(u"b"_s, true), u"0"_s);
    EXPECT_EQ(Stored(u"Count"_s), u"1"_s);
}

TEST_F(StationCfgTest, CountThatCannotBeTrueIsReportedAndNoStationIsLost) {
    for (const char* const count : {"2000000000", "9223372036854775807", "10001", "-1",
                                    "-9223372036854775808", "two", "2.0", "99999999999999999999"}) {
        SCOPED_TRACE(count);
        settings.Write(FileWith(QByteArray("Count=") + count, {"a", "b"}));
        trace.lines.clear();
        EXPECT_EQ(MarkOf(u"b"_s), u"1"_s);
        const QStringList reports = trace.lines.filter(
            u"WARNING: the number of stations in the settings is impossible; the first 2 are used"_s);
        ASSERT_EQ(reports.size(), 1);
        EXPECT_TRUE(reports[0].startsWith(u"devicecontrol\\directionfinder\\zancommon\\stationcfg("_s));
        EXPECT_EQ(MarkOf(u"c"_s), u"null"_s);
        EXPECT_EQ(Stored(u"Count"_s), QString::fromLatin1(count));

        EXPECT_EQ(MarkOf(u"c"_s, true), u"(none)"_s);
        EXPECT_EQ(Stored(u"Count"_s), u"3"_s);
        EXPECT_EQ(Stored(u"ZANStation2/DeviceAddress"_s), u"c"_s);
        settings.Reopen();
        trace.lines.clear();
        EXPECT_NE(MarkOf(u"c"_s), u"null"_s);
        EXPECT_EQ(MarkOf(u"a"_s), u"0"_s);
        EXPECT_TRUE(trace.lines.isEmpty());
    }
}

TEST_F(StationCfgTest, CountThatCannotBeTrueIsNoneWithoutASection) {
    settings.Write("[ZANStations]\nCount=two\n");
    EXPECT_EQ(MarkOf(u"a"_s, true), u"(none)"_s);
    EXPECT_EQ(Stored(u"ZANStation0/DeviceAddress"_s), u"a"_s);
    EXPECT_EQ(Stored(u"Count"_s), u"1"_s);
}

TEST_F(StationCfgTest, CountThatCanBeTrueIsTakenAsItIs) {
    settings.Write("[ZANStations]\nCount=10000\n[ZANStations/ZANStation9999]\nDeviceAddress=a\nMark=far\n");
    EXPECT_EQ(MarkOf(u"a"_s), u"far"_s);
    EXPECT_EQ(MarkOf(u"b"_s), u"null"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

// --- address and name of the device ---

class StationCfgAddressTest : public testing::Test {
protected:
    static ValueString* Address() { return DeviceTree::ServerValue<ValueString>(g_vdDevAddress); }
    static ValueString* Name() { return DeviceTree::ServerValue<ValueString>(g_vdDevName); }

    DeviceTree device;
    TraceLines trace;
};

TEST_F(StationCfgAddressTest, AddressHasItsHostAsTheSystemWritesIt) {
    const std::pair<QString, QString> cases[] = {
        {u""_s, u"Default"_s},
        {u"host"_s, u"host"_s},
        {u"HOST."_s, u"HOST."_s}, // without a port it stays as it is
        {u"HOST:5000"_s, u"host:5000"_s},
        {u"Host.Ship.:5000"_s, u"host.ship:5000"_s},
        {u"HOST:"_s, u"host:"_s},
        {u"HOST:COM1:X"_s, u"host:COM1:X"_s}, // split at the first colon
        {u":5000"_s, u":5000"_s},
        {u".:5000"_s, u".:5000"_s},
        {u":"_s, u":"_s},
        {u"::1"_s, u"::1"_s},
        {u"10.0.0.7:5000"_s, u"10.0.0.7:5000"_s},
        {u" HOST :1"_s, u" host :1"_s},
    };
    for (const auto& [text, address] : cases) {
        Address()->SetValue(text, nullptr);
        EXPECT_EQ(StationCfg::GetStationAddress(), address) << text.toStdString();
    }
}

TEST_F(StationCfgAddressTest, HostIsHandedToTheOperatingSystem) {
    class System : public ITolmOS {
    public:
        [[nodiscard]] unsigned long long GetCurrentTime() const override { return 0; }
        bool TranslateHostName(const QString& host, QString& translated) const override {
            translated = u"<"_s + host + u'>';
            return isTranslating;
        }
        bool isTranslating = true;
    } system;
    TolmOS::Replace(&system);
    Address()->SetValue(u"Host:5000:x"_s, nullptr);
    EXPECT_EQ(StationCfg::GetStationAddress(), u"<Host>:5000:x"_s);
    Address()->SetValue(u":5000"_s, nullptr);
    EXPECT_EQ(StationCfg::GetStationAddress(), u"<>:5000"_s);
    Address()->SetValue(u"Host"_s, nullptr);
    EXPECT_EQ(StationCfg::GetStationAddress(), u"Host"_s);
    system.isTranslating = false;
    Address()->SetValue(u"Host:5000"_s, nullptr);
    EXPECT_EQ(StationCfg::GetStationAddress(), u"Host:5000"_s);
    TolmOS::Replace(nullptr);
}

TEST_F(StationCfgAddressTest, NameIsTheDevicesOrDefault) {
    EXPECT_EQ(StationCfg::GetStationName(), u"Default"_s);
    Name()->SetValue(u"DF North: A"_s, nullptr);
    EXPECT_EQ(StationCfg::GetStationName(), u"DF North: A"_s);
    EXPECT_EQ(StationCfg::GetStationAddress(), u"Default"_s);
}

TEST_F(StationCfgAddressTest, MissingValuesAreDefault) {
    Tree& tree = *Tree::Instance();
    ASSERT_TRUE(tree.Remove(Address()));
    ASSERT_TRUE(tree.Remove(Name()));
    EXPECT_EQ(StationCfg::GetStationAddress(), u"Default"_s);
    EXPECT_EQ(StationCfg::GetStationName(), u"Default"_s);
    tree.CreateNode(u"/ZANServer"_s + g_vdDevAddress.PathName()); // no value
    EXPECT_EQ(StationCfg::GetStationAddress(), u"Default"_s);
    tree.Clear();
    EXPECT_EQ(StationCfg::GetStationAddress(), u"Default"_s);
    EXPECT_EQ(StationCfg::GetStationName(), u"Default"_s);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(StationCfgAddressTest, ValuesOfOtherTypesCountByTheirText) {
    for (ValueString* const text : {Address(), Name()}) {
        const QString path = text->GetPath();
        ASSERT_TRUE(Tree::Instance()->Remove(text));
        ASSERT_TRUE(InsertInTree<ValueInt>(path, 5000));
    }
    EXPECT_EQ(StationCfg::GetStationAddress(), u"5000"_s);
    EXPECT_EQ(StationCfg::GetStationName(), u"5000"_s);
}

TEST_F(StationCfgAddressTest, OneDeviceHasOneStationHoweverItsHostIsWritten) {
    const StoredSettings settings;
    for (const QString& address : {u"df.ship:5000"_s, u"DF.Ship:5000"_s, u"df.ship.:5000"_s}) {
        Address()->SetValue(address, nullptr);
        const CfgPtr station(StationCfg::GetStationCfg(StationCfg::GetStationAddress(), true));
        ASSERT_TRUE(station);
    }
    EXPECT_EQ(CfgCenter::GetAppCfg(ICfg::View::Stations).GetInt(u"ZANStations/Count"_s, 0), 1);
}

} // namespace

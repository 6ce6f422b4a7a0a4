#include "zanserver/deviceproperties.h"

#include "support/devicetree.h"
#include "support/fakedevice.h"
#include "support/printing.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <limits>
#include <optional>

using namespace Qt::StringLiterals;
using namespace StdDeviceDefinition;
using namespace ZANServer;

namespace {

/// Antennas of the settings, and a driver that is asked what its device is.
class DevicePropertiesTest : public testing::Test {
protected:
    DevicePropertiesTest() {
        AntennaData known = MakeAntenna(u"PX106"_s, u"RCV04"_s, 20e6, 1000e6);
        known.minRange = 30000001.0;
        known.mechOffset = 12.0F;
        known.compassEnabled = true;
        known.dfMethods = {METHOD_COR};
        DeviceTree::SetAntennas({known, MakeAntenna(u"PX110"_s, u"RCV01"_s, 300e3, 30e6)});
    }

    DeviceReading Read() {
        std::optional<DeviceReading> result;
        ReadDevice(m_errands, [&](const DeviceReading& reading) { result = reading; });
        while (!result) {
            m_thread.Wait();
            QCoreApplication::processEvents();
        }
        return *result;
    }
    void Publish() { m_properties.Publish(Read()); }

    static std::vector<AntennaData> GetAntennas() {
        AntennaDataList list;
        list.ReadAntennasFromValueTree(DeviceTree::Path());
        std::vector<AntennaData> antennas;
        for (const auto& each : list.GetAntennas()) {
            antennas.push_back(*each);
        }
        return antennas;
    }
    static std::vector<QString> GetWarningsOfTree() {
        return DeviceTree::DeviceValue<ValueStringList>(g_vdDevWarnings)->GetElements();
    }
    static QStringList GetDeviceInformation() {
        QStringList lines;
        for (const SelectionItem& item : DeviceTree::ServerValue<ValueSelection>(g_vdDevInfo)->GetItems()) {
            lines.append(item.GetName());
        }
        return lines;
    }

    void AddAntenna(const QString& name, double low, double high) {
        const auto handle = static_cast<qint32>(m_device.antennas.size());
        m_device.antennas.push_back({handle, name, low, high, true, false, false});
        m_device.antennaSetups.push_back({handle,
                                          {low, high},
                                          POLARISATION_VERTICAL,
                                          0,
                                          0,
                                          3.0,
                                          {{low, high, METHODDETAILED_SUPR | METHODDETAILED_COR}}});
    }

    DeviceTree m_tree;
    FakeDevice m_device;
    DriverThread m_thread{[this] { return std::make_unique<FakeDriver>(m_device); },
                          std::make_shared<DriverReceiver>(u"device"_s)};
    DriverErrands m_errands{m_thread};
    DeviceProperties m_properties;
};

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

} // namespace

TEST_F(DevicePropertiesTest, DriverThatSaysNothingLeavesTheDeviceAsTheSettingsHaveIt) {
    Publish();
    const auto antennas = GetAntennas();
    ASSERT_EQ(antennas.size(), 2U);
    EXPECT_TRUE(antennas[0].enabled && antennas[1].enabled);
    EXPECT_EQ(DeviceTree::DeviceValue<ValueString>(g_vdDevType)->GetValue(), u"ZANTIDE"_s);
    EXPECT_EQ(DeviceTree::DeviceValue<ValueNumericInt>(g_vdDevMaxChannelCount)->GetValue(), 60000);
    EXPECT_TRUE(m_properties.GetWarnings().isEmpty());
}

TEST_F(DevicePropertiesTest, AntennaOfTheSettingsKeepsTheChoicesAndGetsWhatOnlyTheDeviceKnows) {
    m_device.converters = {{0, CONVERTER_RCV03, u"RCV03"_s, 0, 0, true, false}};
    m_device.compasses = {{0, u"gyro"_s, 0.1, false}};
    AddAntenna(u"PX106"_s, 20e6, 1300e6);
    Publish();
    const AntennaData antenna = GetAntennas().at(0);
    EXPECT_EQ(antenna.name, u"PX106"_s);
    EXPECT_EQ(RangeOf(antenna), (FrequencyRange{30000001.0, 1000e6}));
    EXPECT_EQ(antenna.mechOffset, 12.0F);
    EXPECT_TRUE(antenna.compassEnabled);
    EXPECT_EQ(antenna.dfMethods, std::vector<quint32>{METHOD_COR});
    EXPECT_EQ(CoverageOf(antenna), (FrequencyRange{20e6, 1300e6}));
    EXPECT_EQ(antenna.handle, 0);
    EXPECT_EQ(antenna.converterHandle, 0);
    EXPECT_EQ(antenna.converterTypeName, u"RCV03"_s);
    EXPECT_EQ(antenna.compassHandle, 0);
    EXPECT_EQ(antenna.compassValue, 90.0F);
}

TEST_F(DevicePropertiesTest, AntennaThatTheSettingsLackIsAddedAsTheDeviceHasIt) {
    m_device.converters = {{0, CONVERTER_RCV03, {}, 0, 0, true, false}};
    AddAntenna(u"PX115SR"_s, 20e6, 1300e6);
    Publish();
    const AntennaData antenna = GetAntennas().back();
    EXPECT_EQ(antenna.name, u"PX115SR"_s);
    EXPECT_TRUE(antenna.enabled);
    EXPECT_EQ(RangeOf(antenna), (FrequencyRange{20e6, 1300e6}));
    EXPECT_EQ(antenna.mechOffset, 3.0F);
    EXPECT_EQ(antenna.dfAlgorithms, (QStringList{u"COR"_s, u"SUPR"_s}));
    EXPECT_EQ(antenna.converterTypeName, u"RCV03"_s) << "the name follows from the type";
}

TEST_F(DevicePropertiesTest, AntennaThatTheDeviceLacksIsShownDisabledAndAWarningNamesItOnce) {
    AddAntenna(u"PX106"_s, 20e6, 1300e6);
    Publish();
    const auto antennas = GetAntennas();
    ASSERT_EQ(antennas.size(), 2U);
    EXPECT_FALSE(antennas[1].enabled);
    const QString warning = u"the device does not have the antenna PX110 of the settings; disabled"_s;
    EXPECT_EQ(m_properties.GetWarnings(), QStringList{warning});
    EXPECT_EQ(GetWarningsOfTree(), std::vector{warning});
    Publish();
    EXPECT_EQ(m_properties.GetWarnings(), QStringList());
}

TEST_F(DevicePropertiesTest, AntennaThatIsThereAgainIsEnabledAgainAndThatOfTheOtherDeviceGoes) {
    AddAntenna(u"PX115SR"_s, 20e6, 1300e6);
    Publish();
    m_device.With([](FakeDevice& device) {
        device.antennas = {{0, u"PX106"_s, 20e6, 1300e6, false, false, false},
                           {1, u"PX110"_s, 300e3, 30e6, false, false, false}};
    });
    Publish();
    const auto antennas = GetAntennas();
    ASSERT_EQ(antennas.size(), 2U);
    EXPECT_TRUE(antennas[0].enabled && antennas[1].enabled);
}

TEST_F(DevicePropertiesTest, AntennaThatTheOperatorHasSwitchedOffStaysOff) {
    Tree::Instance()->Find<ValueBool>(DeviceTree::Path() + u"/Ant1/AntEnabled"_s)->SetValue(false);
    AddAntenna(u"PX106"_s, 20e6, 1300e6);
    Publish();
    AddAntenna(u"PX110"_s, 300e3, 30e6);
    Publish();
    EXPECT_FALSE(GetAntennas().at(1).enabled);
}

TEST_F(DevicePropertiesTest, RangeOfUseOutsideTheLimitsOfTheDeviceBecomesItsCoverage) {
    AddAntenna(u"PX106"_s, 100e6, 200e6);
    Publish();
    EXPECT_EQ(RangeOf(GetAntennas().at(0)), (FrequencyRange{100e6, 200e6}));
}

TEST_F(DevicePropertiesTest, LimitsThatAreNotNumbersAreRefusedAndTold) {
    for (const auto& [low, high] : {std::pair{NOT_A_NUMBER, 1e9}, std::pair{0.0, INFINITE},
                                    std::pair{2e9, 1e9}, std::pair{-1.0, 1e9}}) {
        m_device.antennas = {{0, u"PX106"_s, low, high, true, false, false}};
        const DeviceReading reading = Read();
        EXPECT_TRUE(reading.antennas.empty());
        ASSERT_EQ(reading.faults.size(), 1);
        EXPECT_TRUE(reading.faults.first().startsWith(u"antenna 0 (PX106): "_s))
            << reading.faults.first().toStdString();
    }
}

TEST_F(DevicePropertiesTest, TypeAndNameOfAConverterTellEachOtherAndOneWithNeitherIsLeftOut) {
    m_device.converters = {{0, CONVERTER_NONE, u"RCV01"_s, 0, 0, true, false},
                           {1, CONVERTER_NONE, {}, 0, 0, true, false},
                           {2, CONVERTER_RCV03, {}, 0, 0, true, false}};
    const DeviceReading reading = Read();
    ASSERT_EQ(reading.converters.size(), 2U);
    EXPECT_EQ(reading.converters[0].handle, 0);
    EXPECT_EQ(reading.converters[0].type, CONVERTER_RCV01);
    EXPECT_EQ(reading.converters[1].handle, 2);
    EXPECT_EQ(reading.converters[1].typeName, u"RCV03"_s);
    EXPECT_EQ(reading.faults, QStringList{u"converter 1 has no type; it is left out"_s});
}

TEST_F(DevicePropertiesTest, SetupThatIsNotUsableIsRepairedAndTold) {
    AddAntenna(u"PX106"_s, 20e6, 1300e6);
    m_device.antennaSetups[0].range = {NOT_A_NUMBER, 1e9};
    m_device.antennaSetups[0].mechanicalOffset = INFINITE;
    m_device.antennaSetups[0].subRanges.assign(1000, {20e6, 30e6, METHODDETAILED_COR});
    const DeviceReading reading = Read();
    const auto& setup = *reading.antennas.at(0).setup;
    EXPECT_EQ(setup.range, (std::pair{20e6, 1300e6}));
    EXPECT_EQ(setup.mechanicalOffset, 0.0);
    EXPECT_EQ(setup.subRanges.size(), 64U);
    EXPECT_EQ(reading.faults.size(), 2);
}

TEST_F(DevicePropertiesTest, DriverIsAskedForNoMoreThanTheBoundedNumbers) {
    m_device.antennas.assign(100'000, {0, u"PX106"_s, 20e6, 1300e6, true, false, false});
    m_device.converters.assign(100'000, {0, CONVERTER_RCV03, u"RCV03"_s, 0, 0, true, false});
    m_device.compasses.assign(100'000, {0, u"gyro"_s, 0.1, false});
    m_device.components.emplace(1000, KvZANCommon::ComponentInfo{u"DF unit"_s, u"1"_s, u"2"_s, true});
    const DeviceReading reading = Read();
    EXPECT_EQ(reading.antennas.size(), 64U);
    EXPECT_EQ(reading.converters.size(), 32U);
    EXPECT_EQ(reading.compasses.size(), 16U);
    EXPECT_EQ(reading.components->size(), 256U);
    EXPECT_EQ(reading.faults.size(), 1);
}

TEST_F(DevicePropertiesTest, TextsAreOneLineEachAndBoundedInBytes) {
    m_device.antennas = {{0, QString(100'000, u'ä'), 20e6, 1300e6, true, false, false},
                         {1, u"PX\n1\t06"_s, 20e6, 1300e6, true, false, false},
                         {2, QString(), 20e6, 1300e6, true, false, false}};
    const DeviceReading reading = Read();
    ASSERT_EQ(reading.antennas.size(), 2U);
    EXPECT_LE(reading.antennas[0].property.name.toUtf8().size(), 64);
    EXPECT_EQ(reading.antennas[1].property.name, u"PX 1 06"_s);
    EXPECT_EQ(reading.faults, QStringList{u"antenna 2 has no name; it is left out"_s});
}

TEST_F(DevicePropertiesTest, FaultsAreBounded) {
    m_device.antennas.assign(1000, {0, QString(), 20e6, 1300e6, true, false, false});
    EXPECT_EQ(Read().faults.size(), 20);
}

TEST_F(DevicePropertiesTest, QuestionThatThrowsEndsOnlyWhatItIsAbout) {
    AddAntenna(u"PX106"_s, 20e6, 1300e6);
    m_device.maxChannelCount = 1000;
    m_device.ThrowIn(u"GetConverterProperty"_s);
    const DeviceReading reading = Read();
    EXPECT_EQ(reading.antennas.size(), 1U);
    EXPECT_TRUE(reading.converters.empty());
    EXPECT_EQ(reading.maxChannelCount, 1000);
}

TEST_F(DevicePropertiesTest, TypeAndOptionsAreThoseOfADriverThatKnowsThem) {
    m_device.type = u"ZANREEF"_s;
    m_device.options = u"ZANREEF-HF"_s;
    DeviceTree::Connect();
    Publish();
    EXPECT_EQ(DeviceTree::DeviceValue<ValueString>(g_vdDevType)->GetValue(), u"ZANREEF"_s);
    EXPECT_EQ(DeviceTree::DeviceValue<ValueString>(g_vdDevOptions)->GetValue(), u"ZANREEF-HF"_s);
    EXPECT_EQ(DeviceTree::Connect().GetZANType(), ZANTYPE_ZANREEF);
}

TEST_F(DevicePropertiesTest, OptionThatIsNotKnownIsWarnedOf) {
    m_device.options = u"WINGS"_s;
    Publish();
    EXPECT_EQ(m_properties.GetWarnings(),
              QStringList{
                  u"an option of the device is not known; it and the options after it are ignored: WINGS"_s});
}

TEST_F(DevicePropertiesTest, ComponentsAreTheDeviceInformationAndTheOnesThatDoNotWorkAreTold) {
    m_device.components = {
        {{u"DF unit"_s, u"1001"_s, u"2.1"_s, true}, {u"HF;receiver"_s, u"7"_s, u"1"_s, false}}};
    DeviceTree::ServerValue<ValueString>(g_vdDevRequiredComponents)->SetValue(u"DF unit;HF,receiver"_s);
    DeviceTree::ServerValue<ValueBool>(g_vdDevCheckRequirements)->SetValue(true);
    Publish();
    EXPECT_EQ(GetDeviceInformation(), (QStringList{u">>Components"_s, u"1;component;2.1 (1001);DF unit"_s,
                                                   u">>HF,receiver does not work"_s}));
    EXPECT_EQ(m_properties.GetWarnings(), (QStringList{u"the component HF,receiver does not work"_s,
                                                       u"required hardware is missing: HF,receiver"_s}));
}

#include "zanserver/stationdevice.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/eventloop.h"
#include "support/fulldisk.h"
#include "support/printing.h"
#include "support/storedsettings.h"
#include "valueframework/tree.h"
#include "zancommon/commandprotocol.h"
#include "zancommon/zanpath.h"
#include "zanserver/driverlibrary.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>

#include <cmath>
#include <optional>
#include <set>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using namespace StdDeviceDefinition;

// A station with a device that measures, as one who watches the tree sees it.

namespace {

class LiveDeviceTest : public testing::Test {
protected:
    LiveDeviceTest() {
        EXPECT_TRUE(QDir::setCurrent(m_settings.GetDirectory())); // the log of the commands is below it
        EXPECT_TRUE(CfgCenter::SetComponentDirectory(QStringLiteral(ZAN_DRIVERS)));
        const DriverChoice choice{u"simulator"_s, u"airfield"_s};
        m_station.emplace(choice);
        m_station->StartOutput();
        QString fault;
        DriverComponentPtr driver = DriverLibrary::Load(choice.name, fault);
        EXPECT_EQ(fault, QString());
        m_device.emplace(*m_station, choice, std::move(driver));
        m_device->SetFirstCommand(u"speed max"_s);
    }
    ~LiveDeviceTest() override {
        m_device.reset();
        m_station.reset();
        QDir::setCurrent(m_before);
    }

    void Open() {
        m_device->Open();
        ASSERT_TRUE(
            SpinUntil([this] { return m_device->GetLink().GetState() == DriverLink::State::Connected; }));
    }
    template <class T>
    static T& ServerValue(const ValueDescriptor& descriptor) {
        return *Tree::Instance()->Find<T>(ZANPath::Server(descriptor));
    }
    static ValueString& DeviceText(const ValueDescriptor& descriptor) {
        return *Tree::Instance()->Find<ValueString>(ZANPath::Device(descriptor));
    }

    const QString m_before = QDir::currentPath();
    StoredSettings m_settings;
    std::optional<Station> m_station;
    std::optional<StationDevice> m_device;
};

} // namespace

TEST_F(LiveDeviceTest, ResultsOfABuiltInTestAreLinesOfTheMessages) {
    Open();
    DeviceText(g_vdCmdCommand).SetValue(u"bit full"_s);
    EXPECT_TRUE(SpinUntil([] {
        return DeviceText(g_vdCmdResult).GetValue() == u"ok" &&
               DeviceText(g_vdBitMessages).GetValue().contains(u"DF unit: no error"_s);
    })) << DeviceText(g_vdBitMessages).GetValue().toStdString();
}

TEST_F(LiveDeviceTest, ChannelsOfAWideBandLieAroundTheTunedFrequencyOneResolutionBandwidthApart) {
    ServerValue<ValueSelection>(g_vdOperationMode).SetCurrentKey(OPMODE_WIDEBAND_FFM);
    constexpr double TUNED = 121.0e6;
    ServerValue<ValueNumericDouble>(g_vdFrequency).SetValue(TUNED);
    std::set<double> steps;
    m_station->SetBlockObserver([&](const BearingBlock& block, const std::vector<BearingResult>& bearings) {
        if (block.range == BearingBlock::WIDEBAND && block.bearings.size() == bearings.size()) {
            const std::size_t middle = bearings.size() / 2;
            EXPECT_EQ(bearings.at(middle).GetFrequency(), TUNED);
            EXPECT_NEAR(bearings.front().GetFrequency() + bearings.back().GetFrequency(), 2 * TUNED, 1e-3);
            steps.insert(std::round(bearings.at(middle + 1).GetFrequency() - TUNED));
        }
    });
    Open();
    EXPECT_TRUE(SpinUntil([&] { return !steps.empty(); }));
    m_device->Close();
    m_station->SetBlockObserver({});
    const auto& bandwidths = ServerValue<ValueSelection>(g_vdDfBandwidth);
    EXPECT_EQ(
        steps,
        std::set{
            bandwidths.GetItems().at(static_cast<std::size_t>(bandwidths.GetCurrentIndex())).GetValue()});
}

TEST_F(LiveDeviceTest, LogOfTheCommandsThatCannotBeWrittenAnyMoreIsToldOnceAndTheDeviceGoesOn) {
    QStringList problems;
    QObject::connect(&*m_device, &StationDevice::LogFailed, &*m_device,
                     [&](const QString& problem) { problems.append(problem); });
    Open();
    EXPECT_EQ(m_device->GetLogProblem(), QString());
    const QFileInfo log(CommandProtocol::LOG_DIRECTORY + u"/commandlog-airfield.txt"_s);
    const FullDisk disk(log.size());
    for (const QString& speed : {u"test speed 50"_s, u"test speed 60"_s}) {
        DeviceText(g_vdCmdCommand).SetValue(speed);
        EXPECT_TRUE(SpinUntil([&] {
            return DeviceText(g_vdCmdTaken).GetValue() == speed &&
                   DeviceText(g_vdCmdResult).GetValue() == u"ok";
        }));
    }
    EXPECT_TRUE(SpinUntil([&] { return !problems.isEmpty(); }));
    EXPECT_EQ(problems, QStringList{m_device->GetLogProblem()});
    EXPECT_NE(m_device->GetLogProblem(), QString());
    EXPECT_EQ(m_device->GetLink().GetState(), DriverLink::State::Connected);
}

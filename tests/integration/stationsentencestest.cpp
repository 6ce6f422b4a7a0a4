#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/eventloop.h"
#include "support/gpsdserver.h"
#include "support/observers.h"
#include "support/printing.h"
#include "support/storedsettings.h"
#include "valueframework/tree.h"
#include "zancommon/zanvaluenames.h"
#include "zanserver/station.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;
using namespace ZANServer;
using namespace StdDeviceDefinition;

// What a station makes of the blocks of a driver: the values of the tree, the sentences, and what stays in
// the settings.

namespace {

const QByteArray HEAD = "$PLG, 71.5,FRQ, 121500000,CMP, -0.1,QUA, 90.0,LEV, -0.5,TIM,000001";
const QByteArray ATTITUDE = ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0";
const QByteArray NOWHERE = ",PTM,,LAT,  0.00000,LON,0.0000000\r\n";
const QByteArray MEASURED = ",PTM,000001,LAT, 52.50000,LON,5.5000000\r\n";

constexpr long SOURCE_NONE = 0;
constexpr long SOURCE_GPS = 1;
constexpr long SOURCE_MANUAL = 2;

template <class T>
T* TreeValue(const QString& path) {
    T* const value = Tree::Instance()->Find<T>(path);
    EXPECT_TRUE(value) << path.toStdString();
    return value;
}

template <class T>
T* ServerValue(const ValueDescriptor& descriptor) {
    return TreeValue<T>(ZANPath::SERVER.toString() + descriptor.PathName());
}

TValueState StateOf(const ValueDescriptor& descriptor) {
    return Tree::Instance()->GetValue(ZANPath::SERVER.toString() + descriptor.PathName())->GetState();
}

/// A block of one usable bearing, one second after midnight.
BearingBlock MakeBlock() {
    BearingBlock block;
    block.time = 1000;
    block.status.frequency = 121.5e6;
    Bearing bearing;
    bearing.azimuth = 715;
    bearing.quality = 90;
    block.bearings = {bearing};
    return block;
}

BearingBlock MakeBlockAt(std::optional<double> latitude, std::optional<double> longitude) {
    BearingBlock block = MakeBlock();
    block.status.latitude = latitude;
    block.status.longitude = longitude;
    return block;
}

/// A block with everything that a driver may say of the platform.
BearingBlock MakeWholeBlock() {
    BearingBlock block = MakeBlockAt(52.5, 5.5);
    block.status.heading = 12.5;
    block.status.pitch = 1.0;
    block.status.roll = 1.0;
    block.status.altitude = 20.0;
    return block;
}
/// Where it is in the tree.
const std::array PLATFORM{&g_vdTrueHeading, &g_vdPitch,        &g_vdRoll,         &g_vdAltitude,
                          &g_vdPosLatitude, &g_vdPosLongitude, &g_vdPosLastUpdate};

constexpr qint64 SHORT_AGE_MS = 1000; // and far longer than a busy machine stops a test

class StationSentencesTest : public testing::Test {
protected:
    StationSentencesTest() {
        ICfg& cfg = CfgCenter::GetAppCfg(ICfg::View::Outputs);
        cfg.SetBool(u"FileOutput_Enabled"_s, true);
        cfg.SetString(u"FileOutput_Address"_s, OutputName());
        Restart();
    }

    /// Ends the station and starts it again.
    void Restart(const DriverChoice& driver = {}) {
        m_station.reset();
        m_station.emplace(driver);
        m_station->StartOutput();
        m_read = 0;
    }
    /// Where what is measured is current for the shortest time that the settings accept.
    void RestartWithShortAge(const DriverChoice& driver = {}) {
        CfgCenter::GetAppCfg(ICfg::View::Outputs).SetInt(u"Gpsd/MaxAge"_s, SHORT_AGE_MS);
        Restart(driver);
    }
    /// The sentences that a block brings about.
    QByteArray Send(BearingBlock block) {
        m_station->Process(block);
        QFile file(OutputName());
        EXPECT_TRUE(file.open(QFile::ReadOnly) && file.seek(m_read));
        const QByteArray news = file.readAll();
        m_read += news.size();
        return news;
    }
    static void ChooseSource(long key) {
        EXPECT_TRUE(ServerValue<ValueSelection>(g_vdPosSource)->SetCurrentKey(key, nullptr));
    }
    static void SetPlace(double latitude, double longitude) {
        EXPECT_TRUE(ServerValue<ValueNumericDouble>(g_vdPosLatitude)->SetValue(latitude, nullptr));
        EXPECT_TRUE(ServerValue<ValueNumericDouble>(g_vdPosLongitude)->SetValue(longitude, nullptr));
    }
    void ExpectNoPlace() {
        EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + NOWHERE);
        EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::NotMeasured);
        EXPECT_EQ(StateOf(g_vdPosLongitude), TValueState::NotMeasured);
    }
    /// One half of the manual position is set, and only later the other one.
    void ExpectHalfIsNone(const ValueDescriptor& half, const QString& stored, const ValueDescriptor& other,
                          const QString& missing) {
        ChooseSource(SOURCE_MANUAL);
        EXPECT_TRUE(ServerValue<ValueNumericDouble>(half)->SetValue(48.1, nullptr));
        ExpectNoPlace();
        Restart();
        ExpectNoPlace();
        const QString settings = m_settings.Read();
        EXPECT_TRUE(settings.contains(stored)) << settings.toStdString();
        EXPECT_FALSE(settings.contains(missing)) << settings.toStdString();
        EXPECT_TRUE(ServerValue<ValueNumericDouble>(other)->SetValue(11.5, nullptr));
        EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::Valid);
        EXPECT_EQ(StateOf(g_vdPosLongitude), TValueState::Valid);
        EXPECT_EQ(ServerValue<ValueNumericDouble>(half)->GetValue(), 48.1);
    }
    [[nodiscard]] QString StoredPlace() {
        m_station.reset();
        const QString settings = m_settings.CloseAndRead();
        QString place;
        for (const QString& line : settings.split(u'\n')) {
            if (line.startsWith(u"Location"_s)) {
                place += line + u' ';
            }
        }
        return place;
    }
    [[nodiscard]] QString OutputName() const { return m_directory.filePath(u"sentences"_s); }

    const StoredSettings m_settings;
    QTemporaryDir m_directory;
    std::optional<Station> m_station;
    qint64 m_read = 0;
};

} // namespace

// The position

TEST_F(StationSentencesTest, AtTheStartNothingOfThePositionIsMeasured) {
    EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::NotMeasured);
    EXPECT_EQ(StateOf(g_vdPosLongitude), TValueState::NotMeasured);
    EXPECT_EQ(StateOf(g_vdPosLastUpdate), TValueState::NotMeasured);
    EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + NOWHERE);
}

TEST_F(StationSentencesTest, PositionThatIsLostIsNotPassedOnWithItsOldTime) {
    EXPECT_EQ(Send(MakeBlockAt(52.5, 5.5)), HEAD + ATTITUDE + MEASURED);
    EXPECT_EQ(StateOf(g_vdPosLastUpdate), TValueState::Valid);
    EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + NOWHERE);
    EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::NotMeasured);
    EXPECT_EQ(StateOf(g_vdPosLongitude), TValueState::NotMeasured);
    EXPECT_EQ(StateOf(g_vdPosLastUpdate), TValueState::NotMeasured);
    EXPECT_EQ(Send(MakeBlockAt(52.5, 5.5)), HEAD + ATTITUDE + MEASURED) << "found again";
}

TEST_F(StationSentencesTest, HalfAPositionIsNone) {
    for (const auto& [latitude, longitude] :
         {std::pair<std::optional<double>, std::optional<double>>{52.5, {}}, {{}, 5.5}}) {
        Send(MakeBlockAt(52.5, 5.5));
        EXPECT_EQ(Send(MakeBlockAt(latitude, longitude)), HEAD + ATTITUDE + NOWHERE);
        EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::NotMeasured);
        EXPECT_EQ(StateOf(g_vdPosLongitude), TValueState::NotMeasured);
        EXPECT_EQ(StateOf(g_vdPosLastUpdate), TValueState::NotMeasured);
    }
}

TEST_F(StationSentencesTest, PositionOutsideTheEarthIsNone) {
    for (const auto& [latitude, longitude] : {std::pair{90.1, 5.5},
                                              {52.5, -180.1},
                                              {std::nan(""), 5.5},
                                              {52.5, std::numeric_limits<double>::infinity()}}) {
        Send(MakeBlockAt(52.5, 5.5));
        EXPECT_EQ(Send(MakeBlockAt(latitude, longitude)), HEAD + ATTITUDE + NOWHERE);
    }
}

TEST_F(StationSentencesTest, WhileTheSourceIsManualThePlaceHoldsThatWasSetAndHasNoTime) {
    ChooseSource(SOURCE_MANUAL);
    SetPlace(48.1, 11.5);
    const QByteArray set = ",PTM,,LAT, 48.10000,LON,11.5000000\r\n";
    EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + set);
    EXPECT_EQ(Send(MakeBlockAt(52.5, 5.5)), HEAD + ATTITUDE + set) << "no measurement touches it";
    EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::Valid);
    EXPECT_EQ(StateOf(g_vdPosLastUpdate), TValueState::NotMeasured);
    EXPECT_EQ(StoredPlace(), u"LocationChoice=2 LocationLatitude=48.1 LocationLongitude=11.5 "_s);
}

TEST_F(StationSentencesTest, ChoosingManualBringsThePlaceBackThatWasSet) {
    ChooseSource(SOURCE_MANUAL);
    SetPlace(48.1, 11.5);
    for (const long source : {SOURCE_GPS, SOURCE_NONE}) {
        ChooseSource(source);
        EXPECT_EQ(Send(MakeBlockAt(52.5, 5.5)), HEAD + ATTITUDE + MEASURED);
        ChooseSource(SOURCE_MANUAL);
        EXPECT_EQ(Send(MakeBlockAt(52.5, 5.5)), HEAD + ATTITUDE + ",PTM,,LAT, 48.10000,LON,11.5000000\r\n");
    }
}

TEST_F(StationSentencesTest, LeavingManualShowsWhatTheLatestBlockHasMeasured) {
    ChooseSource(SOURCE_MANUAL);
    SetPlace(48.1, 11.5);
    Send(MakeBlockAt(52.5, 5.5));
    ChooseSource(SOURCE_GPS);
    EXPECT_EQ(ServerValue<ValueNumericDouble>(g_vdPosLatitude)->GetValue(), 52.5);
    EXPECT_EQ(ServerValue<ValueTimeStamp>(g_vdPosLastUpdate)->GetValue(), 1000U);
    ChooseSource(SOURCE_MANUAL);
    Send(MakeBlock());
    ChooseSource(SOURCE_GPS);
    EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::NotMeasured);
}

TEST_F(StationSentencesTest, PlaceThatWasSetIsKeptInTheSettingsWhateverIsMeasured) {
    ChooseSource(SOURCE_MANUAL);
    SetPlace(48.1, 11.5);
    ChooseSource(SOURCE_GPS);
    Send(MakeBlockAt(52.5, 5.5));
    Restart();
    EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::NotMeasured) << "a place that was set is not measured";
    Send(MakeBlockAt(52.5, 5.5));
    ChooseSource(SOURCE_MANUAL);
    EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + ",PTM,,LAT, 48.10000,LON,11.5000000\r\n");
    ChooseSource(SOURCE_GPS);
    EXPECT_EQ(StoredPlace(), u"LocationChoice=1 LocationLatitude=48.1 LocationLongitude=11.5 "_s);
}

TEST_F(StationSentencesTest, PlaceThatIsSetWhileAnotherIsMeasuredWaitsForManual) {
    ChooseSource(SOURCE_GPS);
    Send(MakeBlockAt(52.5, 5.5));
    SetPlace(48.1, 11.5);
    EXPECT_EQ(ServerValue<ValueNumericDouble>(g_vdPosLatitude)->GetValue(), 52.5);
    EXPECT_EQ(Send(MakeBlockAt(52.5, 5.5)), HEAD + ATTITUDE + MEASURED);
    ChooseSource(SOURCE_MANUAL);
    EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + ",PTM,,LAT, 48.10000,LON,11.5000000\r\n");
}

TEST_F(StationSentencesTest, ManualPlaceOfWhichNothingWasSetIsNotMeasuredAndLeavesNothingInTheSettings) {
    ChooseSource(SOURCE_MANUAL);
    EXPECT_EQ(Send(MakeBlockAt(52.5, 5.5)), HEAD + ATTITUDE + NOWHERE);
    EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::NotMeasured);
    EXPECT_EQ(StateOf(g_vdPosLongitude), TValueState::NotMeasured);
    EXPECT_EQ(StoredPlace(), u"LocationChoice=2 "_s);
}

TEST_F(StationSentencesTest, ManualPlaceOfWhichOnlyTheLatitudeWasSetIsNone) {
    ExpectHalfIsNone(g_vdPosLatitude, u"LocationLatitude=48.1"_s, g_vdPosLongitude, u"LocationLongitude"_s);
}

TEST_F(StationSentencesTest, ManualPlaceOfWhichOnlyTheLongitudeWasSetIsNone) {
    ExpectHalfIsNone(g_vdPosLongitude, u"LocationLongitude=48.1"_s, g_vdPosLatitude, u"LocationLatitude"_s);
}

TEST_F(StationSentencesTest, PlaceOnTheEquatorAndAtGreenwichIsSetByCallingItValid) {
    ChooseSource(SOURCE_MANUAL);
    SetPlace(0.0, 0.0);
    EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::NotMeasured) << "what is there already is not news";
    for (const ValueDescriptor* half : {&g_vdPosLatitude, &g_vdPosLongitude}) {
        ServerValue<ValueNumericDouble>(*half)->SetState(TValueState::Valid, nullptr);
    }
    EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::Valid);
    EXPECT_EQ(StateOf(g_vdPosLongitude), TValueState::Valid);
    EXPECT_EQ(StoredPlace(), u"LocationChoice=2 LocationLatitude=0 LocationLongitude=0 "_s);
}

TEST_F(StationSentencesTest, ManualPlaceIsThereFromTheStart) {
    ChooseSource(SOURCE_MANUAL);
    SetPlace(48.1, 11.5);
    Restart();
    EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::Valid);
    EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + ",PTM,,LAT, 48.10000,LON,11.5000000\r\n");
}

// Heading and azimuth

TEST_F(StationSentencesTest, AttitudeThatIsLostIsNotPassedOn) {
    BearingBlock block = MakeBlock();
    block.status.heading = 12.3;
    block.status.pitch = 1.5;
    block.status.roll = -2.5;
    block.status.altitude = -4.0;
    EXPECT_EQ(Send(block),
              "$PLG, 71.5,FRQ, 121500000,CMP, 12.3,QUA, 90.0,LEV, -0.5,TIM,000001,ELV,0.0,PTC,1.5,"
              "RLL,-2.5,ALT,-4.0" +
                  NOWHERE);
    EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + NOWHERE);
}

TEST_F(StationSentencesTest, OffsetOfTheHeadingIsAddedToEveryHeading) {
    ServerValue<ValueNumericInt>(g_vdHeaOffset)->SetValue(-150, nullptr);
    BearingBlock block = MakeBlock();
    block.status.heading = 12.3;
    EXPECT_TRUE(Send(block).contains(",CMP,357.3,"));
    block.status.magneticHeading = true;
    EXPECT_TRUE(Send(block).contains(",CMP,357.3,"));
    block.status.heading.reset();
    EXPECT_TRUE(Send(block).contains(",CMP, -0.1,")) << "no heading stays no heading";
}

TEST_F(StationSentencesTest, DeclinationIsAddedToAMagneticHeadingOnly) {
    ServerValue<ValueNumericInt>(g_vdDeclination)->SetValue(35, nullptr);
    BearingBlock block = MakeBlock();
    block.status.heading = 358.0;
    EXPECT_TRUE(Send(block).contains("$PLG, 71.5,FRQ, 121500000,CMP,358.0,"));
    block.status.magneticHeading = true;
    EXPECT_TRUE(Send(block).contains("$PLG, 71.5,FRQ, 121500000,CMP,  1.5,"));
    ServerValue<ValueNumericInt>(g_vdHeaOffset)->SetValue(3600, nullptr);
    EXPECT_TRUE(Send(block).contains("$PLG, 71.5,FRQ, 121500000,CMP,  1.5,"));
}

TEST_F(StationSentencesTest, HeadingThatIsNoAngleIsNotMeasured) {
    BearingBlock block = MakeBlock();
    block.status.heading = std::nan("");
    EXPECT_TRUE(Send(block).contains(",CMP, -0.1,"));
    block.status.heading = 359.97;
    EXPECT_TRUE(Send(block).contains(",CMP,  0.0,")) << "what rounds up to a full circle is north";
}

TEST_F(StationSentencesTest, MountingOfTheServingAntennaIsAddedOnlyWhereTheDriverLeavesThatToTheStation) {
    auto* const offset =
        TreeValue<ValueNumericDouble>(u"/DEVICES/ZANServer/Ant1/AntMechOffset"_s); // of PX106
    offset->SetValue(-80.0, nullptr);
    Station::GetCharacteristics().SetBase_ValuePath(ZANPath::DEVICE.toString(), true); // has it read again
    BearingBlock block = MakeBlock();
    EXPECT_TRUE(Send(block).startsWith("$PLG, 71.5,"));
    block.status.withoutMechOffset = true;
    EXPECT_TRUE(Send(block).startsWith("$PLG,351.5,"));
    block.status.frequency = 10e6; // another antenna
    EXPECT_TRUE(Send(block).startsWith("$PLG, 71.5,"));
    block.status.frequency = 5e9; // none
    EXPECT_TRUE(Send(block).startsWith("$PLG, 71.5,"));
}

TEST_F(StationSentencesTest, AzimuthsBeyondTheFullCircleAreTakenModuloIt) {
    BearingBlock block = MakeBlock();
    for (const auto& [delivered, text] :
         {std::pair{3599, "359.9"}, {3600, "  0.0"}, {3601, "  0.1"}, {7300, " 10.0"}, {65535, " 73.5"}}) {
        block.bearings[0].azimuth = static_cast<quint16>(delivered);
        EXPECT_TRUE(Send(block).startsWith("$PLG," + QByteArray(text) + ',')) << delivered;
    }
}

// The counts

namespace {

quint64 Sum(const StationCounts& counts) {
    return counts.rejectedPitchRoll + counts.rejectedOverhead + counts.withoutSignal + counts.unusable +
           counts.published;
}

} // namespace

TEST_F(StationSentencesTest, PositionAndHeadingOfAStationsRecordingCountWhateverSourceAndOffsetAre) {
    ChooseSource(SOURCE_MANUAL);
    SetPlace(1.0, 2.0);
    EXPECT_TRUE(ServerValue<ValueNumericInt>(g_vdHeaOffset)->SetValue(100, nullptr));
    m_station->TakeRecordedPosition({.latitude = 52.5, .longitude = 5.5, .time = 1000, .valid = true});
    BearingBlock block = MakeBlockAt(3.0, 4.0);
    block.status.heading = 359.9;
    QByteArray head = HEAD;
    head.replace("CMP, -0.1", "CMP,359.9");
    EXPECT_EQ(Send(block), head + ATTITUDE + MEASURED);
    ChooseSource(SOURCE_NONE);
    EXPECT_EQ(Send(block), head + ATTITUDE + MEASURED);
    m_station->TakeRecordedPosition({.latitude = 52.5, .longitude = 5.5, .time = 0, .valid = true});
    EXPECT_EQ(Send(block), head + ATTITUDE + ",PTM,,LAT, 52.50000,LON,5.5000000\r\n");
    m_station->TakeRecordedPosition({});
    EXPECT_EQ(Send(block), head + ATTITUDE + NOWHERE);
}

TEST_F(StationSentencesTest, ObserverOfBlocksGetsThemBeforeTheFiltersWithCompleteAzimuths) {
    BearingBlock seen;
    std::vector<BearingResult> results;
    double pitch = 0.0;
    m_station->SetBlockObserver([&](const BearingBlock& block, const std::vector<BearingResult>& bearings) {
        seen = block;
        results = bearings;
        pitch = ServerValue<ValueNumericDouble>(g_vdPitch)->GetValue();
    });
    m_station->SetFrequencyOf([](const BearingBlock&, std::size_t) { return 121.6e6; });
    BearingBlock block = MakeBlock();
    block.status.pitch = 30.0; // is rejected
    const BearingBlock before = block;
    EXPECT_EQ(Send(block), "");
    EXPECT_EQ(seen.bearings, before.bearings);
    EXPECT_EQ(pitch, 30.0) << "the attitude is in the tree";
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].GetFrequency(), 121.6e6);
    EXPECT_EQ(results[0].GetAzimuth(), 715);
}

TEST_F(StationSentencesTest, EveryBearingIsCountedOnceWhicheverFiltersAreOn) {
    m_station->SetOverheadThreshold(60.0);
    for (const bool isTilted : {false, true}) {
        for (const int speed : {0, 1}) {
            m_station->SetConnectionSpeed(speed);
            BearingBlock block = MakeBlock();
            block.status.pitch = isTilted ? 5.0 : 0.0;
            block.bearings.resize(5, block.bearings[0]);
            block.bearings[1].elevation = 600;
            block.bearings[2].quality = 0;
            block.bearings[3].marker = -4000; // by the driver
            block.bearings[4].quality = 65535;
            const quint64 before = Sum(m_station->GetCounts());
            Send(block);
            EXPECT_EQ(Sum(m_station->GetCounts()) - before, 5U) << isTilted << speed;
        }
    }
    const StationCounts& counts = m_station->GetCounts();
    EXPECT_EQ(counts.bearings, 20U);
    EXPECT_EQ(counts.rejectedPitchRoll, 8U);
    EXPECT_EQ(counts.rejectedOverhead, 2U);
    EXPECT_EQ(counts.withoutSignal, 2U) << "while no connection is running";
    EXPECT_EQ(counts.unusable, 4U) << "the two marked by the driver, and the two without signal otherwise";
    EXPECT_EQ(counts.published, 4U);
}

// What stays

TEST_F(StationSentencesTest, SetupRowsThatAreElsewhereInTheTreeSurviveARestart) {
    TreeValue<ValueString>(u"/ZANServer/Cfg/CfgModifyTime"_s)->SetValue(u"200126093000"_s, nullptr);
    TreeValue<ValueBool>(u"/ZANServer/USEJOBSETTINGSFORFFM"_s)->SetValue(true, nullptr);
    TreeValue<ValueString>(u"/ZANServer/CalibrationSchedule"_s)->SetValue(u"daily 03:00"_s, nullptr);
    Restart();
    EXPECT_EQ(TreeValue<ValueString>(u"/ZANServer/Cfg/CfgModifyTime"_s)->GetValue(), u"200126093000"_s);
    EXPECT_EQ(TreeValue<ValueString>(u"/DEVICES/ZANServer/Cfg/CfgModifyTime"_s)->GetValue(),
              u"200126093000"_s);
    EXPECT_TRUE(TreeValue<ValueBool>(u"/ZANServer/USEJOBSETTINGSFORFFM"_s)->GetValue());
    EXPECT_EQ(TreeValue<ValueString>(u"/ZANServer/CalibrationSchedule"_s)->GetValue(), u"daily 03:00"_s);
    m_station.reset();
    const QString settings = m_settings.CloseAndRead();
    for (const QString& line : {u"\nLastModification=200126093000\n"_s, u"\nUseJobSettings4FFM=true\n"_s,
                                u"\nCalibrationSchedule=daily 03:00\n"_s}) {
        EXPECT_TRUE(settings.contains(line)) << line.toStdString() << settings.toStdString();
    }
}

TEST_F(StationSentencesTest, EveryRowOfTheSetupTableFindsItsValueBelowTheServer) {
    ZANSetupData setup(u"all"_s, ZANPath::SERVER.toString());
    setup.ReadFromValueTree({});
    for (const ZANSetupData::DataEntry& row : ZANSetupData::GetEntries()) {
        EXPECT_TRUE(row.value) << row.key.toStdString();
    }
    EXPECT_EQ(ZANSetupData::GetEntries().size(), 22U);
}

TEST_F(StationSentencesTest, BothTimesOfTheLastModificationStayEqualWithoutAnEcho) {
    auto* const server = TreeValue<ValueString>(u"/ZANServer/Cfg/CfgModifyTime"_s);
    auto* const device = TreeValue<ValueString>(u"/DEVICES/ZANServer/Cfg/CfgModifyTime"_s);
    CodeObserver ofServer;
    CodeObserver ofDevice;
    server->AddObserver(&ofServer);
    device->AddObserver(&ofDevice);
    server->SetValue(u"1"_s, nullptr);
    EXPECT_EQ(device->GetValue(), u"1"_s);
    EXPECT_EQ(ofServer.codes.size(), 1U);
    EXPECT_EQ(ofDevice.codes.size(), 1U);
    device->SetValue(u"2"_s, nullptr);
    EXPECT_EQ(server->GetValue(), u"2"_s);
    EXPECT_EQ(ofServer.codes.size(), 2U);
    EXPECT_EQ(ofDevice.codes.size(), 2U);
}

TEST_F(StationSentencesTest, ChangeOutsideTheRangeOfAValueIsTurnedDownAndTheOldOneStays) {
    auto* const threshold = ServerValue<ValueNumericDouble>(g_vdPitchThreshold);
    EXPECT_FALSE(threshold->SetValue(90.1, nullptr));
    EXPECT_EQ(threshold->GetValue(), 5.0);
    auto* const overhead = TreeValue<ValueNumericInt>(u"/ZANServer/OverheadPass/Threshold"_s);
    EXPECT_FALSE(overhead->SetValue(901, nullptr));
    EXPECT_EQ(overhead->GetValue(), 600);
    Restart();
    EXPECT_EQ(ServerValue<ValueNumericDouble>(g_vdPitchThreshold)->GetValue(), 5.0);
}

TEST_F(StationSentencesTest, FixOfTheDeviceIsThePositionOfBlocksThatHaveNone) {
    Send(MakeBlock());
    m_station->TakePosition({52.5, 5.5, 1000, true, 9});
    EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + MEASURED);
    EXPECT_EQ(Send(MakeBlockAt(48.1, 11.5)), HEAD + ATTITUDE + ",PTM,000001,LAT, 48.10000,LON,11.5000000\r\n")
        << "a block's own position is that of its bearings";
    m_station->TakePosition({52.5, 5.5, 2000, false, 0});
    EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + NOWHERE) << "the fix is lost";
}

TEST_F(StationSentencesTest, WhatTheDriverNoLongerDeliversIsNotMeasuredWithoutAFurtherBearing) {
    RestartWithShortAge();
    Send(MakeWholeBlock());
    EXPECT_EQ(StateOf(g_vdTrueHeading), TValueState::Valid);
    EXPECT_TRUE(SpinUntil([] {
        return std::ranges::all_of(
            PLATFORM, [](const ValueDescriptor* each) { return StateOf(*each) == TValueState::NotMeasured; });
    }));
    EXPECT_EQ(StateOf(g_vdAzimuth), TValueState::Valid) << "a bearing is the last one, and has its time";
    Send(MakeWholeBlock());
    for (const ValueDescriptor* const each : PLATFORM) {
        EXPECT_EQ(StateOf(*each), TValueState::Valid) << each->PathName().toStdString();
    }
}

TEST_F(StationSentencesTest, FixThatTheDeviceNoLongerReportsIsNotMeasuredWithoutABearing) {
    RestartWithShortAge();
    for (const quint64 time : {1000U, 2000U}) { // the second one after the first one has aged out
        m_station->TakePosition({52.5, 5.5, time, true, 9});
        EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::Valid);
        EXPECT_TRUE(SpinUntil([] { return StateOf(g_vdPosLatitude) == TValueState::NotMeasured; }));
        EXPECT_EQ(StateOf(g_vdPosLongitude), TValueState::NotMeasured);
        EXPECT_EQ(StateOf(g_vdPosLastUpdate), TValueState::NotMeasured);
    }
}

TEST_F(StationSentencesTest, FixThatIsReportedAgainAndAgainStaysWhileTheBlocksThatCameWithItAgeOut) {
    RestartWithShortAge();
    BearingBlock block = MakeBlock();
    block.status.heading = 12.5;
    Send(block);
    bool isPlaceThere = true;
    quint64 time = 1000;
    EXPECT_TRUE(SpinUntil([&] {
        m_station->TakePosition({52.5, 5.5, ++time, true, 9});
        isPlaceThere = isPlaceThere && StateOf(g_vdPosLatitude) == TValueState::Valid;
        return StateOf(g_vdTrueHeading) == TValueState::NotMeasured;
    }));
    EXPECT_TRUE(isPlaceThere);
}

TEST_F(StationSentencesTest, FixWhoseTimeStandsStillAgesOutHoweverOftenItIsReported) {
    RestartWithShortAge();
    EXPECT_TRUE(SpinUntil([&] {
        m_station->TakePosition({52.5, 5.5, 1000, true, 9});
        return StateOf(g_vdPosLatitude) == TValueState::NotMeasured;
    }));
}

TEST_F(StationSentencesTest, FixWithoutATimeIsAPositionWithoutATime) {
    RestartWithShortAge();
    m_station->TakePosition({52.5, 5.5, 0, true, 9});
    EXPECT_EQ(StateOf(g_vdPosLatitude), TValueState::Valid);
    EXPECT_EQ(StateOf(g_vdPosLastUpdate), TValueState::NotMeasured);
}

TEST_F(StationSentencesTest, PositionAndHeadingOfARecordingStayUntilItsNextRow) {
    RestartWithShortAge({DriverChoice::REPLAY.toString(), u"flight.csv"_s});
    Send(MakeWholeBlock());
    // The time is the rule: several times the age limit without a row.
    QElapsedTimer time;
    time.start();
    EXPECT_TRUE(SpinUntil([&time] { return time.elapsed() > 3 * SHORT_AGE_MS; }));
    for (const ValueDescriptor* const each : PLATFORM) {
        EXPECT_EQ(StateOf(*each), TValueState::Valid) << each->PathName().toStdString();
    }
}

// The device

TEST_F(StationSentencesTest, NothingThatALostDeviceHasMeasuredIsCurrent) {
    Send(MakeWholeBlock());
    m_station->ForgetMeasurements();
    EXPECT_EQ(StateOf(g_vdAzimuth), TValueState::NotMeasured);
    for (const ValueDescriptor* const each : PLATFORM) {
        EXPECT_EQ(StateOf(*each), TValueState::NotMeasured) << each->PathName().toStdString();
    }
    EXPECT_EQ(Send(MakeBlock()), HEAD + ATTITUDE + NOWHERE) << "and it is there again";
    EXPECT_EQ(StateOf(g_vdAzimuth), TValueState::Valid);
}

TEST_F(StationSentencesTest, EmittersOnOneFrequencyBecomeASentenceEach) {
    EXPECT_TRUE(ServerValue<ValueSelection>(g_vdSRStatus)->SetCurrentKey(1, nullptr));
    BearingBlock emitters = MakeBlock();
    emitters.kind = BearingBlock::Kind::SuperResolution;
    emitters.bearings.push_back(emitters.bearings[0]);
    emitters.bearings[1].azimuth = 900;
    EXPECT_EQ(Send(emitters), QByteArray()) << "the bearing that follows brings them about";
    EXPECT_EQ(ServerValue<ValueNumericInt>(g_vdSRNumEmitterResult)->GetValue(), 2);
    BearingBlock result = MakeBlock();
    result.kind = BearingBlock::Kind::FixedFrequency;
    const QByteArray sentences = Send(result);
    EXPECT_EQ(sentences.count("\r\n"), 3);
    EXPECT_TRUE(sentences.startsWith("$PLG, 71.5,FRQ, 121500000,")) << sentences.toStdString();
    EXPECT_TRUE(sentences.contains(",SR,0\r\n$PLG, 90.0,FRQ, 121500000,")) << sentences.toStdString();
    EXPECT_TRUE(sentences.endsWith(",SR,1\r\n\r\n")) << sentences.toStdString();
}

TEST_F(StationSentencesTest, EmittersAreNotWrittenAgainWithTheResultOfAnotherFrequencyOrAScan) {
    EXPECT_TRUE(ServerValue<ValueSelection>(g_vdSRStatus)->SetCurrentKey(1, nullptr));
    BearingBlock emitters = MakeBlock();
    emitters.kind = BearingBlock::Kind::SuperResolution;
    BearingBlock other = MakeBlock();
    other.kind = BearingBlock::Kind::FixedFrequency;
    other.status.frequency = 127.5e6;
    for (const BearingBlock& block : {other, MakeBlock()}) {
        Send(emitters);
        EXPECT_EQ(Send(block), QByteArray());
        EXPECT_TRUE(ServerValue<ValueBearingList>(g_vdAzimuthList)->Empty());
        EXPECT_EQ(ServerValue<ValueNumericInt>(g_vdSRNumEmitterResult)->GetValue(), 0);
    }
}

TEST_F(StationSentencesTest, EmitterThatAFilterRejectsIsLeftOut) {
    BearingBlock emitters = MakeBlock();
    emitters.kind = BearingBlock::Kind::SuperResolution;
    emitters.bearings.resize(3, emitters.bearings[0]);
    emitters.bearings[1].quality = 0;
    Send(emitters);
    EXPECT_EQ(ServerValue<ValueBearingList>(g_vdAzimuthList)->GetCount(), 2U);
    emitters.status.pitch = 45.0;
    Send(emitters);
    EXPECT_EQ(ServerValue<ValueBearingList>(g_vdAzimuthList)->GetCount(), 0U) << "tilted too far";
    EXPECT_EQ(m_station->GetCounts().bearings, 0U) << "they are not counted";
}

TEST_F(StationSentencesTest, FrequencyOfABearingIsThatOfItsChannel) {
    m_station->SetFrequencyOf([](const BearingBlock& block, std::size_t bearing) {
        return 118e6 + 25e3 * (block.firstChannel + static_cast<double>(bearing));
    });
    BearingBlock block = MakeBlock();
    block.firstChannel = 4;
    block.bearings.push_back(block.bearings[0]);
    const QByteArray sentences = Send(block);
    EXPECT_TRUE(sentences.contains("FRQ, 118100000,")) << sentences.toStdString();
    EXPECT_TRUE(sentences.contains("FRQ, 118125000,")) << sentences.toStdString();
}

// Position and heading of gpsd

TEST_F(StationSentencesTest, WhileTheSourcesAreGpsdTheSentencesHaveItsPositionHeadingPitchAndRoll) {
    const GpsdServer server;
    CfgCenter::GetAppCfg(ICfg::View::Outputs)
        .SetString(u"Gpsd/Address"_s, u"127.0.0.1:%1"_s.arg(server.GetPort()));
    Restart();
    BearingBlock block = MakeBlockAt(52.5, 5.5);
    block.status.heading = 10.0;
    block.status.pitch = 1.0;
    block.status.roll = 2.0;
    block.status.altitude = 3.0;
    const QByteArray begin = "$PLG, 71.5,FRQ, 121500000,CMP,";
    const QByteArray middle = ",QUA, 90.0,LEV, -0.5,TIM,000001,ELV,0.0";
    const QByteArray withoutGpsd = begin + " -0.1" + middle + ",PTC,0.0,RLL,0.0,ALT,0.0" + NOWHERE;
    EXPECT_EQ(Send(block), begin + " 10.0" + middle + ",PTC,1.0,RLL,2.0,ALT,3.0" + MEASURED);

    ChooseSource(StationPosition::SOURCE_GPSD);
    EXPECT_TRUE(
        ServerValue<ValueSelection>(g_vdHeaSource)->SetCurrentKey(StationAttitude::SOURCE_GPSD, nullptr));
    EXPECT_EQ(Send(block), withoutGpsd) << "nothing of the driver's is passed on as gpsd's";
    ASSERT_TRUE(SpinUntil([&] { return server.HasClient(); }));
    server.Send(R"({"class":"TPV","device":"/dev/ttyUSB0","mode":3,"time":"2026-03-01T20:41:33.000Z",)"
                R"("lat":54.5,"lon":8.25,"altMSL":15.5})");
    server.Send(R"({"class":"ATT","device":"/dev/ttyUSB0","heading":25.5,"pitch":-1.5,"roll":3.5})");
    ASSERT_TRUE(SpinUntil([] { return StateOf(g_vdPitch) == TValueState::Valid; }));
    EXPECT_EQ(Send(block), begin + " 25.5" + middle +
                               ",PTC,-1.5,RLL,3.5,ALT,15.5,PTM,204133,LAT, 54.50000,LON,8.2500000\r\n");
}

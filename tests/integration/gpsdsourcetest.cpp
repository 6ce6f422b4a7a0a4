#include "zanserver/gpsdsource.h"

#include "stddevicedefinition/stddevicedescriptors.h"
#include "support/eventloop.h"
#include "support/gpsdserver.h"
#include "support/printing.h"
#include "valueframework/tree.h"
#include "zanserver/servervalue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace StdDeviceDefinition;
using namespace ZANServer;

// What the tree shows of a gpsd, which a small server plays.

namespace {

constexpr long POSITION_NONE = 0;
constexpr long HEADING_NONE = 0;
constexpr long HEADING_COMPASS = 1;
constexpr quint64 TIME = 1772397693000; // 2026-03-01 20:41:33 UTC

/// The content of a value; nothing when it is not measured.
template <class T>
auto Measured(const ValueDescriptor& descriptor) {
    const auto* const value = ServerValue<T>(descriptor);
    return value->GetState() == TValueState::Valid ? std::optional(value->GetValue()) : std::nullopt;
}

std::optional<double> Latitude() {
    return Measured<ValueNumericDouble>(g_vdPosLatitude);
}

std::optional<double> Longitude() {
    return Measured<ValueNumericDouble>(g_vdPosLongitude);
}

std::optional<double> Altitude() {
    return Measured<ValueNumericDouble>(g_vdAltitude);
}

std::optional<quint64> PositionTime() {
    return Measured<ValueTimeStamp>(g_vdPosLastUpdate);
}

/// In tenths of a degree.
std::optional<int> Heading() {
    return Measured<ValueNumericInt>(g_vdTrueHeading);
}

std::optional<double> Pitch() {
    return Measured<ValueNumericDouble>(g_vdPitch);
}

std::optional<double> Roll() {
    return Measured<ValueNumericDouble>(g_vdRoll);
}

std::optional<QString> FixMode() {
    const auto* const mode = ServerValue<ValueSelection>(g_vdGpsdFixMode);
    return mode->GetState() == TValueState::Valid ? std::optional(mode->GetStringValue()) : std::nullopt;
}

QString State() {
    return ServerValue<ValueSelection>(g_vdGpsdState)->GetStringValue();
}

QString LastFailure() {
    return ServerValue<ValueString>(g_vdGpsdLastFailure)->GetValue();
}

QString Receiver() {
    return ServerValue<ValueString>(g_vdGpsdReceiver)->GetValue();
}

/// The time of a report, this many seconds after `TIME`.
QByteArray TimeOf(int seconds) {
    return R"("time":"2026-03-01T20:)" + QByteArray::number(41 + (33 + seconds) / 60) + ':' +
           QByteArray::number((33 + seconds) % 60).rightJustified(2, '0') + R"(.000Z")";
}

/// A report of a position.
QByteArray Fix(int seconds, double latitude, const char* device = "/dev/ttyUSB0") {
    return R"({"class":"TPV","device":")" + QByteArray(device) + R"(","mode":3,)" + TimeOf(seconds) +
           R"(,"lat":)" + QByteArray::number(latitude) + R"(,"lon":8.25,"altMSL":15.5})";
}

QByteArray NoFix(int seconds, const char* device = "/dev/ttyUSB0") {
    return R"({"class":"TPV","device":")" + QByteArray(device) + R"(","mode":1,)" + TimeOf(seconds) + '}';
}

QByteArray Attitude(const QByteArray& angles, const char* device = "/dev/ttyUSB0") {
    return R"({"class":"ATT","device":")" + QByteArray(device) + R"(",)" + angles + '}';
}

/// Notes each content that a value has had while it was measured, for one that may be too old again when the
/// test comes to look.
template <class T>
class History final : public IObserver {
public:
    explicit History(const ValueDescriptor& descriptor)
        : m_descriptor(descriptor) {
        ServerValue<T>(descriptor)->AddObserver(this);
    }
    void Update(Observable* /*subject*/, TChangeCode /*code*/) override {
        if (const auto content = Measured<T>(m_descriptor)) {
            contents.push_back(*content);
        }
    }
    template <class C>
    [[nodiscard]] bool Has(const C& content) const {
        return std::ranges::find(contents, content) != contents.end();
    }

    std::vector<std::decay_t<decltype(std::declval<T>().GetValue())>> contents;

private:
    const ValueDescriptor& m_descriptor;
};

class GpsdSourceTest : public testing::Test {
protected:
    GpsdSourceTest() {
        CreateBranch(EBranch::SERVER, ZANPath::SERVER.toString());
        m_position.emplace(std::nullopt, std::nullopt);
        m_server.emplace();
        m_port = m_server->GetPort();
        m_settings.maxAge = 1min; // only where the age is the rule it comes to that
        m_settings.address = {u"127.0.0.1"_s, m_port};
    }

    ~GpsdSourceTest() override {
        m_source.reset();
        m_attitude.reset();
        m_position.reset();
        Tree& tree = *Tree::Instance();
        tree.Remove(tree.GetNode(ZANPath::SERVER.toString()));
    }

    void Start() {
        m_attitude.emplace(m_settings.usePitchAndRoll);
        m_source = std::make_unique<GpsdSource>(*m_position, *m_attitude, m_settings,
                                                GpsdClient::Timing{10ms, 40ms, 1min});
    }
    /// Starts with gpsd as source of position and heading, and waits for the connection.
    void StartConnected() {
        ChoosePosition(StationPosition::SOURCE_GPSD);
        ChooseHeading(StationAttitude::SOURCE_GPSD);
        Start();
        ASSERT_TRUE(SpinUntil([] { return State() == "Connected"_L1; }));
    }
    static void ChoosePosition(long key) {
        EXPECT_TRUE(ServerValue<ValueSelection>(g_vdPosSource)->SetCurrentKey(key, nullptr));
    }
    static void ChooseHeading(long key) {
        EXPECT_TRUE(ServerValue<ValueSelection>(g_vdHeaSource)->SetCurrentKey(key, nullptr));
    }
    /// Sends a line and waits until it has been read.
    void Send(const QByteArray& line) {
        m_server->Send(line);
        Pass();
    }
    /// Waits until everything that was sent so far has been read: lines are read in their order, and one that
    /// is no report shows itself in the tree.
    void Pass() {
        const int number = ++m_marks;
        m_server->Send("mark " + QByteArray::number(number) + " ends");
        ASSERT_TRUE(SpinUntil([&] { return LastFailure().contains(u"mark %1 ends"_s.arg(number)); }));
    }

    std::optional<GpsdServer> m_server;
    quint16 m_port = 0;
    GpsdSettings m_settings;
    std::optional<StationPosition> m_position;
    std::optional<StationAttitude> m_attitude;
    History<ValueNumericDouble> m_latitudes{g_vdPosLatitude};
    std::unique_ptr<GpsdSource> m_source;

private:
    int m_marks = 0;
};

} // namespace

// The connection

TEST_F(GpsdSourceTest, IsConnectedOnlyWhileASourceIsGpsd) {
    Start();
    EXPECT_EQ(State(), u"Off"_s);
    CountWakeUps(); // a connection would come meanwhile
    EXPECT_EQ(m_server->clientCount, 0);

    ChoosePosition(StationPosition::SOURCE_GPSD);
    EXPECT_EQ(State(), u"Connecting"_s) << "at once";
    ASSERT_TRUE(SpinUntil([] { return State() == "Connected"_L1; }));
    ChooseHeading(StationAttitude::SOURCE_GPSD);
    ChoosePosition(POSITION_NONE);
    EXPECT_EQ(State(), u"Connected"_s) << "for the heading";
    EXPECT_EQ(m_server->clientCount, 1);

    ChooseHeading(HEADING_NONE);
    EXPECT_EQ(State(), u"Off"_s);
    EXPECT_TRUE(SpinUntil([&] { return !m_server->HasClient(); }));
}

TEST_F(GpsdSourceTest, ConnectsAtTheStartWhenASourceIsGpsd) {
    ChooseHeading(StationAttitude::SOURCE_GPSD);
    Start();
    EXPECT_TRUE(SpinUntil([] { return State() == "Connected"_L1; }));
    m_source.reset();
    EXPECT_EQ(State(), u"Off"_s);
    EXPECT_TRUE(SpinUntil([&] { return !m_server->HasClient(); }));
}

TEST_F(GpsdSourceTest, TreeTellsWhyThereIsNoConnection) {
    m_server.reset();
    ChoosePosition(StationPosition::SOURCE_GPSD);
    Start();
    ASSERT_TRUE(SpinUntil([] { return State() == "Waiting"_L1; }));
    EXPECT_EQ(LastFailure(), u"127.0.0.1:%1: Connection refused"_s.arg(m_port));
    EXPECT_EQ(Latitude(), std::nullopt);
    EXPECT_EQ(FixMode(), std::nullopt);
}

TEST_F(GpsdSourceTest, PositionOutlivesARestartOfGpsdThatIsShorterThanItsAge) {
    StartConnected();
    Send(Fix(0, 54.5));
    m_server.reset();
    ASSERT_TRUE(SpinUntil([] { return State() == "Waiting"_L1; }));
    EXPECT_EQ(Latitude(), 54.5);
    m_server.emplace(GpsdServer::GREETING, m_port);
    ASSERT_TRUE(SpinUntil([] { return State() == "Connected"_L1; }));
    Send(Fix(2, 54.75));
    EXPECT_EQ(Latitude(), 54.75);
}

TEST_F(GpsdSourceTest, PositionOfALostGpsdIsNotPassedOn) {
    m_settings.maxAge = 100ms;
    StartConnected();
    m_server->Send(Fix(0, 54.5));
    ASSERT_TRUE(SpinUntil([&] { return m_latitudes.Has(54.5); }));
    m_server.reset();
    EXPECT_TRUE(SpinUntil([] { return !Latitude() && !Longitude() && !Altitude() && !PositionTime(); }));
    EXPECT_TRUE(SpinUntil([] { return !FixMode(); }));
}

// The position

TEST_F(GpsdSourceTest, PositionAltitudeAndTimeAreThoseOfTheReport) {
    StartConnected();
    EXPECT_EQ(Latitude(), std::nullopt);
    Send(Fix(0, 54.5));
    EXPECT_EQ(Latitude(), 54.5);
    EXPECT_EQ(Longitude(), 8.25);
    EXPECT_EQ(Altitude(), 15.5);
    EXPECT_EQ(PositionTime(), TIME);
    m_position->SetMeasured({1.0, 2.0, 3.0, 4}); // what the driver delivers has no effect
    EXPECT_EQ(Latitude(), 54.5);
    EXPECT_EQ(Altitude(), 15.5);
    EXPECT_EQ(PositionTime(), TIME);
    Send(Fix(1, 54.75));
    EXPECT_EQ(Latitude(), 54.75);
    EXPECT_EQ(PositionTime(), TIME + 1000);
}

TEST_F(GpsdSourceTest, PositionWithoutATimeOfItsOwnHasNone) {
    StartConnected();
    Send(R"({"class":"TPV","device":"/dev/ttyUSB0","mode":2,"lat":54.5,"lon":8.25})");
    EXPECT_EQ(Latitude(), 54.5);
    EXPECT_EQ(Altitude(), std::nullopt) << "of two dimensions";
    EXPECT_EQ(PositionTime(), std::nullopt);
}

TEST_F(GpsdSourceTest, ChangeOfThePositionSourceTakesEffectAtOnce) {
    StartConnected();
    Send(Fix(0, 54.5));
    m_position->SetMeasured({1.0, 2.0, 3.0, 4});
    ChoosePosition(POSITION_NONE);
    EXPECT_EQ(Latitude(), 1.0) << "what the driver delivers";
    EXPECT_EQ(Altitude(), 3.0);
    EXPECT_EQ(PositionTime(), 4U);
    ChoosePosition(StationPosition::SOURCE_GPSD);
    EXPECT_EQ(Latitude(), 54.5);
    EXPECT_EQ(Altitude(), 15.5);
    EXPECT_EQ(PositionTime(), TIME);
}

TEST_F(GpsdSourceTest, ManualPlaceStaysWhatWasSet) {
    ChoosePosition(StationPosition::SOURCE_MANUAL);
    ChooseHeading(StationAttitude::SOURCE_GPSD);
    Start();
    ServerValue<ValueNumericDouble>(g_vdPosLatitude)->SetValue(48.1, nullptr);
    ServerValue<ValueNumericDouble>(g_vdPosLongitude)->SetValue(11.5, nullptr);
    ASSERT_TRUE(SpinUntil([] { return State() == "Connected"_L1; }));
    Send(Fix(0, 54.5));
    EXPECT_EQ(Latitude(), 48.1);
    EXPECT_EQ(Longitude(), 11.5);
    EXPECT_EQ(PositionTime(), std::nullopt);
    ChoosePosition(StationPosition::SOURCE_GPSD);
    EXPECT_EQ(Latitude(), 54.5) << "it was known already";
}

TEST_F(GpsdSourceTest, WithoutAFixThereIsNoPositionAtOnce) {
    StartConnected();
    Send(Fix(0, 54.5));
    Send(NoFix(1));
    EXPECT_EQ(Latitude(), std::nullopt);
    EXPECT_EQ(Longitude(), std::nullopt);
    EXPECT_EQ(Altitude(), std::nullopt);
    EXPECT_EQ(PositionTime(), std::nullopt);
    EXPECT_EQ(FixMode(), u"NoFix"_s);
    Send(Fix(2, 54.75));
    EXPECT_EQ(Latitude(), 54.75);
    EXPECT_EQ(FixMode(), u"3D"_s);
}

TEST_F(GpsdSourceTest, PositionOutsideTheEarthIsNoNewOne) {
    StartConnected();
    Send(Fix(0, 54.5));
    Send(Fix(1, 90.5));
    EXPECT_EQ(Latitude(), 54.5);
    EXPECT_EQ(PositionTime(), TIME);
}

TEST_F(GpsdSourceTest, PositionWhoseTimeStandsStillIsNotMeasuredOnceItIsTooOld) {
    m_settings.maxAge = 100ms;
    StartConnected();
    m_server->Send(Fix(0, 54.5));
    ASSERT_TRUE(SpinUntil([&] { return m_latitudes.Has(54.5); }));
    EXPECT_TRUE(SpinUntil([&] {
        m_server->Send(Fix(0, 54.5));
        return !Latitude();
    }));
    Send(Fix(0, 54.5));
    EXPECT_EQ(Latitude(), std::nullopt) << "and so it stays";
    EXPECT_TRUE(SpinUntil([&, seconds = 0]() mutable {
        m_server->Send(Fix(++seconds % 20, 54.75));
        return m_latitudes.Has(54.75);
    })) << "until the time goes on";
}

TEST_F(GpsdSourceTest, TimeThatJumpsBackIsTakenOnceTheLastPositionIsTooOld) {
    m_settings.maxAge = 100ms;
    StartConnected();
    const History<ValueTimeStamp> times(g_vdPosLastUpdate);
    m_server->Send(Fix(60, 54.5));
    ASSERT_TRUE(SpinUntil([&] { return m_latitudes.Has(54.5); }));
    EXPECT_TRUE(SpinUntil([&, seconds = 0]() mutable {
        m_server->Send(Fix(++seconds % 60, 54.75));
        return m_latitudes.Has(54.75);
    }));
    ASSERT_FALSE(times.contents.empty());
    EXPECT_LT(times.contents.back(), TIME + 60'000);
}

TEST_F(GpsdSourceTest, OfTwoReceiversTheFirstWithAFixIsUsedUntilItIsGone) {
    m_settings.maxAge = 300ms;
    StartConnected();
    const History<ValueString> receivers(g_vdGpsdReceiver);
    m_server->Send(NoFix(0, "/dev/ttyUSB1"));
    m_server->Send(Fix(0, 54.5, "/dev/ttyUSB0"));
    // The first one is unplugged; the other one goes on.
    EXPECT_TRUE(SpinUntil([&, seconds = 0]() mutable {
        m_server->Send(Fix(++seconds % 60, 11.0, "/dev/ttyUSB1"));
        return receivers.Has(u"/dev/ttyUSB1"_s);
    }));
    EXPECT_EQ(receivers.contents.front(), u"/dev/ttyUSB0"_s);
    std::erase(m_latitudes.contents, 0.0); // on its way to "not measured", when it is so before the other one
    EXPECT_EQ(m_latitudes.contents, (std::vector{54.5, 11.0}));
}

TEST_F(GpsdSourceTest, OnlyTheReceiversThatTheSettingsNameCount) {
    m_settings.positionReceiver = u"/dev/ttyUSB1"_s;
    m_settings.headingReceiver = u"/dev/ttyUSB2"_s;
    StartConnected();
    Send(Fix(0, 54.5, "/dev/ttyUSB0"));
    Send(Attitude(R"("heading":10,"pitch":1,"roll":2)", "/dev/ttyUSB1"));
    EXPECT_EQ(Latitude(), std::nullopt);
    EXPECT_EQ(Heading(), std::nullopt);
    EXPECT_EQ(Pitch(), std::nullopt);
    EXPECT_EQ(FixMode(), std::nullopt);
    Send(Fix(0, 11.0, "/dev/ttyUSB1"));
    Send(Attitude(R"("heading":20)", "/dev/ttyUSB2"));
    EXPECT_EQ(Latitude(), 11.0);
    EXPECT_EQ(Heading(), 200);
}

// The heading

TEST_F(GpsdSourceTest, HeadingPitchAndRollAreGpsdsWhileTheHeadingSourceIs) {
    StartConnected();
    m_attitude->SetMeasured({10.0, false, 1.0, 2.0}); // what the driver delivers
    EXPECT_EQ(Heading(), std::nullopt);
    EXPECT_EQ(Pitch(), std::nullopt);
    EXPECT_EQ(Roll(), std::nullopt);
    Send(Attitude(R"("heading":25.5,"pitch":-1.5,"roll":3.25)"));
    EXPECT_EQ(Heading(), 255);
    EXPECT_EQ(Pitch(), -1.5);
    EXPECT_EQ(Roll(), 3.25);
    for (const long key : {HEADING_NONE, HEADING_COMPASS}) {
        ChooseHeading(key);
        EXPECT_EQ(Heading(), 100) << "what the driver delivers, whatever the key";
        EXPECT_EQ(Pitch(), 1.0);
        EXPECT_EQ(Roll(), 2.0);
    }
    ChooseHeading(StationAttitude::SOURCE_GPSD);
    EXPECT_EQ(Heading(), 255);
}

TEST_F(GpsdSourceTest, PitchAndRollStayTheDriversWhereTheSettingsSaySo) {
    m_settings.usePitchAndRoll = false;
    StartConnected();
    m_attitude->SetMeasured({10.0, false, 1.0, 2.0});
    Send(Attitude(R"("heading":25.5,"pitch":-1.5,"roll":3.25)"));
    EXPECT_EQ(Heading(), 255);
    EXPECT_EQ(Pitch(), 1.0);
    EXPECT_EQ(Roll(), 2.0);
}

TEST_F(GpsdSourceTest, PitchAndRollMayComeInReportsOfTheirOwn) {
    StartConnected();
    Send(Attitude(R"("heading":25.5)"));
    EXPECT_EQ(Heading(), 255);
    EXPECT_EQ(Pitch(), std::nullopt);
    Send(Attitude(R"("pitch":-1.5)"));
    Send(Attitude(R"("roll":3.25)"));
    EXPECT_EQ(Heading(), 255);
    EXPECT_EQ(Pitch(), -1.5);
    EXPECT_EQ(Roll(), 3.25);
}

TEST_F(GpsdSourceTest, OffsetIsAddedToTheHeadingAndTheDeclinationIsNotForItIsTrue) {
    ServerValue<ValueNumericInt>(g_vdHeaOffset)->SetValue(-300, nullptr);
    ServerValue<ValueNumericInt>(g_vdDeclination)->SetValue(45, nullptr);
    StartConnected();
    Send(Attitude(R"("heading":25.5)"));
    EXPECT_EQ(Heading(), 3555);
    m_attitude->SetMeasured({25.5, true, {}, {}});
    ChooseHeading(HEADING_NONE);
    EXPECT_EQ(Heading(), 0) << "the driver's magnetic one";
}

TEST_F(GpsdSourceTest, CourseOverGroundIsNoHeading) {
    StartConnected();
    Send(
        R"({"class":"TPV","device":"/dev/ttyUSB0","mode":3,"lat":54.5,"lon":8.25,"track":60.5,"magtrack":56.4})");
    EXPECT_EQ(Latitude(), 54.5);
    EXPECT_EQ(Heading(), std::nullopt);
}

TEST_F(GpsdSourceTest, HeadingThatIsTooOldIsNotMeasured) {
    m_settings.maxAge = 100ms;
    StartConnected();
    const History<ValueNumericInt> headings(g_vdTrueHeading);
    m_server->Send(Attitude(R"("heading":25.5,"pitch":-1.5,"roll":3.25)"));
    ASSERT_TRUE(SpinUntil([&] { return headings.Has(255); }));
    EXPECT_TRUE(SpinUntil([] { return !Heading() && !Pitch() && !Roll(); }));
}

TEST_F(GpsdSourceTest, WhatWasMeasuredLongAgoDoesNotComeBackWithTheSource) {
    m_settings.maxAge = 100ms;
    StartConnected();
    m_server->Send(Attitude(R"("heading":25.5)"));
    m_server->Send(Fix(0, 54.5));
    ASSERT_TRUE(SpinUntil([&] { return m_latitudes.Has(54.5); }));
    ChoosePosition(POSITION_NONE);
    ChooseHeading(HEADING_NONE);
    CountWakeUps(); // longer than the age limit
    ChoosePosition(StationPosition::SOURCE_GPSD);
    ChooseHeading(StationAttitude::SOURCE_GPSD);
    EXPECT_EQ(Latitude(), std::nullopt);
    EXPECT_EQ(Heading(), std::nullopt);
}

// What is told

TEST_F(GpsdSourceTest, TreeTellsReceiverFixModeSatellitesAndAges) {
    StartConnected();
    EXPECT_EQ(Receiver(), QString());
    EXPECT_EQ(FixMode(), std::nullopt);
    EXPECT_EQ(Measured<ValueNumericInt>(g_vdGpsdSatellitesUsed), std::nullopt);
    EXPECT_EQ(Measured<ValueNumericInt>(g_vdGpsdPositionAge), std::nullopt);
    EXPECT_EQ(Measured<ValueNumericInt>(g_vdGpsdHeadingAge), std::nullopt);
    Send(R"({"class":"TPV","device":"/dev/ttyUSB0","mode":2,"lat":54.5,"lon":8.25})");
    Send(
        R"({"class":"SKY","device":"/dev/ttyUSB0","satellites":[{"PRN":1,"used":true},{"PRN":2,"used":false}]})");
    Send(R"({"class":"SKY","device":"/dev/ttyUSB1","satellites":[{"PRN":1,"used":true}]})");
    Send(NoFix(0, "/dev/ttyUSB1"));
    Send(Attitude(R"("heading":25.5)"));
    EXPECT_EQ(Receiver(), u"/dev/ttyUSB0"_s);
    EXPECT_EQ(FixMode(), u"2D"_s) << "of the receiver in use";
    EXPECT_EQ(Measured<ValueNumericInt>(g_vdGpsdSatellitesUsed), 1);
    EXPECT_EQ(Measured<ValueNumericInt>(g_vdGpsdSatellitesSeen), 2);
    // The ages follow the clock.
    EXPECT_TRUE(SpinUntil([] { return Measured<ValueNumericInt>(g_vdGpsdPositionAge) > 900; }));
    EXPECT_TRUE(SpinUntil([] { return Measured<ValueNumericInt>(g_vdGpsdHeadingAge) > 900; }));
}

TEST_F(GpsdSourceTest, DoesNotTurnOverWhileItWaitsForReports) {
    StartConnected();
    Send(Fix(0, 54.5));
    EXPECT_LT(CountWakeUps(), FEW_WAKE_UPS);
}

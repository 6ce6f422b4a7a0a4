#include "zanserver/gpsdreport.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <array>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

using Kind = GpsdReport::Kind;

GpsdReport Read(const QByteArray& line) {
    const std::optional<GpsdReport> report = GpsdReport::Read(line);
    EXPECT_TRUE(report) << line.toStdString();
    return report.value_or(GpsdReport());
}

/// A fix with these members behind device and mode.
GpsdReport ReadFix(const QByteArray& members) {
    return Read(R"({"class":"TPV","device":"/dev/ttyUSB0","mode":3,)" + members + "}\r\n");
}

} // namespace

TEST(GpsdReport, FixHasReceiverTimeModePositionAndAltitude) {
    const GpsdReport report = Read(
        R"({"class":"TPV","device":"/dev/ttyUSB0","status":2,"mode":3,"time":"2026-03-01T20:41:33.100Z","ept":0.005,)"
        R"("lat":54.5,"lon":-8.25,"altHAE":188.0,"altMSL":15.5,"track":21.4,"speed":4.5})"
        "\r\n");
    EXPECT_EQ(report.kind, Kind::Fix);
    EXPECT_EQ(report.receiver, u"/dev/ttyUSB0"_s);
    EXPECT_EQ(report.time, 1772397693100U);
    EXPECT_EQ(report.mode, 3);
    EXPECT_TRUE(report.HasFix());
    EXPECT_EQ(report.latitude, 54.5);
    EXPECT_EQ(report.longitude, -8.25);
    EXPECT_EQ(report.altitude, 15.5);
    EXPECT_EQ(report.heading, std::nullopt) << "a course over ground is no heading";
}

TEST(GpsdReport, FixWithoutATimeHasNone) {
    EXPECT_EQ(ReadFix(R"("lat":54.5,"lon":8.25)").time, std::nullopt);
    EXPECT_EQ(ReadFix(R"("time":"yesterday","lat":54.5,"lon":8.25)").time, std::nullopt);
}

TEST(GpsdReport, InTwoDimensionsThereIsNoAltitude) {
    const GpsdReport report = Read(R"({"class":"TPV","mode":2,"lat":54.5,"lon":8.25,"altMSL":15.5})");
    EXPECT_EQ(report.latitude, 54.5);
    EXPECT_EQ(report.altitude, std::nullopt);
}

TEST(GpsdReport, WithoutAFixThereIsNoPosition) {
    for (const char* mode : {R"("mode":0,)", R"("mode":1,)", R"("mode":-1,)", R"("mode":7,)", ""}) {
        const GpsdReport report =
            Read(R"({"class":"TPV",)" + QByteArray(mode) + R"("lat":54.5,"lon":8.25,"altMSL":15.5})");
        EXPECT_FALSE(report.HasFix()) << mode;
        EXPECT_EQ(report.latitude, std::nullopt) << mode;
        EXPECT_EQ(report.longitude, std::nullopt) << mode;
        EXPECT_EQ(report.altitude, std::nullopt) << mode;
    }
}

TEST(GpsdReport, NumberThatIsMissingOrOutOfRangeIsNone) {
    EXPECT_EQ(ReadFix(R"("lat":90.1,"lon":8.25)").latitude, std::nullopt);
    EXPECT_EQ(ReadFix(R"("lat":-91,"lon":8.25)").latitude, std::nullopt);
    EXPECT_EQ(ReadFix(R"("lat":54.5,"lon":180.1)").longitude, std::nullopt);
    EXPECT_EQ(ReadFix(R"("lat":54.5,"lon":1e300)").longitude, std::nullopt);
    EXPECT_EQ(ReadFix(R"("lat":54.5)").longitude, std::nullopt);
    EXPECT_EQ(ReadFix(R"("lat":"54.5","lon":8.25)").latitude, std::nullopt) << "a text is no number";
    EXPECT_EQ(ReadFix(R"("lat":90,"lon":-180)").latitude, 90.0);
    EXPECT_EQ(ReadFix(R"("lat":90,"lon":-180)").longitude, -180.0);
}

TEST(GpsdReport, AttitudeHasHeadingPitchAndRollAsFarAsTheReceiverMeasuresThem) {
    const GpsdReport whole = Read(
        R"({"class":"ATT","device":"/dev/ttyUSB0","time":"2026-03-01T20:41:33.100Z","heading":10.51,"pitch":-1.5,)"
        R"("roll":3.25,"yaw":4.5})");
    EXPECT_EQ(whole.kind, Kind::Attitude);
    EXPECT_EQ(whole.receiver, u"/dev/ttyUSB0"_s);
    EXPECT_EQ(whole.time, 1772397693100U);
    EXPECT_EQ(whole.heading, 10.51);
    EXPECT_EQ(whole.pitch, -1.5);
    EXPECT_EQ(whole.roll, 3.25);
    const GpsdReport compass = Read(R"({"class":"ATT","device":"/dev/ttyUSB0","heading":25.500})");
    EXPECT_EQ(compass.time, std::nullopt);
    EXPECT_EQ(compass.heading, 25.5);
    EXPECT_EQ(compass.pitch, std::nullopt);
    EXPECT_EQ(compass.roll, std::nullopt);
    const GpsdReport odd = Read(R"({"class":"ATT","heading":14223.00,"pitch":169.00,"roll":-430.00})");
    EXPECT_EQ(odd.heading, std::nullopt);
    EXPECT_EQ(odd.pitch, std::nullopt);
    EXPECT_EQ(odd.roll, std::nullopt);
}

TEST(GpsdReport, SatellitesAreCounted) {
    const GpsdReport report = Read(
        R"({"class":"SKY","device":"/dev/ttyUSB0","hdop":1.0,"satellites":[{"PRN":1,"el":10,"az":20,"ss":30,)"
        R"("used":true},{"PRN":2,"el":10,"az":20,"ss":30,"used":false},{"PRN":3,"el":5,"az":9,"ss":3,"used":true}]})");
    EXPECT_EQ(report.kind, Kind::Satellites);
    EXPECT_EQ(report.satellitesUsed, 2);
    EXPECT_EQ(report.satellitesSeen, 3);
}

TEST(GpsdReport, MembersOfALaterGpsdAreNoObstacle) {
    const GpsdReport report = ReadFix(R"("jam":4,"ant":"ok","lat":54.5,"lon":8.25,"leapseconds":18)");
    EXPECT_EQ(report.latitude, 54.5);
    EXPECT_EQ(report.longitude, 8.25);
}

TEST(GpsdReport, UnknownListWhoseObjectsHaveAClassIsNoObstacle) {
    const GpsdReport report =
        Read(R"({"class":"ATT","heading":25.5,"of":[{"class":"DEVICE","path":"/dev/ttyUSB0"}],"roll":3.25})");
    EXPECT_EQ(report.heading, 25.5);
    EXPECT_EQ(report.roll, 3.25);
}

TEST(GpsdReport, OthersAreToldFromTheOnesThatAreUsed) {
    EXPECT_EQ(Read(R"({"class":"VERSION","release":"3.22","proto_major":3,"proto_minor":14})").kind,
              Kind::Version);
    EXPECT_EQ(Read(R"({"class":"DEVICE","path":"/dev/ttyUSB0","activated":0})").kind, Kind::Other);
    EXPECT_EQ(Read(R"({"class":"ERROR","message":"Unrecognized request"})").kind, Kind::Other);
}

TEST(GpsdReport, LineThatIsNotOneWholeObjectIsNone) {
    const std::array<QByteArray, 10> lines{
        "",
        "\r\n",
        "HTTP/1.1 400 Bad Request\r\n",
        "$GPGGA,204132.10,5405.73,N,00802.04,E,2,08,1.0,221.9,M,,,3,0138*15\r\n",
        R"({"class":"TPV","device":"/dev/ttyUSB0","mode":3,"lat":54.09,"lon":-8)",             // cut
        R"({"class":"TPV","mode":3,"lat":54.09,"lon":-8{"class":"TPV","mode":3,"lat":54.09})", // two halves
        R"({"mode":3,"lat":54.5,"lon":8.25})",
        R"(["class","TPV"])",
        R"({"class":3})",
        QByteArray("\0\xff\xfe{", 4),
    };
    for (const QByteArray& line : lines) {
        EXPECT_FALSE(GpsdReport::Read(line)) << line.toStdString();
    }
}

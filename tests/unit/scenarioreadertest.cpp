#include "simulator/scenarioreader.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace Simulator;

namespace {

const QByteArray STATION = R"("station": {"latitude": 55, "longitude": 5})";
const QByteArray DEVICE =
    R"("device": {"type": "ZANTIDE", "converters": [{"type": "RCV03"}], "antennas": [{"name": "PX115SR"}]})";

QByteArray DocumentOf(const QByteArray& more = {}) {
    return "{" + STATION + ", " + DEVICE + (more.isEmpty() ? QByteArray() : ", " + more) + "}";
}

/// The text with which a document is refused.
QString RefusalOf(const QByteArray& document) {
    ScenarioReader reader;
    EXPECT_FALSE(reader.Read(document).has_value()) << document.constData();
    return reader.GetErrorText();
}

} // namespace

TEST(ScenarioReader, TheShippedScenariosAreRead) {
    ScenarioReader reader;
    for (const QString& name : {u"ship"_s, u"airfield"_s}) {
        const std::optional<Scenario> scenario = reader.ReadFile(name);
        ASSERT_TRUE(scenario) << reader.GetErrorText().toStdString();
        EXPECT_EQ(scenario->name, name);
        EXPECT_GE(scenario->emitters.size(), 5U);
        EXPECT_TRUE(scenario->wishes.empty()); // what the operator wants is not overruled
        EXPECT_TRUE(scenario->faults.empty());
    }
}

TEST(ScenarioReader, TheExampleOfTheGuideIsRead) {
    QFile guide(QStringLiteral(ZAN_TEST_DATA "/../../docs/simulator.md"));
    ASSERT_TRUE(guide.open(QFile::ReadOnly));
    const QByteArray text = guide.readAll();
    const qsizetype begin = text.indexOf("```text\n{") + 8;
    const QByteArray example = text.mid(begin, text.indexOf("```", begin) - begin);
    ScenarioReader reader;
    const std::optional<Scenario> scenario = reader.Read(example);
    ASSERT_TRUE(scenario) << reader.GetErrorText().toStdString();
    EXPECT_EQ(scenario->emitters.size(), 1U);
}

TEST(ScenarioReader, AllRangesTogetherHaveNoMoreChannelsThanTheDevice) {
    const QByteArray most = R"({"start": 100e6, "step": 10e3, "stop": 699.99e6})";
    EXPECT_TRUE(ScenarioReader().Read(DocumentOf(R"("wishes": [{"at": 1, "ranges": [)" + most + "]}]")));
    EXPECT_EQ(RefusalOf(DocumentOf(R"("wishes": [{"at": 1, "ranges": [)" + most +
                                   R"(, {"start": 100e6, "step": 1, "stop": 100e6}]}])")),
              u"wishes[0].ranges[1].step: makes more channels than the device has");
}

TEST(ScenarioReader, WithoutANameItIsTheShip) {
    ScenarioReader reader;
    const std::optional<Scenario> scenario = reader.ReadFile({});
    ASSERT_TRUE(scenario);
    EXPECT_EQ(scenario->name, u"ship");
}

TEST(ScenarioReader, OfTheAirfieldTwoEmittersAreOnOneChannelAtOnce) {
    const std::optional<Scenario> scenario = ScenarioReader().ReadFile(u"airfield"_s);
    ASSERT_TRUE(scenario);
    int count = 0;
    for (const Emitter& emitter : scenario->emitters) {
        count += emitter.frequency == scenario->device.frequency && emitter.schedule.off == 0.0 ? 1 : 0;
    }
    EXPECT_EQ(count, 2);
}

TEST(ScenarioReader, TheOverflightHasOneEmitterThatIsAlwaysThere) {
    const std::optional<Scenario> scenario = ScenarioReader().ReadFile(u"overflight"_s);
    ASSERT_TRUE(scenario);
    ASSERT_EQ(scenario->emitters.size(), 1U);
    EXPECT_EQ(scenario->emitters.front().frequency, scenario->device.frequency);
    EXPECT_EQ(scenario->emitters.front().schedule.off, 0.0);
}

TEST(ScenarioReader, AFileIsRead) {
    const QTemporaryDir directory;
    QFile file(directory.filePath(u"one.json"_s));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write(DocumentOf(R"("seed": 7)"));
    file.close();
    const std::optional<Scenario> scenario = ScenarioReader().ReadFile(file.fileName());
    ASSERT_TRUE(scenario);
    EXPECT_EQ(scenario->seed, 7U);
}

TEST(ScenarioReader, AFileThatIsNotThereIsNamed) {
    ScenarioReader reader;
    EXPECT_FALSE(reader.ReadFile(u"/nowhere/one.json"_s));
    EXPECT_EQ(reader.GetErrorText(),
              u"/nowhere/one.json: cannot be opened: there is no such file; built in are "
              "airfield, overflight, ship");
}

TEST(ScenarioReader, WhatIsNoFileIsNotReadFrom) {
    ScenarioReader reader;
    EXPECT_FALSE(reader.ReadFile(u"/dev/zero"_s));
    EXPECT_FALSE(reader.ReadFile(u"/tmp"_s));
    EXPECT_EQ(reader.GetErrorText(), u"/tmp: cannot be opened: it is not a file");
}

TEST(ScenarioReader, WhatIsLeftOutHasADefault) {
    ScenarioReader reader;
    const std::optional<Scenario> scenario = reader.Read(DocumentOf());
    ASSERT_TRUE(scenario) << reader.GetErrorText().toStdString();
    EXPECT_EQ(scenario->seed, 1U);
    EXPECT_EQ(scenario->startTime, 1767268800000U); // 2026-01-01 12:00:00 UTC
    EXPECT_EQ(scenario->device.frequency, 121.5e6);
    EXPECT_TRUE(scenario->emitters.empty());
}

TEST(ScenarioReader, AnEmitterIsRead) {
    const std::optional<Scenario> scenario = ScenarioReader().Read(DocumentOf(R"("emitters": [
        {"name": "a", "frequency": 1e8, "modulation": "fm", "power": 43,
         "schedule": {"start": 5, "stop": 100, "on": 2, "off": 3},
         "latitude": -33.5, "longitude": 151.25, "altitude": 1000, "course": 45, "speed": 80, "climb": -2}])"));
    ASSERT_TRUE(scenario);
    const Emitter& emitter = scenario->emitters.at(0);
    EXPECT_EQ(emitter.frequency, 1e8);
    EXPECT_EQ(emitter.bandwidth, 12'000.0);
    EXPECT_EQ(emitter.power, 43.0);
    EXPECT_EQ(emitter.schedule.start, 5.0);
    EXPECT_EQ(emitter.schedule.stop, 100.0);
    EXPECT_EQ(emitter.schedule.on, 2.0);
    EXPECT_EQ(emitter.schedule.off, 3.0);
    EXPECT_EQ(emitter.track.start.latitude, -33.5);
    EXPECT_EQ(emitter.track.start.longitude, 151.25);
    EXPECT_EQ(emitter.track.course, 45.0);
    EXPECT_EQ(emitter.track.speed, 80.0);
    EXPECT_EQ(emitter.track.climb, -2.0);
}

TEST(ScenarioReader, AStationIsRead) {
    const std::optional<Scenario> scenario = ScenarioReader().Read("{" + DEVICE + R"(, "station": {
        "way": [{"at": 0, "latitude": 1, "longitude": 2}, {"at": 9, "latitude": 3, "longitude": 4, "altitude": 5}],
        "repeat": true, "heading": 12, "declination": -3,
        "motion": {"pitch": {"amplitude": 2, "period": 7}, "heave": {"amplitude": 1, "period": 8}},
        "compasses": [{"type": "gyro", "resolution": 0.5, "magnetic": true, "pitchRoll": false}],
        "gps": {"satellites": 3, "quality": 2}}})");
    ASSERT_TRUE(scenario);
    const Platform& platform = scenario->platform;
    ASSERT_EQ(platform.track.way.size(), 2U);
    EXPECT_EQ(platform.track.way[1].place.altitude, 5.0);
    EXPECT_TRUE(platform.track.repeat);
    EXPECT_EQ(platform.heading, 12.0);
    EXPECT_EQ(platform.declination, -3.0);
    EXPECT_EQ(platform.pitch.period, 7.0);
    EXPECT_EQ(platform.heave.amplitude, 1.0);
    ASSERT_EQ(platform.compasses.size(), 1U);
    EXPECT_TRUE(platform.compasses[0].magnetic);
    EXPECT_FALSE(platform.compasses[0].pitchRoll);
    EXPECT_EQ(platform.satellites, 3);
    EXPECT_EQ(scenario->device.antennas.at(0).compass, 0); // the first one, as long as none is named
}

TEST(ScenarioReader, WishesAndFaultsAreRead) {
    const std::optional<Scenario> scenario = ScenarioReader().Read(DocumentOf(R"("wishes": [
        {"at": 1, "mode": "scan", "ranges": [{"start": 118e6, "step": 25e3, "stop": 120e6}]},
        {"at": 5, "mode": "ffm", "frequency": 119e6, "averageTime": 0.5, "superResolution": true}],
        "faults": [{"kind": "slow", "at": 3, "for": 4, "delay": 0.5}, {"kind": "lostlink", "at": 9, "for": 1}])"));
    ASSERT_TRUE(scenario);
    ASSERT_EQ(scenario->wishes.size(), 2U);
    EXPECT_EQ(scenario->wishes[0].mode, EMODE_SCAN);
    EXPECT_EQ(scenario->wishes[0].ranges->at(0).stop, 120e6);
    EXPECT_EQ(scenario->wishes[1].frequency, 119e6);
    EXPECT_EQ(scenario->wishes[1].superResolution, true);
    EXPECT_FALSE(scenario->wishes[1].ranges);
    ASSERT_EQ(scenario->faults.size(), 2U);
    EXPECT_EQ(scenario->faults[0].kind, EFault::SLOW);
    EXPECT_EQ(scenario->faults[0].delay, 0.5);
    EXPECT_EQ(scenario->faults[1].kind, EFault::LOST_LINK);
}

TEST(ScenarioReader, BrokenJsonIsRefusedWithItsLine) {
    EXPECT_TRUE(RefusalOf("{\n\"seed\": 1,\n\"name\": }").startsWith(u"line 3: "));
    EXPECT_TRUE(RefusalOf("").startsWith(u"line 1: "));
    EXPECT_TRUE(RefusalOf(QByteArray(100'000, '[')).startsWith(u"line 1: "));
}

TEST(ScenarioReader, TooLargeADocumentIsRefused) {
    const QByteArray document = DocumentOf();
    EXPECT_TRUE(ScenarioReader().Read(document + QByteArray(1'000'000 - document.size(), ' ')));
    EXPECT_EQ(RefusalOf(document + QByteArray(1'000'001 - document.size(), ' ')),
              u"is larger than 1000000 bytes");
}

TEST(ScenarioReader, WhatIsWrongIsNamedByItsPath) {
    const auto emitter = [](const QByteArray& members) {
        return RefusalOf(DocumentOf(R"("emitters": [{"name": "a", "frequency": 1e8, "power": 1, "latitude": 1,
            "longitude": 1}, {"name": "b", )" +
                                    members + "}]"));
    };
    const QByteArray place = R"(, "latitude": 1, "longitude": 1)";
    EXPECT_EQ(emitter(R"("power": 1)" + place), u"emitters[1].frequency: is missing");
    EXPECT_EQ(emitter(R"("frequency": 5e12, "power": 1)" + place),
              u"emitters[1].frequency: 5e+12 is not within 1 to 100000000000");
    EXPECT_EQ(emitter(R"("frequency": "1e8", "power": 1)" + place),
              u"emitters[1].frequency: is not a number");
    EXPECT_EQ(emitter(R"("frequency": 1e8, "power": 1, "colour": 2)" + place),
              u"emitters[1].colour: is not known");
    EXPECT_EQ(emitter(R"("frequency": 1e8, "power": 1, "modulation": "xx")" + place),
              u"emitters[1].modulation: \"xx\" is not known");
    EXPECT_EQ(emitter(R"("frequency": 1e8, "power": 1, "latitude": 91, "longitude": 1)"),
              u"emitters[1].latitude: 91 is not within -90 to 90");
    EXPECT_EQ(emitter(R"("frequency": 1e8, "power": 1, "schedule": {"off": 1})" + place),
              u"emitters[1].schedule.on: is missing");
    EXPECT_EQ(emitter(R"("frequency": 1e8, "power": 1, "way": [])"), u"emitters[1].way: is empty");
    EXPECT_EQ(emitter(R"("frequency": 1e8, "power": 1, "way": [{"at": 1, "latitude": 1, "longitude": 1},
                        {"at": 1, "latitude": 1, "longitude": 1}])"),
              u"emitters[1].way[1].at: is not later than the point before");
    EXPECT_EQ(emitter(R"("frequency": 1e8, "power": 1, "way": [{"at": 1, "latitude": 1, "longitude": 1}],
                        "latitude": 1)"),
              u"emitters[1].latitude: is not known");
}

TEST(ScenarioReader, WrongTypesAreRefused) {
    EXPECT_EQ(RefusalOf("[]"), u"the document: is not an object");
    EXPECT_EQ(RefusalOf(DocumentOf(R"("emitters": {})")), u"emitters: is not a list");
    EXPECT_EQ(RefusalOf(DocumentOf(R"("emitters": [1])")), u"emitters[0]: is not an object");
    EXPECT_EQ(RefusalOf(DocumentOf(R"("name": 1)")), u"name: is not a text");
    EXPECT_EQ(RefusalOf(DocumentOf(R"("seed": 1.5)")), u"seed: is not a whole number");
    EXPECT_EQ(RefusalOf(DocumentOf(R"("start": "noon")")),
              u"start: is not a time such as 2026-01-01T12:00:00Z");
    EXPECT_EQ(RefusalOf("{" + DEVICE + R"(, "station": {"latitude": 1, "longitude": 1, "motion": 1}})"),
              u"station.motion: is not an object");
    EXPECT_EQ(RefusalOf("{" + DEVICE + R"(, "station": {"latitude": 1, "longitude": 1,
                                                       "compasses": [{"type": "a", "magnetic": 1}]}})"),
              u"station.compasses[0].magnetic: is neither true nor false");
}

TEST(ScenarioReader, ADeviceIsOneOfTheCatalogue) {
    const auto device = [](const QByteArray& members) {
        return RefusalOf("{" + STATION + R"(, "device": {)" + members + "}}");
    };
    const QByteArray converters = R"("converters": [{"type": "RCV03"}])";
    EXPECT_EQ(device(converters + R"(, "antennas": [{"name": "PX115SR"}])"), u"device.type: is missing");
    EXPECT_EQ(device(R"("type": "ZANOAK", )" + converters + R"(, "antennas": [{"name": "PX115SR"}])"),
              u"device.type: \"ZANOAK\" is not known");
    EXPECT_EQ(device(R"("type": "ZANTIDE", )" + converters + R"(, "antennas": [{"name": "PX0"}])"),
              u"device.antennas[0].name: \"PX0\" is not known");
    EXPECT_EQ(
        device(R"("type": "ZANTIDE", "converters": [{"type": "RCV99"}], "antennas": [{"name": "PX115SR"}])"),
        u"device.converters[0].type: \"RCV99\" is not known");
    EXPECT_EQ(device(R"("type": "ZANTIDE", )" + converters +
                     R"(, "antennas": [{"name": "PX115SR", "converter": 1}])"),
              u"device.antennas[0].converter: there is no such converter");
    EXPECT_EQ(device(R"("type": "ZANTIDE", )" + converters +
                     R"(, "antennas": [{"name": "PX115SR", "compass": 0}])"),
              u"device.antennas[0].compass: there is no such compass");
    EXPECT_EQ(device(R"("type": "ZANTIDE", )" + converters), u"device.antennas: there is none");
    EXPECT_EQ(device(R"("type": "ZANTIDE", "options": ["ZAN-X"], )" + converters +
                     R"(, "antennas": [{"name": "PX115SR"}])"),
              u"device.options: \"ZAN-X\" is not known");
    EXPECT_EQ(device(R"("type": "ZANTIDE", "frequency": 5e6, )" + converters +
                     R"(, "antennas": [{"name": "PX115SR"}])"),
              u"device.frequency: is not in the range of an antenna");
    EXPECT_EQ(device(R"("type": "ZANTIDE", "ranges": [{"start": 118e6, "step": 25e3, "stop": 117e6}], )" +
                     converters + R"(, "antennas": [{"name": "PX115SR"}])"),
              u"device.ranges[0].stop: is below the start");
    EXPECT_EQ(device(R"("type": "ZANTIDE", "ranges": [{"start": 118e6, "step": 1, "stop": 119e6}], )" +
                     converters + R"(, "antennas": [{"name": "PX115SR"}])"),
              u"device.ranges[0].step: makes more channels than the device has");
}

TEST(ScenarioReader, WhatDoesNotFitTheDeviceIsRefused) {
    EXPECT_EQ(RefusalOf(DocumentOf(R"("wishes": [{"at": 1, "frequency": 5e6}])")),
              u"wishes[0].frequency: is not in the range of an antenna");
    EXPECT_EQ(RefusalOf(DocumentOf(
                  R"("wishes": [{"at": 1, "ranges": [{"start": 5e6, "step": 1e6, "stop": 30e6}]}])")),
              u"wishes[0].ranges[0].start: is not in the range of an antenna");
    EXPECT_EQ(RefusalOf(DocumentOf(
                  R"("wishes": [{"at": 1, "ranges": [{"start": 30e6, "step": 1e6, "stop": 2e9}]}])")),
              u"wishes[0].ranges[0].stop: is not in the range of an antenna");
}

TEST(ScenarioReader, AWayOfOnePointIsNotRepeated) {
    EXPECT_EQ(RefusalOf("{" + DEVICE + R"(, "station": {"way": [{"at": 0, "latitude": 1, "longitude": 1}],
                                                       "repeat": true}})"),
              u"station.repeat: a way of one point cannot be repeated");
}

TEST(ScenarioReader, TextsAreBoundedAndAreTexts) {
    EXPECT_EQ(RefusalOf(DocumentOf(R"("name": ")" + QByteArray(201, 'x') + R"(")")),
              u"name: is longer than 200 characters");
    EXPECT_EQ(RefusalOf("{" + STATION + R"(, "device": {"type": "ZANTIDE", "options": [1]}})"),
              u"device.options: holds what is not a text");
}

TEST(ScenarioReader, AFileThatIsRefusedIsNamed) {
    const QTemporaryDir directory;
    QFile file(directory.filePath(u"one.json"_s));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("{\n]");
    file.close();
    ScenarioReader reader;
    EXPECT_FALSE(reader.ReadFile(file.fileName()));
    EXPECT_TRUE(reader.GetErrorText().startsWith(file.fileName() + u": line 2: "_s));
}

TEST(ScenarioReader, ListsAreBounded) {
    QByteArray emitters;
    for (int i = 0; i < 1001; ++i) {
        emitters += QByteArray(i == 0 ? "" : ",") +
                    R"({"name": "a", "frequency": 1e8, "power": 1, "latitude": 1, "longitude": 1})";
    }
    EXPECT_EQ(RefusalOf(DocumentOf(R"("emitters": [)" + emitters + "]")),
              u"emitters: holds 1001, which is more than 1000");
}

TEST(ScenarioReader, WishesComeInTheirOrder) {
    EXPECT_EQ(RefusalOf(DocumentOf(R"("wishes": [{"at": 5}, {"at": 4}])")),
              u"wishes[1].at: is earlier than the wish before");
    EXPECT_EQ(RefusalOf(DocumentOf(R"("wishes": [{"at": 5, "mode": "sleep"}])")),
              u"wishes[0].mode: \"sleep\" is not known");
    EXPECT_EQ(RefusalOf(DocumentOf(R"("faults": [{"at": 5, "for": 1, "kind": "fire"}])")),
              u"faults[0].kind: \"fire\" is not known");
}

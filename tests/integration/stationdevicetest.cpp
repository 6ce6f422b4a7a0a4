#include "support/printing.h"
#include "support/stationprocess.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

// What a person asks the station about its device, and what becomes of its settings.

namespace {

class StationDeviceTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_directory.isValid()); }

    /// Runs a command given as one text on the settings of this test.
    StationResult Run(const QString& command) {
        return RunStation(command.split(u' ') + QStringList{u"--config"_s, m_directory.path()});
    }
    [[nodiscard]] QString SettingsFile() const { return m_directory.filePath(u"Application.ini"_s); }
    /// Changes a text in the settings as a person with an editor does.
    void Edit(const QByteArray& before, const QByteArray& after) {
        QByteArray settings = ReadFile(SettingsFile());
        ASSERT_TRUE(settings.contains(before)) << settings.toStdString();
        WriteFile(SettingsFile(), settings.replace(before, after));
    }

    QTemporaryDir m_directory;
};

/// The text behind a name at the beginning of a line; null when there is no such line.
QString Line(const StationResult& result, const QString& name) {
    const QRegularExpression line(u"^%1 +(.*)$"_s.arg(QRegularExpression::escape(name)),
                                  QRegularExpression::MultilineOption);
    return line.match(result.out).captured(1);
}

} // namespace

TEST_F(StationDeviceTest, FirstStartWritesAnExampleThatIsValidAndCoversHfToThreeGigahertz) {
    const StationResult result = Run(u"device"_s);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(Line(result, u"type"_s), u"ZANTIDE"_s);
    EXPECT_EQ(Line(result, u"options"_s), u"ZAN-HFR"_s);
    EXPECT_EQ(Line(result, u"channels"_s), u"60000"_s);
    EXPECT_EQ(Line(result, u"antenna setup"_s), u"Antenna setup is valid."_s);
    EXPECT_EQ(Line(result, u"PX110"_s), u"yes      300 kHz - 30 MHz         RCV01      WAT      yes"_s);
    EXPECT_EQ(Line(result, u"PX106"_s), u"yes      30.000001 MHz - 1.3 GHz  RCV03      COR      yes"_s);
    EXPECT_EQ(Line(result, u"PX109"_s), u"yes      1.300000001 GHz - 3 GHz  RCV03      VEC      yes"_s);
    EXPECT_EQ(Line(result, u"scan"_s), u"300 kHz  3 GHz"_s);
    EXPECT_EQ(Line(result, u"HF up to"_s), u"30 MHz"_s);
    EXPECT_EQ(Line(result, u"VUHF from"_s), u"30.000001 MHz"_s);
    const QByteArray settings = ReadFile(SettingsFile());
    EXPECT_TRUE(settings.contains("DevType=ZANTIDE\n")) << settings.toStdString();
    EXPECT_TRUE(settings.contains("[ZANStations/ZANStation0/SystemConfiguration/Antenna2]\n"));
    EXPECT_EQ(Run(u"device"_s).out, result.out) << "the second start reads what the first one wrote";
}

TEST_F(StationDeviceTest, FollowsWhatAPersonWritesIntoTheSettings) {
    Run(u"device"_s);
    Edit("DevType=ZANTIDE", "DevType=ZANFERN");
    Edit("DevOptions=ZAN-HFR", "DevOptions=ZAN-CL;NOSUCH;ZAN-DR");
    Edit("ConverterTypeName=RCV01", "ConverterTypeName=RCV99");
    const StationResult result = Run(u"device"_s);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(Line(result, u"type"_s), u"ZANFERN"_s);
    EXPECT_EQ(Line(result, u"options"_s), u"ZAN-CL"_s);
    EXPECT_TRUE(result.err.contains(u"ZAN-CL;NOSUCH;ZAN-DR"_s)) << result.err.toStdString();
    EXPECT_TRUE(Line(result, u"PX110"_s).endsWith(u"no: unknown converter 'RCV99'"_s))
        << result.out.toStdString();
    EXPECT_EQ(Line(result, u"scan"_s), u"100 MHz  450 MHz"_s);
    EXPECT_FALSE(result.err.contains(u"No sample mode matching"_s)) << result.err.toStdString();
}

TEST_F(StationDeviceTest, TellsWhyAnAntennaIsNotSupported) {
    struct Case {
        QByteArray before;
        QByteArray after;
        QString reason;
    };
    const Case cases[] = {
        {"ConverterTypeName=RCV01", "ConverterTypeName=RCV02",
         u"no: the device has no sample mode for the converter RCV02"_s},
        {"MaxRange=30000000.000\nMechOffset=0.0\nMinFreq=300000.000\nMinRange=300000.000",
         "MaxRange=25000000\nMechOffset=0.0\nMinFreq=100000\nMinRange=100000",
         u"no: no sample mode of the converter RCV01 covers the range 100 kHz - 25 MHz"_s},
        {"MaxRange=30000000.000\nMechOffset=0.0\nMinFreq=300000.000\nMinRange=300000.000",
         "MaxRange=1000000\nMechOffset=0.0\nMinFreq=9000\nMinRange=9000", u"no: needs the option ZAN-LF"_s},
    };
    for (const Case& each : cases) {
        QFile::remove(SettingsFile());
        Run(u"device"_s);
        Edit(each.before, each.after);
        const StationResult result = Run(u"device"_s);
        EXPECT_TRUE(Line(result, u"PX110"_s).endsWith(each.reason)) << result.out.toStdString();
    }
}

TEST_F(StationDeviceTest, RealtimeBandwidthIsThatOfTheDeviceWhereSampleModesShareTheirNumber) {
    Run(u"device"_s);
    Edit("DevType=ZANTIDE", "DevType=ZANMOSS");
    Edit("ConverterTypeName=RCV03", "ConverterTypeName=RCV04");
    const StationResult result = Run(u"tune --mode scan --frequency 500M"_s);
    EXPECT_EQ(Line(result, u"sample mode"_s), u"1000, realtime bandwidth 200 kHz"_s)
        << result.out.toStdString();
}

TEST_F(StationDeviceTest, RepairThatLeavesTheSetupInvalidSaysSo) {
    Run(u"device"_s);
    // Supported up to 30 MHz, and covering more.
    Edit("MaxFreq=30000000.000", "MaxFreq=40000000.000");
    Edit("MaxRange=30000000.000", "MaxRange=20000000.000");
    const StationResult result = Run(u"antennas repair"_s);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.out.endsWith(u"installed options. It must be disabled.\n"_s))
        << result.out.toStdString();
    EXPECT_EQ(Run(u"antennas check"_s).exitCode, 1);
}

TEST_F(StationDeviceTest, UnknownDeviceTypeIsReported) {
    Run(u"device"_s);
    Edit("DevType=ZANTIDE", "DevType=OTHER");
    const StationResult result = Run(u"device"_s);
    EXPECT_TRUE(result.err.contains(u"WARNING: device type OTHER not fully supported"_s))
        << result.err.toStdString();
    EXPECT_EQ(Line(result, u"scan"_s), u"300 kHz  3 GHz"_s) << "it counts as a ZANTIDE";
}

TEST_F(StationDeviceTest, TuneTellsWhatIsValidAndWhatWasChangedAndWhy) {
    struct Case {
        QString command;
        int exitCode;
        QString valid;
        QString changed;
        QString antenna;
        QString sampleMode;
    };
    const Case cases[] = {
        {u"--frequency 145.5M"_s, 0, u"145.5 MHz"_s, u"nothing"_s, u"PX106 (30.000001 MHz - 1.3 GHz)"_s,
         u"12, realtime bandwidth 2 MHz"_s},
        {u"--frequency 1e3"_s, 3, u"300 kHz"_s,
         u"frequency raised by 299 kHz: the mode goes from 300 kHz to 3 GHz"_s, u"PX110 (300 kHz - 30 MHz)"_s,
         u"3, realtime bandwidth 1 MHz"_s},
        {u"--mode search --frequency 5GHz"_s, 3, u"3 GHz"_s,
         u"frequency lowered by 2 GHz: the mode goes from 300 kHz to 3 GHz"_s,
         u"PX109 (1.300000001 GHz - 3 GHz)"_s, u"8, realtime bandwidth 100 kHz"_s},
        {u"--mode wideband --frequency 29.9M --bandwidth 1M"_s, 3, u"29.5 MHz"_s,
         u"frequency lowered by 400 kHz: the band of 1 MHz must lie in the range of PX110"_s,
         u"PX110 (300 kHz - 30 MHz)"_s, u"3, realtime bandwidth 1 MHz"_s},
        {u"--mode wideband --frequency 31M --bandwidth 3M"_s, 1, u"31.500001 MHz"_s,
         u"frequency raised by 500.001 kHz: the band of 3 MHz must lie in the range of PX106"_s,
         u"PX106 (30.000001 MHz - 1.3 GHz)"_s,
         u"no: no sample mode has the wanted realtime bandwidth; possible: 100 kHz, 200 kHz, 500 kHz, 1 MHz, 2 MHz, 5 MHz, 10 MHz"_s},
        {u"--mode wideband --frequency 2.9G --bandwidth 10G"_s,
         1,
         u"no: the band of 10 GHz is wider than the range of PX109 (1.300000001 GHz - 3 GHz)"_s,
         {},
         {},
         {}},
        {u"--mode wideband --frequency 5G"_s, 3, u"2.99995 GHz"_s,
         u"frequency lowered by 2 GHz: the mode goes from 300 kHz to 3 GHz"_s,
         u"PX109 (1.300000001 GHz - 3 GHz)"_s, u"8, realtime bandwidth 100 kHz"_s},
        {u"--mode 5 --frequency 3M"_s, 1, u"no: the device serves no range in this mode"_s, {}, {}, {}},
        {u"--mode scan --start 1M --stop 2M"_s, 0, u"1 MHz - 2 MHz"_s, u"nothing"_s,
         u"PX110 (300 kHz - 30 MHz)"_s, u"0, realtime bandwidth 100 kHz"_s},
        {u"--mode scan --start 25M --stop 35M --adjust down"_s, 3, u"20 MHz - 30 MHz"_s,
         u"range lowered by 5 MHz: it straddled the border of two antennas"_s, u"PX110 (300 kHz - 30 MHz)"_s,
         u"0, realtime bandwidth 100 kHz"_s},
        {u"--mode scan --start 25M --stop 35M --adjust up"_s, 3, u"30.000001 MHz - 40.000001 MHz"_s,
         u"range raised by 5.000001 MHz: it straddled the border of two antennas"_s,
         u"PX106 (30.000001 MHz - 1.3 GHz)"_s, u"8, realtime bandwidth 100 kHz"_s},
        {u"--mode scan --start 25M --stop 35M --adjust none"_s,
         1,
         u"no: no antenna with a sample mode covers the whole range; the mode goes from 300 kHz to 3 GHz"_s,
         {},
         {},
         {}},
        {u"--mode scan --start 2.9G --stop 3.1G"_s, 3, u"2.8 GHz - 3 GHz"_s,
         u"range lowered by 100 MHz: the mode goes from 300 kHz to 3 GHz"_s,
         u"PX109 (1.300000001 GHz - 3 GHz)"_s, u"8, realtime bandwidth 100 kHz"_s},
    };
    for (const Case& each : cases) {
        const StationResult result = Run(u"tune "_s + each.command);
        EXPECT_EQ(result.exitCode, each.exitCode) << each.command.toStdString() << result.err.toStdString();
        EXPECT_EQ(Line(result, u"valid"_s), each.valid) << each.command.toStdString();
        EXPECT_EQ(Line(result, u"changed"_s), each.changed) << each.command.toStdString();
        EXPECT_EQ(Line(result, u"antenna"_s), each.antenna) << each.command.toStdString();
        EXPECT_EQ(Line(result, u"sample mode"_s), each.sampleMode) << each.command.toStdString();
    }
}

TEST_F(StationDeviceTest, TuneNamesEveryChangeWhenThereAreSeveral) {
    const StationResult result = Run(u"tune --mode scan --start 100k --stop 35M --adjust up"_s);
    EXPECT_EQ(result.exitCode, 3) << result.out.toStdString();
    EXPECT_EQ(Line(result, u"valid"_s), u"30.000001 MHz - 64.900001 MHz"_s);
    EXPECT_EQ(Line(result, u"changed"_s), u"range raised by 200 kHz: the mode goes from 300 kHz to 3 GHz"_s);
    EXPECT_TRUE(result.out.contains(u"\n              range raised by 29.700001 MHz: it straddled"_s))
        << result.out.toStdString();
}

TEST_F(StationDeviceTest, AntennaActionsWorkOnTheSettingsAndJudgeTheSetup) {
    struct Step {
        QString action;
        int exitCode;
        QString out;
    };
    const Step steps[] = {
        {u"check"_s, 0, u"Antenna setup is valid.\n"_s},
        {u"range PX106 20M 1.3G"_s, 1, u"Frequency ranges are overlapping.\n"_s},
        {u"check"_s, 1, u"Frequency ranges are overlapping.\n"_s},
        {u"repair"_s, 0,
         u"Auto configuration of antennas successfully covered range from 0.3 MHz to 3000 MHz.\n"
         "PX106: 20 MHz - 1.3 GHz -> 30.000001 MHz - 1.3 GHz\n"_s},
        {u"check"_s, 0, u"Antenna setup is valid.\n"_s},
        {u"repair"_s, 0, u"Antenna setup is already valid. Nothing changed.\n"_s},
        {u"disable PX106"_s, 1, u"Frequency range is not entirely covered without gaps.\n"_s},
        {u"enable PX106"_s, 0, u"Antenna setup is valid.\n"_s},
        {u"range PX106 50M 1300 MHz"_s, 2, {}},
        {u"range PX106 50M 1.3GHz"_s, 1, u"Frequency range is not entirely covered without gaps.\n"_s},
    };
    for (const Step& step : steps) {
        const StationResult result = Run(u"antennas "_s + step.action);
        EXPECT_EQ(result.exitCode, step.exitCode) << step.action.toStdString() << result.err.toStdString();
        EXPECT_EQ(result.out, step.out) << step.action.toStdString();
    }
    const StationResult list = Run(u"antennas list"_s);
    EXPECT_EQ(Line(list, u"PX106"_s), u"yes      50 MHz - 1.3 GHz         20 MHz - 1.3 GHz  RCV03"_s)
        << list.out.toStdString();
}

TEST_F(StationDeviceTest, ADryRunShowsTheRepairAndChangesNothing) {
    Run(u"antennas range PX106 20M 1.3G"_s);
    const QByteArray before = ReadFile(SettingsFile());
    const StationResult result = Run(u"antennas repair --dry-run"_s);
    EXPECT_EQ(result.exitCode, 0) << "as the repair ends";
    EXPECT_EQ(result.out,
              u"Nothing is changed. A repair would report:\n"
              "Auto configuration of antennas successfully covered range from 0.3 MHz to 3000 MHz.\n"
              "PX106: 20 MHz - 1.3 GHz -> 30.000001 MHz - 1.3 GHz\n"_s);
    EXPECT_EQ(ReadFile(SettingsFile()), before);
    EXPECT_EQ(Run(u"antennas check"_s).exitCode, 1);
    EXPECT_TRUE(
        Run(u"antennas repair"_s).out.contains(u"PX106: 20 MHz - 1.3 GHz -> 30.000001 MHz - 1.3 GHz\n"_s));
}

TEST_F(StationDeviceTest, ADryRunThatWouldFailFails) {
    Run(u"device"_s);
    Edit("Enabled=true\nMaxFreq=1300000000.000", "Enabled=true\nMaxFreq=5000000000.000");
    Run(u"antennas range PX106 20M 1.3G"_s);
    const QByteArray before = ReadFile(SettingsFile());
    const StationResult result = Run(u"antennas repair --dry-run"_s);
    EXPECT_EQ(result.exitCode, 1) << "the device does not support all that the antenna covers";
    EXPECT_TRUE(result.out.contains(u"is not supported by the ZAN device"_s)) << result.out.toStdString();
    EXPECT_EQ(ReadFile(SettingsFile()), before);
}

TEST_F(StationDeviceTest, DisabledBySetupRepairAnAntennaIsUsedInFullWhenItIsEnabledAgain) {
    Run(u"device"_s);
    Edit("Enabled=true\nMaxFreq=3000000000.000", "Enabled=maybe\nMaxFreq=20000000");
    Edit("MinFreq=1300000000.000\nMinRange=1300000001.000", "MinFreq=1000000\nMinRange=1000000");
    Edit("MaxRange=3000000000.000", "MaxRange=20000000");
    Run(u"antennas range PX106 20M 1.3G"_s);
    EXPECT_EQ(Run(u"antennas repair"_s).exitCode, 0);
    Run(u"antennas enable PX109"_s);
    EXPECT_EQ(Line(Run(u"antennas list"_s), u"PX109"_s).left(26), u"yes      1 MHz - 20 MHz   "_s)
        << Run(u"antennas list"_s).out.toStdString();
}

TEST_F(StationDeviceTest, ActionsThatCannotBeDoneChangeNothing) {
    Run(u"device"_s);
    const QByteArray before = ReadFile(SettingsFile());
    for (const auto& [action, exitCode, word] :
         {std::tuple{u"enable PX999"_s, 1, u"PX110, PX106, PX109"_s},
          std::tuple{u"range PX999 1M 2M"_s, 1, u"PX999"_s},
          std::tuple{u"range PX106 1M 2M"_s, 1, u"20 MHz - 1.3 GHz"_s},
          std::tuple{u"range PX106 x 2M"_s, 2, u"'x'"_s}, std::tuple{u"range PX106 40M 30M"_s, 2, u"40M"_s},
          std::tuple{u"range PX106 40M"_s, 2, u"range NAME LOW HIGH"_s},
          std::tuple{u"check --dry-run"_s, 2, u"repair"_s}, std::tuple{u"mend"_s, 2, u"repair"_s}}) {
        const StationResult result = Run(u"antennas "_s + action);
        EXPECT_EQ(result.exitCode, exitCode) << action.toStdString();
        EXPECT_TRUE(result.err.contains(word)) << result.err.toStdString();
    }
    EXPECT_EQ(ReadFile(SettingsFile()), before);
}

TEST_F(StationDeviceTest, CatalogueTablesAreForPeopleAndForPrograms) {
    struct Case {
        QString table;
        int rows;
        QString line;
    };
    for (const Case& each :
         {Case{u"antennas"_s, 48, u"PX115SR         20 MHz           1.3 GHz  COR, SUPR"_s},
          Case{u"sample-modes"_s, 29, u"19           ZANTIDE, ZANREEF, 5, ZANDUNE, 7"_s},
          Case{u"bandwidths"_s, 19, u"HF_0250K_12K   250 Hz, 500 Hz, 1 kHz, 2.5 kHz, 6 kHz, 12 kHz"_s},
          Case{u"converters"_s, 10, u"RCV05  4       -"_s}, Case{u"options"_s, 22, u"ZANDUNE-HBW  10"_s}}) {
        const StationResult table = RunStation({u"catalogue"_s, each.table});
        EXPECT_EQ(table.exitCode, 0) << table.err.toStdString();
        EXPECT_EQ(table.out.count(u'\n'), each.rows + 1);
        EXPECT_TRUE(table.out.contains(u'\n' + each.line)) << table.out.toStdString();

        const StationResult json = RunStation({u"catalogue"_s, each.table, u"--json"_s});
        EXPECT_EQ(json.exitCode, 0);
        const QJsonArray rows = QJsonDocument::fromJson(json.out.toUtf8()).array();
        EXPECT_EQ(rows.size(), each.rows) << json.out.toStdString();
    }
    const QJsonArray modes =
        QJsonDocument::fromJson(RunStation({u"catalogue"_s, u"sample-modes"_s, u"--json"_s}).out.toUtf8())
            .array();
    EXPECT_EQ(modes.at(4)[u"option"_s].toString(), u"ZANTIDE-WB"_s);
    EXPECT_TRUE(modes.at(3)[u"option"_s].isNull());
    EXPECT_EQ(modes.at(4)[u"realtime_bandwidth_hz"_s].toDouble(), 1e6);
    EXPECT_EQ(modes.at(4)[u"converters"_s].toArray(), (QJsonArray{u"RCV03"_s, u"RCV01"_s}));
}

TEST_F(StationDeviceTest, WrongQuestionsAreRefusedWithTheRightOnes) {
    for (const auto& [command, word] :
         {std::pair{u"catalogue"_s, u"antennas|sample-modes|bandwidths|converters|options"_s},
          std::pair{u"catalogue towers"_s, u"antennas|sample-modes"_s},
          std::pair{u"tune"_s, u"--frequency"_s}, std::pair{u"tune --frequency 1x"_s, u"145.5M"_s},
          std::pair{u"tune --frequency 1M --start 1M"_s, u"--start"_s},
          std::pair{u"tune --start 1M"_s, u"--stop"_s}, std::pair{u"tune --start 2M --stop 1M"_s, u"lower"_s},
          std::pair{u"tune --frequency 1M --adjust up"_s, u"--adjust"_s},
          std::pair{u"tune --start 1M --stop 2M --adjust left"_s, u"--adjust"_s},
          std::pair{u"tune --mode 15 --frequency 1M"_s, u"--mode"_s},
          std::pair{u"tune --mode any --frequency 1M"_s, u"--mode"_s},
          std::pair{u"antennas"_s, u"enable NAME"_s}, std::pair{u"device now"_s, u"'now'"_s}}) {
        const StationResult result = Run(command);
        EXPECT_EQ(result.exitCode, 2) << command.toStdString();
        EXPECT_TRUE(result.err.contains(word)) << result.err.toStdString();
        EXPECT_TRUE(result.out.isEmpty()) << result.out.toStdString();
    }
    EXPECT_TRUE(QDir(m_directory.path()).isEmpty());
}

TEST_F(StationDeviceTest, TraceIsShownWhereItIsAskedFor) {
    Run(u"device"_s);
    Edit("ConverterTypeName=RCV01", "ConverterTypeName=RCV02");
    EXPECT_TRUE(
        Run(u"device --option Trace=true"_s).err.contains(u"No sample mode matching eConverter=8,"_s));
    EXPECT_FALSE(Run(u"device"_s).err.contains(u"No sample mode matching"_s));
}

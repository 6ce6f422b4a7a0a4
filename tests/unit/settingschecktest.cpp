#include "zanserver/settingscheck.h"

#include "support/printing.h"
#include "tolmappstartup/cfgcenter.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace ZANServer;

namespace {

const QByteArray STATION = "[ZANStations]\nCount=1\n[ZANStations/ZANStation0]\nDeviceAddress=replay\n";

/// The texts of findings, each with its severity in front.
QStringList Texts(const Findings& findings) {
    QStringList texts;
    for (const Finding& finding : findings) {
        texts.append((finding.severity == Finding::Severity::Error ? u"error: "_s : u"warning: "_s) +
                     finding.text);
    }
    return texts;
}

/// What is said of a setting that is refused, and of one that is doubted.
QString Refused(const QString& key, const QString& value, const QString& allowed) {
    return u"error: the setting \"%1\" is \"%2\"; allowed %3"_s.arg(key, value, allowed);
}

QString Doubted(const QString& key, const QString& value, const QString& allowed) {
    return u"warning: the setting \"%1\" is \"%2\"; allowed %3"_s.arg(key, value, allowed);
}

class SettingsCheckTest : public testing::Test {
protected:
    /// What is said about a settings file.
    static QStringList Check(const QByteArray& settings) {
        const QTemporaryDir
            directory; // a new one, for Qt may take a file for the one that it has read before
        const QString name = directory.filePath(u"Application.ini"_s);
        QFile file(name);
        EXPECT_TRUE(file.open(QFile::WriteOnly) && file.write(settings) == settings.size());
        file.close();
        EXPECT_TRUE(CfgCenter::SetConfigDirectory(directory.path()));
        QStringList texts = Texts(CheckSettings(u"replay"_s)) + Texts(CheckMeaning(u"replay"_s)) +
                            Texts(CheckKeys(directory.path()));
        EXPECT_TRUE(CfgCenter::Close());
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        EXPECT_EQ(file.readAll(), settings) << "nothing is written";
        return texts;
    }
};

} // namespace

TEST_F(SettingsCheckTest, FindsNothingInSettingsThatAreSoundOrMissing) {
    EXPECT_EQ(Check(""), QStringList());
    EXPECT_EQ(Check("Output_Interval=10000\n[OverheadPass]\nThreshold=0\n" + STATION +
                    "PitchThreshold=-90\nRollThreshold=180\nDFMechOffset=3600\nDeclination=-1800\n"
                    "GainControlMode=1\nLocationChoice=1\nPreAmplifierHf=true\nAGCDecay=7\n"
                    "[ZANStations/ZANStation0/SystemConfiguration]\nAntennaCount=12\n"),
              QStringList());
}

TEST_F(SettingsCheckTest, RecordersSettingsAreKnownAndChecked) {
    EXPECT_EQ(Check("[Recorder]\nEnabled=true\nFile=flight.csv\nFileSize=1\nFileCount=10000\n"),
              QStringList());
    EXPECT_EQ(Check("[Recorder]\nEnabled=on\nFileSize=0\nFileCount=0\n"),
              (QStringList{Refused(u"Recorder/FileSize"_s, u"0"_s, u"are whole numbers from 1 to 100000"_s),
                           Refused(u"Recorder/FileCount"_s, u"0"_s, u"are whole numbers from 1 to 10000"_s),
                           Refused(u"Recorder/Enabled"_s, u"on"_s, u"is true or false"_s)}));
}

TEST_F(SettingsCheckTest, NumberOutsideItsRangeIsReportedWithNameValueAndWhatIsAllowed) {
    EXPECT_EQ(
        Check("Output_Interval=10001\n[OverheadPass]\nThreshold=-1\n"),
        (QStringList{Refused(u"Output_Interval"_s, u"10001"_s, u"are whole numbers from 0 to 10000"_s),
                     Refused(u"OverheadPass/Threshold"_s, u"-1"_s, u"are whole numbers from 0 to 900"_s)}));
    EXPECT_EQ(Check(STATION + "DFMechOffset=3601\nPitchThreshold=90.5\nLocationLatitude=-91\n"
                              "[ZANStations/ZANStation0/SystemConfiguration]\nAntennaCount=13\n"),
              (QStringList{Refused(u"SystemConfiguration/AntennaCount"_s, u"13"_s,
                                   u"are whole numbers from 0 to 12"_s),
                           Refused(u"LocationLatitude"_s, u"-91"_s, u"is -90 to 90"_s),
                           Refused(u"DFMechOffset"_s, u"3601"_s, u"are whole numbers from -3600 to 3600"_s),
                           Refused(u"PitchThreshold"_s, u"90.5"_s, u"is -90 to 90"_s)}));
}

TEST_F(SettingsCheckTest, RefusedSettingsAreReportedInABoundedNumberAndLength) {
    QByteArray antennas;
    for (int i = 0; i < 100; ++i) {
        antennas += "[ZANStations/ZANStation0/SystemConfiguration/Antenna" + QByteArray::number(i) +
                    "]\nEnabled=perhaps\nCompassEnabled=perhaps\n";
    }
    const QStringList texts = Check(STATION + antennas);
    ASSERT_EQ(texts.size(), 21);
    EXPECT_EQ(texts.last(), u"error: and 4 further settings not as allowed"_s);
    EXPECT_EQ(Check("Output_Interval=" + QByteArray(100'000, '9') + '\n'),
              QStringList{Refused(u"Output_Interval"_s, QString(200, u'9') + u"..."_s,
                                  u"are whole numbers from 0 to 10000"_s)});
}

TEST_F(SettingsCheckTest, KeysOfAFileThatTheStoreRefusesAreNotLookedFor) {
    const QByteArray unknown = "[General]\nUnknown=1\n;";
    EXPECT_EQ(Check(unknown).size(), 1);
    EXPECT_EQ(Check(unknown + QByteArray(CfgCenter::MAX_FILE_SIZE, 'x')), QStringList());
}

TEST_F(SettingsCheckTest, TextWhereANumberBelongsIsNoNumber) {
    for (const QString& text : {u"often"_s, QString()}) {
        EXPECT_EQ(Check("Output_Interval=" + text.toUtf8() + '\n'),
                  QStringList{Refused(u"Output_Interval"_s, text, u"are whole numbers from 0 to 10000"_s)});
    }
    EXPECT_EQ(Check(STATION + "AGCDecay=1.5\nDFMechOffset=4.5\nMGCLevel=loud\nRollThreshold=nan\n"),
              (QStringList{Refused(u"AGCDecay"_s, u"1.5"_s, u"is a whole number"_s),
                           Refused(u"MGCLevel"_s, u"loud"_s, u"is a number"_s),
                           Refused(u"DFMechOffset"_s, u"4.5"_s, u"are whole numbers from -3600 to 3600"_s),
                           Refused(u"RollThreshold"_s, u"nan"_s, u"is -180 to 180"_s)}));
}

TEST_F(SettingsCheckTest, LongTextIsCutWhereItIsReported) {
    EXPECT_EQ(Check("Output_Interval=" + QByteArray(100000, 'x') + '\n'),
              QStringList{Refused(u"Output_Interval"_s, QString(200, u'x') + u"..."_s,
                                  u"are whole numbers from 0 to 10000"_s)});
}

TEST_F(SettingsCheckTest, FlagThatIsNeitherTrueNorFalseIsReported) {
    EXPECT_EQ(Check("FileOutput_Enabled=yes\nMshReceiver_Enabled=on\n[OverheadPass]\nValid=ja\n" + STATION +
                    "HwCheckRequirements=2\n"),
              (QStringList{Refused(u"FileOutput_Enabled"_s, u"yes"_s, u"is true or false"_s),
                           Refused(u"OverheadPass/Valid"_s, u"ja"_s, u"is true or false"_s),
                           Refused(u"MshReceiver_Enabled"_s, u"on"_s, u"is true or false"_s),
                           Refused(u"HwCheckRequirements"_s, u"2"_s, u"is true or false"_s)}));
    EXPECT_EQ(Check("RS232Output_Enabled=TRUE\n[OverheadPass]\nValid=0\n"), QStringList());
}

TEST_F(SettingsCheckTest, AntennaWithoutItsNumbersOrFlagsIsReported) {
    const QString antenna = u"SystemConfiguration/Antenna1/"_s;
    EXPECT_EQ(Check(STATION + "[ZANStations/ZANStation0/SystemConfiguration/Antenna1]\n"
                              "Enabled=on\nMinRange=4O000000\nMaxRange=1.3e9\nMechOffset=1,5\nMaxFreq=inf\n"),
              (QStringList{Refused(antenna + u"Enabled"_s, u"on"_s, u"is true or false"_s),
                           Refused(antenna + u"MinRange"_s, u"4O000000"_s, u"is a number"_s),
                           Refused(antenna + u"MechOffset"_s, u"1,5"_s, u"is a number"_s),
                           Refused(antenna + u"MaxFreq"_s, u"inf"_s, u"is a number"_s)}));
}

TEST_F(SettingsCheckTest, KeyThatASelectionDoesNotHaveIsReportedWithThoseThatItHas) {
    EXPECT_EQ(
        Check(STATION + "LocationChoice=4\nCompassChoice=5\nPreAmplifierHf=perhaps\n"),
        (QStringList{Refused(u"LocationChoice"_s, u"4"_s, u"is 0 (None), 1 (GPS), 2 (Manual), 3 (gpsd)"_s),
                     Refused(u"PreAmplifierHf"_s, u"perhaps"_s, u"is true or false"_s),
                     Refused(u"CompassChoice"_s, u"5"_s,
                             u"is 0 (None), 1 (Compass), 2 (GPS), 3 (Manual), 4 (gpsd)"_s)}));
}

TEST_F(SettingsCheckTest, SettingWhoseValueHasNoDescriptorIsTriedLikeTheOthers) {
    EXPECT_EQ(
        Check(STATION + "UseJobSettings4FFM=maybe\n"),
        QStringList{u"error: the setting \"UseJobSettings4FFM\" is \"maybe\"; allowed is true or false"_s});
    EXPECT_EQ(Check(STATION + "UseJobSettings4FFM=true\nCalibrationSchedule=daily at 3\n"), QStringList());
}

TEST_F(SettingsCheckTest, OnlyTheStationOfTheDeviceIsLookedInto) {
    EXPECT_EQ(
        Check("[ZANStations]\nCount=1\n[ZANStations/ZANStation0]\nDeviceAddress=other\nPitchThreshold=95\n"),
        QStringList());
}

TEST_F(SettingsCheckTest, KeyThatNobodyReadsIsReportedWithTheNearestOneThatIsKnown) {
    EXPECT_EQ(
        Check("OutputInterval=10\n" + STATION +
              "PitchTreshold=5\n[ZANStations/ZANStation0/SystemConfiguration/Antenna3]\nMinRnage=1\n"),
        (QStringList{
            u"warning: the setting \"OutputInterval\" is unknown and not used; the most similar known one is "
            "\"Output_Interval\""_s,
            u"warning: the setting \"ZANStations/ZANStation0/PitchTreshold\" is unknown and not used; the "
            "most similar known one is \"ZANStations/ZANStation0/PitchThreshold\""_s,
            u"warning: the setting "
            "\"ZANStations/ZANStation0/SystemConfiguration/Antenna3/MinRnage\" is unknown and not used; the "
            "most similar known one is \"ZANStations/ZANStation0/SystemConfiguration/Antenna3/MinRange\""_s}));
}

TEST_F(SettingsCheckTest, EveryKeyOfTheExampleStationIsKnown) {
    QFile example(QStringLiteral(ZAN_EXAMPLE_SETTINGS));
    ASSERT_TRUE(example.open(QFile::ReadOnly));
    EXPECT_EQ(Check(example.readAll()), QStringList());
}

TEST_F(SettingsCheckTest, HubPortAndAddressesAreKnown) {
    EXPECT_EQ(
        Check("MshCentralAddress=127.0.0.1\nMshCentralPort=4500\nMshClientName=ZAN\nAutoCoupleTargets=a\n"),
        QStringList());
    EXPECT_EQ(Check("MshCentralPort=1\n") + Check("MshCentralPort=65535\n"), QStringList());
}

TEST_F(SettingsCheckTest, HubPortThatIsNoneIsWarnedOf) {
    for (const QString& port : {u"0"_s, u"65536"_s, u"-1"_s, u"http"_s, QString()}) {
        EXPECT_EQ(Check("MshCentralPort=" + port.toUtf8() + '\n'),
                  QStringList{Doubted(u"MshCentralPort"_s, port,
                                      u"are whole numbers from 1 to 65535, and the default is used"_s)});
    }
}

TEST_F(SettingsCheckTest, AntennaModelThatNobodyKnowsIsWarnedOfWithTheNearestOne) {
    const QByteArray antennas = STATION +
                                "[ZANStations/ZANStation0/SystemConfiguration]\nAntennaCount=2\n"
                                "[ZANStations/ZANStation0/SystemConfiguration/Antenna0]\nName=PX110\n"
                                "[ZANStations/ZANStation0/SystemConfiguration/Antenna1]\nName=";
    EXPECT_EQ(
        Check(antennas + "PX1O6\n"),
        QStringList{Doubted(u"SystemConfiguration/Antenna1/Name"_s, u"PX1O6"_s,
                            u"are the models of \"zanstation catalogue antennas\", and the nearest one is "
                            "\"PX106\""_s)});
    EXPECT_EQ(
        Check(antennas + '\n'),
        QStringList{
            u"warning: the setting \"SystemConfiguration/Antenna1/Name\" is empty: the antenna has no name"_s});
    EXPECT_EQ(Check(antennas + "PX122 (A/P)\n"), QStringList());
    EXPECT_EQ(Check(QByteArray(antennas).replace("Count=2", "Count=1") + "PX1O6\n"), QStringList())
        << "it is not used";
}

TEST_F(SettingsCheckTest, ConverterThatNobodyKnowsIsWarnedOf) {
    const QByteArray antenna =
        STATION + "[ZANStations/ZANStation0/SystemConfiguration/Antenna0]\nConverterTypeName=";
    EXPECT_EQ(Check(antenna + '\n'), QStringList()) << "it has none";
    EXPECT_EQ(Check(antenna + "RCV10\n"), QStringList());
    for (const QString& unknown : {u"RCV99"_s, u"rcv01"_s}) {
        EXPECT_EQ(Check(antenna + unknown.toLatin1() + '\n'),
                  QStringList{Doubted(
                      u"SystemConfiguration/Antenna0/ConverterTypeName"_s, unknown,
                      u"are RCV01, RCV02, RCV03, RCV04, RCV05, RCV06, RCV07, RCV08, RCV09, RCV10"_s)});
    }
}

TEST_F(SettingsCheckTest, DfMethodThatNobodyKnowsIsWarnedOf) {
    const QByteArray antenna =
        STATION + "[ZANStations/ZANStation0/SystemConfiguration/Antenna0]\nDFAlgorithm=";
    EXPECT_EQ(Check(antenna + "WAT,COR,COR8,COR8O,COR9,SUPR,VEC,VMI,VMR\n"), QStringList());
    EXPECT_EQ(Check(antenna + '\n'), QStringList());
    for (const QByteArray& unknown :
         {QByteArray("VEK"), QByteArray("cor"), QByteArray(" VEC"), QByteArray()}) {
        EXPECT_EQ(Check(antenna + "COR," + unknown + '\n'),
                  QStringList{Doubted(u"SystemConfiguration/Antenna0/DFAlgorithm"_s,
                                      u"COR,"_s + QString::fromUtf8(unknown),
                                      u"are WAT, COR, COR8, COR8O, COR9, SUPR, VEC, VMI, VMR, separated "
                                      "by \",\""_s)});
    }
}

TEST_F(SettingsCheckTest, ManualPositionThatIsNotWhollySetIsWarnedOf) {
    const auto warning = [](const QString& missing) {
        return QStringList{
            u"warning: LocationChoice is 2 (Manual), and %1 not set: the station has no position"_s.arg(
                missing)};
    };
    const QByteArray manual = STATION + "LocationChoice=2\n";
    EXPECT_EQ(Check(manual), warning(u"LocationLatitude and LocationLongitude are"_s));
    EXPECT_EQ(Check(manual + "LocationLatitude=55\n"), warning(u"LocationLongitude is"_s));
    EXPECT_EQ(Check(manual + "LocationLongitude=5\n"), warning(u"LocationLatitude is"_s));
    EXPECT_EQ(Check(manual + "LocationLatitude=0\nLocationLongitude=0\n"), QStringList());
    EXPECT_EQ(Check(STATION + "LocationChoice=1\nLocationLatitude=55\n"), QStringList());
}

TEST_F(SettingsCheckTest, ManyKeysThatNobodyReadsAreCounted) {
    QByteArray settings;
    for (int i = 0; i < 1000; ++i) {
        settings += "Key" + QByteArray::number(i) + "=1\n";
    }
    const QStringList texts = Check(settings + QByteArray(100000, 'x') + "=1\n");
    ASSERT_EQ(texts.size(), 21);
    EXPECT_EQ(texts.back(), u"warning: 981 further unknown settings, not used"_s);
}

TEST_F(SettingsCheckTest, WhatTheDeviceWasDoingLastIsCheckedByKey) {
    const QByteArray section = STATION + "[ZANStations/ZANStation0/Control]\n";
    EXPECT_EQ(Check(section + "Frequency=127500000\nBandwidth=5\nDemodulation=1\nOperationMode=3\nSquelch=1\n"
                              "SquelchLevel=-3\nVolume=100\nMute=0\nScanAveraging=1\n"
                              "ScanRange0={\"start\":1e6,\"stop\":2e6,\"step\":1000}\nScanRange1=\n"),
              QStringList());
    EXPECT_EQ(Check(section + "Frequency=1e300\n"),
              QStringList{Refused(u"Control/Frequency"_s, u"1e300"_s, u"is 0 to 3.6e+09"_s)});
    EXPECT_EQ(Check(section + "Volume=101\n"),
              QStringList{Refused(u"Control/Volume"_s, u"101"_s, u"are whole numbers from 0 to 100"_s)});
    EXPECT_EQ(
        Check(section + "OperationMode=5\n"),
        QStringList{Refused(u"Control/OperationMode"_s, u"5"_s,
                            u"is 0 (Standby), 1 (FFM), 2 (WidebandFFM), 3 (Scan), 4 (Search), 6 (TDMA)"_s)});
    EXPECT_EQ(Check(section + "ScanRange0=118-137\n"),
              QStringList{Refused(u"Control/ScanRange0"_s, u"118-137"_s,
                                  u"is a range as a JSON object; a range is not a JSON object: 118-137"_s)});
}

TEST_F(SettingsCheckTest, IntervalOfTheControlIsBounded) {
    EXPECT_EQ(Check("[General]\nControl_Interval=0\n"), QStringList());
    EXPECT_EQ(
        Check("[General]\nControl_Interval=10001\n"),
        QStringList{Refused(u"Control_Interval"_s, u"10001"_s, u"are whole numbers from 0 to 10000"_s)});
}

TEST_F(SettingsCheckTest, GpsdsAddressAgeLimitAndFlagAreChecked) {
    EXPECT_EQ(Check("[Gpsd]\nAddress=ship.example:2948\nMaxAge=100\nPositionReceiver=/dev/ttyUSB0\n"
                    "HeadingReceiver=/dev/ttyUSB1\nPitchAndRoll=false\n"),
              QStringList());
    EXPECT_EQ(Check("[Gpsd]\nAddress=gpsd://localhost\nMaxAge=99\nPitchAndRoll=perhaps\n"),
              (QStringList{Refused(u"Gpsd/MaxAge"_s, u"99"_s, u"are whole numbers from 100 to 60000"_s),
                           Refused(u"Gpsd/PitchAndRoll"_s, u"perhaps"_s, u"is true or false"_s),
                           Refused(u"Gpsd/Address"_s, u"gpsd://localhost"_s,
                                   u"is HOST or HOST:PORT, such as localhost:2947"_s)}));
}

#include "zanstation/settingscheck.h"

#include "support/printing.h"
#include "tolmappstartup/cfgcenter.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

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

class SettingsCheck : public testing::Test {
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
        const QStringList texts = Texts(CheckSettings(u"replay"_s)) + Texts(CheckKeys(directory.path()));
        EXPECT_TRUE(CfgCenter::Close());
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        EXPECT_EQ(file.readAll(), settings) << "nothing is written";
        return texts;
    }
};

} // namespace

TEST_F(SettingsCheck, FindsNothingInSettingsThatAreSoundOrMissing) {
    EXPECT_EQ(Check(""), QStringList());
    EXPECT_EQ(Check("Output_Interval=10000\n[OverheadPass]\nThreshold=0\n" + STATION +
                    "PitchThreshold=-90\nRollThreshold=180\nDFMechOffset=3600\nDeclination=-1800\n"
                    "GainControlMode=1\nLocationChoice=2\nPreAmplifierHf=true\nAGCDecay=7\n"
                    "[ZANStations/ZANStation0/SystemConfiguration]\nAntennaCount=12\n"),
              QStringList());
}

TEST_F(SettingsCheck, NumberOutsideItsRangeIsToldWithNameValueAndWhatIsAllowed) {
    EXPECT_EQ(Check("Output_Interval=10001\n"),
              QStringList{u"error: the setting \"Output_Interval\" is \"10001\"; allowed is 0 to 10000"_s});
    EXPECT_EQ(Check("[OverheadPass]\nThreshold=-1\n"),
              QStringList{u"error: the setting \"OverheadPass/Threshold\" is \"-1\"; allowed is 0 to 900"_s});
    EXPECT_EQ(Check(STATION + "DFMechOffset=3601\nPitchThreshold=90.5\nLocationLatitude=-91\n"),
              (QStringList{u"error: the setting \"LocationLatitude\" is \"-91\"; allowed is -90 to 90"_s,
                           u"error: the setting \"DFMechOffset\" is \"3601\"; allowed is -3600 to 3600"_s,
                           u"error: the setting \"PitchThreshold\" is \"90.5\"; allowed is -90 to 90"_s}));
    EXPECT_EQ(
        Check(STATION + "[ZANStations/ZANStation0/SystemConfiguration]\nAntennaCount=13\n"),
        QStringList{
            u"error: the setting \"SystemConfiguration/AntennaCount\" is \"13\"; allowed is 0 to 12"_s});
}

TEST_F(SettingsCheck, TextWhereANumberBelongsIsNoNumber) {
    EXPECT_EQ(Check("Output_Interval=often\n"),
              QStringList{u"error: the setting \"Output_Interval\" is \"often\"; allowed is 0 to 10000"_s});
    EXPECT_EQ(Check("Output_Interval=\n"),
              QStringList{u"error: the setting \"Output_Interval\" is \"\"; allowed is 0 to 10000"_s});
    EXPECT_EQ(Check(STATION + "AGCDecay=1.5\nMGCLevel=loud\nRollThreshold=nan\n"),
              (QStringList{u"error: the setting \"AGCDecay\" is \"1.5\"; allowed is a number"_s,
                           u"error: the setting \"MGCLevel\" is \"loud\"; allowed is a number"_s,
                           u"error: the setting \"RollThreshold\" is \"nan\"; allowed is -180 to 180"_s}));
}

TEST_F(SettingsCheck, FlagThatIsNeitherTrueNorFalseIsTold) {
    EXPECT_EQ(
        Check("FileOutput_Enabled=yes\n[OverheadPass]\nValid=ja\n"),
        (QStringList{u"error: the setting \"FileOutput_Enabled\" is \"yes\"; allowed is true or false"_s,
                     u"error: the setting \"OverheadPass/Valid\" is \"ja\"; allowed is true or false"_s}));
    EXPECT_EQ(Check("RS232Output_Enabled=TRUE\n[OverheadPass]\nValid=0\n"), QStringList());
    EXPECT_EQ(
        Check(STATION + "HwCheckRequirements=2\n"),
        QStringList{u"error: the setting \"HwCheckRequirements\" is \"2\"; allowed is true or false"_s});
}

TEST_F(SettingsCheck, AntennaWithoutItsNumbersOrFlagsIsTold) {
    EXPECT_EQ(Check(STATION + "[ZANStations/ZANStation0/SystemConfiguration/Antenna1]\n"
                              "Enabled=on\nMinRange=4O000000\nMaxRange=1.3e9\nMechOffset=1,5\nMaxFreq=inf\n"),
              (QStringList{
                  u"error: the setting \"SystemConfiguration/Antenna1/Enabled\" is \"on\"; allowed is true "
                  u"or false"_s,
                  u"error: the setting \"SystemConfiguration/Antenna1/MinRange\" is \"4O000000\"; allowed is "
                  u"a number"_s,
                  u"error: the setting \"SystemConfiguration/Antenna1/MechOffset\" is \"1,5\"; allowed is a "
                  u"number"_s,
                  u"error: the setting \"SystemConfiguration/Antenna1/MaxFreq\" is \"inf\"; allowed is a "
                  u"number"_s}));
}

TEST_F(SettingsCheck, KeyThatASelectionDoesNotHaveIsToldWithThoseThatItHas) {
    EXPECT_EQ(
        Check(STATION + "LocationChoice=3\nPreAmplifierHf=perhaps\n"),
        (QStringList{u"error: the setting \"LocationChoice\" is \"3\"; allowed is 0 (None), 1 (GPS), "
                     "2 (Manual)"_s,
                     u"error: the setting \"PreAmplifierHf\" is \"perhaps\"; allowed is true or false"_s}));
}

TEST_F(SettingsCheck, OnlyTheStationOfTheDeviceIsLookedInto) {
    EXPECT_EQ(
        Check("[ZANStations]\nCount=1\n[ZANStations/ZANStation0]\nDeviceAddress=other\nPitchThreshold=95\n"),
        QStringList());
}

TEST_F(SettingsCheck, KeyThatNobodyReadsIsToldWithTheNearestOneThatIsKnown) {
    EXPECT_EQ(
        Check("OutputInterval=10\n" + STATION +
              "PitchTreshold=5\n[ZANStations/ZANStation0/SystemConfiguration/Antenna3]\nMinRnage=1\n"),
        (QStringList{
            u"warning: nobody reads the setting \"OutputInterval\"; the nearest one that is known is "
            "\"Output_Interval\""_s,
            u"warning: nobody reads the setting \"ZANStations/ZANStation0/PitchTreshold\"; the nearest one "
            "that is known is \"ZANStations/ZANStation0/PitchThreshold\""_s,
            u"warning: nobody reads the setting "
            "\"ZANStations/ZANStation0/SystemConfiguration/Antenna3/MinRnage\"; the nearest one that is "
            "known is \"ZANStations/ZANStation0/SystemConfiguration/Antenna3/MinRange\""_s}));
}

TEST_F(SettingsCheck, EveryKeyOfTheExampleStationIsKnown) {
    QFile example(QStringLiteral(ZAN_EXAMPLE_SETTINGS));
    ASSERT_TRUE(example.open(QFile::ReadOnly));
    EXPECT_EQ(Check(example.readAll()), QStringList());
}

TEST_F(SettingsCheck, HubPortAndAddressesAreKnown) {
    EXPECT_EQ(
        Check("MshCentralAddress=127.0.0.1\nMshCentralPort=4500\nMshClientName=ZAN\nAutoCoupleTargets=a\n"),
        QStringList());
}

TEST_F(SettingsCheck, ManyKeysThatNobodyReadsAreCounted) {
    QByteArray settings;
    for (int i = 0; i < 1000; ++i) {
        settings += "Key" + QByteArray::number(i) + "=1\n";
    }
    const QStringList texts = Check(settings + QByteArray(100000, 'x') + "=1\n");
    ASSERT_EQ(texts.size(), 21);
    EXPECT_EQ(texts.back(), u"warning: nobody reads 981 further settings"_s);
}

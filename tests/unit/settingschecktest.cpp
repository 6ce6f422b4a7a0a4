#include "zanstation/settingscheck.h"

#include "support/printing.h"
#include "support/storedsettings.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QByteArray STATION = "[ZANStations]\nCount=1\n[ZANStations/ZANStation0]\nDeviceAddress=replay\n";

class SettingsCheck : public testing::Test {
protected:
    /// What is said about a settings file, each finding with its severity in front.
    QStringList Check(const QByteArray& settings) {
        m_settings.Write(settings);
        QStringList texts;
        for (const Finding& finding : CheckSettings(u"replay"_s)) {
            texts.append((finding.severity == Finding::Severity::Error ? u"error: "_s : u"warning: "_s) +
                         finding.text);
        }
        EXPECT_EQ(m_settings.CloseAndRead(), QString::fromUtf8(settings)) << "nothing is written";
        return texts;
    }

    StoredSettings m_settings;
};

} // namespace

TEST_F(SettingsCheck, FindsNothingInSettingsThatAreSoundOrMissing) {
    EXPECT_EQ(Check(""), QStringList());
    EXPECT_EQ(Check("Output_Interval=10000\n[OverheadPass]\nThreshold=0\n" + STATION +
                    "PitchThreshold=-90\nRollThreshold=180\nDFMechOffset=3600\nDeclination=-1800\n"
                    "GainControlMode=1\nLocationChoice=2\nPreAmplifierHf=true\nAGCDecay=7\n"
                    "SystemConfiguration\\AntennaCount=12\n"),
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
    EXPECT_EQ(Check(STATION + "[ZANStations/ZANStation0/SystemConfiguration]\nAntennaCount=13\n"),
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

TEST_F(SettingsCheck, KeyThatASelectionDoesNotHaveIsToldWithThoseThatItHas) {
    EXPECT_EQ(Check(STATION + "LocationChoice=3\nPreAmplifierHf=perhaps\n"),
              (QStringList{u"error: the setting \"LocationChoice\" is \"3\"; allowed is 0 (None), 1 (GPS), "
                           "2 (Manual)"_s,
                           u"error: the setting \"PreAmplifierHf\" is \"perhaps\"; allowed is true or false"_s}));
}

TEST_F(SettingsCheck, OnlyTheStationOfTheDeviceIsLookedInto) {
    EXPECT_EQ(Check("[ZANStations]\nCount=1\n[ZANStations/ZANStation0]\nDeviceAddress=other\nPitchThreshold=95\n"),
              QStringList());
}

#include "zancommon/antennasetup.h"

#include "support/antennas.h"
#include "support/devicetree.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

// The rules of check and repair are held by zancharacteristicsvaliditytest, through the characteristics.

namespace {

bool SupportsAll(const AntennaData& /*antenna*/) {
    return true;
}

bool SupportsNone(const AntennaData& /*antenna*/) {
    return false;
}

AntennaDataList ListOf(const std::vector<AntennaData>& antennas) {
    AntennaDataList list;
    for (const AntennaData& antenna : antennas) {
        list.AddAntenna(antenna);
    }
    return list;
}

AntennaData Antenna(const QString& name, double low, double high) {
    return MakeAntenna(name, {}, low, high);
}

} // namespace

TEST(AntennaSetup, AsksThePredicateAloneWhatIsSupported) {
    const AntennaDataList list =
        ListOf({Antenna(u"a"_s, 1e6, 2e6), Antenna(u"b"_s, 2e6, 3e6)}); // no converters
    const AntennaSetup::Verdict verdict = AntennaSetup::Check(list, SupportsAll);
    EXPECT_TRUE(verdict.isValid);
    EXPECT_EQ(verdict.message, u"Antenna setup is valid."_s);
    EXPECT_FALSE(AntennaSetup::Check(list, SupportsNone).isValid);
}

TEST(AntennaSetup, IsAskedOnlyAboutEnabledAntennasWhenItIsChecked) {
    AntennaData disabled = Antenna(u"b"_s, 2e6, 3e6);
    disabled.enabled = false;
    QStringList asked;
    const AntennaDataList list = ListOf({Antenna(u"a"_s, 1e6, 2e6), disabled});
    EXPECT_TRUE(AntennaSetup::Check(list, [&asked](const AntennaData& antenna) {
                    asked.append(antenna.name);
                    return true;
                }).isValid);
    EXPECT_EQ(asked, QStringList{u"a"_s});
}

TEST(AntennaSetup, ARepairIsProposedInRecordsOfItsOwn) {
    const AntennaDataList list = ListOf({Antenna(u"b"_s, 15e5, 3e6), Antenna(u"a"_s, 1e6, 2e6)});
    const AntennaSetup::Proposal proposal = AntennaSetup::Repair(list, SupportsAll);
    EXPECT_TRUE(proposal.isPossible);
    EXPECT_TRUE(proposal.isRepair);
    EXPECT_EQ(proposal.message,
              u"Auto configuration of antennas successfully covered range from 1 MHz to 3 MHz."_s);
    EXPECT_EQ(NamesOf(proposal.antennas), (QStringList{u"a"_s, u"b"_s}));
    EXPECT_EQ(RangeOf(*proposal.antennas.GetAntennaByIndex(1)), (FrequencyRange{2000001.0, 3e6}));
    EXPECT_EQ(NamesOf(list), (QStringList{u"b"_s, u"a"_s})) << "the list stays as it is";
    EXPECT_EQ(RangeOf(*list.GetAntennaByIndex(0)), (FrequencyRange{15e5, 3e6}));
}

TEST(AntennaSetup, WithoutASupportedAntennaTheProposalIsTheSetupAsItIs) {
    const AntennaDataList list = ListOf({Antenna(u"b"_s, 15e5, 3e6), Antenna(u"a"_s, 1e6, 2e6)});
    const AntennaSetup::Proposal proposal = AntennaSetup::Repair(list, SupportsNone);
    EXPECT_FALSE(proposal.isPossible);
    EXPECT_FALSE(proposal.isRepair);
    EXPECT_EQ(proposal.message, u"No antenna is supported by device."_s);
    EXPECT_EQ(NamesOf(proposal.antennas), (QStringList{u"b"_s, u"a"_s}));
    EXPECT_TRUE(proposal.antennas.GetAntennaByIndex(0)->enabled);
}

TEST(AntennaSetup, KeepsASetupWithItsOrder) {
    const AntennaDataList list = ListOf({Antenna(u"b"_s, 2e6, 3e6), Antenna(u"a"_s, 1e6, 2e6)});
    const AntennaSetup::Proposal proposal = AntennaSetup::Keep(list);
    EXPECT_TRUE(proposal.isPossible);
    EXPECT_FALSE(proposal.isRepair);
    EXPECT_EQ(proposal.message, u"Antenna setup is already valid. Nothing changed."_s);
    EXPECT_EQ(NamesOf(proposal.antennas), (QStringList{u"b"_s, u"a"_s}));
    EXPECT_NE(proposal.antennas.GetAntennaByIndex(0), list.GetAntennaByIndex(0));
}

TEST(AntennaSetup, KnowsAPairByItsEnding) {
    for (const auto& name : {u"PX121_H"_s, u"PX121_V"_s, u"PX104_L"_s, u"PX104_R"_s, u"_R"_s}) {
        EXPECT_TRUE(AntennaSetup::IsOneOfPair(name)) << name.toStdString();
    }
    for (const auto& name : {u""_s, u"PX106"_s, u"PX121_h"_s, u"PX121H"_s, u"PX121_V "_s}) {
        EXPECT_FALSE(AntennaSetup::IsOneOfPair(name)) << name.toStdString();
    }
}

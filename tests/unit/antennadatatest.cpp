#include "zancommon/antennadata.h"

#include "support/antennas.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

using namespace Qt::StringLiterals;

namespace {

TEST(AntennaData, NewRecordIsEnabledAndKnowsNeitherHandlesNorFrequencies) {
    const AntennaData antenna;
    EXPECT_EQ(antenna.name, QString());
    EXPECT_EQ(antenna.handle, -1);
    EXPECT_EQ(antenna.minFreq, 0.0);
    EXPECT_EQ(antenna.maxFreq, 0.0);
    EXPECT_EQ(antenna.minRange, 0.0);
    EXPECT_EQ(antenna.maxRange, 0.0);
    EXPECT_TRUE(antenna.enabled);
    EXPECT_TRUE(antenna.dfMethods.empty());
    EXPECT_TRUE(antenna.dfAlgorithms.isEmpty());
    EXPECT_FALSE(antenna.compassSupport);
    EXPECT_FALSE(antenna.compassEnabled);
    EXPECT_EQ(antenna.compassValue, -1.0F);
    EXPECT_EQ(antenna.mechOffset, 0.0F);
    EXPECT_FALSE(antenna.polarizationSupport);
    EXPECT_FALSE(antenna.activePassiveSupport);
    EXPECT_FALSE(antenna.furtherFlag);
    EXPECT_EQ(antenna.polarizationMode, EZANPolarisation{0});
    EXPECT_EQ(antenna.reservedHandle, -1);
    EXPECT_EQ(antenna.compassHandle, -1);
    EXPECT_EQ(antenna.auxiliaryValue1, 0U);
    EXPECT_EQ(antenna.converterHandle, -1);
    EXPECT_EQ(antenna.converterTypeName, QString());
    EXPECT_EQ(antenna.auxiliaryValue2, 0U);
    EXPECT_EQ(antenna.auxiliaryValue3, 0U);
}

TEST(AntennaData, FieldsHaveTheWidthsOfTheDevicesRecord) {
    static_assert(sizeof(AntennaData::handle) == 4 && sizeof(AntennaData::converterHandle) == 4);
    static_assert(sizeof(AntennaData::reservedHandle) == 4 && sizeof(AntennaData::compassHandle) == 4);
    static_assert(sizeof(AntennaData::polarizationMode) == 4);
    static_assert(sizeof(AntennaData::auxiliaryValue1) == 8 && sizeof(AntennaData::auxiliaryValue2) == 8 &&
                  sizeof(AntennaData::auxiliaryValue3) == 8);
    static_assert(std::is_same_v<decltype(AntennaData::compassValue), float>);
    static_assert(std::is_same_v<decltype(AntennaData::mechOffset), float>);
    static_assert(std::is_same_v<decltype(AntennaData::dfMethods)::value_type, quint32>);
}

TEST(AntennaData, CopyHasEveryFieldOfItsSource) {
    const AntennaData source = MakeUnusualAntenna();
    const AntennaData copy(source); // NOLINT(performance-unnecessary-copy-initialization)
    ExpectSame(copy, source);
}

TEST(AntennaData, CopyStaysWhenItsSourceChangesOrGoes) {
    auto source = std::make_unique<AntennaData>(MakeUnusualAntenna());
    const AntennaData copy(*source);
    source->name[0] = u'Q';
    source->converterTypeName.clear();
    source->dfMethods[0] = 99;
    source->dfAlgorithms[0][0] = u'x';
    source->dfAlgorithms.append(u"more"_s);
    source.reset();
    ExpectSame(copy, MakeUnusualAntenna());
}

TEST(AntennaData, AssignmentTakesEveryFieldAndReplacesLongerLists) {
    AntennaData target;
    target.dfMethods = {0, 1, 2, 3, 4, 5};
    target.dfAlgorithms = {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s};
    target = MakeUnusualAntenna();
    ExpectSame(target, MakeUnusualAntenna());
    target = AntennaData();
    ExpectSame(target, AntennaData());
}

TEST(AntennaData, AssignmentToItselfChangesNothing) {
    AntennaData antenna = MakeUnusualAntenna();
    const AntennaData& same = antenna;
    antenna = same;
    ExpectSame(antenna, MakeUnusualAntenna());
}

TEST(AntennaData, RecordThatADriverDerivesIsDestroyedAsWhatItIs) {
    class Derived : public AntennaData {
    public:
        explicit Derived(bool& isGone)
            : m_isGone(isGone) {}
        Derived(const Derived&) = delete;
        Derived& operator=(const Derived&) = delete;
        ~Derived() override { m_isGone = true; }

    private:
        bool& m_isGone;
    };
    bool isGone = false;
    AntennaData* const antenna = new Derived(isGone);
    delete antenna;
    EXPECT_TRUE(isGone);
}

} // namespace

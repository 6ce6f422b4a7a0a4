#include "zancommon/zancharacteristicstools.h"

#include "support/printing.h"
#include "zancommon/zandomain.h"

#include <gtest/gtest.h>

#include <type_traits>

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned long UNKNOWN = 0xFFFFFFFF;

TEST(ZANCharacteristicsTools, MethodNamesTranslateToTheirMethod) {
    struct Row {
        QString name;
        unsigned long value;
    };
    const ZANCharacteristicsTools tools;
    for (const Row& row :
         {Row{u"WAT"_s, METHOD_WAT}, Row{u"COR"_s, METHOD_COR}, Row{u"SUPR"_s, METHOD_SUPR},
          Row{u"VEC"_s, METHOD_VEC}, Row{u"COR9"_s, METHOD_COR}, Row{u"COR8"_s, METHOD_COR},
          Row{u"COR8O"_s, METHOD_COR}, Row{u"VMI"_s, METHOD_VEC}, Row{u"VMR"_s, METHOD_VEC}}) {
        EXPECT_EQ(tools.TranslateDfMethod(row.name), row.value) << row.name.toStdString();
    }
}

TEST(ZANCharacteristicsTools, MethodsTranslateToTheirFamilyName) {
    const ZANCharacteristicsTools tools;
    EXPECT_EQ(tools.TranslateDfMethod(METHOD_WAT), u"WAT"_s);
    EXPECT_EQ(tools.TranslateDfMethod(METHOD_SUPR), u"SUPR"_s);
}

TEST(ZANCharacteristicsTools, Method1IsCorAndNeverOneOfItsVariants) {
    EXPECT_EQ(ZANCharacteristicsTools().TranslateDfMethod(1), u"COR"_s);
}

TEST(ZANCharacteristicsTools, Method3IsVec) {
    EXPECT_EQ(ZANCharacteristicsTools().TranslateDfMethod(3), u"VEC"_s);
}

TEST(ZANCharacteristicsTools, MethodNamesAreCaseSensitive) {
    EXPECT_EQ(ZANCharacteristicsTools().TranslateDfMethod(u"cor"_s), UNKNOWN);
}

TEST(ZANCharacteristicsTools, MethodNamesMatchWhole) {
    const ZANCharacteristicsTools tools;
    for (const QString& name : {u""_s, u"CO"_s, u"COR80"_s, u" COR"_s, u"Unknown"_s}) {
        EXPECT_EQ(tools.TranslateDfMethod(name), UNKNOWN) << name.toStdString();
    }
}

TEST(ZANCharacteristicsTools, UnknownMethodIsCalledUnknown) {
    const ZANCharacteristicsTools tools;
    EXPECT_EQ(tools.TranslateDfMethod(7), u"Unknown"_s);
    EXPECT_EQ(tools.TranslateDfMethod(UNKNOWN), u"Unknown"_s);
}

TEST(ZANCharacteristicsTools, UnknownPolarisationHasAnEmptyName) {
    const ZANCharacteristicsTools tools;
    EXPECT_EQ(tools.TranslatePolarisationMode(7), QString());
    EXPECT_EQ(tools.TranslatePolarisationMode(UNKNOWN), QString());
}

TEST(ZANCharacteristicsTools, PolarisationsAndTheirNamesTranslateBothWays) {
    struct Row {
        EZANPolarisation value;
        QString name;
    };
    const ZANCharacteristicsTools tools;
    for (const Row& row :
         {Row{POLARISATION_LEFT, u"Left"_s}, Row{POLARISATION_RIGHT, u"Right"_s},
          Row{POLARISATION_VERTICAL, u"Vertical"_s}, Row{POLARISATION_HORIZONTAL, u"Horizontal"_s}}) {
        EXPECT_EQ(tools.TranslatePolarisationMode(static_cast<unsigned long>(row.value)), row.name);
        EXPECT_EQ(tools.TranslatePolarisationMode(row.name), static_cast<unsigned long>(row.value));
    }
}

TEST(ZANCharacteristicsTools, VerticalIsPolarisation2) {
    EXPECT_EQ(ZANCharacteristicsTools().TranslatePolarisationMode(u"Vertical"_s), 2UL);
}

TEST(ZANCharacteristicsTools, EmptyPolarisationNameIsUnknown) {
    EXPECT_EQ(ZANCharacteristicsTools().TranslatePolarisationMode(u""_s), UNKNOWN);
}

TEST(ZANCharacteristicsTools, PolarisationNamesAreCaseSensitive) {
    EXPECT_EQ(ZANCharacteristicsTools().TranslatePolarisationMode(u"vertical"_s), UNKNOWN);
}

TEST(ZANCharacteristicsTools, CopiesTranslateLikeTheirSource) {
    static_assert(std::has_virtual_destructor_v<ZANCharacteristicsTools>);
    const ZANCharacteristicsTools source;
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is what is looked at
    const ZANCharacteristicsTools copy(source);
    ZANCharacteristicsTools assigned;
    assigned = source;
    EXPECT_EQ(copy.TranslateDfMethod(3), u"VEC"_s);
    EXPECT_EQ(assigned.TranslatePolarisationMode(u"Right"_s), 1UL);
}

} // namespace

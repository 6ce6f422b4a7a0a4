#include "zancommon/constanttext.h"

#include "support/printing.h"
#include "zancommon/zancharacteristics.h"
#include "zancommon/zanoptions.h"

#include <gtest/gtest.h>

#include <type_traits>

using namespace Qt::StringLiterals;

namespace {

constexpr ConstantText TEXT = u"PX110";

static_assert(TEXT.size() == 5 && TEXT.back() == u'0' && ConstantText().isEmpty());
static_assert(std::is_trivially_destructible_v<ConstantText>);
static_assert(!std::is_constructible_v<ConstantText, QString>, "a text that may go away");
static_assert(!std::is_constructible_v<ConstantText, QStringView>, "a text that may go away");
// What reads the table needs nothing that runs before main.
static_assert(ZANOptions::s_aOptionEntries.front().name.size() == 6);

QString Taken(const QString& text) {
    return text;
}

} // namespace

TEST(ConstantText, BecomesAStringWhereverOneIsWanted) {
    const QString copied = TEXT;
    const QString made(TEXT);
    QString assigned;
    assigned = TEXT;
    EXPECT_EQ(copied, u"PX110"_s);
    EXPECT_EQ(made, u"PX110"_s);
    EXPECT_EQ(assigned, u"PX110"_s);
    EXPECT_EQ(Taken(TEXT), u"PX110"_s);
    EXPECT_EQ(TEXT + u"/0"_s, u"PX110/0"_s);
    const QString empty = ConstantText();
    EXPECT_TRUE(empty.isEmpty());
}

TEST(ConstantText, IsComparedWithTextsOfAnyKind) {
    EXPECT_TRUE(TEXT == u"PX110"_s && u"PX110"_s == TEXT);
    EXPECT_TRUE(TEXT == QStringView(u"PX110") && QStringView(u"PX110") == TEXT);
    constexpr ConstantText SAME = u"PX110";
    EXPECT_TRUE(TEXT == SAME);
    EXPECT_TRUE(TEXT != u"PX11"_s && u"PX1100"_s != TEXT);
    EXPECT_TRUE(TEXT.startsWith(u"PX"));
}

TEST(ConstantText, NamesOfTheTablesAreStrings) {
    const QString antenna = ZANCharacteristics::s_aAntennaLibrary[11].name;
    const QString option = ZANOptions::s_aOptionEntries[13].name;
    const QString type = ZANCharacteristics::s_aDeviceTypeNames[0].name;
    const QString converter = ZANCharacteristics::s_aConverterTypeNames[0].name;
    EXPECT_EQ(antenna, u"PX110P"_s);
    EXPECT_EQ(option, u"ZANDUNE-HF"_s);
    EXPECT_EQ(type, u"ZANREEF"_s);
    EXPECT_EQ(converter, u"RCV01"_s);
}

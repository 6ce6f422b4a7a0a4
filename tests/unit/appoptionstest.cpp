#include "tolmappstartup/appoptions.h"

#include "support/printing.h"
#include "support/tracelines.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

TEST(AppOptions, AbsentOptionDoesNotExistAndGivesTheDefault) {
    EXPECT_FALSE(AppOptions::IsExisting(u"ABSENT"_s));
    EXPECT_TRUE(AppOptions::GetBoolean(u"ABSENT"_s, true));
    EXPECT_FALSE(AppOptions::GetBoolean(u"ABSENT"_s, false));
}

TEST(AppOptions, BareNameIsTrue) {
    EXPECT_TRUE(AppOptions::SetOption(u" BARE "_s));
    EXPECT_TRUE(AppOptions::IsExisting(u"BARE"_s));
    EXPECT_TRUE(AppOptions::GetBoolean(u"BARE"_s, false));
    EXPECT_FALSE(AppOptions::IsExisting(u"bare"_s));
}

TEST(AppOptions, ValueIsReadAsBoolean) {
    struct Row {
        QString text;
        bool value;
    };
    const std::vector<Row> rows = {{u"OPTION=true"_s, true},
                                   {u"OPTION=false"_s, false},
                                   {u"OPTION=TRUE"_s, true},
                                   {u"OPTION=0"_s, false},
                                   {u"OPTION = 1 "_s, true}};
    for (const Row& row : rows) {
        EXPECT_TRUE(AppOptions::SetOption(row.text));
        EXPECT_EQ(AppOptions::GetBoolean(u"OPTION"_s, !row.value), row.value) << row.text.toStdString();
    }
}

TEST(AppOptions, UnreadableValueGivesTheDefaultAndATraceLine) {
    TraceLines trace;
    for (const QString& text : {u"BAD=maybe"_s, u"BAD="_s, u"BAD=a=1"_s}) {
        trace.lines.clear();
        EXPECT_TRUE(AppOptions::SetOption(text));
        EXPECT_TRUE(AppOptions::IsExisting(u"BAD"_s));
        EXPECT_TRUE(AppOptions::GetBoolean(u"BAD"_s, true));
        EXPECT_FALSE(AppOptions::GetBoolean(u"BAD"_s, false));
        EXPECT_EQ(trace.lines.size(), 2);
        EXPECT_TRUE(trace.lines.value(0).contains(u"\"BAD\""));
    }
}

TEST(AppOptions, TextWithoutANameIsRefused) {
    for (const QString& text : {u""_s, u" "_s, u"=1"_s, u" = "_s}) {
        EXPECT_FALSE(AppOptions::SetOption(text));
    }
    EXPECT_FALSE(AppOptions::IsExisting({}));
}

} // namespace

#include "kwbase/datetime.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

TEST(DateTime, KeepsItsTimeStamp) {
    EXPECT_EQ(Tolm::DateTime(0).GetTimeStamp(), 0U);
    EXPECT_EQ(Tolm::DateTime(std::numeric_limits<unsigned long long>::max()).GetTimeStamp(),
              std::numeric_limits<unsigned long long>::max());
}

TEST(DateTime, FormatsInUtcWithQtsFormatLetters) {
    struct Row {
        unsigned long long timeStamp;
        QString format;
        QString text;
    };
    const std::vector<Row> rows = {
        {0, u"yyyy-MM-dd hh:mm:ss.zzz"_s, u"1970-01-01 00:00:00.000"_s},
        {0, u"hhmmss"_s, u"000000"_s},
        {1'709'210'096'789, u"yyyy-MM-dd hh:mm:ss.zzz"_s, u"2024-02-29 12:34:56.789"_s},
        {1'709'210'096'789, u"hhmmss"_s, u"123456"_s},
        {86'399'999, u"hhmmss"_s, u"235959"_s},
        {253'402'300'799'999, u"yyyy-MM-dd hh:mm:ss.zzz"_s, u"9999-12-31 23:59:59.999"_s},
        {0, u"'at' h"_s, u"at 0"_s},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Tolm::DateTime(row.timeStamp).toString(row.format), row.text);
    }
}

TEST(DateTime, TheTimeZoneOfTheMachineDoesNotCount) {
    const QByteArray before = qgetenv("TZ");
    qputenv("TZ", "Asia/Tokyo");
    tzset();
    EXPECT_EQ(Tolm::DateTime(0).toString(u"yyyy-MM-dd hhmmss"_s), u"1970-01-01 000000"_s);
    before.isNull() ? qunsetenv("TZ") : qputenv("TZ", before);
    tzset();
}

TEST(DateTime, AnEmptyFormatGivesAnEmptyText) {
    EXPECT_TRUE(Tolm::DateTime(0).toString({}).isEmpty());
}

TEST(DateTime, ATimeBeyondTheCalendarIsEmpty) {
    for (const unsigned long long timeStamp :
         {std::numeric_limits<unsigned long long>::max(), (1ULL << 63U)}) {
        EXPECT_TRUE(Tolm::DateTime(timeStamp).toString(u"hhmmss"_s).isEmpty());
    }
}

TEST(DateTime, TheLastTimeOfTheCalendarIsFormatted) {
    EXPECT_EQ(Tolm::DateTime((1ULL << 63U) - 1).toString(u"hhmmss.zzz"_s), u"071255.807"_s);
}

} // namespace

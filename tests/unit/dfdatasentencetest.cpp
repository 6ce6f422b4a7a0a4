#include "zancommon/dfdatasentence.h"

#include "kwbase/datetime.h"

#include <QString>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using Head = DFDataSentence::Head;
using Tail = DFDataSentence::Tail;

constexpr quint64 NOON = 1527681600000; // 2018-05-30 12:00:00 UTC
constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double LARGEST = std::numeric_limits<double>::max();

std::string HeadLine(const Head& head) {
    DFDataSentence sentence;
    sentence.Begin(head);
    return std::string(sentence.GetText());
}

/// The tail alone.
std::string TailLine(const Tail& tail) {
    DFDataSentence sentence;
    sentence.Begin({});
    const std::size_t begin = sentence.GetText().size();
    sentence.AddTail(tail);
    return std::string(sentence.GetText().substr(begin));
}

QString TimeText(const DFDataSentence::Time& time) {
    return time ? Tolm::DateTime(*time).toString(u"hhmmss"_s) : QString();
}

/// Head and tail with every number printed by Qt.
std::string QtLine(const Head& head, const Tail& tail) {
    return (u"$PLG,%1,FRQ,%2,CMP,%3,QUA,%4,LEV,%5,TIM,%6"_s.arg(head.azimuth / 10.0, 5, 'f', 1)
                .arg(head.frequency, 10, 'f', 0)
                .arg(head.heading / 10.0, 5, 'f', 1)
                .arg(static_cast<double>(head.quality), 5, 'f', 1)
                .arg(head.level / 100.0, 5, 'f', 1)
                .arg(TimeText(head.time)) +
            u",ELV,%1,PTC,%2,RLL,%3,ALT,%4,PTM,%5,LAT,%6,LON,%7"_s.arg(tail.elevation / 10.0, 3, 'f', 1)
                .arg(tail.pitch, 3, 'f', 1)
                .arg(tail.roll, 3, 'f', 1)
                .arg(tail.altitude, 3, 'f', 1)
                .arg(TimeText(tail.positionTime))
                .arg(tail.latitude, 9, 'f', 5)
                .arg(tail.longitude, 9, 'f', 7))
        .toStdString();
}

/// Whether a number is printed as by Qt with each of the precisions: 0, 1, 5 and 7 decimals.
testing::AssertionResult IsPrintedAsByQt(double number) {
    static const QString pattern = u"%1"_s;
    const auto print = [number](int width, int precision) {
        return pattern.arg(number, width, 'f', precision).toStdString();
    };
    DFDataSentence sentence;
    sentence.Begin({.frequency = number});
    sentence.AddTail({.pitch = number, .latitude = number, .longitude = number});
    const std::string expected = "$PLG, -1.0,FRQ," + print(10, 0) +
                                 ",CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,,ELV,0.0,PTC," + print(3, 1) +
                                 ",RLL,0.0,ALT,0.0,PTM,,LAT," + print(9, 5) + ",LON," + print(9, 7);
    if (sentence.GetText() == expected) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << std::hexfloat << number << " reads\n"
                                       << sentence.GetText() << " instead of\n"
                                       << expected;
}

} // namespace

TEST(DFDataSentence, MarkersOfMissingDataFillASentenceWithoutAnyField) {
    EXPECT_EQ(HeadLine({}), "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,");
    EXPECT_EQ(TailLine({}), ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000");
}

TEST(DFDataSentence, CompleteSentenceHoldsEveryFieldInItsPlace) {
    DFDataSentence sentence;
    sentence.Begin({.azimuth = 727,
                    .frequency = 1090000000.0,
                    .heading = 3599,
                    .quality = 90,
                    .level = -5204,
                    .time = NOON + 3723000});
    sentence.AddTail({.elevation = 24,
                      .pitch = -1.5,
                      .roll = 2.26,
                      .altitude = 123.44,
                      .positionTime = NOON,
                      .latitude = 48.1,
                      .longitude = 11.5});
    sentence.EndLine();
    EXPECT_EQ(sentence.GetText(),
              "$PLG, 72.7,FRQ,1090000000,CMP,359.9,QUA, 90.0,LEV,-52.0,TIM,130203,ELV,2.4,PTC,"
              "-1.5,RLL,2.3,ALT,123.4,PTM,120000,LAT, 48.10000,LON,11.5000000\r\n");
}

TEST(DFDataSentence, EachFieldOfTheHeadIsPaddedAndRoundedOnItsOwn) {
    struct Case {
        Head head;
        const char* line;
    };
    const std::vector<Case> cases{
        {{.azimuth = 0}, "$PLG,  0.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.azimuth = 3599}, "$PLG,359.9,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.azimuth = 65535}, "$PLG,6553.5,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.frequency = 0.4}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.frequency = 0.5}, "$PLG, -1.0,FRQ,         1,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.frequency = 462637500.5}, "$PLG, -1.0,FRQ, 462637501,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.frequency = 121500000.49}, "$PLG, -1.0,FRQ, 121500000,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.frequency = 12345678901.0}, "$PLG, -1.0,FRQ,12345678901,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.frequency = -7.0}, "$PLG, -1.0,FRQ,        -7,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.heading = 0}, "$PLG, -1.0,FRQ,         0,CMP,  0.0,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.heading = 3599}, "$PLG, -1.0,FRQ,         0,CMP,359.9,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.heading = std::numeric_limits<int>::min()},
         "$PLG, -1.0,FRQ,         0,CMP,-214748364.8,QUA,  0.0,LEV, -0.5,TIM,"},
        {{.quality = 100}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,100.0,LEV, -0.5,TIM,"},
        {{.quality = -4000}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,-4000.0,LEV, -0.5,TIM,"},
        {{.level = 0}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV,  0.0,TIM,"},
        {{.level = 1234}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, 12.3,TIM,"},
        {{.level = 1236}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, 12.4,TIM,"},
        {{.level = 25}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV,  0.3,TIM,"},
        {{.level = -25}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, -0.3,TIM,"},
        {{.level = -4}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, -0.0,TIM,"},
        {{.level = -32768}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV,-327.7,TIM,"},
        {{.time = 0}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,000000"},
        {{.time = NOON - 1}, "$PLG, -1.0,FRQ,         0,CMP, -0.1,QUA,  0.0,LEV, -0.5,TIM,115959"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(HeadLine(each.head), each.line);
    }
}

TEST(DFDataSentence, EachFieldOfTheTailIsPaddedAndRoundedOnItsOwn) {
    struct Case {
        Tail tail;
        const char* line;
    };
    const std::vector<Case> cases{
        {{.elevation = 900}, ",ELV,90.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.elevation = -32768}, ",ELV,-3276.8,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.pitch = 12.34}, ",ELV,0.0,PTC,12.3,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.pitch = -0.25}, ",ELV,0.0,PTC,-0.3,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.pitch = -0.04}, ",ELV,0.0,PTC,-0.0,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.pitch = -0.0}, ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.roll = 0.05}, ",ELV,0.0,PTC,0.0,RLL,0.1,ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.roll = NOT_A_NUMBER}, ",ELV,0.0,PTC,0.0,RLL,nan,ALT,0.0,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.altitude = 11277.6}, ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,11277.6,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.altitude = -4.0}, ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,-4.0,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.altitude = -INF}, ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,-inf,PTM,,LAT,  0.00000,LON,0.0000000"},
        {{.positionTime = NOON + 86399000},
         ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,115959,LAT,  0.00000,LON,0.0000000"},
        {{.latitude = 48.1}, ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT, 48.10000,LON,0.0000000"},
        {{.latitude = -48.123456}, ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,-48.12346,LON,0.0000000"},
        {{.latitude = 5.5}, ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,  5.50000,LON,0.0000000"},
        {{.latitude = INF}, ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,      inf,LON,0.0000000"},
        {{.longitude = 11.5}, ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,11.5000000"},
        {{.longitude = -179.99999994},
         ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,-179.9999999"},
        {{.longitude = 179.99999996}, ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,,LAT,  0.00000,LON,180.0000000"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(TailLine(each.tail), each.line);
    }
}

TEST(DFDataSentence, ElementNumberIsBehindTheTail) {
    DFDataSentence sentence;
    for (const auto& [number, ending] :
         {std::pair(0U, ",SR,0"), std::pair(12U, ",SR,12"), std::pair(4294967295U, ",SR,4294967295")}) {
        sentence.Begin({});
        sentence.AddTail({});
        sentence.AddElementNumber(number);
        EXPECT_EQ(sentence.GetText(), HeadLine({}) + TailLine({}) + ending);
    }
}

TEST(DFDataSentence, WidestSentenceFitsAndIsAsQtPrintsIt) {
    for (const double number : {-LARGEST, LARGEST}) {
        const Head head{.azimuth = std::numeric_limits<int>::min(),
                        .frequency = number,
                        .heading = std::numeric_limits<int>::min(),
                        .quality = std::numeric_limits<int>::min(),
                        .level = std::numeric_limits<int>::min(),
                        .time = NOON};
        const Tail tail{.elevation = std::numeric_limits<int>::min(),
                        .pitch = number,
                        .roll = number,
                        .altitude = number,
                        .positionTime = NOON,
                        .latitude = number,
                        .longitude = number};
        DFDataSentence sentence;
        sentence.Begin(head);
        sentence.AddTail(tail);
        sentence.AddElementNumber(std::numeric_limits<unsigned>::max());
        sentence.EndLine();
        EXPECT_EQ(sentence.GetText(), QtLine(head, tail) + ",SR,4294967295\r\n");
        EXPECT_GT(sentence.GetText().size(), 6 * 309U);
    }
}

/// A quarter of the random numbers; the parameter is the seed, so that every run has the same ones.
class DFDataSentenceRandomTest : public testing::TestWithParam<unsigned> {};

TEST_P(DFDataSentenceRandomTest, NumbersArePrintedAsByQt) {
    std::mt19937_64 random(GetParam());
    std::uniform_real_distribution<double> exponent(-9.0, 11.0);
    for (int i = 0; i < 245000; ++i) {
        const double number = std::pow(10.0, exponent(random));
        ASSERT_TRUE(IsPrintedAsByQt(random() % 2 == 0 ? number : -number));
    }
    for (int i = 0; i < 5000; ++i) {
        ASSERT_TRUE(IsPrintedAsByQt(std::bit_cast<double>(random())));
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, DFDataSentenceRandomTest, testing::Values(1U, 2U, 3U, 4U));

TEST(DFDataSentence, TiesArePrintedAsByQt) {
    // An odd multiple of 2^-(p + 1) lies halfway between two numbers of p decimals.
    for (const int precision : {0, 1, 5, 7}) {
        for (int odd = 1; odd < 20000; odd += 2) {
            ASSERT_TRUE(IsPrintedAsByQt(std::ldexp(odd, -(precision + 1))));
            ASSERT_TRUE(IsPrintedAsByQt(-std::ldexp(odd, -(precision + 1))));
            ASSERT_TRUE(IsPrintedAsByQt(std::ldexp(1099511627776.0 + odd, -(precision + 1))));
        }
        // The largest ones.
        ASSERT_TRUE(IsPrintedAsByQt(std::ldexp(9007199254740991.0, -(precision + 1))));
        ASSERT_TRUE(IsPrintedAsByQt(std::ldexp(-9007199254740991.0, -(precision + 1))));
    }
}

TEST(DFDataSentence, NumbersBesideTheMiddleOfTwoDigitsArePrintedAsByQt) {
    for (const int precision : {0, 1, 5, 7}) {
        const double unit = std::pow(10.0, precision);
        for (const double whole : {0.0, 1.0, 9.0, 99.0, 12345.0, 87654321.0, 99999999999.0, 999999999999.0}) {
            for (const double distance :
                 {0.0, 1e-16, 1e-12, 1e-9, 1e-6, 1e-4, 0.0009999, 0.001, 0.0010001, 0.01}) {
                for (const double side : {-1.0, 1.0}) {
                    const double number = (whole + 0.5 + side * distance) / unit;
                    ASSERT_TRUE(IsPrintedAsByQt(number));
                    ASSERT_TRUE(IsPrintedAsByQt(-std::nextafter(number, 0.0)));
                    ASSERT_TRUE(IsPrintedAsByQt(std::nextafter(number, LARGEST)));
                }
            }
        }
    }
}

TEST(DFDataSentence, NumbersAtTheEndOfTheCertainOnesArePrintedAsByQt) {
    for (const int precision : {0, 1, 5, 7}) {
        const double end = 1e12 / std::pow(10.0, precision);
        for (const double number :
             {std::nextafter(end, 0.0), end, std::nextafter(end, LARGEST), end - 1.0, end + 1.0}) {
            ASSERT_TRUE(IsPrintedAsByQt(number));
        }
    }
}

TEST(DFDataSentence, IntegerFieldsOfTheWhole16BitRangeArePrintedAsByQt) {
    DFDataSentence sentence;
    for (int number = -32768; number <= 65535; ++number) {
        const Head head{.azimuth = number, .heading = number, .quality = number, .level = number};
        const Tail tail{.elevation = number};
        sentence.Begin(head);
        sentence.AddTail(tail);
        ASSERT_EQ(sentence.GetText(), QtLine(head, tail));
        ASSERT_TRUE(IsPrintedAsByQt(number / 10.0));
        ASSERT_TRUE(IsPrintedAsByQt(number / 100.0));
    }
}

TEST(DFDataSentence, ExtremesArePrintedAsByQt) {
    using Limits = std::numeric_limits<double>;
    for (const double number : {0.0,
                                -0.0,
                                LARGEST,
                                Limits::lowest(),
                                Limits::min(),
                                -Limits::min(),
                                Limits::denorm_min(),
                                -Limits::denorm_min(),
                                INF,
                                -INF,
                                NOT_A_NUMBER,
                                std::copysign(NOT_A_NUMBER, -1.0),
                                4503599627370496.5,
                                9007199254740993.0,
                                1e21,
                                1e22,
                                1e23,
                                123456789012345678.0,
                                std::nextafter(0.25, 1.0),
                                std::nextafter(0.25, 0.0),
                                std::nextafter(0.5, 1.0),
                                std::nextafter(0.5, 0.0),
                                0.049999999999999996,
                                -0.049999999999999996,
                                9.95,
                                99999.999995,
                                9.99999995}) {
        ASSERT_TRUE(IsPrintedAsByQt(number));
    }
}

TEST(DFDataSentence, TimesAreThoseOfTheCalendarInUtc) {
    const auto expectAsCalendar = [](quint64 time) {
        EXPECT_EQ(HeadLine({.time = time}), HeadLine({}) + TimeText(time).toStdString()) << time;
        EXPECT_EQ(TailLine({.positionTime = time}), ",ELV,0.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM," +
                                                        TimeText(time).toStdString() +
                                                        ",LAT,  0.00000,LON,0.0000000");
    };
    for (quint64 second = 0; second < 86400; second += 7) {
        expectAsCalendar(NOON + second * 1000 + second % 1000);
    }
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        expectAsCalendar(random());
        expectAsCalendar(random() >> 20U);
    }
    constexpr auto LAST = static_cast<quint64>(std::numeric_limits<qint64>::max());
    for (const quint64 time : {quint64{0}, quint64{999}, quint64{1000}, LAST, LAST + 1,
                               std::numeric_limits<quint64>::max(), quint64{253402300799999}}) {
        expectAsCalendar(time);
    }
}

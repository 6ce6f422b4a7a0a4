#include "valueframework/valueformats.h"

#include "support/printing.h"
#include "support/valuesamples.h"
#include "valueframework/streamformat.h"

#include <gtest/gtest.h>

#include <vector>

#include <bit>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

const QString HUGE_TEXT(1'000'000, u'9');

/// Texts that are not numbers of any kind.
const QStringList NO_NUMBERS{u""_s,
                             u" "_s,
                             u"\t\n"_s,
                             u"x"_s,
                             u"1x"_s,
                             u"x1"_s,
                             u"1 2"_s,
                             u"--1"_s,
                             u"+-1"_s,
                             u"0x10"_s,
                             u"1,5"_s,
                             u"1.000,5"_s,
                             u"1\0"_s,
                             u"1\0"
                             u"2"_s,
                             u"\0"_s,
                             u"1_000"_s,
                             u"\u0663"_s,
                             u"1;"_s,
                             u"%1"_s,
                             u"null"_s,
                             QString()};

template <class Format, class T>
void ExpectRefused(const QStringList& texts, const T& content) {
    for (const QString& text : texts) {
        T target = content;
        EXPECT_FALSE(Format::FromString(text, target))
            << text.left(30).toStdString() << " of " << text.size();
        EXPECT_EQ(target, content) << "unchanged after " << text.left(30).toStdString();
    }
}

template <class Format, class T>
void ExpectRoundTrip(std::initializer_list<T> contents) {
    for (const T& content : contents) {
        T target{};
        EXPECT_TRUE(Format::FromString(Format::ToString(content), target))
            << Format::ToString(content).toStdString();
        EXPECT_EQ(target, content) << Format::ToString(content).toStdString();
    }
}

// --- bool ---

TEST(FormatBool, WritesOneAndZero) {
    EXPECT_EQ(FormatBool<bool>::ToString(true), u"1"_s);
    EXPECT_EQ(FormatBool<bool>::ToString(false), u"0"_s);
    ExpectRoundTrip<FormatBool<bool>>({true, false});
}

TEST(FormatBool, ReadsWordsToo) {
    for (const QString& text : {u"1"_s, u"true"_s, u"True"_s, u"TRUE"_s}) {
        bool content = false;
        EXPECT_TRUE(FormatBool<bool>::FromString(text, content));
        EXPECT_TRUE(content) << text.toStdString();
    }
    for (const QString& text : {u"0"_s, u"false"_s, u"False"_s, u"FALSE"_s}) {
        bool content = true;
        EXPECT_TRUE(FormatBool<bool>::FromString(text, content));
        EXPECT_FALSE(content) << text.toStdString();
    }
}

TEST(FormatBool, RefusesAnythingElse) {
    const QStringList texts{u"2"_s, u"-1"_s, u"yes"_s, u"01"_s, u"1 "_s, u"true\0"_s, u"t"_s, HUGE_TEXT};
    ExpectRefused<FormatBool<bool>>(texts + NO_NUMBERS, true);
    ExpectRefused<FormatBool<bool>>(texts + NO_NUMBERS, false);
}

// --- integers ---

TEST(FormatInt, WritesDecimalDigits) {
    EXPECT_EQ(FormatInt<int>::ToString(-1234567), u"-1234567"_s);
    EXPECT_EQ(FormatInt<int>::ToString(std::numeric_limits<int>::min()), u"-2147483648"_s);
    ExpectRoundTrip<FormatInt<int>>(
        {0, 1, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()});
}

TEST(FormatInt, ReadsSignsAndBlanksAround) {
    for (const QString& text : {u"12"_s, u"+12"_s, u" 12"_s, u"12 "_s, u"12\n"_s, u"0012"_s}) {
        int content = 0;
        EXPECT_TRUE(FormatInt<int>::FromString(text, content)) << text.toStdString();
        EXPECT_EQ(content, 12);
    }
}

TEST(FormatInt, RefusesWhatIsNoIntegerOrDoesNotFit) {
    const QStringList texts{
        u"1.5"_s,  u"1e3"_s, u"nan"_s, u"inf"_s, u"2147483648"_s, u"-2147483649"_s, u"99999999999999999999"_s,
        u"true"_s, HUGE_TEXT};
    ExpectRefused<FormatInt<int>>(texts + NO_NUMBERS, 42);
}

TEST(FormatInt, KeepsTheWidthOfItsType) {
    qint16 content = 7;
    EXPECT_FALSE(FormatInt<qint16>::FromString(u"32768"_s, content));
    EXPECT_EQ(content, 7);
    EXPECT_TRUE(FormatInt<qint16>::FromString(u"-32768"_s, content));
    EXPECT_EQ(content, -32768);
}

TEST(FormatTimeStamp, WritesAndReadsTheWholeRange) {
    EXPECT_EQ(FormatTimeStamp<quint64>::ToString(std::numeric_limits<quint64>::max()),
              u"18446744073709551615"_s);
    ExpectRoundTrip<FormatTimeStamp<quint64>>({quint64{0}, quint64{1}, std::numeric_limits<quint64>::max()});
}

TEST(FormatTimeStamp, RefusesNegativeFractionalAndTooLargeNumbers) {
    const QStringList texts{u"-1"_s,  u"-0"_s, u"1.5"_s, u"1e3"_s, u"nan"_s, u"18446744073709551616"_s,
                            HUGE_TEXT};
    ExpectRefused<FormatTimeStamp<quint64>>(texts + NO_NUMBERS, quint64{42});
}

// --- floating point ---

TEST(FormatFloat, WritesTheShortestTextThatReadsBackAsTheSame) {
    EXPECT_EQ(FormatFloat<double>::ToString(0.1), u"0.1"_s);
    EXPECT_EQ(FormatFloat<double>::ToString(121.5e6), u"121500000"_s);
    EXPECT_EQ(FormatFloat<double>::ToString(-0.5), u"-0.5"_s);
    using Limits = std::numeric_limits<double>;
    ExpectRoundTrip<FormatFloat<double>>({0.0, 0.1, 0.1 + 0.2, 1.0 / 3.0, -2.5, 1e22, 1e23,
                                          9007199254740993.0, Limits::min(), Limits::denorm_min(),
                                          Limits::max(), Limits::lowest(), std::nextafter(1.0, 2.0)});
}

TEST(FormatFloat, ASweepOfBitPatternsRoundTrips) {
    quint64 state = 12345;
    for (int i = 0; i < 100'000; ++i) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        const auto number = std::bit_cast<double>(state);
        if (std::isfinite(number)) {
            double target = 0.0;
            ASSERT_TRUE(FormatFloat<double>::FromString(FormatFloat<double>::ToString(number), target));
            ASSERT_EQ(std::bit_cast<quint64>(target), state);
        }
    }
}

TEST(FormatFloat, ReadsTheUsualForms) {
    for (const QString& text : {u"1500"_s, u"1.5e3"_s, u"1.5E+3"_s, u"+1500.0"_s, u" 1500 "_s, u"1500."_s}) {
        double content = 0.0;
        EXPECT_TRUE(FormatFloat<double>::FromString(text, content)) << text.toStdString();
        EXPECT_EQ(content, 1500.0);
    }
}

TEST(FormatFloat, RefusesWhatIsNoFiniteNumber) {
    const QStringList texts{u"nan"_s,      u"NaN"_s,   u"-nan"_s,          u"inf"_s, u"-inf"_s, u"INF"_s,
                            u"infinity"_s, u"1e400"_s, u"-1e400"_s,        u"1e"_s,  u"e5"_s,   u"."_s,
                            u"1.2.3"_s,    u"0x1p3"_s, u"1e99999999999"_s, HUGE_TEXT};
    ExpectRefused<FormatFloat<double>>(texts + NO_NUMBERS, 42.0);
}

// --- text ---

TEST(FormatString, TakesAnyTextAsItIs) {
    ExpectRoundTrip<FormatString<QString>>(
        {u""_s, u" "_s, u"a;b,c\\d%1\n\t"_s, u"a\0b"_s, u"\U0001F4E1"_s, HUGE_TEXT});
}

// --- bearings ---

TEST(FormatBearingResult, WritesTheMembersInTheirOrder) {
    EXPECT_EQ(FormatBearingResult::ToString(SampleBearing(3599)),
              u"121500000,-5204,3599,-15,97,1709210096789"_s);
}

TEST(FormatBearingResult, AMemberWithoutAValueIsEmpty) {
    EXPECT_EQ(FormatBearingResult::ToString({}), u",,,,,"_s);
    BearingResult bearing;
    bearing.SetAzimuth(0);
    bearing.SetQuality(-200);
    EXPECT_EQ(FormatBearingResult::ToString(bearing), u",,0,,-200,"_s);
}

TEST(FormatBearingResult, EveryCombinationOfMembersRoundTrips) {
    for (unsigned members = 0; members < 1U << BearingResult::MEMBER_COUNT; ++members) {
        BearingResult bearing;
        const auto has = [members](unsigned member) { return (members >> member & 1U) != 0; };
        if (has(BearingResult::FREQUENCY)) {
            bearing.SetFrequency(0.1);
        }
        if (has(BearingResult::LEVEL)) {
            bearing.SetLevel(std::numeric_limits<qint16>::min());
        }
        if (has(BearingResult::AZIMUTH)) {
            bearing.SetAzimuth(std::numeric_limits<quint16>::max());
        }
        if (has(BearingResult::ELEVATION)) {
            bearing.SetElevation(std::numeric_limits<qint16>::max());
        }
        if (has(BearingResult::QUALITY)) {
            bearing.SetQuality(-4000);
        }
        if (has(BearingResult::TIME_STAMP)) {
            bearing.SetTimeStamp(std::numeric_limits<quint64>::max());
        }
        ExpectRoundTrip<FormatBearingResult>({bearing});
    }
}

TEST(FormatBearingResult, RefusesAWrongCountAndMembersThatDoNotFit) {
    const QStringList texts{u",,,,"_s,
                            u",,,,,,"_s,
                            u"nan,,,,,"_s,
                            u"inf,,,,,"_s,
                            u"x,,,,,"_s,
                            u",32768,,,,"_s,
                            u",-32769,,,,"_s,
                            u",1.5,,,,"_s,
                            u",,-1,,,"_s,
                            u",,65536,,,"_s,
                            u",,,40000,,"_s,
                            u",,,,-40000,"_s,
                            u",,,,,-1"_s,
                            u",,,,,18446744073709551616"_s,
                            u",1\0,,,,"_s,
                            u",,,,,12\0"
                            u"3"_s,
                            u" ,,,,,"_s,
                            u",, ,,,"_s,
                            HUGE_TEXT,
                            QString(1'000'000, u',')};
    ExpectRefused<FormatBearingResult>(texts + NO_NUMBERS, SampleBearing(1));
}

// --- records of lists ---

TEST(FormatQuadFloat, WritesTheFourNumbers) {
    EXPECT_EQ(QuadFloatFormat::ToString({1, -2.5, 0.1, 1e300}), u"1,-2.5,0.1,1e+300"_s);
    ExpectRoundTrip<QuadFloatFormat>({QuadFloat(), QuadFloat(1, -2.5, 0.1, 1e300)});
}

TEST(FormatQuadFloat, RefusesAWrongCountAndWhatIsNoNumber) {
    const QStringList texts{u"1,2,3"_s,
                            u"1,2,3,4,5"_s,
                            u",,,"_s,
                            u"1,2,3,"_s,
                            u"x,2,3,4"_s,
                            u"1,x,3,4"_s,
                            u"1,2,x,4"_s,
                            u"1,2,3,nan"_s,
                            u"1,2,inf,4"_s,
                            HUGE_TEXT,
                            QString(1'000'000, u',')};
    ExpectRefused<QuadFloatFormat>(texts + NO_NUMBERS, QuadFloat(1, 2, 3, 4));
}

TEST(FormatTrafficControlFrequency, WritesChannelFrequencyAndAlarm) {
    EXPECT_EQ(FormatTrafficControlFrequency::ToString(SampleFrequency(-3)), u"-3,118025000,1"_s);
    ExpectRoundTrip<FormatTrafficControlFrequency>({TrafficControlFrequency(), SampleFrequency(7)});
}

TEST(FormatTrafficControlFrequency, RefusesAWrongCountAndWhatDoesNotFit) {
    const QStringList texts{u"1,2"_s,   u"1,2,1,1"_s, u",,"_s,      u"x,2,1"_s,          u"1,x,1"_s,
                            u"1,2,x"_s, u"1,nan,0"_s, u"1.5,2,0"_s, u"2147483648,2,0"_s, HUGE_TEXT};
    ExpectRefused<FormatTrafficControlFrequency>(texts + NO_NUMBERS, SampleFrequency(7));
}

// --- what is a change ---

TEST(Formats, OnlyABearingIsAChangeEachTime) {
    EXPECT_FALSE(FormatBool<bool>::IsChange(true, true));
    EXPECT_FALSE(FormatInt<int>::IsChange(1, 1));
    EXPECT_FALSE(FormatFloat<double>::IsChange(1.0, 1.0));
    EXPECT_FALSE(FormatString<QString>::IsChange(u"a"_s, u"a"_s));
    EXPECT_FALSE(FormatTimeStamp<quint64>::IsChange(1, 1));
    EXPECT_TRUE(FormatBearingResult::IsChange({}, {}));
    EXPECT_TRUE(FormatBool<bool>::IsChange(true, false));
    EXPECT_TRUE(FormatInt<int>::IsChange(1, 2));
    EXPECT_TRUE(FormatFloat<double>::IsChange(1.0, std::nextafter(1.0, 2.0)));
    EXPECT_TRUE(FormatString<QString>::IsChange(u"a"_s, u"A"_s));
    EXPECT_TRUE(FormatTimeStamp<quint64>::IsChange(1, 2));
}

// --- escapes and streams ---

QString Escaped(const QString& text) {
    QString out;
    AppendEscaped(out, text);
    return out;
}

TEST(StreamFormat, EscapesControlCharactersTheSemicolonAndTheBackslash) {
    struct Row {
        QString text;
        QString escaped;
    };
    const std::vector<Row> rows = {
        {u""_s, u""_s},
        {u"plain text, %1 \u00e4 \U0001F4E1"_s, u"plain text, %1 \u00e4 \U0001F4E1"_s},
        {u"\\"_s, u"\\\\"_s},
        {u"\n\t"_s, u"\\n\\t"_s},
        {u"\r"_s, u"\\u000d"_s},
        {u"\0"_s, u"\\u0000"_s},
        {u"\x7f\u0085"_s, u"\\u007f\\u0085"_s},
        {u";"_s, u"\\u003b"_s},
        {u"\\n"_s, u"\\\\n"_s},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Escaped(row.text), row.escaped);
        QString back;
        EXPECT_TRUE(TakeEscaped(back, row.escaped));
        EXPECT_EQ(back, row.text);
    }
}

TEST(StreamFormat, EveryCharacterRoundTrips) {
    QString all;
    for (int c = 0; c <= 0xFFFF; ++c) {
        all += QChar(static_cast<char16_t>(c));
    }
    const QString escaped = Escaped(all);
    EXPECT_FALSE(escaped.contains(u';') || escaped.contains(u'\n') || escaped.contains(u'\t'));
    QString back;
    EXPECT_TRUE(TakeEscaped(back, escaped));
    EXPECT_EQ(back, all);
}

TEST(StreamFormat, AnIncompleteOrUnknownEscapeIsRefused) {
    for (const QString& text : {u"\\"_s, u"a\\"_s, u"\\x"_s, u"\\N"_s, u"\\ "_s, u"\\u"_s, u"\\u1"_s,
                                u"\\u12"_s, u"\\u123"_s, u"\\u12g4"_s, u"\\u-001"_s, u"\\u+001"_s,
                                u"\\u0x41"_s, u"\\u 041"_s, u"\\u\u0660\u0660\u0660\u0660"_s, u"\\0"_s}) {
        QString out;
        EXPECT_FALSE(TakeEscaped(out, text)) << text.toStdString();
    }
    QString out;
    EXPECT_TRUE(TakeEscaped(out, u"\\u00412"_s)) << "four digits and then text";
    EXPECT_EQ(out, u"A2"_s);
}

TEST(StreamFormat, ElementsAreOneAfterTheOther) {
    using Stream = StreamFormat<QString, FormatString<QString>>;
    QString text;
    const QStringList elements{u"a;b"_s, u""_s, u"\n"_s};
    for (const QString& element : elements) {
        Stream::Append(text, element);
    }
    EXPECT_EQ(text, u"a\\u003bb;;\\n;"_s);
    QStringList taken;
    for (QStringView rest(text); !rest.isEmpty();) {
        ASSERT_TRUE(Stream::Take(rest, taken.emplace_back()));
    }
    EXPECT_EQ(taken, elements);
}

TEST(StreamFormat, WithoutASemicolonThereIsNoElement) {
    using Stream = StreamFormat<int, FormatInt<int>>;
    int element = 0;
    for (const QString& text : {u""_s, u"5"_s, u";"_s, u"x;"_s, u"\\;"_s}) {
        QStringView rest(text);
        EXPECT_FALSE(Stream::Take(rest, element)) << text.toStdString();
    }
    QStringView rest(u"5;6");
    EXPECT_TRUE(Stream::Take(rest, element));
    EXPECT_EQ(element, 5);
    EXPECT_EQ(rest, QStringView(u"6"));
}

} // namespace

#include "zanserver/frequencytext.h"

#include "support/printing.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ZANServer;

TEST(FrequencyText, ReadsFrequenciesAsPeopleWriteThem) {
    struct Case {
        QString text;
        double frequency;
    };
    const Case cases[] = {
        {u"145.5M"_s, 145.5e6},
        {u"145.5 MHz"_s, 145.5e6},
        {u"145.5mhz"_s, 145.5e6},
        {u"300k"_s, 300e3},
        {u"300 KHZ"_s, 300e3},
        {u"1e6"_s, 1e6},
        {u"1E6 Hz"_s, 1e6},
        {u"3.6G"_s, 3.6e9},
        {u"3.6GHz"_s, 3.6e9},
        {u" 9000 "_s, 9000.0},
        {u"9000hz"_s, 9000.0},
        {u"0"_s, 0.0},
        {u"30.000001M"_s, 30000001.0},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(FrequencyText::Parse(each.text), std::optional(each.frequency)) << each.text.toStdString();
    }
}

TEST(FrequencyText, RefusesEverythingElse) {
    const QString texts[] = {u""_s,    u" "_s,    u"M"_s,     u"MHz"_s,   u"x"_s,
                             u"-1"_s,  u"1,5M"_s, u"1M5"_s,   u"1MM"_s,   u"nan"_s,
                             u"inf"_s, u"1 H"_s,  u"1e400"_s, u"1 000"_s, u"0x10"_s};
    for (const QString& text : texts) {
        EXPECT_FALSE(FrequencyText::Parse(text)) << text.toStdString();
    }
    EXPECT_FALSE(FrequencyText::Parse(u"1e308G"_s)) << "beyond the largest number";
    EXPECT_FALSE(FrequencyText::Parse(QString(u"1\0M"_s.data(), 3))) << "a NUL in it";
}

TEST(FrequencyText, ShowsFrequenciesInTheLargestUnitExactToAHertz) {
    struct Case {
        double frequency;
        QString text;
    };
    const Case cases[] = {
        {0.0, u"0 Hz"_s},
        {-0.0, u"0 Hz"_s},
        {999.0, u"999 Hz"_s},
        {1e3, u"1 kHz"_s},
        {8333.0, u"8.333 kHz"_s},
        {999999.0, u"999.999 kHz"_s},
        {1e6, u"1 MHz"_s},
        {30000001.0, u"30.000001 MHz"_s},
        {3599999999.0, u"3.599999999 GHz"_s},
        {-1500.0, u"-1.5 kHz"_s},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(FrequencyText::Format(each.frequency), each.text);
    }
    EXPECT_EQ(FrequencyText::FormatRange(9e3, 1e6), u"9 kHz - 1 MHz"_s);
}

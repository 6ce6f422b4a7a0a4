#include "kwbase/tolmos.h"

#include "support/printing.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

unsigned long long WallClock() {
    using namespace std::chrono;
    return static_cast<unsigned long long>(
        duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count());
}

class StoppedClock : public ITolmOS {
public:
    [[nodiscard]] unsigned long long GetCurrentTime() const override { return 1234; }
    bool TranslateHostName(const QString&, QString&) const override { return false; }
};

TEST(TolmOS, TheClockIsTheMachinesInMillisecondsSince1970) {
    const unsigned long long before = WallClock();
    const unsigned long long now = TolmOS::Create().GetCurrentTime();
    const unsigned long long after = WallClock();
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

TEST(TolmOS, CreateGivesTheSameSystemEachTime) {
    EXPECT_EQ(&TolmOS::Create(), &TolmOS::Create());
}

TEST(TolmOS, AnotherSystemCanTakeItsPlace) {
    ITolmOS& real = TolmOS::Create();
    StoppedClock stopped;
    TolmOS::Replace(&stopped);
    EXPECT_EQ(&TolmOS::Create(), &stopped);
    EXPECT_EQ(TolmOS::Create().GetCurrentTime(), 1234U);
    TolmOS::Replace(nullptr);
    EXPECT_EQ(&TolmOS::Create(), &real);
}

TEST(TolmOS, HostNamesAreLowerCaseAndHaveNoDotBehindThem) {
    struct Case {
        QString host;
        std::optional<QString> translated; // none: it cannot be translated
    };
    const Case cases[] = {
        {u"host"_s, u"host"_s},
        {u"HOST"_s, u"host"_s},
        {u"Df.Ship.Example."_s, u"df.ship.example"_s},
        {u"10.0.0.7"_s, u"10.0.0.7"_s},
        {u"host.."_s, u"host."_s},
        {u".host"_s, u".host"_s},
        {u"\u00c4.example"_s, u"\u00e4.example"_s},
        {u" "_s, u" "_s},
        {u"."_s, std::nullopt},
        {u""_s, std::nullopt},
        {QString(), std::nullopt},
    };
    for (const Case& each : cases) {
        QString translated = u"as it was"_s;
        EXPECT_EQ(TolmOS::Create().TranslateHostName(each.host, translated), each.translated.has_value())
            << each.host.toStdString();
        EXPECT_EQ(translated, each.translated.value_or(u"as it was"_s)) << each.host.toStdString();
    }
}

TEST(TolmOS, TranslatedHostNameStaysAsItIs) {
    for (const QString& host : {u"host"_s, u"Df.Ship."_s, u"10.0.0.7"_s, u"\u0130stanbul"_s}) {
        QString once;
        QString twice;
        EXPECT_TRUE(TolmOS::Create().TranslateHostName(host, once));
        EXPECT_TRUE(TolmOS::Create().TranslateHostName(once, twice));
        EXPECT_EQ(twice, once);
    }
}

TEST(TolmOS, HostNameMayBeTranslatedInPlace) {
    QString host = u"HOST."_s;
    EXPECT_TRUE(TolmOS::Create().TranslateHostName(host, host));
    EXPECT_EQ(host, u"host"_s);
}

} // namespace

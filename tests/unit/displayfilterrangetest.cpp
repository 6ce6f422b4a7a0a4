#include "zancommon/displayfilterrange.h"

#include "support/observers.h"
#include "support/printing.h"
#include "support/tracelines.h"
#include "valueframework/tree.h"
#include "valueframework/valueaccess.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <ostream>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using ZANPlatform::GetOrCreateValue;

void PrintTo(const QuadFloat& entry, std::ostream* out) {
    *out << '(' << entry.first << ' ' << entry.second << ' ' << entry.third << ' ' << entry.fourth << ')';
}

namespace {

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double LOWER = 100e6;
constexpr double UPPER = 200e6;

using Sectors = std::vector<std::pair<double, double>>;
using Entries = std::vector<QuadFloat>;

class DisplayFilterRangeTest : public testing::Test {
protected:
    ~DisplayFilterRangeTest() override { Tree::Instance()->Clear(); }

    static ValueQuadFloatList* List() {
        return Tree::Instance()->Find<ValueQuadFloatList>(u"/ZANCONTROL/Shades"_s);
    }
    static Entries Content() { return List()->GetElements(); }
    /// What one device filter range with these sectors publishes.
    Entries Publish(const Sectors& accepted) {
        range.Reset();
        range.AddDeviceFilterRange({LOWER, UPPER, accepted});
        range.Publish();
        return Content();
    }
    /// The trace lines without their line numbers in the source.
    [[nodiscard]] QStringList Traced() const {
        QStringList lines = trace.lines;
        return lines.replaceInStrings(QRegularExpression(u"\\(\\d+\\)"_s), u"(n)"_s);
    }

    TraceLines trace;
    DisplayFilterRange range{u"Shades"_s, u"/ZANCONTROL"_s};
};

const QString ORIGIN = QStringLiteral(u"devicecontrol\\directionfinder\\zancommon\\displayfilterrange(n): ");
const QString NO_TRANSACTION =
    ORIGIN + QStringLiteral(u"DisplayFilterRange::Publish(): No active transaction.");

TEST_F(DisplayFilterRangeTest, BasePathMayEndWithASlash) {
    const DisplayFilterRange other(u"Other"_s, u"/ZANCONTROL/"_s);
    EXPECT_NE(Tree::Instance()->Find<ValueQuadFloatList>(u"/ZANCONTROL/Other"_s), nullptr);
    EXPECT_TRUE(trace.lines.isEmpty());
}

// --- sectors ---

TEST_F(DisplayFilterRangeTest, PublishesWhatNoSectorCovers) {
    struct Case {
        const char* what;
        Sectors accepted;
        Sectors published;
    };
    const Case cases[] = {
        {"none", {}, {{0, 359.99}}},
        {"two apart", {{0, 90}, {180, 270}}, {{90, 180}, {270, 359.99}}},
        {"any order", {{180, 270}, {0, 90}}, {{90, 180}, {270, 359.99}}},
        {"touching", {{0, 90}, {90, 180}}, {{180, 359.99}}},
        {"overlapping", {{10, 90}, {50, 100}}, {{0, 10}, {100, 359.99}}},
        {"one within another", {{10, 200}, {50, 100}}, {{0, 10}, {200, 359.99}}},
        {"twice the same", {{10, 20}, {10, 20}}, {{0, 10}, {20, 359.99}}},
        {"a hair apart", {{0, 90}, {90.01, 359.99}}, {{90, 90.01}}},
        {"the whole circle", {{0, 359.99}}, {}},
        {"all but the last hundredth", {{0, 359.98}}, {{359.98, 359.99}}},
        // A sector without width accepts nothing but parts the sector around it.
        {"no width", {{90, 90}}, {{0, 90}, {90, 359.99}}},
        {"no width within another", {{50, 100}, {90, 90}}, {{0, 50}, {100, 359.99}}},
        {"no width at the ends", {{0, 0}, {359.99, 359.99}}, {{0, 359.99}}},
        // Through north
        {"through north", {{300, 60}}, {{60, 300}}},
        {"up to north", {{300, 0}}, {{0, 300}}},
        {"from the last azimuth", {{359.99, 10}}, {{10, 359.99}}},
        {"two through north", {{300, 60}, {350, 90}}, {{90, 300}}},
        {"through north and beside", {{300, 60}, {60, 100}, {200, 250}}, {{100, 200}, {250, 300}}},
        {"through north and all around", {{60, 59.99}}, {{59.99, 60}}},
        // Beyond the circle numbers are numbers like others.
        {"to 360", {{270, 360}}, {{0, 270}}},
        {"far beyond", {{270, 1e300}}, {{0, 270}}},
        {"beyond, not wrapped", {{350, 370}}, {{0, 350}}},
        {"from 360", {{360, 370}}, {{0, 359.99}}},
        {"before north", {{-90, -10}}, {{0, 359.99}}},
        {"from before north", {{-10, 20}}, {{20, 359.99}}},
        {"to before north", {{60, -20}}, {{0, 60}}},
        {"from beyond through north", {{400, 60}}, {{60, 359.99}}},
        {"around and more", {{-10, 400}}, {}},
        {"endless", {{-INF, INF}}, {}},
        {"endless the other way", {{INF, -INF}}, {{0, 359.99}}},
        {"from a number to infinity", {{180, INF}}, {{0, 180}}},
        // What is not a number
        {"no number", {{NOT_A_NUMBER, 90}}, {{0, 359.99}}},
        {"no number beside others", {{0, 90}, {100, NOT_A_NUMBER}, {180, 270}}, {{90, 180}, {270, 359.99}}},
        {"nothing but no numbers", {{NOT_A_NUMBER, NOT_A_NUMBER}}, {{0, 359.99}}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        Entries expected;
        for (const auto& [lower, upper] : each.published) {
            expected.emplace_back(LOWER, UPPER, lower, upper);
        }
        EXPECT_EQ(Publish(each.accepted), expected);
    }
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(DisplayFilterRangeTest, AdjacentSectorsAreNotMerged) {
    EXPECT_EQ(Publish({{90, 90}, {180, 180}}),
              (Entries{{LOWER, UPPER, 0, 90}, {LOWER, UPPER, 90, 180}, {LOWER, UPPER, 180, 359.99}}));
}

TEST_F(DisplayFilterRangeTest, NorthIsPositiveZero) {
    for (const QuadFloat& entry : Publish({{-0.0, -0.0}})) {
        EXPECT_FALSE(std::signbit(entry.third)) << testing::PrintToString(entry);
    }
}

/// A random azimuth between `low` and `high`, rounded to hundredths or not.
double RandomAzimuth(std::mt19937& random, double low, double high, bool isRounded) {
    const double azimuth = std::uniform_real_distribution(low, high)(random);
    return isRounded ? std::round(azimuth * 100) / 100 : azimuth;
}

Sectors RandomSectors(std::mt19937& random) {
    const bool isRounded = random() % 3 != 0;
    const bool isOffCircle = random() % 4 == 0;
    const double low = isOffCircle ? -100 : 0;
    const double high = isOffCircle ? 460 : 359.99;
    Sectors sectors(random() % 9);
    for (auto& [from, to] : sectors) {
        from = RandomAzimuth(random, low, high, isRounded);
        const double end = random() % 2 ? high : std::min(high, from + 20); // narrow ones leave gaps
        to = random() % 4 == 0 ? RandomAzimuth(random, low, high, isRounded)
                               : RandomAzimuth(random, from, std::max(from, end), isRounded);
    }
    return sectors;
}

bool IsAccepted(const Sectors& sectors, double azimuth) {
    return std::ranges::any_of(sectors, [azimuth](const auto& sector) {
        const auto [from, to] = sector;
        return from > to ? azimuth >= from || azimuth < to : azimuth >= from && azimuth < to;
    });
}

TEST_F(DisplayFilterRangeTest, EveryHundredthOfADegreeIsEitherAcceptedOrInOneEntry) {
    std::mt19937 random(20261120); // the same sectors in each run
    for (int run = 0; run < 400; ++run) {
        const Sectors sectors = RandomSectors(random);
        const Entries entries = Publish(sectors);
        SCOPED_TRACE(testing::PrintToString(sectors) + " gave " + testing::PrintToString(entries));
        double previous = 0.0;
        for (const QuadFloat& entry : entries) {
            ASSERT_EQ(entry.first, LOWER);
            ASSERT_EQ(entry.second, UPPER);
            ASSERT_LE(previous, entry.third);
            ASSERT_LT(entry.third, entry.fourth);
            previous = entry.fourth;
            for (const auto& [from, to] : sectors) {
                ASSERT_FALSE(entry.third < from && from < entry.fourth);
                ASSERT_FALSE(entry.third < to && to < entry.fourth);
            }
        }
        ASSERT_LE(previous, 359.99);
        std::size_t next = 0; // the first entry that does not end before the azimuth
        for (int hundredths = 0; hundredths < 35999; ++hundredths) {
            const double azimuth = hundredths / 100.0;
            while (next < entries.size() && entries[next].fourth <= azimuth) {
                ++next;
            }
            const bool isPublished = next < entries.size() && entries[next].third <= azimuth;
            ASSERT_NE(isPublished, IsAccepted(sectors, azimuth)) << azimuth;
        }
    }
}

TEST_F(DisplayFilterRangeTest, FrequencyLimitsAreCopiedAsTheyAre) {
    range.Reset();
    range.AddDeviceFilterRange({200.5, -100.25, {}});
    range.AddDeviceFilterRange({-INF, INF, {}});
    range.AddDeviceFilterRange({0.0, std::numeric_limits<double>::max(), {}});
    range.Publish();
    EXPECT_EQ(Content(), (Entries{{200.5, -100.25, 0, 359.99},
                                  {-INF, INF, 0, 359.99},
                                  {0.0, std::numeric_limits<double>::max(), 0, 359.99}}));
}

TEST_F(DisplayFilterRangeTest, RangesOfOneSetAreOneAfterTheOther) {
    range.Reset();
    range.AddDeviceFilterRange({3, 4, {{90, 359.99}}});
    range.AddDeviceFilterRange({1, 2, {{0, 350}}});
    range.Publish();
    EXPECT_EQ(Content(), (Entries{{3, 4, 0, 90}, {1, 2, 350, 359.99}}));
}

// --- sets ---

TEST_F(DisplayFilterRangeTest, ObserversAreNotifiedOnceWhenASetIsPublished) {
    Publish({});
    CodeObserver observer;
    List()->AddObserver(&observer);
    range.Reset();
    EXPECT_TRUE(List()->Empty());
    range.AddDeviceFilterRange({1, 2, {}});
    range.AddDeviceFilterRange({3, 4, {}});
    EXPECT_TRUE(observer.codes.empty());
    EXPECT_TRUE(List()->IsTransactionActive());
    range.Publish();
    EXPECT_EQ(observer.codes, std::vector<TChangeCode>{TChangeCode{3}});
    EXPECT_FALSE(List()->IsTransactionActive());
    EXPECT_EQ(List()->GetCount(), 2U);
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(DisplayFilterRangeTest, PublishWithoutASetIsOnlyTraced) {
    const Entries before = Publish({{0, 90}});
    CodeObserver observer;
    List()->AddObserver(&observer);
    range.Publish();
    EXPECT_EQ(Traced(), QStringList{NO_TRANSACTION});
    EXPECT_EQ(Content(), before);
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(DisplayFilterRangeTest, ResetDuringASetPublishesItFirst) {
    std::vector<std::size_t> published;
    FunctionObserver observer([&](Observable*, TChangeCode) { published.push_back(List()->GetCount()); });
    List()->AddObserver(&observer);
    range.Reset();
    range.AddDeviceFilterRange({1, 2, {{90, 90}}});
    range.Reset();
    EXPECT_EQ(published, std::vector<std::size_t>{2});
    EXPECT_EQ(Traced(), QStringList{ORIGIN + u"DisplayFilterRange::Reset(): Stopping already running "
                                             "transaction."_s});
    EXPECT_TRUE(List()->Empty());
    range.AddDeviceFilterRange({3, 4, {}});
    range.Publish();
    EXPECT_EQ(published, (std::vector<std::size_t>{2, 1}));
    EXPECT_EQ(Content(), (Entries{{3, 4, 0, 359.99}}));
    EXPECT_FALSE(List()->IsTransactionActive());
}

TEST_F(DisplayFilterRangeTest, NothingIsTracedWhenTheBitIsOff) {
    ErrorHandler::Instance().SetTraceMask(~TraceBit::INFORMATION);
    range.Publish();
    range.Reset();
    range.Reset();
    range.Publish();
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(DisplayFilterRangeTest, CopyServesTheSameList) {
    static_assert(std::has_virtual_destructor_v<DisplayFilterRange>);
    auto original = std::make_unique<DisplayFilterRange>(range);
    DisplayFilterRange copy(u"Other"_s, u"/ZANCONTROL"_s);
    copy = *original;
    original.reset();
    range.Reset();
    copy.AddDeviceFilterRange({1, 2, {}});
    copy.Publish();
    EXPECT_EQ(Content(), (Entries{{1, 2, 0, 359.99}}));
    EXPECT_FALSE(List()->IsTransactionActive());
}

// --- the list in the tree ---

TEST_F(DisplayFilterRangeTest, ListIsMadeOnceAndTakenAsItIs) {
    const Entries before = Publish({});
    const ValueQuadFloatList* const list = List();
    DisplayFilterRange second(u"Shades"_s, u"/ZANCONTROL"_s);
    EXPECT_EQ(List(), list);
    EXPECT_EQ(Content(), before);
    second.Reset();
    second.Publish();
    EXPECT_TRUE(List()->Empty());
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(DisplayFilterRangeTest, ListIsBelowAnyBasePath) {
    const DisplayFilterRange other(u"B"_s, u"/ZANServer/A"_s);
    EXPECT_TRUE(Tree::Instance()->Find<ValueQuadFloatList>(u"/ZANServer/A/B"_s));
}

TEST_F(DisplayFilterRangeTest, WithoutAListAnAssertionIsReportedAndNothingElseHappens) {
    auto* const taken = GetOrCreateValue<ValueInt>(u"/ZANCONTROL/Taken"_s);
    taken->SetValue(5, nullptr);
    const QString leak =
        u"valueframework\\valueclasses\\valueobservermacros(n): !!!!!!!MEMORY LEAK! The value "
        "with the path '/ZANCONTROL/Taken' could not be created!!! A value of this name "
        "already exists for a different type!!!!!!!!"_s;
    const QString assertion = ORIGIN + u"Assertion failed: m_pFilterRangesForDisplay"_s;
    const std::pair<unsigned, QStringList> cases[] = {
        {TraceBit::INFORMATION | TraceBit::ASSERTION, {leak, assertion}},
        {TraceBit::ASSERTION, {assertion}},
        {TraceBit::INFORMATION, {leak}},
        {0, {}},
    };
    for (const auto& [mask, expected] : cases) {
        ErrorHandler::Instance().SetTraceMask(mask);
        trace.lines.clear();
        DisplayFilterRange listless(u"Taken"_s, u"/ZANCONTROL"_s);
        listless.Reset();
        listless.AddDeviceFilterRange({1, 2, {}});
        listless.Publish();
        EXPECT_EQ(Traced(), expected);
    }
    EXPECT_EQ(taken->GetValue(), 5);
}

TEST_F(DisplayFilterRangeTest, ListThatHasGoneFromTheTreeIsAsNone) {
    range.Reset();
    Tree::Instance()->Remove(List());
    range.AddDeviceFilterRange({1, 2, {}});
    range.Publish();
    range.Reset();
    EXPECT_FALSE(List());
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(DisplayFilterRangeTest, ObserverMayRemoveTheListWhenItIsNotified) {
    FunctionObserver remover([](Observable*, TChangeCode code) {
        if (code != TChangeCode::GoingAway) {
            Tree::Instance()->Remove(List());
        }
    });
    List()->AddObserver(&remover);
    range.Reset();
    range.Reset(); // publishes the first set
    EXPECT_FALSE(List());
    range.AddDeviceFilterRange({1, 2, {}});
    range.Publish();
}

TEST_F(DisplayFilterRangeTest, ObserverMayRemoveTheListWhileEntriesAreAddedOutsideASet) {
    FunctionObserver remover([](Observable*, TChangeCode code) {
        if (code != TChangeCode::GoingAway) {
            Tree::Instance()->Remove(List());
        }
    });
    List()->AddObserver(&remover);
    range.AddDeviceFilterRange({1, 2, {{10, 20}, {30, 40}}}); // three entries, were there a list for them
    EXPECT_FALSE(List());
}

} // namespace

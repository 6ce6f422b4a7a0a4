#include "zancommon/antennadatalist.h"

#include "support/antennas.h"
#include "support/devicetree.h"
#include "support/tracelines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <numeric>

using namespace Qt::StringLiterals;

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

/// What the rules of a list look at, in MHz.
struct Entry {
    const char* name;
    double minRange;
    double maxRange;
    bool isEnabled = true;
    EZANPolarisation polarisation = POLARISATION_LEFT;
    qint32 handle = -1;
};

AntennaData MakeFrom(const Entry& entry) {
    AntennaData antenna =
        MakeAntenna(QString::fromLatin1(entry.name), {}, entry.minRange * 1e6, entry.maxRange * 1e6);
    antenna.enabled = entry.isEnabled;
    antenna.polarizationMode = entry.polarisation;
    antenna.handle = entry.handle;
    return antenna;
}

AntennaDataList ListOf(const std::vector<Entry>& entries) {
    AntennaDataList list;
    for (const Entry& entry : entries) {
        Append(list, MakeFrom(entry));
    }
    return list;
}

AntennaData Covering(const QString& name, double minFreq, double maxFreq) {
    return MakeAntenna(name, {}, minFreq, maxFreq);
}

QString NameOf(const AntennaData* antenna) {
    return antenna ? antenna->name : u"(none)"_s;
}

/// The ranges of all entries, such as "1-2 3.5-4", in MHz; a disabled one is in brackets.
QString RangesOf(const AntennaDataList& list) {
    QStringList texts;
    for (const auto& antenna : list.GetAntennas()) {
        const QString text = QString::number(antenna->minRange / 1e6, 'g', 12) + u'-' +
                             QString::number(antenna->maxRange / 1e6, 'g', 12);
        texts.append(antenna->enabled ? text : u'(' + text + u')');
    }
    return texts.join(u' ');
}

// --- entries ---

TEST(AntennaDataList, NewListIsEmpty) {
    EXPECT_TRUE(AntennaDataList().GetAntennas().empty());
    EXPECT_TRUE(AntennaDataList(u"/DEVICES/ZANServer"_s, u"Ship"_s).GetAntennas().empty());
}

TEST(AntennaDataList, AddedEntriesAreInTheirOrder) {
    AntennaDataList list;
    auto* const first = new AntennaData;
    auto* const second = new AntennaData;
    EXPECT_TRUE(list.AddAntenna(first));
    EXPECT_TRUE(list.AddAntenna(second));
    ASSERT_EQ(list.GetAntennas().size(), 2U);
    EXPECT_EQ(list.GetAntennaByIndex(0), first);
    EXPECT_EQ(list.GetAntennaByIndex(1), second);
}

TEST(AntennaDataList, AddingNullSucceedsAndLeavesTheListUnchanged) {
    AntennaDataList list = ListOf({{"A", 1, 2}});
    EXPECT_TRUE(list.AddAntenna(nullptr));
    EXPECT_EQ(NamesOf(list), QStringList{u"A"_s});
}

TEST(AntennaDataList, AnEntryIsAddedByValue) {
    AntennaDataList list;
    AntennaData antenna = MakeUnusualAntenna();
    list.AddAntenna(antenna);
    antenna.name = u"changed"_s;
    ASSERT_EQ(list.GetAntennas().size(), 1U);
    ExpectSame(*list.GetAntennaByIndex(0), MakeUnusualAntenna());
    list.AddAntenna(*list.GetAntennaByIndex(0)); // an entry of the list itself
    EXPECT_EQ(list.GetAntennas().size(), 2U);
    EXPECT_NE(list.GetAntennaByIndex(0), list.GetAntennaByIndex(1));
}

TEST(AntennaDataList, AConstListIsCopied) {
    const AntennaDataList source = ListOf({{"B", 2, 3}, {"A", 1, 2}});
    AntennaDataList copy;
    copy.CopyFrom(source);
    EXPECT_EQ(NamesOf(copy), (QStringList{u"A"_s, u"B"_s}));
    EXPECT_EQ(NamesOf(source), (QStringList{u"B"_s, u"A"_s}));
}

TEST(AntennaDataList, ClearRemovesAllEntries) {
    AntennaDataList list = ListOf({{"A", 1, 2}, {"B", 2, 3}});
    list.Clear();
    EXPECT_TRUE(list.GetAntennas().empty());
    list.Clear();
    EXPECT_TRUE(list.GetAntennas().empty());
}

TEST(AntennaDataList, FirstEntryOfTheNameIsDeletedWhicheverRecordIsGiven) {
    AntennaDataList list;
    Append(list, Covering(u"A"_s, 1, 2));
    Append(list, Covering(u"B"_s, 1, 2));
    AntennaData* const later = Append(list, Covering(u"B"_s, 5, 6));
    Append(list, Covering(u"C"_s, 1, 2));

    const auto other = std::make_unique<AntennaData>(Covering(u"C"_s, 7, 8));
    EXPECT_TRUE(list.DeleteAntenna(other.get()));
    EXPECT_EQ(NamesOf(list), (QStringList{u"A"_s, u"B"_s, u"B"_s}));

    EXPECT_TRUE(list.DeleteAntenna(later)); // takes the entry before it away, and not the record itself
    ASSERT_EQ(NamesOf(list), (QStringList{u"A"_s, u"B"_s}));
    EXPECT_EQ(list.GetAntennaByIndex(1), later);

    EXPECT_TRUE(list.DeleteAntenna(later));
    EXPECT_EQ(NamesOf(list), QStringList{u"A"_s});
}

TEST(AntennaDataList, NothingIsDeletedForNullOrAnUnknownName) {
    AntennaDataList list = ListOf({{"A", 1, 2}});
    AntennaData other = Covering(u"a"_s, 1, 2);
    EXPECT_FALSE(list.DeleteAntenna(nullptr));
    EXPECT_FALSE(list.DeleteAntenna(&other));
    EXPECT_FALSE(AntennaDataList().DeleteAntenna(&other));
    EXPECT_EQ(NamesOf(list), QStringList{u"A"_s});
}

TEST(AntennaDataList, NoEntryIsOutsideTheList) {
    const AntennaDataList list = ListOf({{"A", 1, 2}, {"B", 1, 2}});
    EXPECT_EQ(NameOf(list.GetAntennaByIndex(1)), u"B"_s);
    for (const int index : {-1, 2, INT_MIN, INT_MAX}) {
        EXPECT_EQ(list.GetAntennaByIndex(index), nullptr) << index;
    }
    EXPECT_EQ(AntennaDataList().GetAntennaByIndex(0), nullptr);
}

// --- copies ---

TEST(AntennaDataList, CopiesShareTheirRecords) {
    AntennaDataList list = ListOf({{"A", 1, 2}, {"B", 1, 2}});
    const AntennaDataList copy(list); // NOLINT(performance-unnecessary-copy-initialization)
    AntennaDataList assigned = ListOf({{"Old", 1, 2}});
    assigned = list;
    EXPECT_EQ(NamesOf(assigned), NamesOf(list));
    list.GetAntennaByIndex(1)->handle = 5;
    EXPECT_EQ(copy.GetAntennaByIndex(1)->handle, 5);
    EXPECT_EQ(assigned.GetAntennaByIndex(1)->handle, 5);
}

TEST(AntennaDataList, CopiesMayGoInAnyOrder) {
    for (const bool isSourceFirst : {true, false}) {
        auto source = std::make_unique<AntennaDataList>(ListOf({{"A", 1, 2}, {"B", 1, 2}}));
        auto copy = std::make_unique<AntennaDataList>(*source);
        (isSourceFirst ? source : copy).reset();
        AntennaDataList& left = isSourceFirst ? *copy : *source;
        EXPECT_EQ(NamesOf(left), (QStringList{u"A"_s, u"B"_s}));
        left.GetAntennaByIndex(0)->name = u"C"_s;
    }
}

TEST(AntennaDataList, ClearingOrDeletingInOneListLeavesItsCopies) {
    AntennaDataList source = ListOf({{"A", 1, 2}, {"B", 1, 2}});
    AntennaDataList copy(source);
    EXPECT_TRUE(copy.DeleteAntenna(copy.GetAntennaByIndex(0)));
    EXPECT_EQ(NamesOf(copy), QStringList{u"B"_s});
    source.Clear();
    EXPECT_EQ(NamesOf(copy), QStringList{u"B"_s});
    Append(copy, Covering(u"C"_s, 1, 2));
    EXPECT_TRUE(source.GetAntennas().empty());
}

TEST(AntennaDataList, AssignmentToItselfChangesNothing) {
    AntennaDataList list = ListOf({{"B", 3, 4}, {"A", 1, 2}});
    const AntennaDataList& same = list;
    list = same;
    EXPECT_EQ(NamesOf(list), (QStringList{u"B"_s, u"A"_s}));
}

TEST(AntennaDataList, CopyFromMakesRecordsOfItsOwnInSortedOrder) {
    AntennaDataList source;
    Append(source, Covering(u"High"_s, 30e6, 60e6));
    Append(source, MakeUnusualAntenna());
    AntennaDataList target = ListOf({{"Old", 1, 2}});
    target.CopyFrom(source);
    EXPECT_EQ(NamesOf(target), (QStringList{u"PX122 (A/P)"_s, u"High"_s}));
    EXPECT_EQ(NamesOf(source), (QStringList{u"High"_s, u"PX122 (A/P)"_s}));
    ExpectSame(*target.GetAntennaByIndex(0), MakeUnusualAntenna());
    source.GetAntennaByIndex(1)->dfAlgorithms.clear();
    source.Clear();
    ExpectSame(*target.GetAntennaByIndex(0), MakeUnusualAntenna());
}

TEST(AntennaDataList, CopyFromItselfSortsAndKeepsEveryEntry) {
    AntennaDataList list = ListOf({{"B", 3, 4}, {"A", 1, 2}});
    list.CopyFrom(list);
    EXPECT_EQ(NamesOf(list), (QStringList{u"A"_s, u"B"_s}));
}

TEST(AntennaDataList, CopyFromPartsAListFromItsCopies) {
    AntennaDataList source = ListOf({{"A", 1, 2}});
    AntennaDataList copy(source);
    copy.CopyFrom(source);
    copy.GetAntennaByIndex(0)->handle = 5;
    EXPECT_EQ(source.GetAntennaByIndex(0)->handle, -1);
}

TEST(AntennaDataList, CopyFromAnEmptyListEmpties) {
    AntennaDataList list = ListOf({{"A", 1, 2}});
    AntennaDataList empty;
    list.CopyFrom(empty);
    EXPECT_TRUE(list.GetAntennas().empty());
}

// --- search ---

TEST(AntennaDataList, FirstEntryWithTheHandleIsFoundEnabledOrNot) {
    const AntennaDataList list = ListOf({{"A", 1, 2, true, POLARISATION_LEFT, 4},
                                         {"Disabled", 1, 2, false, POLARISATION_LEFT, 5},
                                         {"B", 1, 2, true, POLARISATION_LEFT, 5},
                                         {"Unknown", 1, 2}});
    EXPECT_EQ(NameOf(list.GetAntennaByHandle(4)), u"A"_s);
    EXPECT_EQ(NameOf(list.GetAntennaByHandle(5)), u"Disabled"_s);
    EXPECT_EQ(NameOf(list.GetAntennaByHandle(-1)), u"Unknown"_s);
    EXPECT_EQ(list.GetAntennaByHandle(6), nullptr);
    EXPECT_EQ(AntennaDataList().GetAntennaByHandle(-1), nullptr);
}

TEST(AntennaDataList, FirstEnabledEntryWhoseRangeHoldsBothFrequenciesIsFound) {
    const AntennaDataList list =
        ListOf({{"Disabled", 1, 100, false}, {"A", 10, 20}, {"B", 15, 30}, {"C", 10, 20}});
    struct Case {
        double low;
        double high;
        QString name;
    };
    const Case cases[] = {
        {10, 20, u"A"_s},        {12, 13, u"A"_s},
        {15, 20, u"A"_s},        {15, 30, u"B"_s},
        {16, 20.000001, u"B"_s}, {9.999999, 20, u"(none)"_s},
        {10, 30, u"(none)"_s},   {31, 32, u"(none)"_s},
        {20, 10, u"A"_s},        {NOT_A_NUMBER, NOT_A_NUMBER, u"(none)"_s},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(NameOf(list.GetAntennaForFreqRange(each.low * 1e6, each.high * 1e6)), each.name)
            << each.low << " to " << each.high << " MHz";
    }
}

TEST(AntennaDataList, AntennaForAFrequencyIsChosenByRangeAndPolarisation) {
    struct Case {
        const char* what;
        std::vector<Entry> entries;
        double frequency;
        bool prefersRangeStart;
        EZANPolarisation polarisation;
        QString name;
    };
    const EZANPolarisation left = POLARISATION_LEFT;
    const EZANPolarisation vertical = POLARISATION_VERTICAL;
    const std::vector<Entry> adjacent{{"A", 10, 20, true, vertical}, {"B", 20, 30, true, vertical}};
    const Case cases[] = {
        {"the end of a range belongs to it", adjacent, 20, false, vertical, u"A"_s},
        {"stepping over the end leads to the next antenna", adjacent, 20, true, vertical, u"B"_s},
        {"the start of a range belongs to it", adjacent, 10, false, vertical, u"A"_s},
        {"the end of the last range belongs to it", adjacent, 30, true, vertical, u"B"_s},
        {"below all ranges", adjacent, 9.999999, false, vertical, u"(none)"_s},
        {"above all ranges", adjacent, 30.000001, true, vertical, u"(none)"_s},
        {"no frequency", adjacent, NOT_A_NUMBER, true, vertical, u"(none)"_s},
        {"no range begins there", adjacent, 15, true, vertical, u"A"_s},
        {"the first of the wanted polarisation",
         {{"A", 10, 20, true, left}, {"B", 10, 20, true, vertical}, {"C", 10, 20, true, vertical}},
         15,
         false,
         vertical,
         u"B"_s},
        {"without the wanted polarisation the last one",
         {{"A", 10, 20, true, left}, {"B", 10, 20, true, left}, {"C", 30, 40, true, left}},
         15,
         false,
         vertical,
         u"B"_s},
        {"the start of a range comes before the polarisation",
         {{"A", 10, 20, true, vertical}, {"B", 15, 20, true, left}, {"C", 15, 30, true, vertical}},
         15,
         true,
         vertical,
         u"B"_s},
        {"a disabled entry is never found",
         {{"A", 10, 20, false, vertical}, {"B", 15, 30, true, left}, {"C", 10, 20, false, left}},
         15,
         false,
         vertical,
         u"B"_s},
        {"nor by the start of its range",
         {{"A", 15, 20, false, vertical}, {"B", 10, 20, true, left}},
         15,
         true,
         vertical,
         u"B"_s},
        {"all disabled", {{"A", 10, 20, false, vertical}}, 15, true, vertical, u"(none)"_s},
        {"an empty list", {}, 15, true, vertical, u"(none)"_s},
        {"a range turned round begins where it says", {{"A", 20, 10}}, 20, true, left, u"A"_s},
        {"and holds nothing", {{"A", 20, 10}}, 15, true, left, u"(none)"_s},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(NameOf(ListOf(each.entries)
                             .GetAntennaForFrequency(each.frequency * 1e6, each.prefersRangeStart,
                                                     each.polarisation)),
                  each.name)
            << each.what;
    }
}

TEST(AntennaDataList, DisabledEntryIsFoundByItsHandleOnly) {
    const AntennaDataList list = ListOf({{"A", 10, 20, false, POLARISATION_LEFT, 3}});
    EXPECT_EQ(list.GetAntennaForFrequency(15e6, false, POLARISATION_LEFT), nullptr);
    EXPECT_EQ(list.GetAntennaForFrequency(10e6, true, POLARISATION_LEFT), nullptr);
    EXPECT_EQ(list.GetAntennaForFreqRange(15e6, 15e6), nullptr);
    EXPECT_EQ(NameOf(list.GetAntennaByHandle(3)), u"A"_s);
}

TEST(AntennaDataList, HFAntennaIsAnEnabledOneWhoseRangeHoldsTenMegahertz) {
    struct Case {
        Entry entry;
        bool isHF = false;
    };
    const Case cases[] = {
        {{"A", 1, 30}, true},
        {{"A", 10, 30}, true},
        {{"A", 1, 10}, true},
        {{"A", 10.000001, 30}, false},
        {{"A", 1, 9.999999}, false},
        {{"A", 1, 30, false}, false},
        {{"A", 1, 30, true, POLARISATION_VERTICAL}, true},
        {{"A", 1, 30, true, POLARISATION_HORIZONTAL}, true},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(ListOf({{"VUHF", 30, 3000}, each.entry}).ContainsHFAntenna(), each.isHF)
            << each.entry.minRange << " to " << each.entry.maxRange << " MHz";
    }
    EXPECT_FALSE(AntennaDataList().ContainsHFAntenna());
}

TEST(AntennaDataList, HandlesAreDistinctAndAscend) {
    const AntennaDataList list = ListOf({{"A", 1, 2, true, POLARISATION_LEFT, 9},
                                         {"B", 1, 2, false, POLARISATION_LEFT, 4},
                                         {"C", 1, 2, true, POLARISATION_LEFT, -1},
                                         {"D", 1, 2, false, POLARISATION_LEFT, 9}});
    EXPECT_EQ(list.GetAntennaHandles(false), (std::set<long>{-1, 4, 9}));
    EXPECT_EQ(list.GetAntennaHandles(true), (std::set<long>{-1, 9}));
    EXPECT_TRUE(AntennaDataList().GetAntennaHandles(false).empty());
}

TEST(AntennaDataList, OneAntennaIsDescribedOverAllItsEntries) {
    struct Row {
        double minFreq;
        double maxFreq;
        double minRange;
        double maxRange;
        bool isEnabled;
    };
    struct Case {
        const char* what;
        std::vector<Row> entries;
        Row result;
    };
    const Case cases[] = {
        {"one entry", {{1, 9, 2, 8, true}}, {1, 9, 2, 8, true}},
        {"coverages and ranges are spanned",
         {{3, 5, 3, 4, true}, {1, 4, 2, 3, true}, {4, 9, 5, 8, true}},
         {1, 9, 2, 8, true}},
        {"a disabled entry adds to the coverage only",
         {{3, 5, 3, 4, true}, {1, 9, 1, 9, false}},
         {1, 9, 3, 4, true}},
        {"also when it is the first one", {{1, 9, 1, 9, false}, {3, 5, 3, 4, true}}, {1, 9, 3, 4, true}},
        {"a single disabled entry", {{3, 5, 4, 5, false}}, {3, 5, 3, 3, false}},
        {"all disabled: the lowest frequency alone",
         {{3, 5, 4, 5, false}, {1, 4, 2, 3, false}, {2, 9, 2, 9, false}},
         {1, 9, 1, 1, false}},
        {"an enabled range that ends at 0 counts as none", {{1, 9, 0, 0, true}}, {1, 9, 1, 1, false}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        AntennaDataList list;
        Append(list, Covering(u"Other"_s, 0.5, 100));
        for (const Row& row : each.entries) {
            AntennaData antenna = MakeUnusualAntenna();
            antenna.minFreq = row.minFreq;
            antenna.maxFreq = row.maxFreq;
            antenna.minRange = row.minRange;
            antenna.maxRange = row.maxRange;
            antenna.enabled = row.isEnabled;
            Append(list, antenna);
        }
        list.GetAntennaByIndex(1)->name = u"First"_s;
        AntennaData expected = MakeUnusualAntenna(); // all else is as in the first entry
        expected.name = u"First"_s;
        expected.minFreq = each.result.minFreq;
        expected.maxFreq = each.result.maxFreq;
        expected.minRange = each.result.minRange;
        expected.maxRange = each.result.maxRange;
        expected.enabled = each.result.isEnabled;
        AntennaData out;
        EXPECT_TRUE(list.GetCommonAntennaByHandle(7, out));
        ExpectSame(out, expected);
    }
}

TEST(AntennaDataList, WithoutAnEntryOfTheHandleTheDescriptionIsOnlyDisabled) {
    const AntennaDataList list = ListOf({{"A", 1, 2, true, POLARISATION_LEFT, 3}});
    AntennaData out = MakeUnusualAntenna();
    out.enabled = true;
    EXPECT_FALSE(list.GetCommonAntennaByHandle(7, out));
    ExpectSame(out, MakeUnusualAntenna());
}

TEST(AntennaDataList, DescribingAnAntennaLeavesItsEntriesAsTheyAre) {
    AntennaDataList list;
    Append(list, MakeUnusualAntenna());
    AntennaData out;
    EXPECT_TRUE(list.GetCommonAntennaByHandle(7, out));
    ExpectSame(*list.GetAntennaByIndex(0), MakeUnusualAntenna());
}

// --- order ---

TEST(AntennaDataList, TwoEntriesAreSortedByCoverageAndThenByName) {
    struct Case {
        QString name;
        double minFreq;
        double maxFreq;
        QString otherName;
        double otherMinFreq;
        double otherMaxFreq;
        bool isBefore;      // the first one before the other one
        bool isOtherBefore; // and the other way round
    };
    const Case cases[] = {
        {u"A"_s, 1, 5, u"B"_s, 6, 9, true, false},
        {u"B"_s, 1, 5, u"A"_s, 6, 9, true, false},
        {u"B"_s, 1, 5, u"A"_s, 2, 6, true, false},
        {u"A"_s, 1, 5, u"B"_s, 2, 5, true, false},
        {u"B"_s, 1, 5, u"A"_s, 2, 5, true, true}, // lower start on one side, name on the other
        {u"A"_s, 1, 5, u"B"_s, 1, 6, true, false},
        {u"B"_s, 1, 5, u"A"_s, 1, 6, false, false},
        {u"A"_s, 1, 9, u"B"_s, 2, 3, false, false}, // one within the other
        {u"B"_s, 1, 9, u"A"_s, 2, 3, false, true},
        {u"A"_s, 1, 5, u"B"_s, 1, 5, true, false}, // the same coverage
        {u"a"_s, 1, 5, u"B"_s, 1, 5, false, true}, // capital letters come first
        {u"A"_s, 1, 5, u"A"_s, 1, 5, false, false},
    };
    for (const Case& each : cases) {
        const AntennaData first = Covering(each.name, each.minFreq, each.maxFreq);
        const AntennaData second = Covering(each.otherName, each.otherMinFreq, each.otherMaxFreq);
        // The sort swaps two neighbours exactly when the one behind comes before the one in front.
        const auto isSwapped = [](const AntennaData& front, const AntennaData& behind) {
            AntennaDataList list;
            Append(list, front);
            const AntennaData* const moved = Append(list, behind);
            list.SortAntennasByFrequencyRanges();
            return list.GetAntennaByIndex(0) == moved;
        };
        const auto what = [&each] {
            return each.name.toStdString() + " " + std::to_string(each.minFreq) + "-" +
                   std::to_string(each.maxFreq) + " and " + each.otherName.toStdString() + " " +
                   std::to_string(each.otherMinFreq) + "-" + std::to_string(each.otherMaxFreq);
        };
        EXPECT_EQ(isSwapped(second, first), each.isBefore) << what();
        EXPECT_EQ(isSwapped(first, second), each.isOtherBefore) << what();
    }
}

TEST(AntennaDataList, RangesDoNotCountForTheOrder) {
    AntennaDataList list;
    Append(list, Covering(u"B"_s, 5, 9))->minRange = 0.0;
    AntennaData* const low = Append(list, Covering(u"A"_s, 1, 4));
    low->minRange = low->maxRange = 100.0;
    low->enabled = false;
    list.SortAntennasByFrequencyRanges();
    EXPECT_EQ(NamesOf(list), (QStringList{u"A"_s, u"B"_s}));
}

TEST(AntennaDataList, EntriesThatNothingSeparatesKeepTheirOrder) {
    AntennaDataList list;
    for (int handle = 0; handle < 20; ++handle) {
        Append(list, Covering(u"A"_s, 1, 5))->handle = handle;
    }
    list.SortAntennasByFrequencyRanges();
    for (int handle = 0; handle < 20; ++handle) {
        EXPECT_EQ(list.GetAntennaByIndex(handle)->handle, handle);
    }
}

TEST(AntennaDataList, EveryPermutationOfCoveragesBesideOneAnotherIsSortedAlike) {
    const std::array<AntennaData, 6> antennas{Covering(u"F"_s, 1, 5),  Covering(u"E"_s, 2, 6),
                                              Covering(u"A"_s, 6, 9),  Covering(u"B"_s, 6, 9),
                                              Covering(u"D"_s, 7, 10), Covering(u"C"_s, 11, 12)};
    const QStringList sorted{u"F"_s, u"E"_s, u"A"_s, u"B"_s, u"D"_s, u"C"_s};
    std::array<std::size_t, 6> order{};
    std::iota(order.begin(), order.end(), 0U);
    do {
        AntennaDataList list;
        for (const std::size_t index : order) {
            Append(list, antennas.at(index));
        }
        list.SortAntennasByFrequencyRanges();
        ASSERT_EQ(NamesOf(list), sorted);
    } while (std::ranges::next_permutation(order).found);
}

TEST(AntennaDataList, EveryEntryIsKeptWhenCoveragesHaveNoOrder) {
    const double inf = std::numeric_limits<double>::infinity();
    // Within one another, equal, turned round, without an end, and not numbers: in every order of them.
    const std::array<AntennaData, 7> antennas{
        Covering(u"B"_s, 1, 5),      Covering(u"A"_s, 2, 5),  Covering(u"C"_s, 0, 9),
        Covering(u"D"_s, 3, 4),      Covering(u"A"_s, 9, -1), Covering(u"E"_s, NOT_A_NUMBER, NOT_A_NUMBER),
        Covering(u"F"_s, -inf, inf),
    };
    std::array<std::size_t, 7> order{};
    std::iota(order.begin(), order.end(), 0U);
    do {
        AntennaDataList list;
        for (const std::size_t index : order) {
            Append(list, antennas.at(index))->handle = static_cast<qint32>(index);
        }
        list.SortAntennasByFrequencyRanges();
        ASSERT_EQ(list.GetAntennas().size(), antennas.size());
        ASSERT_EQ(list.GetAntennaHandles(false), (std::set<long>{0, 1, 2, 3, 4, 5, 6}));
    } while (std::ranges::next_permutation(order).found);
}

TEST(AntennaDataList, HundredsOfEntriesWithoutAnOrderAreAllKept) {
    AntennaDataList list;
    for (int i = 0; i < 500; ++i) {
        const double minFreq = i % 7 == 0 ? NOT_A_NUMBER : (i * 37) % 101;
        Append(list, Covering(QString::number(i % 13), minFreq, (i * 53) % 97))->handle = i;
    }
    list.SortAntennasByFrequencyRanges();
    EXPECT_EQ(list.GetAntennaHandles(false).size(), 500U);
}

TEST(AntennaDataList, EmptyListIsSorted) {
    AntennaDataList list;
    list.SortAntennasByFrequencyRanges();
    EXPECT_TRUE(list.GetAntennas().empty());
}

// --- ranges and compasses ---

TEST(AntennaDataList, RangeThatBeginsWhereTheOneBeforeEndsBeginsOneHertzHigher) {
    struct Case {
        const char* what;
        std::vector<Entry> entries;
        QString ranges;
    };
    const Case cases[] = {
        {"adjacent", {{"A", 10, 20}, {"B", 20, 30}}, u"10-20 20.000001-30"_s},
        {"overlapping", {{"A", 10, 20}, {"B", 15, 30}}, u"10-20 15-30"_s},
        {"apart", {{"A", 10, 20}, {"B", 21, 30}}, u"10-20 21-30"_s},
        {"three in a row",
         {{"A", 10, 20}, {"B", 20, 30}, {"C", 30, 40}},
         u"10-20 20.000001-30 30.000001-40"_s},
        {"a disabled one between is passed over",
         {{"A", 10, 20}, {"B", 20, 25, false}, {"C", 20, 30}},
         u"10-20 (20-25) 20.000001-30"_s},
        {"a disabled one in front does not count", {{"A", 10, 20, false}, {"B", 20, 30}}, u"(10-20) 20-30"_s},
        {"only neighbours are compared",
         {{"A", 10, 20}, {"B", 40, 50}, {"C", 20, 30}},
         u"10-20 40-50 20-30"_s},
        {"other polarisations count as well",
         {{"A", 10, 20}, {"B", 20, 30, true, POLARISATION_RIGHT}},
         u"10-20 20.000001-30"_s},
        {"an end at 0 is none", {{"A", 0, 0}, {"B", 0, 30}}, u"0-0 0-30"_s},
        {"nor is one below 0", {{"A", -9, -5}, {"B", -5, 30}}, u"-9--5 -5-30"_s},
        {"an empty list", {}, u""_s},
    };
    for (const Case& each : cases) {
        AntennaDataList list = ListOf(each.entries);
        list.MakeAntennaRangesDisjoint();
        EXPECT_EQ(RangesOf(list), each.ranges) << each.what;
    }
}

TEST(AntennaDataList, StartupDefaultsCutRangesAndDisableRepetitions) {
    struct Case {
        const char* what;
        std::vector<Entry> entries;
        QString ranges;
    };
    const EZANPolarisation right = POLARISATION_RIGHT;
    const Case cases[] = {
        {"overlapping", {{"A", 10, 30}, {"B", 20, 40}}, u"10-20 20.000001-40"_s},
        {"adjacent", {{"A", 10, 20}, {"B", 20, 40}}, u"10-20 20.000001-40"_s},
        {"apart", {{"A", 10, 20}, {"B", 21, 40}}, u"10-20 21-40"_s},
        {"the same range", {{"A", 10, 20}, {"B", 10, 20}}, u"10-20 (10-20)"_s},
        {"the same start", {{"A", 10, 20}, {"B", 10, 30}}, u"10-10 10.000001-30"_s},
        {"another polarisation overlaps", {{"A", 10, 30}, {"B", 20, 40, true, right}}, u"10-30 20-40"_s},
        {"and repeats", {{"A", 10, 30}, {"B", 10, 30, true, right}}, u"10-30 10-30"_s},
        {"a disabled one is passed over",
         {{"A", 10, 30}, {"B", 15, 40, false}, {"C", 20, 50}},
         u"10-20 (15-40) 20.000001-50"_s},
        {"the first one counts even when it is disabled",
         {{"A", 10, 30, false}, {"B", 20, 40}},
         u"(10-20) 20.000001-40"_s},
        {"so does one that was just disabled",
         {{"A", 10, 30}, {"B", 10, 30}, {"C", 20, 40}},
         u"10-30 (10-20) 20.000001-40"_s},
        {"each one gives way to the next",
         {{"A", 10, 30}, {"B", 20, 40}, {"C", 35, 50}},
         u"10-20 20.000001-35 35.000001-50"_s},
        {"a third one of the same range repeats the second",
         {{"A", 10, 30}, {"B", 10, 30}, {"C", 10, 30}},
         u"10-30 (10-30) (10-30)"_s},
        {"one entry", {{"A", 10, 30}}, u"10-30"_s},
        {"an empty list", {}, u""_s},
    };
    for (const Case& each : cases) {
        AntennaDataList list = ListOf(each.entries);
        list.SetStartupDefaults(false, false);
        EXPECT_EQ(RangesOf(list), each.ranges) << each.what;
    }
}

TEST(AntennaDataList, StartupDefaultsSetTheCompassesWhenOneOfTheFlagsIsSet) {
    const std::vector<Entry> entries{{"PX122", 1, 2, false},  // the first one, although it is disabled
                                     {"PX104_L", 3, 4},       // never
                                     {"xPX112", 5, 6},        // never
                                     {"px104", 7, 8},         // another name
                                     {"PX122", 9, 10, false}, // passed over
                                     {"PX110", 11, 12},       // an ordinary one
                                     {"PX110", 11, 12}};      // a repetition
    const std::vector<bool> isTouched{true, false, false, true, false, true, true};
    for (const bool compassA : {true, false}) {
        for (const bool compassB : {true, false}) {
            for (const bool before : {true, false}) {
                AntennaDataList list = ListOf(entries);
                for (const auto& antenna : list.GetAntennas()) {
                    antenna->compassEnabled = before;
                }
                list.SetStartupDefaults(compassA, compassB);
                for (std::size_t i = 0; i < entries.size(); ++i) {
                    EXPECT_EQ(list.GetAntennas()[i]->compassEnabled,
                              isTouched[i] ? compassA || compassB : before)
                        << "entry " << i << ", flags " << compassA << compassB;
                }
            }
        }
    }
}

TEST(AntennaDataList, FirstEntryOfAnExemptFamilyKeepsItsCompass) {
    for (const char* const name : {"PX104", "PX112_H"}) {
        AntennaDataList list = ListOf({{name, 1, 2}});
        list.SetStartupDefaults(true, true);
        EXPECT_FALSE(list.GetAntennaByIndex(0)->compassEnabled) << name;
    }
}

// --- trace ---

TEST(AntennaDataList, OneLineIsTracedForEachEntry) {
    AntennaDataList list;
    AntennaData antenna = MakeUnusualAntenna();
    antenna.name = u"PX%1 (%8)"_s;
    antenna.converterTypeName = u"RCV%2"_s;
    Append(list, antenna);
    AntennaData other = Covering(u""_s, 20000001, 1234567.5);
    other.minRange = 0.25;
    other.maxRange = NOT_A_NUMBER;
    Append(list, other);
    TraceLines trace;
    list.PrintAntennaTrace();
    ASSERT_EQ(trace.lines.size(), 2);
    const QString texts[] = {
        u"Antenna name=PX%1 (%8) handle=7 enabled=0 frequency=1e+06-3e+07 range=1.5e+06-2.5e+07 (at converter RCV%2)"_s,
        u"Antenna name= handle=-1 enabled=1 frequency=2e+07-1.23457e+06 range=0.25-nan (at converter )"_s,
    };
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(trace.lines[i].startsWith(u"devicecontrol\\directionfinder\\zancommon\\antennadata("_s))
            << trace.lines[i].toStdString();
        EXPECT_EQ(trace.lines[i].section(u"): "_s, 1), texts[i]);
    }
}

TEST(AntennaDataList, NothingIsTracedWithoutItsBit) {
    AntennaDataList list = ListOf({{"A", 1, 2}});
    TraceLines trace;
    ErrorHandler::Instance().SetTraceMask(~TraceBit::INFORMATION);
    list.PrintAntennaTrace();
    EXPECT_TRUE(trace.lines.isEmpty());
    ErrorHandler::Instance().SetTraceMask(TraceBit::INFORMATION);
    list.PrintAntennaTrace();
    EXPECT_EQ(trace.lines.size(), 1);
    trace.lines.clear();
    AntennaDataList().PrintAntennaTrace();
    EXPECT_TRUE(trace.lines.isEmpty());
}

} // namespace

#include "zancommon/tcfrequencylistpersistency.h"

#include "support/observers.h"
#include "support/printing.h"
#include "support/storedsettings.h"
#include "support/tracelines.h"
#include "valueframework/tree.h"
#include "valueframework/valueaccess.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using KvZANCommon::TCFrequencyListPersistency;
using List = ValueTrafficControlFrequencyList;
using ZANPlatform::GetOrCreateValue;

void PrintTo(const TrafficControlFrequency& entry, std::ostream* out) {
    *out << entry.GetChannelID() << ' ' << std::fixed << entry.GetFrequency() << ' '
         << entry.IsAlarmChannel();
}

namespace {

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr auto VIEW = ICfg::View::Outputs;
using Entries = std::vector<TrafficControlFrequency>;

TrafficControlFrequency Entry(int channelID, double frequency, bool isAlarmChannel = false) {
    TrafficControlFrequency entry;
    entry.SetChannelID(channelID);
    entry.SetFrequency(frequency);
    entry.SetIsAlarmChannel(isAlarmChannel);
    return entry;
}

Entries NumberedEntries(int count) {
    Entries entries;
    for (int i = 0; i < count; ++i) {
        entries.push_back(Entry(100 + i, 118e6 + i * 25e3, i % 2 == 1));
    }
    return entries;
}

class TCFrequencyListPersistencyTest : public testing::Test {
protected:
    ~TCFrequencyListPersistencyTest() override { Tree::Instance()->Clear(); }

    void SetList(const Entries& entries) const {
        list->Clear(nullptr);
        for (const TrafficControlFrequency& entry : entries) {
            list->PushBack(entry, nullptr);
        }
    }
    void MakePersistent(const Entries& entries) const {
        SetList(entries);
        TCFrequencyListPersistency(list, u"Application"_s, VIEW).MakePersistent();
    }
    /// What a list with one entry holds afterwards.
    [[nodiscard]] Entries Restore(const QString& name = u"Application"_s) const {
        SetList({PRESENT});
        TCFrequencyListPersistency(list, name, VIEW).Restore();
        return list->GetElements();
    }
    static QString Stored(const QString& key) {
        return CfgCenter::GetAppCfg(VIEW).GetString(u"TrafficControlFrequencies/"_s + key, u"(none)"_s);
    }

    const TrafficControlFrequency PRESENT = Entry(-5, 1.5, true);
    StoredSettings settings;
    TraceLines trace;
    List* list = GetOrCreateValue<List>(u"/ZANCONTROL/Frequencies"_s);
};

// --- saving ---

TEST_F(TCFrequencyListPersistencyTest, ListIsOnDiskWhenMakePersistentReturns) {
    CodeObserver observer;
    MakePersistent({Entry(3, 118025000.9), Entry(-1, 0.0, true)});
    list->AddObserver(&observer);
    TCFrequencyListPersistency(list, u"Application"_s, VIEW).MakePersistent();
    EXPECT_EQ(settings.Read(), uR"([TrafficControlFrequencies]
TCFrequencyCount=2

[TrafficControlFrequencies/TCFrequency_0]
Alarm=0
ChannelID=3
Frequency=118025000

[TrafficControlFrequencies/TCFrequency_1]
Alarm=1
ChannelID=-1
Frequency=0
)"_s);
    EXPECT_TRUE(observer.codes.empty());
    EXPECT_TRUE(trace.lines.isEmpty());
}

TEST_F(TCFrequencyListPersistencyTest, EntriesAreNumberedWithoutFill) {
    MakePersistent(NumberedEntries(11));
    EXPECT_EQ(Stored(u"TCFrequency_0/ChannelID"_s), u"100"_s);
    EXPECT_EQ(Stored(u"TCFrequency_9/ChannelID"_s), u"109"_s);
    EXPECT_EQ(Stored(u"TCFrequency_10/ChannelID"_s), u"110"_s);
    EXPECT_EQ(Stored(u"TCFrequency_11/ChannelID"_s), u"(none)"_s);
}

TEST_F(TCFrequencyListPersistencyTest, EntriesOfALongerListBeforeStayInTheFileAndAreNotRead) {
    MakePersistent(NumberedEntries(5));
    const Entries two = {Entry(1, 1e6), Entry(2, 2e6)};
    MakePersistent(two);
    settings.Reopen();
    EXPECT_EQ(Stored(u"TCFrequencyCount"_s), u"2"_s);
    for (const int index : {2, 3, 4}) {
        EXPECT_EQ(Stored(u"TCFrequency_%1/ChannelID"_s.arg(index)), QString::number(100 + index));
    }
    EXPECT_EQ(Restore(), two);
}

TEST_F(TCFrequencyListPersistencyTest, EmptyListIsACountOfZero) {
    MakePersistent({});
    EXPECT_EQ(settings.Read(), u"[TrafficControlFrequencies]\nTCFrequencyCount=0\n"_s);
}

// --- the way there and back ---

TEST_F(TCFrequencyListPersistencyTest, NextRunFindsTheListButNoFractions) {
    constexpr int LOWEST = std::numeric_limits<int>::min();
    constexpr int HIGHEST = std::numeric_limits<int>::max();
    const std::pair<TrafficControlFrequency, TrafficControlFrequency> cases[] = {
        {Entry(1, 123456789.9), Entry(1, 123456789.0)},
        {Entry(2, 2147483648.0, true), Entry(2, 2147483648.0, true)},
        {Entry(3, 26.5e9), Entry(3, 26.5e9)},
        {Entry(LOWEST, -1.9), Entry(LOWEST, -1.0)},
        {Entry(HIGHEST, 0.9, true), Entry(HIGHEST, 0.0, true)},
        {Entry(0, 0.0), Entry(0, 0.0)},
        {Entry(4, NOT_A_NUMBER), Entry(4, 0.0)},
        {Entry(5, INF), Entry(5, 9223372036854775807.0)},
        {Entry(6, -1e300), Entry(6, -9223372036854775808.0)},
        {Entry(1, 1.0, true), Entry(1, 1.0, true)},
    };
    Entries stored;
    Entries restored;
    for (const auto& [before, after] : cases) {
        stored.push_back(before);
        restored.push_back(after);
    }
    MakePersistent(stored);
    settings.Reopen();
    EXPECT_EQ(Restore(), restored);
    EXPECT_TRUE(trace.lines.isEmpty());
}

// --- restoring ---

TEST_F(TCFrequencyListPersistencyTest, ObserversAreNotifiedOnceOfTheWholeNewList) {
    MakePersistent(NumberedEntries(3));
    SetList({PRESENT});
    CodeObserver codes;
    std::vector<std::size_t> sizes;
    FunctionObserver sizeObserver([&](Observable*, TChangeCode) { sizes.push_back(list->GetCount()); });
    list->AddObserver(&codes);
    list->AddObserver(&sizeObserver);
    TCFrequencyListPersistency(list, u"Application"_s, VIEW).Restore();
    EXPECT_EQ(codes.codes, std::vector<TChangeCode>{TChangeCode{7}});
    EXPECT_EQ(sizes, std::vector<std::size_t>{3});
    EXPECT_FALSE(list->IsTransactionActive());
}

TEST_F(TCFrequencyListPersistencyTest, WithoutStoredEntriesTheListStaysAsItIs) {
    struct Case {
        const char* text;
        const char* countAfterwards;
        bool isReported;
    };
    const Case cases[] = {
        {"", "0", false}, // a missing count is written
        {"TCFrequencyCount=0\n", "0", false},
        {"TCFrequencyCount=-1\n", "-1", false},
        {"TCFrequencyCount=-9223372036854775808\n", "-9223372036854775808", false},
        {"TCFrequencyCount=many\n", "0", true},
        {"TCFrequencyCount=\n", "0", true},
        {"TCFrequencyCount=1.5\n", "0", true},
        {"TCFrequencyCount=9223372036854775808\n", "0", true},
    };
    CodeObserver observer;
    for (const Case& each : cases) {
        SCOPED_TRACE(each.text);
        settings.Write(QByteArray("[TrafficControlFrequencies]\n") + each.text +
                       "\n[TrafficControlFrequencies/TCFrequency_0]\nChannelID=1\n");
        trace.lines.clear();
        SetList({PRESENT});
        list->AddObserver(&observer);
        TCFrequencyListPersistency(list, u"Application"_s, VIEW).Restore();
        list->DeleteObserver(&observer);
        EXPECT_EQ(list->GetElements(), Entries{PRESENT});
        EXPECT_EQ(Stored(u"TCFrequencyCount"_s), QLatin1StringView(each.countAfterwards));
        EXPECT_EQ(!trace.lines.isEmpty(), each.isReported);
    }
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(TCFrequencyListPersistencyTest, StoredDefaultsOfTheProbingReadsAreCountsLikeOthers) {
    settings.Write("[TrafficControlFrequencies]\nTCFrequencyCount=1\n"
                   "[TrafficControlFrequencies/TCFrequency_0]\nChannelID=8\nFrequency=9\nAlarm=true\n");
    EXPECT_EQ(Restore(), Entries{Entry(8, 9.0, true)});
    EXPECT_EQ(Stored(u"TCFrequencyCount"_s), u"1"_s);
}

TEST_F(TCFrequencyListPersistencyTest, WhatAnEntryLacksIsZero) {
    settings.Write("[TrafficControlFrequencies]\nTCFrequencyCount=4\n"
                   "[TrafficControlFrequencies/TCFrequency_0]\nChannelID=8\nFrequency=9\nAlarm=1\n"
                   "[TrafficControlFrequencies/TCFrequency_1]\nChannelID=\n"
                   "[TrafficControlFrequencies/TCFrequency_2]\nFrequency=7\n"
                   "[TrafficControlFrequencies/TCFrequency_3]\nAlarm=1\n");
    EXPECT_EQ(Restore(), (Entries{Entry(8, 9.0, true), Entry(0, 0.0), Entry(0, 7.0), Entry(0, 0.0, true)}));
}

TEST_F(TCFrequencyListPersistencyTest, EntryWithNoneOfItsKeysIsMissingAndLeftOut) {
    settings.Write("[TrafficControlFrequencies]\nTCFrequencyCount=4\n"
                   "[TrafficControlFrequencies/TCFrequency_0]\nChannelID=1\nFrequency=10\nAlarm=1\n"
                   "[TrafficControlFrequencies/TCFrequency_2]\nChannelID=3\nFrequency=30\nAlarm=0\n"
                   "[TrafficControlFrequencies/TCFrequency_3]\nNote=to be done\n"
                   "[TrafficControlFrequencies/TCFrequency_3/Below]\nChannelID=4\n");
    EXPECT_EQ(Restore(), (Entries{Entry(1, 10.0, true), Entry(3, 30.0)}));
}

TEST_F(TCFrequencyListPersistencyTest, EntriesComeInTheOrderOfTheirNumbersWhateverElseIsThere) {
    settings.Write("[TrafficControlFrequencies]\nTCFrequencyCount=11\n"
                   "[TrafficControlFrequencies/TCFrequency_10]\nChannelID=10\n"
                   "[TrafficControlFrequencies/TCFrequency_11]\nChannelID=11\n"
                   "[TrafficControlFrequencies/TCFrequency_2]\nChannelID=2\n"
                   "[TrafficControlFrequencies/TCFrequency_03]\nChannelID=3\n"
                   "[TrafficControlFrequencies/TCFrequency_]\nChannelID=4\n"
                   "[TrafficControlFrequencies/TCFrequency_-5]\nChannelID=5\n"
                   "[TrafficControlFrequencies/Frequency_6]\nChannelID=6\n");
    EXPECT_EQ(Restore(), (Entries{Entry(2, 0.0), Entry(10, 0.0)}));
}

TEST_F(TCFrequencyListPersistencyTest, EntriesAreNamedAsTheyAreRestored) {
    const auto getNames = [] {
        return TCFrequencyListPersistency(nullptr, u"Application"_s, VIEW).GetEntryNames();
    };
    settings.Write("");
    EXPECT_EQ(getNames(), QStringList());
    settings.Write("[TrafficControlFrequencies]\nTCFrequencyCount=11\n"
                   "[TrafficControlFrequencies/TCFrequency_10]\nAlarm=1\n"
                   "[TrafficControlFrequencies/TCFrequency_2]\nName=no key of an entry\n"
                   "[TrafficControlFrequencies/TCFrequency_9]\nChannelID=1\n"
                   "[TrafficControlFrequencies/TCFrequency_11]\nChannelID=1\n");
    EXPECT_EQ(getNames(), (QStringList{u"TrafficControlFrequencies/TCFrequency_9"_s,
                                       u"TrafficControlFrequencies/TCFrequency_10"_s}));
    EXPECT_EQ(getNames().constFirst(), TCFrequencyListPersistency::GetEntryName(9));
}

TEST_F(TCFrequencyListPersistencyTest, UnreadableContentIsZeroAndReported) {
    struct Case {
        const char* text;
        TrafficControlFrequency restored;
    };
    const Case cases[] = {
        {"ChannelID=first\nFrequency=9\nAlarm=1\n", Entry(0, 9.0, true)},
        {"ChannelID=2147483648\nFrequency=9\nAlarm=1\n", Entry(0, 9.0, true)},
        {"ChannelID=-4294967295\nFrequency=9\nAlarm=0\n", Entry(0, 9.0)},
        {"ChannelID=8\nFrequency=118.025\nAlarm=1\n", Entry(8, 0.0, true)},
        {"ChannelID=8\nFrequency=9\nAlarm=2\n", Entry(8, 9.0)},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.text);
        settings.Write(QByteArray("[TrafficControlFrequencies]\nTCFrequencyCount=1\n"
                                  "[TrafficControlFrequencies/TCFrequency_0]\n") +
                       each.text);
        trace.lines.clear();
        EXPECT_EQ(Restore(), Entries{each.restored});
        EXPECT_EQ(trace.lines.size(), 1);
    }
}

TEST_F(TCFrequencyListPersistencyTest, AsManyEntriesAreReadAsThereAreWhateverTheCount) {
    const Entries three = NumberedEntries(3);
    for (const QByteArray count : {"3", "2000000000", "9223372036854775807"}) {
        MakePersistent(three);
        const QByteArray stored = settings.Read().toUtf8();
        settings.Write(QByteArray(stored).replace("TCFrequencyCount=3", "TCFrequencyCount=" + count));
        EXPECT_EQ(Restore(), three);
    }
}

TEST_F(TCFrequencyListPersistencyTest, LongListIsReadToItsEnd) {
    constexpr int COUNT = 100001;
    QByteArray text = "[TrafficControlFrequencies]\nTCFrequencyCount=100001\n";
    Entries many;
    for (int i = 0; i < COUNT; ++i) {
        const QByteArray number = QByteArray::number(i);
        text += "[TrafficControlFrequencies/TCFrequency_" + number + "]\nChannelID=" + number + '\n';
        many.push_back(Entry(i, 0.0));
    }
    settings.Write(text);
    EXPECT_EQ(Restore(), many);
}

TEST_F(TCFrequencyListPersistencyTest, RestoreReadsWithoutWriting) {
    const QByteArray text = "; by hand\n[TrafficControlFrequencies]\nTCFrequencyCount=2\n"
                            "[TrafficControlFrequencies/TCFrequency_1]\nAlarm=1\n";
    settings.Write(text); // the comment would not survive a write
    EXPECT_EQ(Restore().size(), 1U);
    EXPECT_EQ(settings.CloseAndRead(), QString::fromUtf8(text));
}

// --- what is not there ---

TEST_F(TCFrequencyListPersistencyTest, WithoutAListNothingHappens) {
    TCFrequencyListPersistency persistency(nullptr, u"Application"_s, VIEW);
    persistency.MakePersistent();
    persistency.Restore();
    EXPECT_EQ(settings.CloseAndRead(), QString());
}

TEST_F(TCFrequencyListPersistencyTest, ListThatHasGoneFromTheTreeIsAsNone) {
    MakePersistent(NumberedEntries(2));
    const QString text = settings.Read();
    TCFrequencyListPersistency persistency(list, u"Application"_s, VIEW);
    Tree::Instance()->Remove(list);
    persistency.Restore();
    persistency.MakePersistent();
    EXPECT_EQ(settings.CloseAndRead(), text);
}

TEST_F(TCFrequencyListPersistencyTest, ObserverMayRemoveTheListWhenItIsNotified) {
    MakePersistent(NumberedEntries(2));
    FunctionObserver remover([&](Observable*, TChangeCode code) {
        if (code != TChangeCode::GoingAway) {
            Tree::Instance()->Remove(list);
        }
    });
    list->AddObserver(&remover);
    TCFrequencyListPersistency persistency(list, u"Application"_s, VIEW);
    persistency.Restore();
    EXPECT_FALSE(Tree::Instance()->GetValue(u"/ZANCONTROL/Frequencies"_s));
    persistency.Restore();
}

TEST_F(TCFrequencyListPersistencyTest, WithoutAFileNothingHappens) {
    CodeObserver observer;
    for (const QString& name : {QString(), u"../Application"_s, u"a/b"_s}) {
        TCFrequencyListPersistency(list, name, VIEW).MakePersistent();
        EXPECT_EQ(Restore(name), Entries{PRESENT});
    }
    EXPECT_EQ(settings.CloseAndRead(), QString());
    MakePersistent({PRESENT}); // no directory is set any more
    EXPECT_EQ(Restore(), Entries{PRESENT});
}

TEST_F(TCFrequencyListPersistencyTest, NameChoosesTheFileAndCopiesKeepIt) {
    SetList(NumberedEntries(2));
    TCFrequencyListPersistency first(list, u"First"_s, VIEW);
    TCFrequencyListPersistency second(nullptr, u"Second"_s, VIEW);
    first.MakePersistent();
    SetList(NumberedEntries(3));
    second = TCFrequencyListPersistency(list, u"Second"_s, VIEW);
    second.MakePersistent();
    settings.Reopen();
    TCFrequencyListPersistency copy = first;
    copy.Restore();
    EXPECT_EQ(list->GetElements(), NumberedEntries(2));
    second.Restore();
    EXPECT_EQ(list->GetElements(), NumberedEntries(3));
    EXPECT_EQ(settings.Read(), QString());
}

} // namespace

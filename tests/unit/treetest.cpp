#include "valueframework/tree.h"

#include "support/observers.h"
#include "support/printing.h"
#include "support/treevalues.h"
#include "valueframework/valuedescriptor.h"
#include "valueframework/valuetypes.h"

#include <QElapsedTimer>
#include <QTextStream>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;
using ZANPlatform::ObservablePtr;

namespace {

template <class T = ValueInt>
std::unique_ptr<ValueBase> Named(const QString& name) {
    auto value = std::make_unique<T>();
    value->SetName(name, nullptr);
    return value;
}

QStringList Names(const Node* node) {
    QStringList names;
    for (const ITreeItem* item : node->GetTreeItems()) {
        names.append(item->GetName());
    }
    return names;
}

class TreeTest : public testing::Test {
protected:
    ~TreeTest() override { tree.Clear(); }

    /// Inserts a value at a full path. Null when it was refused.
    template <class T = ValueInt>
    static T* Insert(const QString& path) {
        return InsertInTree<T>(path);
    }
    [[nodiscard]] QString Dumped() const {
        QString text;
        QTextStream out(&text);
        tree.Dump(out);
        return text;
    }
    [[nodiscard]] bool Stands(const QString& path) const { return tree.GetValue(path) || tree.GetNode(path); }

    Tree& tree = *Tree::Instance();
};

// --- finding ---

TEST_F(TreeTest, ThereIsOneTree) {
    EXPECT_EQ(Tree::Instance(), &tree);
}

TEST_F(TreeTest, AValueIsFoundByItsFullPath) {
    ValueInt* value = Insert(u"/ZANServer/Res/DfR/Azimuth"_s);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(tree.GetValue(u"/ZANServer/Res/DfR/Azimuth"_s), value);
    EXPECT_EQ(value->GetPath(), u"/ZANServer/Res/DfR/Azimuth"_s);
    EXPECT_EQ(value->GetName(), u"Azimuth"_s);
    EXPECT_EQ(value->GetParent(), tree.GetNode(u"/ZANServer/Res/DfR"_s));
    EXPECT_EQ(tree.GetValueCount(), 1);
}

TEST_F(TreeTest, AnythingButTheExactPathFindsNothing) {
    Insert(u"/A/B/v"_s);
    for (const QString& path : {QString(), u"/"_s, u"/A"_s, u"/A/B"_s, u"/A/B/"_s, u"/A/B/V"_s, u"/a/b/v"_s,
                                u"A/B/v"_s, u"/A/B/v/"_s, u"//A/B/v"_s, u"/A//B/v"_s, u"/A/B/v/w"_s,
                                u" /A/B/v"_s, u"/A/B/v "_s, u"/A/./B/v"_s, u"v"_s}) {
        EXPECT_EQ(tree.GetValue(path), nullptr) << path.toStdString();
    }
}

TEST_F(TreeTest, FindChecksTheTypeByTheTypeItself) {
    Insert<ValueNumericInt>(u"/A/v"_s);
    EXPECT_NE(tree.Find<ValueNumericInt>(u"/A/v"_s), nullptr);
    EXPECT_NE(tree.Find<ValueInt>(u"/A/v"_s), nullptr); // a number with a range is a number
    EXPECT_NE(tree.Find<ValueBase>(u"/A/v"_s), nullptr);
    EXPECT_EQ(tree.Find<ValueBool>(u"/A/v"_s), nullptr);
    EXPECT_EQ(tree.Find<ValueNumericDouble>(u"/A/v"_s), nullptr);
    EXPECT_EQ(tree.Find<ValueSelection>(u"/A/v"_s), nullptr);
    EXPECT_EQ(tree.Find<ValueInt>(u"/A/w"_s), nullptr);
    Insert<ValueInt>(u"/A/plain"_s);
    EXPECT_EQ(tree.Find<ValueNumericInt>(u"/A/plain"_s), nullptr);
}

TEST_F(TreeTest, ANodeIsFoundWithAndWithoutOneSlashAtTheEnd) {
    Node* node = tree.CreateNode(u"/A/B"_s);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(tree.GetNode(u"/A/B"_s), node);
    EXPECT_EQ(tree.GetNode(u"/A/B/"_s), node);
    EXPECT_EQ(node->GetPath(), u"/A/B"_s);
    EXPECT_EQ(node->GetName(), u"B"_s);
    for (const QString& path : {QString(), u"/A/B//"_s, u"A/B"_s, u"//"_s, u"/A/"_s + u"/B"_s, u"/C"_s}) {
        EXPECT_EQ(tree.GetNode(path), nullptr) << path.toStdString();
    }
}

TEST_F(TreeTest, WhatIsBelowANodeHasOnePathWhetherTheNodesEndsWithASlashOrNot) {
    EXPECT_EQ(Tree::PathBelow(u"/A"_s, u"/B/C"_s), u"/A/B/C"_s);
    EXPECT_EQ(Tree::PathBelow(u"/A/"_s, u"/B/C"_s), u"/A/B/C"_s);
    EXPECT_EQ(Tree::PathBelow(u"/"_s, u"/B"_s), u"/B"_s);
    EXPECT_EQ(Tree::PathBelow({}, u"/B"_s), u"/B"_s);
}

TEST_F(TreeTest, TheRootIsTheNodeOfASingleSlash) {
    Node* root = tree.GetNode(u"/"_s);
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->GetParent(), nullptr);
    EXPECT_EQ(tree.CreateNode(u"/"_s), root);
    EXPECT_EQ(Insert(u"/v"_s)->GetParent(), root);
    EXPECT_EQ(tree.CreateNode(u"/A"_s)->GetParent(), root);
}

// --- inserting ---

TEST_F(TreeTest, ChildrenKeepTheOrderOfInsertion) {
    Insert(u"/A/c"_s);
    tree.CreateNode(u"/A/a"_s);
    Insert(u"/A/b"_s);
    Insert(u"/A/a/x"_s);
    Node* node = tree.GetNode(u"/A"_s);
    EXPECT_EQ(Names(node), (QStringList{u"c"_s, u"a"_s, u"b"_s}));
    tree.Remove(tree.GetNode(u"/A/a"_s));
    EXPECT_EQ(Names(node), (QStringList{u"c"_s, u"b"_s}));
    tree.CreateNode(u"/A/a"_s);
    EXPECT_EQ(Names(node), (QStringList{u"c"_s, u"b"_s, u"a"_s}));
    tree.Remove(tree.GetValue(u"/A/c"_s));
    tree.Remove(tree.GetNode(u"/A/a"_s));
    EXPECT_EQ(Names(node), QStringList{u"b"_s});
    tree.Remove(tree.GetValue(u"/A/b"_s));
    EXPECT_EQ(Names(node), QStringList{});
    Insert(u"/A/d"_s);
    EXPECT_EQ(Names(node), QStringList{u"d"_s});
}

TEST_F(TreeTest, InsertingMakesTheMissingNodesOnTheWay) {
    Insert(u"/A/B/C/v"_s);
    EXPECT_EQ(Names(tree.GetNode(u"/"_s)), QStringList{u"A"_s});
    EXPECT_EQ(Names(tree.GetNode(u"/A"_s)), QStringList{u"B"_s});
    EXPECT_EQ(Names(tree.GetNode(u"/A/B"_s)), QStringList{u"C"_s});
    EXPECT_EQ(Names(tree.GetNode(u"/A/B/C"_s)), QStringList{u"v"_s});
}

TEST_F(TreeTest, TheParentPathMayEndWithASlash) {
    EXPECT_NE(tree.InsertValue(u"/A/"_s, Named(u"v"_s)), nullptr);
    EXPECT_NE(tree.InsertValue(u"/A"_s, Named(u"w"_s)), nullptr);
    EXPECT_EQ(Names(tree.GetNode(u"/A"_s)), (QStringList{u"v"_s, u"w"_s}));
}

TEST_F(TreeTest, APathThatIsNoPathIsRefusedAndMakesNothing) {
    for (const QString& parent : {QString(), u""_s, u"A"_s, u"A/B"_s, u"//"_s, u"/A//"_s, u"//A"_s,
                                  u"/A//B"_s, u"/A/B//"_s, u" /A"_s}) {
        std::unique_ptr<ValueBase> value = Named(u"v"_s);
        EXPECT_EQ(tree.InsertValue(parent, std::move(value)), nullptr) << parent.toStdString();
        EXPECT_NE(value, nullptr) << "the caller keeps what is refused";
        EXPECT_EQ(value->GetParent(), nullptr);
        EXPECT_TRUE(value->GetPath().isEmpty());
    }
    EXPECT_EQ(tree.GetValueCount(), 0);
}

TEST_F(TreeTest, ANodePathThatIsNoPathIsRefused) {
    for (const QString& path :
         {QString(), u""_s, u"//"_s, u"///"_s, u"A//B"_s, u"/A//B"_s, u"//A"_s, u"/A//"_s}) {
        EXPECT_EQ(tree.CreateNode(path), nullptr) << path.toStdString();
    }
    EXPECT_EQ(Dumped(), QString());
}

TEST_F(TreeTest, AValueWithoutANameOrWithoutAValueIsRefused) {
    EXPECT_EQ(tree.InsertValue(u"/A"_s, std::make_unique<ValueInt>()), nullptr);
    EXPECT_EQ(tree.InsertValue(u"/A"_s, nullptr), nullptr);
    EXPECT_EQ(Dumped(), QString());
}

TEST_F(TreeTest, ATakenNameIsRefusedWhateverIsThere) {
    ValueInt* value = Insert(u"/A/taken"_s);
    tree.CreateNode(u"/A/node"_s);
    EXPECT_EQ(Insert<ValueInt>(u"/A/taken"_s), nullptr);  // value over value of the same type
    EXPECT_EQ(Insert<ValueBool>(u"/A/taken"_s), nullptr); // value over value of another type
    EXPECT_EQ(Insert(u"/A/node"_s), nullptr);             // value over node
    EXPECT_EQ(tree.CreateNode(u"/A/taken"_s), nullptr);   // node over value
    EXPECT_EQ(tree.GetValue(u"/A/taken"_s), value);
    EXPECT_EQ(Names(tree.GetNode(u"/A"_s)), (QStringList{u"taken"_s, u"node"_s}));
}

TEST_F(TreeTest, NothingIsInsertedBelowAValue) {
    Insert(u"/A/v"_s);
    EXPECT_EQ(Insert(u"/A/v/w"_s), nullptr);
    EXPECT_EQ(Insert(u"/A/v/B/C/w"_s), nullptr);
    EXPECT_EQ(tree.CreateNode(u"/A/v/B"_s), nullptr);
    EXPECT_EQ(Dumped(), u"/A\tNode\t\t0\n/A/v\tInt\t0\t0\n"_s);
}

TEST_F(TreeTest, AnExistingNodeIsReturnedAsItIs) {
    Node* node = tree.CreateNode(u"/A/B"_s);
    Insert(u"/A/B/v"_s);
    EXPECT_EQ(tree.CreateNode(u"/A/B"_s), node);
    EXPECT_EQ(tree.CreateNode(u"/A/B/"_s), node);
    EXPECT_EQ(Names(node), QStringList{u"v"_s});
}

TEST_F(TreeTest, ANodeKnowsTheDescriptorThatItWasMadeFromAndThoseAboveDoNot) {
    const ValueDescriptor descriptor(u"/A/B"_s, MakeDefault::Nothing());
    Node* node = tree.CreateNode(u"/A/B"_s, &descriptor);
    EXPECT_EQ(node->GetDescriptor(), &descriptor);
    EXPECT_EQ(node->GetParent()->GetDescriptor(), nullptr);
}

TEST_F(TreeTest, NamesMayHoldAnythingButASlash) {
    for (const QString& name : {u" "_s, u"."_s, u".."_s, u"a b"_s, u"%1"_s, u"\u00e4\U0001F4E1"_s, u"a\0b"_s,
                                u"a\nb"_s, u"\\"_s, u"\""_s}) {
        ValueBase* value = tree.InsertValue(u"/A"_s, Named(name));
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(tree.GetValue(u"/A/"_s + name), value);
        EXPECT_EQ(value->GetName(), name);
    }
}

// --- limits ---

TEST_F(TreeTest, ThereAreAsManyLevelsAsStatedAndNotOneMore) {
    const QString deepest = u"/x"_s.repeated(Tree::MAX_LEVELS);
    EXPECT_EQ(Insert(deepest + u"/v"_s), nullptr);
    EXPECT_EQ(tree.CreateNode(deepest + u"/x"_s), nullptr);
    EXPECT_EQ(Dumped(), QString()) << "a refused path leaves no nodes behind";

    EXPECT_NE(tree.CreateNode(deepest), nullptr);
    EXPECT_NE(tree.CreateNode(deepest + u'/'), nullptr);
    EXPECT_EQ(Insert(deepest + u"/v"_s), nullptr);
    ValueInt* value = Insert(deepest.chopped(2) + u"/v"_s);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->GetPath().count(u'/'), Tree::MAX_LEVELS);
    EXPECT_EQ(tree.GetValue(value->GetPath()), value);
}

TEST_F(TreeTest, TenThousandLevelsAreRefused) {
    const QString path = u"/x"_s.repeated(10'000);
    EXPECT_EQ(tree.CreateNode(path), nullptr);
    EXPECT_EQ(Insert(path + u"/v"_s), nullptr);
    EXPECT_EQ(tree.GetValue(path), nullptr);
    EXPECT_EQ(tree.GetNode(path), nullptr);
    EXPECT_EQ(Dumped(), QString());
}

TEST_F(TreeTest, ANameOfAMegabyteIsKept) {
    const QString name(1'000'000, u'n');
    ValueInt* value = Insert(u"/A/"_s + name);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(tree.GetValue(u"/A/"_s + name), value);
    EXPECT_EQ(tree.GetValue(u"/A/"_s + name.chopped(1)), nullptr);
    EXPECT_TRUE(value->SetName(name + u'x', nullptr));
    EXPECT_EQ(tree.GetValue(u"/A/"_s + name + u'x'), value);
}

TEST_F(TreeTest, AHundredThousandValuesUnderOneNodeComeAndGoQuickly) {
    // Generous for a slow machine under a sanitizer; a search through all of them for each would take far
    // longer.
    constexpr qint64 LIMIT_MS = 60'000;
    constexpr int COUNT = 100'000;
    QElapsedTimer time;
    time.start();
    CodeObserver observer;
    for (int i = 0; i < COUNT; ++i) {
        Insert(u"/A/v"_s + QString::number(i))->AddObserver(&observer);
    }
    EXPECT_EQ(tree.GetValueCount(), COUNT);
    const QList<ITreeItem*> items = tree.GetNode(u"/A"_s)->GetTreeItems();
    ASSERT_EQ(items.size(), COUNT);
    EXPECT_EQ(items[COUNT - 1]->GetName(), u"v99999"_s);
    // From the middle outwards one by one, and the rest with their node.
    for (int i = 0; i < COUNT / 4; ++i) {
        EXPECT_TRUE(tree.Remove(items[COUNT / 2 - 1 - i]));
        EXPECT_TRUE(tree.Remove(items[COUNT / 2 + i]));
    }
    EXPECT_EQ(tree.GetValueCount(), COUNT / 2);
    EXPECT_TRUE(tree.Remove(tree.GetNode(u"/A"_s)));
    EXPECT_EQ(tree.GetValueCount(), 0);
    EXPECT_EQ(observer.codes.size(), static_cast<std::size_t>(COUNT));
    EXPECT_LT(time.elapsed(), LIMIT_MS);
}

// --- renaming ---

TEST_F(TreeTest, ARenamedValueIsFoundUnderItsNewPathAndKeepsItsPlace) {
    ValueInt* value = Insert(u"/A/v"_s);
    Insert(u"/A/w"_s);
    CodeObserver observer;
    value->AddObserver(&observer);
    EXPECT_TRUE(value->SetName(u"x"_s, nullptr));
    EXPECT_EQ(value->GetName(), u"x"_s);
    EXPECT_EQ(value->GetPath(), u"/A/x"_s);
    EXPECT_EQ(tree.GetValue(u"/A/x"_s), value);
    EXPECT_EQ(tree.GetValue(u"/A/v"_s), nullptr);
    EXPECT_EQ(Names(tree.GetNode(u"/A"_s)), (QStringList{u"x"_s, u"w"_s}));
    EXPECT_EQ(observer.codes, std::vector{TChangeCode::Changed});
    EXPECT_NE(Insert(u"/A/v"_s), nullptr) << "the old name is free again";
}

TEST_F(TreeTest, ANewNameThatIsTakenOrNoNameIsRefused) {
    ValueInt* value = Insert(u"/A/v"_s);
    Insert(u"/A/w"_s);
    tree.CreateNode(u"/A/n"_s);
    CodeObserver observer;
    value->AddObserver(&observer);
    for (const QString& name : {u"w"_s, u"n"_s, u""_s, QString(), u"/"_s, u"a/b"_s, u"/a"_s, u"a/"_s}) {
        EXPECT_FALSE(value->SetName(name, nullptr)) << name.toStdString();
    }
    EXPECT_EQ(value->GetPath(), u"/A/v"_s);
    EXPECT_EQ(tree.GetValue(u"/A/v"_s), value);
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(TreeTest, TheSameNameAgainNotifiesNobody) {
    ValueInt* value = Insert(u"/A/v"_s);
    CodeObserver observer;
    value->AddObserver(&observer);
    EXPECT_TRUE(value->SetName(u"v"_s, nullptr));
    EXPECT_TRUE(observer.codes.empty());
}

TEST_F(TreeTest, AValueOutsideTheTreeHasANameButNoPath) {
    ValueInt value;
    EXPECT_FALSE(value.SetName({}, nullptr));
    EXPECT_TRUE(value.SetName(u"v"_s, nullptr));
    EXPECT_FALSE(value.SetName(u"a/b"_s, nullptr));
    EXPECT_EQ(value.GetName(), u"v"_s);
    EXPECT_TRUE(value.GetPath().isEmpty());
    EXPECT_EQ(value.GetParent(), nullptr);
}

// --- removing ---

TEST_F(TreeTest, ARemovedValueIsGone) {
    const ObservablePtr<ValueBase> value = Insert(u"/A/v"_s);
    EXPECT_TRUE(tree.Remove(value.get()));
    EXPECT_FALSE(value);
    EXPECT_EQ(tree.GetValue(u"/A/v"_s), nullptr);
    EXPECT_EQ(Names(tree.GetNode(u"/A"_s)), QStringList{});
    EXPECT_NE(Insert(u"/A/v"_s), nullptr);
}

TEST_F(TreeTest, ARemovedNodeGoesWithEverythingBelowIt) {
    Insert(u"/A/B/v"_s);
    Insert(u"/A/B/C/D/w"_s);
    Insert(u"/A/x"_s);
    EXPECT_TRUE(tree.Remove(tree.GetNode(u"/A/B"_s)));
    EXPECT_EQ(Dumped(), u"/A\tNode\t\t0\n/A/x\tInt\t0\t0\n"_s);
    EXPECT_EQ(tree.GetNode(u"/A/B/C/D"_s), nullptr);
    EXPECT_EQ(tree.GetValueCount(), 1);
}

TEST_F(TreeTest, WhatIsNotInTheTreeAndTheRootAreNotRemoved) {
    ValueInt outside;
    Insert(u"/A/v"_s);
    EXPECT_FALSE(tree.Remove(nullptr));
    EXPECT_FALSE(tree.Remove(&outside));
    EXPECT_FALSE(tree.Remove(tree.GetNode(u"/"_s)));
    EXPECT_EQ(tree.GetValueCount(), 1);
}

TEST_F(TreeTest, ClearRemovesEverythingBelowTheRootAndNotifiesIt) {
    CodeObserver ofValue;
    CodeObserver ofNode;
    Insert(u"/A/v"_s)->AddObserver(&ofValue);
    tree.CreateNode(u"/B"_s)->AddObserver(&ofNode);
    Insert(u"/w"_s);
    tree.Clear();
    EXPECT_EQ(Dumped(), QString());
    EXPECT_EQ(tree.GetValueCount(), 0);
    EXPECT_EQ(ofValue.codes, std::vector{TChangeCode::GoingAway});
    EXPECT_EQ(ofNode.codes, std::vector{TChangeCode::NodeGoingAway});
    tree.Clear();
    EXPECT_NE(Insert(u"/A/v"_s), nullptr);
}

TEST_F(TreeTest, ObserversAreNotifiedParentsFirstWhileEverythingIsStillThere) {
    const QStringList paths{u"/A"_s, u"/A/B"_s, u"/A/v"_s, u"/A/B/w"_s, u"/A/B/C"_s};
    tree.CreateNode(u"/A/B"_s);
    Insert(u"/A/v"_s);
    Insert(u"/A/B/w"_s);
    tree.CreateNode(u"/A/B/C"_s);

    QStringList notified;
    FunctionObserver observer([&](Observable* subject, TChangeCode code) {
        const auto* item = dynamic_cast<ITreeItem*>(subject);
        ASSERT_NE(item, nullptr);
        notified.append(item->GetPath() + u' ' + QString::number(static_cast<int>(code)));
        for (const QString& path : paths) {
            EXPECT_TRUE(Stands(path)) << path.toStdString();
        }
        EXPECT_EQ(tree.GetNode(u"/A"_s)->GetTreeItems().size(), 2);
    });
    for (const QString& path : paths) {
        ITreeItem* item = tree.GetNode(path);
        (item ? item : tree.GetValue(path))->AddObserver(&observer);
    }
    EXPECT_TRUE(tree.Remove(tree.GetNode(u"/A"_s)));
    EXPECT_EQ(notified, (QStringList{u"/A 18"_s, u"/A/B 18"_s, u"/A/v 2"_s, u"/A/B/w 2"_s, u"/A/B/C 18"_s}));
}

TEST_F(TreeTest, AnObserverOfARemovedValueNeedNotDetach) {
    CodeObserver observer;
    Insert(u"/A/v"_s)->AddObserver(&observer);
    tree.Remove(tree.GetValue(u"/A/v"_s));
    ValueInt* value = Insert(u"/A/v"_s);
    EXPECT_EQ(value->GetObserverCount(), 0U);
    EXPECT_TRUE(value->AddObserver(&observer));
}

TEST_F(TreeTest, AnObserverLearnsWhetherItsValueIsBeingRemoved) {
    ValueInt* value = Insert(u"/A/v"_s);
    int asked = -1;
    FunctionObserver observer([&](Observable*, TChangeCode) { asked = value->QueryRemoval(&observer); });
    value->AddObserver(&observer);
    value->SetValue(1, nullptr);
    EXPECT_EQ(asked, 0);
    tree.Remove(tree.GetNode(u"/A"_s));
    EXPECT_EQ(asked, 1);
}

// --- what observers may do while something is removed ---

/// /A with v, B (with w and C with x), then /Z with z; each item has an observer.
class TreeRemovalTest : public TreeTest {
protected:
    const QStringList PATHS{u"/A"_s,     u"/A/v"_s,     u"/A/B"_s, u"/A/B/w"_s,
                            u"/A/B/C"_s, u"/A/B/C/x"_s, u"/Z"_s,   u"/Z/z"_s};

    [[nodiscard]] ITreeItem* Item(const QString& path) const {
        ITreeItem* node = tree.GetNode(path);
        return node ? node : tree.GetValue(path);
    }

    void Build() {
        for (const QString& path : PATHS) {
            ITreeItem* item =
                path.back().isLower() ? static_cast<ITreeItem*>(Insert(path)) : tree.CreateNode(path);
            FunctionObserver& observer = observers[path];
            observer.onUpdate = [this, path, item](Observable* subject, TChangeCode code) {
                // An observer that is notified finds the item in its place.
                EXPECT_EQ(subject, item);
                EXPECT_EQ(Item(path), item);
                EXPECT_EQ(item->GetPath(), path);
                EXPECT_EQ(code, tree.GetNode(path) ? TChangeCode::NodeGoingAway : TChangeCode::GoingAway);
                ++notified[path];
                if (const auto action = actions.find(path); action != actions.end()) {
                    action->second();
                }
            };
            item->AddObserver(&observer);
        }
    }

    std::map<QString, FunctionObserver> observers;
    std::map<QString, std::function<void()>> actions;
    std::map<QString, int> notified;
};

TEST_F(TreeRemovalTest, AnyObserverMayRemoveAnythingWhileAnythingIsRemoved) {
    const QString whole = u"/"_s; // means Clear
    const auto isWithin = [&](const QString& path, const QString& top) {
        return top == whole || path == top || path.startsWith(top + u'/');
    };
    for (const QString& outer : PATHS + QStringList{whole}) {
        for (const QString& trigger : PATHS) {
            for (const QString& inner : PATHS + QStringList{whole}) {
                SCOPED_TRACE((outer + u" while "_s + trigger + u" removes "_s + inner).toStdString());
                notified.clear();
                actions.clear();
                Build();
                const auto remove = [&](const QString& path) {
                    path == whole ? tree.Clear() : static_cast<void>(tree.Remove(Item(path)));
                };
                actions[trigger] = [&] { remove(inner); };
                remove(outer);
                const bool isTriggered = isWithin(trigger, outer);
                for (const QString& path : PATHS) {
                    const bool isRemoved = isWithin(path, outer) || (isTriggered && isWithin(path, inner));
                    EXPECT_EQ(Stands(path), !isRemoved) << path.toStdString();
                    EXPECT_EQ(notified[path], isRemoved ? 1 : 0) << path.toStdString();
                }
                tree.Clear();
                EXPECT_EQ(Dumped(), QString());
                EXPECT_EQ(tree.GetValueCount(), 0);
            }
        }
    }
}

TEST_F(TreeRemovalTest, WhatIsBeingRemovedIsNotRemovedTwice) {
    Build();
    bool isRemovedAgain = true;
    actions[u"/A/B/w"_s] = [&] {
        isRemovedAgain = tree.Remove(Item(u"/A/B/w"_s)) || tree.Remove(Item(u"/A/B"_s));
    };
    EXPECT_TRUE(tree.Remove(Item(u"/A/B"_s)));
    EXPECT_FALSE(isRemovedAgain);
}

TEST_F(TreeRemovalTest, WhatAnObserverRemovesHasNoPlaceAnyMoreButLivesUntilTheOuterRemovalEnds) {
    Build();
    const ObservablePtr<ITreeItem> inner = Item(u"/Z/z"_s);
    actions[u"/A/B"_s] = [&] {
        EXPECT_TRUE(tree.Remove(inner.get()));
        ASSERT_TRUE(inner);
        EXPECT_TRUE(inner->GetPath().isEmpty());
        EXPECT_EQ(inner->GetParent(), nullptr);
        EXPECT_FALSE(Stands(u"/Z/z"_s));
        EXPECT_FALSE(tree.Remove(inner.get()));
    };
    EXPECT_TRUE(tree.Remove(Item(u"/A"_s)));
    EXPECT_FALSE(inner);
}

TEST_F(TreeRemovalTest, NothingIsInsertedBelowWhatIsBeingRemoved) {
    Build();
    int tried = 0;
    for (const QString& path : {u"/A/B"_s, u"/A/B/w"_s, u"/A/B/C/x"_s}) {
        actions[path] = [&] {
            ++tried;
            EXPECT_EQ(Insert(u"/A/B/new"_s), nullptr);
            EXPECT_EQ(Insert(u"/A/B/C/new"_s), nullptr);
            EXPECT_EQ(Insert(u"/A/B/C/D/new"_s), nullptr);
            EXPECT_EQ(Insert(u"/A/B/w"_s), nullptr);
            EXPECT_EQ(tree.CreateNode(u"/A/B"_s), nullptr);
            EXPECT_EQ(tree.CreateNode(u"/A/B/D"_s), nullptr);
        };
    }
    EXPECT_TRUE(tree.Remove(Item(u"/A/B"_s)));
    EXPECT_EQ(tried, 3);
    EXPECT_EQ(Names(tree.GetNode(u"/A"_s)), QStringList{u"v"_s});
    EXPECT_NE(Insert(u"/A/B/new"_s), nullptr);
}

TEST_F(TreeRemovalTest, BesideWhatIsBeingRemovedAnythingCanBeInserted) {
    Build();
    actions[u"/A/B/w"_s] = [&] {
        EXPECT_NE(Insert(u"/A/new"_s), nullptr);
        EXPECT_NE(Insert(u"/New/new"_s), nullptr);
    };
    EXPECT_TRUE(tree.Remove(Item(u"/A/B"_s)));
    EXPECT_TRUE(Stands(u"/A/new"_s));
    EXPECT_TRUE(Stands(u"/New/new"_s));
}

TEST_F(TreeRemovalTest, WhatAnObserverInsertsDuringClearStays) {
    Build();
    actions[u"/A/B/w"_s] = [&] { Insert(u"/New/new"_s); };
    tree.Clear();
    EXPECT_EQ(Dumped(), u"/New\tNode\t\t0\n/New/new\tInt\t0\t0\n"_s);
}

TEST_F(TreeRemovalTest, AValueThatIsBeingRemovedCanStillBeSetAndIsNotRenamed) {
    auto* value = Insert(u"/A/set"_s);
    std::vector<TChangeCode> codes;
    FunctionObserver observer([&](Observable*, TChangeCode code) {
        codes.push_back(code);
        if (code == TChangeCode::GoingAway) {
            EXPECT_TRUE(value->SetValue(7, nullptr));
            EXPECT_FALSE(value->SetName(u"other"_s, nullptr));
            value->SetState(TValueState::NotMeasured, nullptr);
        }
    });
    value->AddObserver(&observer);
    EXPECT_TRUE(tree.Remove(value));
    EXPECT_EQ(codes, (std::vector{TChangeCode::GoingAway, TChangeCode::Changed, TChangeCode::Changed}));
    EXPECT_EQ(tree.GetValueCount(), 0);
}

TEST_F(TreeRemovalTest, AValueMayBeRemovedByAnObserverOfItsChange) {
    for (const QString& removed : {u"/A/set"_s, u"/A"_s, u"/"_s}) {
        auto* value = Insert<ValueNumericInt>(u"/A/set"_s);
        CodeObserver last;
        FunctionObserver remover([&](Observable*, TChangeCode code) {
            if (code == TChangeCode::Changed) {
                removed == u'/' ? tree.Clear() : static_cast<void>(tree.Remove(Item(removed)));
            }
        });
        value->AddObserver(&remover);
        value->AddObserver(&last);
        EXPECT_TRUE(value->SetValue(5, nullptr));
        EXPECT_EQ(last.codes, std::vector{TChangeCode::GoingAway}) << "the value went before its turn came";
        EXPECT_EQ(tree.GetValue(u"/A/set"_s), nullptr);
        tree.Clear();
    }
}

TEST_F(TreeRemovalTest, EverySetterSurvivesTheRemovalOfItsValue) {
    using Setter = std::function<void(ValueNumericInt&)>;
    ValueNumericInt source(9, 0, 100, 1);
    source.SetState(TValueState::NotMeasured, nullptr);
    const std::vector<Setter> setters = {
        [](ValueNumericInt& value) { value.SetValue(5, nullptr); },
        [](ValueNumericInt& value) { value.SetStringValue(u"5"_s, nullptr); },
        [](ValueNumericInt& value) { value.SetMinMax(1, 5, 1, nullptr); },
        [](ValueNumericInt& value) { value.SetMinMax(-1, 5, 1, nullptr); },
        [](ValueNumericInt& value) { value.SetState(TValueState::NotMeasured, nullptr); },
        [](ValueNumericInt& value) { value.SetName(u"other"_s, nullptr); },
        [&](ValueNumericInt& value) { value.Assign(source); },
        [](ValueNumericInt& value) { value.SetCommandString(u"0\t/A/set\t5"_s, nullptr); },
        [](ValueNumericInt& value) { value.HasChanged(TChangeCode::Changed, nullptr); },
        [](ValueNumericInt& value) {
            value.StartTransaction(nullptr);
            value.EndTransaction(TChangeCode::Changed, nullptr);
        },
        [](ValueNumericInt& value) {
            const ValueTransaction transaction =
                value.CreateTransaction({TChangeCode::Changed, TChangeCode::ListReplaced}, nullptr);
        },
        [](ValueNumericInt& value) {
            value.SetUpdateTimerTime(1'000'000);
            value.SetValue(5, nullptr);
            value.SetUpdateTimerTime(0);
        },
        [](ValueNumericInt& value) {
            value.SetUpdateTimerTime(1'000'000);
            value.SetValue(5, nullptr);
            value.OverrideTimer(0);
        },
    };
    for (const Setter& set : setters) {
        auto* value = Insert<ValueNumericInt>(u"/A/set"_s);
        FunctionObserver remover([&](Observable*, TChangeCode code) {
            if (code != TChangeCode::GoingAway) {
                tree.Clear();
            }
        });
        value->AddObserver(&remover);
        set(*value);
        EXPECT_EQ(tree.GetValueCount(), 0);
    }
}

TEST_F(TreeRemovalTest, ListsAndSelectionsSurviveTheirRemovalInsideASetter) {
    ValueQuadFloatList sourceList;
    sourceList.PushBack({1, 2, 3, 4}, nullptr);
    sourceList.SetState(TValueState::NotMeasured, nullptr);
    ValueSelection sourceSelection;
    sourceSelection.AddItem({u"one"_s, 1.0, 1}, nullptr);
    sourceSelection.SetState(TValueState::NotMeasured, nullptr);
    const std::vector<SelItemDesc> items = {{u"one"_s, 1.0, 1}, {u"two"_s, 2.0, 2}};

    FunctionObserver remover([&](Observable*, TChangeCode code) {
        if (code != TChangeCode::GoingAway) {
            tree.Clear();
        }
    });
    const auto fresh = [&]<class T>(T*) {
        auto* value = Insert<T>(u"/A/set"_s);
        value->AddObserver(&remover);
        return value;
    };
    constexpr ValueQuadFloatList* LIST = nullptr;
    constexpr ValueSelection* SELECTION = nullptr;
    EXPECT_TRUE(fresh(LIST)->Assign(sourceList));
    fresh(LIST)->PushBack({1, 2, 3, 4}, nullptr);
    EXPECT_TRUE(fresh(LIST)->SetStringValue(u"1,2,3,4;"_s, nullptr));
    EXPECT_TRUE(fresh(SELECTION)->Assign(sourceSelection));
    fresh(SELECTION)->AddItem({u"one"_s, 1.0, 1}, nullptr);
    SelItemDesc::AddItems(items.data(), 2, fresh(SELECTION));
    EXPECT_EQ(tree.GetValueCount(), 0);
}

// --- delete observers ---

/// Notes the items of whose destruction it is notified.
class DeleteObserver final : public ITreeItem {
public:
    [[nodiscard]] QString GetTypeName() const override { return u"DeleteObserver"_s; }
    void OnItemDeleted(ITreeItem* item) override {
        notified.append(item->GetPath());
        if (onDeleted) {
            onDeleted();
        }
    }

    QStringList notified;
    std::function<void()> onDeleted;

private:
    void AnnounceRemoval() override {}
};

TEST_F(TreeTest, TheDeleteObserverOfAValueIsNotifiedOnceAndAfterTheObservers) {
    ValueInt* value = Insert(u"/A/v"_s);
    DeleteObserver deleteObserver;
    EXPECT_EQ(value->GetDeleteObserver(), nullptr);
    value->SetDeleteObserver(&deleteObserver);
    EXPECT_EQ(value->GetDeleteObserver(), &deleteObserver);
    FunctionObserver observer(
        [&](Observable*, TChangeCode) { EXPECT_TRUE(deleteObserver.notified.isEmpty()); });
    value->AddObserver(&observer);
    tree.Remove(tree.GetNode(u"/A"_s));
    EXPECT_EQ(deleteObserver.notified, QStringList{u"/A/v"_s});
}

TEST_F(TreeTest, ADeleteObserverMayBeTakenBackOrBeGone) {
    ValueInt* value = Insert(u"/A/v"_s);
    DeleteObserver deleteObserver;
    value->SetDeleteObserver(&deleteObserver);
    value->SetDeleteObserver(nullptr);
    EXPECT_EQ(value->GetDeleteObserver(), nullptr);
    {
        DeleteObserver mortal;
        value->SetDeleteObserver(&mortal);
    }
    EXPECT_EQ(value->GetDeleteObserver(), nullptr);
    tree.Remove(value);
    EXPECT_EQ(deleteObserver.notified, QStringList{});
}

TEST_F(TreeTest, ADeleteObserverMayRemoveOtherItems) {
    ValueInt* value = Insert(u"/A/v"_s);
    Insert(u"/A/w"_s);
    Insert(u"/B/x"_s);
    DeleteObserver deleteObserver;
    deleteObserver.onDeleted = [&] { tree.Clear(); };
    value->SetDeleteObserver(&deleteObserver);
    EXPECT_TRUE(tree.Remove(value));
    EXPECT_EQ(deleteObserver.notified, QStringList{u"/A/v"_s});
    EXPECT_EQ(Dumped(), QString());
}

TEST_F(TreeTest, WhenADeleteObserverIsNotifiedTheNodesAboveAreStillThereAndTakeNothingIn) {
    ValueInt* value = Insert(u"/A/B/v"_s);
    DeleteObserver deleteObserver;
    deleteObserver.onDeleted = [&] {
        EXPECT_TRUE(Stands(u"/A"_s));
        EXPECT_TRUE(Stands(u"/A/B"_s));
        EXPECT_EQ(Insert(u"/A/B/new"_s), nullptr);
    };
    value->SetDeleteObserver(&deleteObserver);
    EXPECT_TRUE(tree.Remove(tree.GetNode(u"/A"_s)));
    EXPECT_EQ(deleteObserver.notified.size(), 1);
    EXPECT_EQ(Dumped(), QString());
}

TEST_F(TreeTest, AnItemOfTheTreeCanBeTheDeleteObserverOfAnother) {
    ValueInt* value = Insert(u"/A/v"_s);
    value->SetDeleteObserver(tree.GetNode(u"/A"_s));
    EXPECT_TRUE(tree.Remove(tree.GetNode(u"/A"_s)));
    EXPECT_EQ(tree.GetValueCount(), 0);
}

// --- refused values ---

TEST_F(TreeTest, AnAbandonedValueStaysAliveOutsideTheTree) {
    auto value = Named(u"v"_s);
    const ObservablePtr<ValueBase> pointer(value.get());
    tree.Abandon(std::move(value));
    tree.Clear();
    ASSERT_TRUE(pointer);
    EXPECT_EQ(pointer->GetName(), u"v"_s);
    EXPECT_EQ(pointer->GetParent(), nullptr);
    EXPECT_EQ(tree.GetValueCount(), 0);
}

// --- what stays behind when the process ends ---

TEST_F(TreeTest, ATreeThatIsNotClearedGoesWithTheProcess) {
    EXPECT_EXIT(
        {
            CodeObserver observer;
            Insert(u"/A/B/v"_s)->AddObserver(&observer);
            auto* waiting = Insert(u"/A/w"_s);
            waiting->SetUpdateTimerTime(1'000'000);
            waiting->SetValue(1, nullptr);
            tree.Abandon(Named(u"abandoned"_s));
            std::exit(0); // NOLINT(concurrency-mt-unsafe)
        },
        testing::ExitedWithCode(0), "");
}

// --- Dump ---

TEST_F(TreeTest, DumpWritesOneLineAnItemDepthFirst) {
    Insert<ValueInt>(u"/B/v"_s)->SetValue(-5, nullptr);
    CodeObserver observer;
    CodeObserver another;
    Insert<ValueString>(u"/A/B/text"_s)->SetValue(u"a\tb\nc\\d;e\x01\x7f \u00e4"_s, nullptr);
    Insert<ValueNumericDouble>(u"/A/d"_s)->SetValue(121.5e6, nullptr);
    auto* selection = Insert<ValueSelection>(u"/A/B/sel"_s);
    selection->AddItem({u"first"_s, 1.0, 10}, nullptr);
    selection->AddObserver(&observer);
    selection->AddObserver(&another);
    Insert<ValueBool>(u"/top"_s)->SetValue(true, nullptr);
    tree.GetNode(u"/A"_s)->AddObserver(&observer);
    Insert<ValueTimeStamp>(u"/A/t"_s)->SetValue(12, nullptr);
    Insert<ValueQuadFloatList>(u"/A/l"_s)->PushBack({1, 2, 3, 4}, nullptr);
    Insert<ValueBearing>(u"/A/b"_s);

    EXPECT_EQ(Dumped(), u"/B\tNode\t\t0\n"
                        u"/B/v\tInt\t-5\t0\n"
                        u"/A\tNode\t\t1\n"
                        u"/A/B\tNode\t\t0\n"
                        u"/A/B/text\tString\ta\\tb\\nc\\\\d\\u003be\\u0001\\u007f \u00e4\t0\n"
                        u"/A/B/sel\tSelection\tfirst\t2\n"
                        u"/A/d\tDouble\t121500000\t0\n"
                        u"/A/t\tTimeStamp\t12\t0\n"
                        u"/A/l\tList\t1,2,3,4\\u003b\t0\n"
                        u"/A/b\tBearing\t,,,,,\t0\n"
                        u"/top\tBool\t1\t0\n"_s);
}

TEST_F(TreeTest, DumpEscapesNamesToo) {
    Insert(u"/a\tb/c\nd"_s);
    EXPECT_EQ(Dumped(), u"/a\\tb\tNode\t\t0\n/a\\tb/c\\nd\tInt\t0\t0\n"_s);
}

TEST_F(TreeTest, DumpOfAnEmptyTreeIsEmpty) {
    EXPECT_EQ(Dumped(), QString());
}

// --- nodes ---

TEST_F(TreeTest, ANodeFindsTheChildValueThatADescriptorNames) {
    const ValueDescriptor direct(u"/v"_s, MakeDefault::Int());
    const ValueDescriptor deeper(u"/B/w"_s, MakeDefault::Int());
    const ValueDescriptor node(u"/B"_s, MakeDefault::Nothing());
    const ValueDescriptor absent(u"/x"_s, MakeDefault::Int());
    ValueInt* v = Insert(u"/A/v"_s);
    ValueInt* w = Insert(u"/A/B/w"_s);
    const Node* parent = tree.GetNode(u"/A"_s);
    EXPECT_EQ(parent->GetChildValue(&direct), v);
    EXPECT_EQ(parent->GetChildValue(&deeper), w);
    EXPECT_EQ(parent->GetChildValue(&node), nullptr);
    EXPECT_EQ(parent->GetChildValue(&absent), nullptr);
    EXPECT_EQ(parent->GetChildValue(nullptr), nullptr);
    EXPECT_EQ(tree.GetNode(u"/"_s)->GetChildValue(&direct), nullptr);
}

TEST_F(TreeTest, TheListOfChildrenStaysWholeWhileTheTreeChanges) {
    Insert(u"/A/v"_s);
    Insert(u"/A/w"_s);
    QStringList seen;
    for (ITreeItem* item : tree.GetNode(u"/A"_s)->GetTreeItems()) {
        const QString name = item->GetName();
        seen.append(name);
        tree.Remove(item);
        Insert(u"/A/new"_s + name);
    }
    EXPECT_EQ(seen, (QStringList{u"v"_s, u"w"_s}));
}

} // namespace

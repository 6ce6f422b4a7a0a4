#include "zancommon/overheadpassparams.h"

#include "support/observers.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

using KvZANCommon::OverheadPassParams;

namespace {

TEST(OverheadPassParams, FreshSetHasThreshold600AndIsNotValid) {
    const OverheadPassParams params;
    EXPECT_EQ(params.GetThreshold(), 600);
    EXPECT_FALSE(params.IsValid());
}

TEST(OverheadPassParams, SettersStoreAndNotifyTheObserversWithCode3) {
    OverheadPassParams params;
    CodeObserver observer;
    params.AddObserver(&observer);
    params.SetThreshold(450, nullptr);
    EXPECT_EQ(params.GetThreshold(), 450);
    params.SetValid(true, nullptr);
    EXPECT_TRUE(params.IsValid());
    EXPECT_EQ(observer.codes, std::vector<TChangeCode>(2, static_cast<TChangeCode>(3)));
    EXPECT_EQ(observer.subjects, std::vector<const Observable*>(2, &params));
}

TEST(OverheadPassParams, SettingTheSameAgainNotifiesNobody) {
    OverheadPassParams params;
    CodeObserver observer;
    params.AddObserver(&observer);
    params.SetThreshold(600, nullptr);
    params.SetValid(false, nullptr);
    EXPECT_TRUE(observer.codes.empty());
    params.SetThreshold(700, nullptr);
    params.SetThreshold(700, nullptr);
    EXPECT_EQ(observer.codes.size(), 1U);
    params.SetValid(true, nullptr);
    params.SetValid(true, nullptr);
    EXPECT_EQ(observer.codes.size(), 2U);
}

TEST(OverheadPassParams, OriginatorIsNotNotified) {
    OverheadPassParams params;
    CodeObserver originator;
    CodeObserver other;
    params.AddObserver(&originator);
    params.AddObserver(&other);
    params.SetThreshold(1, &originator);
    params.SetValid(true, &originator);
    EXPECT_TRUE(originator.codes.empty());
    EXPECT_EQ(other.codes.size(), 2U);
}

TEST(OverheadPassParams, AnyIntegerIsAThreshold) {
    OverheadPassParams params;
    for (const int threshold :
         {0, -1, 901, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        params.SetThreshold(threshold, nullptr);
        EXPECT_EQ(params.GetThreshold(), threshold);
    }
}

TEST(OverheadPassParams, CopyTakesOverContentAndObservers) {
    OverheadPassParams params;
    CodeObserver observer;
    params.AddObserver(&observer);
    params.SetThreshold(123, &observer);
    params.SetValid(true, &observer);
    OverheadPassParams copy(params);
    EXPECT_EQ(copy.GetThreshold(), 123);
    EXPECT_TRUE(copy.IsValid());
    copy.SetThreshold(124, nullptr);
    EXPECT_EQ(params.GetThreshold(), 123);
    EXPECT_EQ(observer.subjects, std::vector<const Observable*>{&copy});
}

TEST(OverheadPassParams, AssignmentTakesOverContentAndObserversAndNotifiesNobody) {
    OverheadPassParams params;
    CodeObserver observer;
    params.AddObserver(&observer);
    params.SetThreshold(123, &observer);
    params.SetValid(true, &observer);
    OverheadPassParams target;
    CodeObserver former;
    target.AddObserver(&former);
    target = params;
    EXPECT_EQ(target.GetThreshold(), 123);
    EXPECT_TRUE(target.IsValid());
    EXPECT_TRUE(observer.codes.empty());
    target.SetValid(false, nullptr);
    EXPECT_EQ(observer.subjects, std::vector<const Observable*>{&target});
    EXPECT_TRUE(former.codes.empty());
}

TEST(OverheadPassParams, ObserverMayDestroyTheSetItIsNotifiedOf) {
    auto params = std::make_unique<OverheadPassParams>();
    FunctionObserver destroyer([&params](Observable*, TChangeCode) { params.reset(); });
    params->AddObserver(&destroyer);
    params->SetThreshold(1, nullptr);
    EXPECT_FALSE(params);
}

} // namespace

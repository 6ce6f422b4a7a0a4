#include "zancommon/overheadpassparams.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

using KvZANCommon::OverheadPassParams;

namespace {

class Recorder : public IObserver {
public:
    void Update(Observable* subject, TChangeCode code) override {
        subjects.push_back(subject);
        codes.push_back(code);
    }
    std::vector<Observable*> subjects;
    std::vector<TChangeCode> codes;
};

TEST(OverheadPassParams, FreshSetHasThreshold600AndIsNotValid) {
    const OverheadPassParams params;
    EXPECT_EQ(params.GetThreshold(), 600);
    EXPECT_FALSE(params.IsValid());
}

TEST(OverheadPassParams, SettersStoreAndTellTheObserversCode3) {
    OverheadPassParams params;
    Recorder recorder;
    params.AddObserver(&recorder);
    params.SetThreshold(450, nullptr);
    EXPECT_EQ(params.GetThreshold(), 450);
    params.SetValid(true, nullptr);
    EXPECT_TRUE(params.IsValid());
    EXPECT_EQ(recorder.codes, std::vector<TChangeCode>(2, static_cast<TChangeCode>(3)));
    EXPECT_EQ(recorder.subjects, std::vector<Observable*>(2, &params));
}

TEST(OverheadPassParams, SettingTheSameAgainTellsNobody) {
    OverheadPassParams params;
    Recorder recorder;
    params.AddObserver(&recorder);
    params.SetThreshold(600, nullptr);
    params.SetValid(false, nullptr);
    EXPECT_TRUE(recorder.codes.empty());
    params.SetThreshold(700, nullptr);
    params.SetThreshold(700, nullptr);
    EXPECT_EQ(recorder.codes.size(), 1U);
    params.SetValid(true, nullptr);
    params.SetValid(true, nullptr);
    EXPECT_EQ(recorder.codes.size(), 2U);
}

TEST(OverheadPassParams, OriginatorIsNotTold) {
    OverheadPassParams params;
    Recorder originator;
    Recorder other;
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
    Recorder recorder;
    params.AddObserver(&recorder);
    params.SetThreshold(123, &recorder);
    params.SetValid(true, &recorder);
    OverheadPassParams copy(params);
    EXPECT_EQ(copy.GetThreshold(), 123);
    EXPECT_TRUE(copy.IsValid());
    copy.SetThreshold(124, nullptr);
    EXPECT_EQ(params.GetThreshold(), 123);
    EXPECT_EQ(recorder.subjects, std::vector<Observable*>{&copy});
}

TEST(OverheadPassParams, AssignmentTakesOverContentAndObserversAndTellsNobody) {
    OverheadPassParams params;
    Recorder recorder;
    params.AddObserver(&recorder);
    params.SetThreshold(123, &recorder);
    params.SetValid(true, &recorder);
    OverheadPassParams target;
    Recorder former;
    target.AddObserver(&former);
    target = params;
    EXPECT_EQ(target.GetThreshold(), 123);
    EXPECT_TRUE(target.IsValid());
    EXPECT_TRUE(recorder.codes.empty());
    target.SetValid(false, nullptr);
    EXPECT_EQ(recorder.subjects, std::vector<Observable*>{&target});
    EXPECT_TRUE(former.codes.empty());
}

TEST(OverheadPassParams, ObserverMayDestroyTheSetItIsToldOf) {
    class Destroyer : public IObserver {
    public:
        void Update(Observable*, TChangeCode) override { params.reset(); }
        std::unique_ptr<OverheadPassParams> params = std::make_unique<OverheadPassParams>();
    } destroyer;
    destroyer.params->AddObserver(&destroyer);
    destroyer.params->SetThreshold(1, nullptr);
    EXPECT_FALSE(destroyer.params);
}

} // namespace

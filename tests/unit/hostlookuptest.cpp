#include "connections/hostlookup.h"

#include "support/eventloop.h"
#include "support/printing.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <semaphore>

using namespace Qt::StringLiterals;

namespace {

/// What the system says of a host.
HostLookup::Result LookUp(const QString& host) {
    std::optional<HostLookup::Result> answer;
    const HostLookup lookup(host, [&](const HostLookup::Result& result) { answer = result; });
    EXPECT_FALSE(answer) << "it comes from the event loop";
    EXPECT_TRUE(SpinUntil([&] { return answer.has_value(); }));
    return answer.value_or(HostLookup::Result());
}

/// A name service that does not answer before it is told to.
struct SlowService {
    std::binary_semaphore mayAnswer{0};
    std::atomic<bool> hasAnswered = false;
};

HostLookup::Resolver AskSlowly(const std::shared_ptr<SlowService>& service) {
    return [service](const std::string&) {
        service->mayAnswer.acquire();
        service->hasAnswered = true;
        return HostLookup::Result{{u"192.0.2.1"_s}, {}};
    };
}

} // namespace

TEST(HostLookup, FindsTheAddressesOfAName) {
    EXPECT_TRUE(LookUp(u"localhost"_s).addresses.contains(u"127.0.0.1"_s));
}

TEST(HostLookup, AddressIsItsOwn) {
    EXPECT_EQ(LookUp(u"192.0.2.7"_s).addresses, QStringList(u"192.0.2.7"_s));
    EXPECT_EQ(LookUp(u"2001:db8::7"_s).addresses, QStringList(u"2001:db8::7"_s));
}

TEST(HostLookup, SaysWhyThereIsNoAddress) {
    const HostLookup::Result result = LookUp(u"no..host"_s);
    EXPECT_EQ(result.addresses, QStringList());
    EXPECT_NE(result.error, QString());
}

TEST(HostLookup, EndsAtOnceWhileTheNameServiceDoesNotAnswerAndNothingIsCalledLater) {
    const auto service = std::make_shared<SlowService>();
    bool isCalled = false;
    std::optional<HostLookup> lookup;
    lookup.emplace(
        u"ship.example"_s, [&](const HostLookup::Result&) { isCalled = true; }, AskSlowly(service));
    lookup.reset();
    EXPECT_FALSE(service->hasAnswered);
    service->mayAnswer.release();
    ASSERT_TRUE(SpinUntil([&] { return service->hasAnswered.load(); }));
    CountWakeUps(); // a call would come meanwhile
    EXPECT_FALSE(isCalled);
}

TEST(HostLookup, MayBeEndedByItsAnswer) {
    std::optional<HostLookup> lookup;
    bool isCalled = false;
    lookup.emplace(u"192.0.2.7"_s, [&](const HostLookup::Result&) {
        lookup.reset();
        isCalled = true;
    });
    EXPECT_TRUE(SpinUntil([&] { return isCalled; }));
}

TEST(HostLookupDeathTest, ProcessEndsWithoutAnAnswer) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            const auto service = std::make_shared<SlowService>();
            const HostLookup lookup(
                u"ship.example"_s, [](const HostLookup::Result&) {}, AskSlowly(service));
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

// SPDX-License-Identifier: MIT
#include <VXKit/platform/foundation/NSNotificationCenter.h>

#include <QObject>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class NotificationCenter : public testing::Test {
protected:
    NSNotificationCenter::Handler append(const char* text) {
        return [this, text](const NSNotification&) { calls.emplace_back(text); };
    }

    NSNotificationCenter centre;
    std::vector<std::string> calls;
};

struct First {
    virtual ~First() = default;
    int first = 1;
};
struct Second {
    virtual ~Second() = default;
    int second = 2;
};
struct Both : First, Second {};

} // namespace

TEST_F(NotificationCenter, DeliversBeforeThePostReturns) {
    const auto observation = centre.addObserverForName("a", nullptr, append("called"));
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("called"));
}

TEST_F(NotificationCenter, DeliversInTheOrderOfSubscriptionThoseOfEveryNameAmongThem) {
    const auto first = centre.addObserverForName("a", nullptr, append("1"));
    const auto second = centre.addObserverForName("", nullptr, append("2"));
    const auto third = centre.addObserverForName("a", nullptr, append("3"));
    const auto other = centre.addObserverForName("b", nullptr, append("other"));
    const auto fourth = centre.addObserverForName("", nullptr, append("4"));
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("1", "2", "3", "4"));
}

TEST_F(NotificationCenter, DeliversOnlyFromTheSenderAskedFor) {
    const int sender = 0;
    const int other = 0;
    const auto observation = centre.addObserverForName("a", &sender, append("called"));
    centre.postNotificationName("a", &other);
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, IsEmpty());
    centre.postNotificationName("a", &sender);
    EXPECT_THAT(calls, ElementsAre("called"));
}

TEST_F(NotificationCenter, TakesPointersToTwoBasesOfOneObjectForOneSender) {
    const Both both;
    const First* first = &both;
    const Second* second = &both;
    ASSERT_NE(static_cast<const void*>(first), static_cast<const void*>(second));
    const auto observation = centre.addObserverForName("a", first, append("called"));
    centre.postNotificationName("a", second);
    EXPECT_THAT(calls, ElementsAre("called"));
}

TEST_F(NotificationCenter, HandsOnNameSenderAndUserInfo) {
    const int sender = 0;
    bool called = false;
    const auto observation = centre.addObserverForName("a", nullptr, [&](const NSNotification& notification) {
        called = true;
        EXPECT_EQ(notification.name, "a");
        EXPECT_EQ(notification.object, NSNotificationSender(&sender));
        EXPECT_EQ(notification.userInfo, (NSDictionary{{"key", 7}}));
    });
    centre.postNotificationName("a", &sender, {{"key", 7}});
    EXPECT_TRUE(called);
}

TEST_F(NotificationCenter, CallsAnObserverOnceForEachOfItsSubscriptions) {
    QObject observer;
    centre.addObserver(&observer, append("called"), "a", nullptr);
    centre.addObserver(&observer, append("called"), "a", nullptr);
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("called", "called"));
}

TEST_F(NotificationCenter, EndsASubscriptionWithItsValue) {
    { const auto observation = centre.addObserverForName("a", nullptr, append("called")); }
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(NotificationCenter, EndsTheOldSubscriptionWhenAnotherIsAssigned) {
    auto observation = centre.addObserverForName("a", nullptr, append("old"));
    observation = centre.addObserverForName("a", nullptr, append("new"));
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("new"));
}

TEST_F(NotificationCenter, EndsEverySubscriptionOfAnObjectThatDies) {
    auto observer = std::make_unique<QObject>();
    centre.addObserver(observer.get(), append("a"), "a", nullptr);
    centre.addObserver(observer.get(), append("b"), "b", nullptr);
    observer.reset();
    centre.postNotificationName("a", nullptr);
    centre.postNotificationName("b", nullptr);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(NotificationCenter, RemovesOneObserverAndLeavesTheOthers) {
    QObject removed;
    QObject kept;
    centre.addObserver(&removed, append("removed"), "a", nullptr);
    centre.addObserver(&kept, append("kept"), "a", nullptr);
    centre.removeObserver(&removed);
    centre.removeObserver(&removed);
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("kept"));
}

TEST_F(NotificationCenter, DoesNotDeliverToAnObserverAddedDuringTheDelivery) {
    NSNotificationObservation added;
    const auto observation = centre.addObserverForName("a", nullptr, [&](const NSNotification&) {
        calls.emplace_back("first");
        added = centre.addObserverForName("a", nullptr, append("added"));
    });
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("first"));
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("first", "first"));
}

TEST_F(NotificationCenter, DoesNotDeliverToAnObserverThatDiedDuringTheDelivery) {
    auto victim = std::make_unique<QObject>();
    const auto observation = centre.addObserverForName("a", nullptr, [&](const NSNotification&) { victim.reset(); });
    centre.addObserver(victim.get(), append("victim"), "a", nullptr);
    const auto last = centre.addObserverForName("a", nullptr, append("last"));
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("last"));
}

TEST_F(NotificationCenter, LetsAHandlerEndItsOwnSubscription) {
    auto token = std::make_shared<std::string>("still here");
    NSNotificationObservation observation;
    observation = centre.addObserverForName("a", nullptr, [&, token](const NSNotification&) {
        observation = {};
        calls.push_back(*token);
    });
    const auto last = centre.addObserverForName("a", nullptr, append("last"));
    centre.postNotificationName("a", nullptr);
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("still here", "last", "last"));
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(NotificationCenter, DeliversAPostMadeDuringADeliveryAtOnce) {
    const auto outer = centre.addObserverForName("a", nullptr, [&](const NSNotification&) {
        calls.emplace_back("before");
        centre.postNotificationName("b", nullptr);
        calls.emplace_back("after");
    });
    const auto inner = centre.addObserverForName("b", nullptr, append("b"));
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("before", "b", "after"));
}

TEST_F(NotificationCenter, LetsAnExceptionOutAndWorksAfterwards) {
    bool failing = true;
    const auto thrower = centre.addObserverForName("a", nullptr, [&](const NSNotification&) {
        if (failing) {
            throw std::runtime_error("no");
        }
    });
    const auto last = centre.addObserverForName("a", nullptr, append("last"));
    EXPECT_THROW(centre.postNotificationName("a", nullptr), std::runtime_error);
    EXPECT_THAT(calls, IsEmpty());
    failing = false;
    centre.postNotificationName("a", nullptr);
    EXPECT_THAT(calls, ElementsAre("last"));
}

TEST_F(NotificationCenter, ReleasesWhatAHandlerHoldsEvenWhenThatUnsubscribesToo) {
    struct Holder {
        NSNotificationObservation observation;
    };
    auto holder = std::make_shared<Holder>();
    holder->observation = centre.addObserverForName("b", nullptr, append("b"));
    auto observation = centre.addObserverForName("a", nullptr, [holder](const NSNotification&) {});
    holder.reset();
    observation = {};
    centre.postNotificationName("b", nullptr);
    EXPECT_THAT(calls, IsEmpty());
}

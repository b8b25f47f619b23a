#include "ZuApi/Signal.h"

#include "Support/AllocationCounter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <latch>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Zu
{

namespace
{

constexpr std::chrono::seconds PATIENCE{20};

} // namespace

class SignalTest : public testing::Test
{
protected:
    using Calls = std::vector<std::string>;

    std::function<void(int)> Noting(std::string name)
    {
        return [this, name](int number) { calls.push_back(name + std::to_string(number)); };
    }

    Signal<int> signal;
    Calls calls;
};

TEST_F(SignalTest, CallsHandlersInOrderOfSubscription)
{
    Subscription const a = signal.Subscribe(Noting("a"));
    Subscription const b = signal.Subscribe(Noting("b"));

    signal.Fire(7);

    EXPECT_EQ(calls, (Calls{"a7", "b7"}));
    EXPECT_EQ(signal.Count(), 2u);
}

TEST_F(SignalTest, DoesNotStoreAnEmptyFunction)
{
    Subscription const none = signal.Subscribe({});

    signal.Fire(1);

    EXPECT_TRUE(signal.Empty());
}

TEST_F(SignalTest, UnsubscribesTheHandlerOfADestroyedSubscriptionOnly)
{
    std::optional<Subscription> a(signal.Subscribe(Noting("a")));
    Subscription const b = signal.Subscribe(Noting("b"));

    a.reset();
    signal.Fire(1);

    EXPECT_EQ(calls, (Calls{"b1"}));
}

TEST_F(SignalTest, MovesASubscriptionWithItsHandler)
{
    Subscription first = signal.Subscribe(Noting("a"));
    {
        Subscription const second(std::move(first));
        signal.Fire(1);
    }
    signal.Fire(2);

    EXPECT_EQ(calls, (Calls{"a1"}));
}

TEST_F(SignalTest, ReplacesTheHandlerOfAnAssignedSubscription)
{
    Subscription subscription = signal.Subscribe(Noting("a"));

    subscription = signal.Subscribe(Noting("b"));
    signal.Fire(1);
    subscription = {};
    signal.Fire(2);

    EXPECT_EQ(calls, (Calls{"b1"}));
}

TEST_F(SignalTest, MayEndBeforeItsSubscriptions)
{
    auto ending = std::make_unique<Signal<int>>();
    Subscription subscription = ending->Subscribe(Noting("a"));

    ending.reset();
    subscription.End();

    EXPECT_TRUE(calls.empty());
}

TEST_F(SignalTest, LetsAHandlerUnsubscribeItselfAndAnother)
{
    Subscription self;
    Subscription next;
    self = signal.Subscribe([&](int) {
        calls.push_back("self");
        self.End();
        next.End();
    });
    next = signal.Subscribe(Noting("next"));
    Subscription const last = signal.Subscribe(Noting("last"));

    signal.Fire(1);
    signal.Fire(2);

    EXPECT_EQ(calls, (Calls{"self", "last1", "last2"}));
    EXPECT_EQ(signal.Count(), 1u);
}

TEST_F(SignalTest, CallsAHandlerThatIsSubscribedWhileFiringFromTheNextTimeOn)
{
    Subscription late;
    Subscription const first = signal.Subscribe([&](int number) {
        if (number == 1)
        {
            late = signal.Subscribe(Noting("late"));
        }
    });

    signal.Fire(1);
    EXPECT_TRUE(calls.empty());
    signal.Fire(2);
    EXPECT_EQ(calls, (Calls{"late2"}));
}

TEST_F(SignalTest, KeepsAHandlerThatUnsubscribesItselfUntilItReturns)
{
    auto held = std::make_shared<std::string>("held");
    std::weak_ptr<std::string> const watched = held;
    Subscription self;
    self = signal.Subscribe([&, held = std::move(held)](int) {
        self.End();
        calls.push_back(*held);
    });

    signal.Fire(1);

    EXPECT_EQ(calls, (Calls{"held"}));
    EXPECT_TRUE(watched.expired());
}

TEST_F(SignalTest, MayEndWithinACallWhileTheSubscriptionsStay)
{
    auto ending = std::make_unique<Signal<int>>();
    auto held = std::make_shared<std::string>("held");
    Subscription const first = ending->Subscribe([&, held](int) {
        ending.reset();
        calls.push_back(*held);
    });
    Subscription const second = ending->Subscribe(Noting("b"));

    ending->Fire(1);

    EXPECT_EQ(calls, (Calls{"held"}));
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(SignalTest, LetsAnExceptionLeaveAndCountsTheCallAsEnded)
{
    std::optional<Subscription> thrower(signal.Subscribe([](int) { throw std::runtime_error("handler"); }));
    Subscription const b = signal.Subscribe(Noting("b"));

    EXPECT_THROW(std::async(std::launch::async, [this] { signal.Fire(1); }).get(), std::runtime_error);
    EXPECT_TRUE(calls.empty());

    thrower.reset(); // would hang here
    signal.Fire(2);
    EXPECT_EQ(calls, (Calls{"b2"}));
}

TEST_F(SignalTest, FiresWithoutAnAllocation)
{
    int sum = 0;
    Subscription const a = signal.Subscribe([&sum](int number) { sum += number; });
    Subscription const b = signal.Subscribe([&sum](int number) { sum += number; });

    ZuTest::AllocationCounter const counter;
    signal.Fire(21);

    EXPECT_EQ(counter.Count(), 0u);
    EXPECT_EQ(sum, 42);
}

TEST_F(SignalTest, WaitsForACallOfTheHandlerOnEveryOtherThread)
{
    constexpr int CALLERS = 3;
    std::latch inside(CALLERS);
    std::promise<void> mayLeave;
    std::shared_future<void> const leaving = mayLeave.get_future().share();
    std::atomic<int> left{0};
    std::optional<Subscription> subscription(signal.Subscribe([&](int) {
        inside.count_down();
        leaving.wait_for(PATIENCE);
        ++left;
    }));
    std::vector<std::thread> callers;
    for (int i = 0; i < CALLERS; ++i)
    {
        callers.emplace_back([this] { signal.Fire(1); });
    }
    inside.wait();

    auto ended = std::async(std::launch::async, [&] {
        subscription.reset();
        return left.load();
    });
    while (!signal.Empty())
    {
        std::this_thread::yield(); // until the removal has begun
    }
    EXPECT_EQ(left, 0);
    mayLeave.set_value();

    EXPECT_EQ(ended.get(), CALLERS);
    for (std::thread& caller : callers)
    {
        caller.join();
    }
}

TEST_F(SignalTest, DoesNotWaitForACallOfAnotherHandler)
{
    std::latch inside(1);
    std::promise<void> mayLeave;
    Subscription const blocking = signal.Subscribe([&](int) {
        inside.count_down();
        EXPECT_EQ(mayLeave.get_future().wait_for(PATIENCE), std::future_status::ready);
    });
    std::optional<Subscription> other(signal.Subscribe(Noting("other")));
    std::thread caller([this] { signal.Fire(1); });
    inside.wait();

    other.reset(); // would time out here
    mayLeave.set_value();
    caller.join();

    EXPECT_TRUE(calls.empty());
}

TEST_F(SignalTest, DoesNotWaitForNestedCallsOnItsOwnThread)
{
    int count = 0;
    Subscription subscription;
    subscription = signal.Subscribe([&](int depth) {
        ++count;
        depth > 0 ? signal.Fire(depth - 1) : subscription.End(); // would hang here
    });

    signal.Fire(2);
    signal.Fire(2);

    EXPECT_EQ(count, 3);
}

TEST_F(SignalTest, LetsHandlersOfTwoThreadsRunConcurrently)
{
    std::latch meeting(2);
    Subscription const subscription = signal.Subscribe([&meeting](int) { meeting.arrive_and_wait(); });

    std::thread other([this] { signal.Fire(1); });
    signal.Fire(2); // would hang here
    other.join();

    EXPECT_TRUE(meeting.try_wait());
}

TEST_F(SignalTest, CallsNoHandlerAfterItsEndWhileAnotherThreadFires)
{
    std::atomic<bool> fire{true};
    std::atomic<int> called{0};
    Subscription const counting = signal.Subscribe([&called](int) { ++called; });
    std::thread firing([&] {
        while (fire)
        {
            signal.Fire(1);
        }
    });

    for (int i = 0; i < 1000 || called == 0; ++i)
    {
        auto alive = std::make_unique<int>(7); // freed as soon as the subscription has ended
        Subscription const subscription = signal.Subscribe([used = alive.get()](int) { EXPECT_EQ(*used, 7); });
    }
    fire = false;
    firing.join();

    EXPECT_EQ(signal.Count(), 1u);
}

TEST_F(SignalTest, BindsAFunctionUntilTheSubscriptionEnds)
{
    Subscription subscription;
    std::function<void(int)> const function = subscription.Bind(Noting("a"));

    function(1);
    subscription.End();
    function(2);

    EXPECT_EQ(calls, (Calls{"a1"}));
}

TEST_F(SignalTest, BindsOneFunctionAtATime)
{
    Subscription subscription;
    std::function<void(int)> const first = subscription.Bind(Noting("a"));
    std::function<void(int)> const second = subscription.Bind(Noting("b"));

    first(1);
    second(1);

    EXPECT_EQ(calls, (Calls{"b1"}));
    EXPECT_FALSE(subscription.Bind(std::function<void(int)>()));
}

TEST_F(SignalTest, EndsABoundFunctionWhileAnotherThreadCallsAndDestroysIt)
{
    for (int i = 0; i < 200; ++i)
    {
        auto alive = std::make_unique<int>(7); // freed as soon as the subscription has ended
        Subscription subscription;
        std::latch called(1);
        std::function<void(int)> function =
            subscription.Bind(std::function<void(int)>([used = alive.get()](int number) { EXPECT_EQ(*used, number); }));
        std::thread caller([&called, function = std::move(function)]() mutable {
            function(7);
            called.count_down();
            function(7);
            function = nullptr;
        });
        called.wait();

        subscription.End();
        alive.reset();
        caller.join();
    }
}

} // namespace Zu

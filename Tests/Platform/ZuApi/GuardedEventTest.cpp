#include "ZuApi/GuardedEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Zu
{

class GuardedEventTest : public testing::Test
{
protected:
    std::function<void(int)> Noting(std::string name)
    {
        return [this, name](int number) { calls.push_back(name + std::to_string(number)); };
    }

    using Calls = std::vector<std::string>;

    GuardedEvent<int> event;
    Calls calls;
};

TEST_F(GuardedEventTest, CallsHandlersInOrderOfAddition)
{
    event.Add(Noting("a"));
    event.Add(Noting("b"));

    event.Fire(7);

    EXPECT_EQ(calls, (Calls{"a7", "b7"}));
    EXPECT_EQ(event.Count(), 2u);
}

TEST_F(GuardedEventTest, StoresNoEmptyFunctionAndTakesABadIdAsNothing)
{
    GuardedEvent<int> other;
    auto const foreign = other.Add(Noting("other"));
    EXPECT_FALSE(event.Add({}).second);
    EXPECT_TRUE(event.Empty());
    auto const id = event.Add(Noting("a"));

    event.Remove({});
    event.Remove(foreign);
    EXPECT_EQ(event.Count(), 1u);
    event.Remove(id);
    event.Remove(id);
    event.Fire(1);

    EXPECT_TRUE(event.Empty());
    EXPECT_EQ(other.Count(), 1u);
    EXPECT_TRUE(calls.empty());
}

TEST_F(GuardedEventTest, LetsAHandlerRemoveItselfAndAnotherAndAddOneForTheNextTime)
{
    GuardedEvent<int>::CallbackId self;
    GuardedEvent<int>::CallbackId next;
    self = event.Add([&](int) {
        calls.push_back("self");
        event.Remove(self);
        event.Remove(next);
        event.Add(Noting("late"));
    });
    next = event.Add(Noting("next"));
    event.Add(Noting("last"));

    event.Fire(1);
    event.Fire(2);

    EXPECT_EQ(calls, (Calls{"self", "last1", "last2", "late2"}));
}

TEST_F(GuardedEventTest, LetsAHandlerFireAgain)
{
    event.Add([this](int number) {
        calls.push_back("outer" + std::to_string(number));
        if (number == 1)
        {
            event.Fire(2);
        }
    });
    event.Add(Noting("b"));

    event.Fire(1);

    EXPECT_EQ(calls, (Calls{"outer1", "outer2", "b2", "b1"}));
}

TEST_F(GuardedEventTest, LetsAnExceptionLeaveAndStaysUsable)
{
    auto const id = event.Add([](int) { throw std::runtime_error("handler"); });
    event.Add(Noting("b"));

    EXPECT_THROW(event.Fire(1), std::runtime_error);
    EXPECT_TRUE(calls.empty());
    event.Remove(id);
    event.Fire(2);

    EXPECT_EQ(calls, (Calls{"b2"}));
}

TEST_F(GuardedEventTest, EndsWhatAHandlerHoldsOutsideItsLock)
{
    std::shared_ptr<void> held(nullptr, [this](void*) {
        calls.push_back("ended");
        event.Remove({}); // would hang here
    });
    auto const id = event.Add([held](int) {});
    held.reset();

    event.Remove(id);

    EXPECT_EQ(calls, (Calls{"ended"}));
}

TEST_F(GuardedEventTest, LetsHandlersOfTwoThreadsRunSideBySide)
{
    std::latch meeting(2);
    event.Add([&meeting](int) { meeting.arrive_and_wait(); }); // would hang here

    std::thread other([this] { event.Fire(1); });
    event.Fire(2);
    other.join();

    EXPECT_TRUE(meeting.try_wait());
}

TEST_F(GuardedEventTest, IsChangedWhileAnotherThreadFires)
{
    std::atomic<bool> fire{true};
    std::atomic<int> called{0};
    event.Add([&called](int) { ++called; });
    std::thread firing([&] {
        while (fire)
        {
            event.Fire(1);
        }
    });

    for (int i = 0; i < 1000 || called == 0; ++i)
    {
        auto const id = event.Add([&called](int) { ++called; });
        event.Remove(id);
    }
    fire = false;
    firing.join();

    EXPECT_EQ(event.Count(), 1u);
}

} // namespace Zu

#include "ZuApi/Event.h"

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

class EventTest : public testing::Test
{
protected:
    std::function<void(int)> Noting(std::string name)
    {
        return [this, name](int number) { calls.push_back(name + std::to_string(number)); };
    }

    using Calls = std::vector<std::string>;

    Event<int> event;
    Calls calls;
};

TEST_F(EventTest, CallsHandlersInOrderOfAddition)
{
    event.Add(Noting("a"));
    event.Add(Noting("b"));

    event.Fire(7);

    EXPECT_EQ(calls, (Calls{"a7", "b7"}));
}

TEST_F(EventTest, DoesNotStoreAnEmptyFunction)
{
    auto const id = event.Add({});

    EXPECT_FALSE(id.second);
    EXPECT_TRUE(event.Empty());
    event.Remove(id);
    event.Fire(1);
    EXPECT_TRUE(calls.empty());
}

TEST_F(EventTest, RemovesTheNamedHandlerOnly)
{
    auto const a = event.Add(Noting("a"));
    event.Add(Noting("b"));

    event.Remove(a);
    event.Fire(1);

    EXPECT_EQ(calls, (Calls{"b1"}));
    EXPECT_EQ(event.Count(), 1u);
}

TEST_F(EventTest, TakesAStaleIdAsNothing)
{
    auto const a = event.Add(Noting("a"));
    event.Remove(a);
    event.Add(Noting("b"));

    event.Remove(a);
    event.Fire(1);

    EXPECT_EQ(calls, (Calls{"b1"}));
}

TEST_F(EventTest, TakesAnIdOfAnotherEventAsNothing)
{
    Event<int> other;
    auto const id = other.Add(Noting("other"));
    event.Add(Noting("a"));

    event.Remove(id);

    EXPECT_EQ(event.Count(), 1u);
    EXPECT_EQ(other.Count(), 1u);
}

TEST_F(EventTest, LetsAHandlerRemoveItselfAndAnother)
{
    Event<int>::CallbackId self;
    Event<int>::CallbackId next;
    self = event.Add([&](int) {
        calls.push_back("self");
        event.Remove(self);
        event.Remove(next);
    });
    next = event.Add(Noting("next"));
    event.Add(Noting("last"));

    event.Fire(1);
    event.Fire(2);

    EXPECT_EQ(calls, (Calls{"self", "last1", "last2"}));
}

TEST_F(EventTest, CallsAHandlerThatIsAddedWhileFiringFromTheNextTimeOn)
{
    event.Add([this](int number) {
        if (number == 1)
        {
            event.Add(Noting("late"));
        }
    });

    event.Fire(1);
    EXPECT_TRUE(calls.empty());
    event.Fire(2);
    EXPECT_EQ(calls, (Calls{"late2"}));
}

TEST_F(EventTest, SurvivesNestedFiring)
{
    Event<int>::CallbackId id;
    id = event.Add([&](int number) {
        calls.push_back("outer" + std::to_string(number));
        if (number == 1)
        {
            event.Fire(2);
            event.Remove(id);
        }
    });
    event.Add(Noting("b"));

    event.Fire(1);

    EXPECT_EQ(calls, (Calls{"outer1", "outer2", "b2", "b1"}));
    EXPECT_EQ(event.Count(), 1u);
}

TEST_F(EventTest, LetsAnExceptionLeaveAndStaysUsable)
{
    auto const id = event.Add([](int) { throw std::runtime_error("handler"); });
    event.Add(Noting("b"));

    EXPECT_THROW(event.Fire(1), std::runtime_error);
    EXPECT_TRUE(calls.empty());

    event.Remove(id);
    event.Fire(2);
    EXPECT_EQ(calls, (Calls{"b2"}));
}

TEST_F(EventTest, MayEndWithinACallOfItsHandler)
{
    auto ending = std::make_unique<Event<int>>();
    ending->Add(Noting("a"));
    ending->Add([&ending](int) { ending.reset(); });
    ending->Add(Noting("c"));

    ending->Fire(1);

    EXPECT_EQ(calls, (Calls{"a1"}));
}

TEST_F(EventTest, EndsWithinANestedCallWhileBothCallsKeepTheirPlace)
{
    auto ending = std::make_unique<Event<int>>();
    ending->Add([&ending](int depth) { depth == 0 ? ending->Fire(1) : ending.reset(); });
    ending->Add(Noting("b"));

    ending->Fire(0);

    EXPECT_TRUE(calls.empty());
}

TEST_F(EventTest, EndsWhatAHandlerHoldsOutsideItsLock)
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

TEST_F(EventTest, LetsHandlersOfTwoThreadsRunSideBySide)
{
    std::latch meeting(2);
    event.Add([&meeting](int) { meeting.arrive_and_wait(); }); // would hang here

    std::thread other([this] { event.Fire(1); });
    event.Fire(2);
    other.join();

    EXPECT_TRUE(meeting.try_wait());
}

TEST_F(EventTest, WaitsInRemoveForACallOnAnotherThread)
{
    std::latch inside(1);
    std::atomic<bool> left{false};
    auto const id = event.Add([&](int) {
        inside.count_down();
        while (!event.Empty())
        {
            std::this_thread::yield(); // until the removal has begun
        }
        left = true;
    });
    std::thread other([this] { event.Fire(1); });
    inside.wait();

    event.Remove(id);

    EXPECT_TRUE(left);
    other.join();
}

TEST_F(EventTest, LetsAHandlerOfTwoThreadsRemoveItself)
{
    std::latch meeting(2);
    Event<int>::CallbackId id;
    id = event.Add([&](int) {
        meeting.arrive_and_wait();
        event.Remove(id); // the second removal finds nothing, and the first waits for the second call
    });

    std::thread other([this] { event.Fire(1); });
    event.Fire(2);
    other.join();

    EXPECT_TRUE(event.Empty());
}

TEST_F(EventTest, IsChangedWhileAnotherThreadFires)
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

#include "ZuApi/SharedCallbackGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <latch>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Zu
{

namespace
{

constexpr std::chrono::seconds PATIENCE{30};

} // namespace

TEST(SharedCallbackGate, PassesCallsOnWhileItIsOpen)
{
    SharedCallbackGate gate;
    int sum = 0;
    auto const callback = gate.Bind(std::function<void(int)>([&sum](int number) { sum += number; }));

    callback(3);
    callback(4);

    EXPECT_EQ(sum, 7);
}

TEST(SharedCallbackGate, LeavesAnEmptyFunctionEmpty)
{
    EXPECT_FALSE(SharedCallbackGate().Bind(std::function<void()>()));
}

TEST(SharedCallbackGate, LetsNothingThroughOnceItIsGone)
{
    std::optional<SharedCallbackGate> gate(std::in_place);
    bool called = false;
    auto const callback = gate->Bind(std::function<void()>([&called] { called = true; }));

    gate.reset();
    callback();

    EXPECT_FALSE(called);
}

TEST(SharedCallbackGate, LetsCallsRunSideBySide)
{
    SharedCallbackGate gate;
    std::latch meeting(2);
    auto const callback = gate.Bind(std::function<void()>([&meeting] { meeting.arrive_and_wait(); }));

    std::thread other(callback);
    callback(); // would hang here
    other.join();

    EXPECT_TRUE(meeting.try_wait());
}

TEST(SharedCallbackGate, WaitsForEveryCallOnAnotherThread)
{
    constexpr int CALLERS = 3;
    SharedCallbackGate gate;
    std::latch inside(CALLERS);
    std::promise<void> mayLeave;
    std::shared_future<void> const leaving = mayLeave.get_future().share();
    std::atomic<int> left{0};
    auto const callback = gate.Bind(std::function<void()>([&] {
        inside.count_down();
        leaving.wait_for(PATIENCE);
        ++left;
    }));
    std::vector<std::thread> callers;
    for (int i = 0; i < CALLERS; ++i)
    {
        callers.emplace_back(callback);
    }
    inside.wait();

    auto closed = std::async(std::launch::async, [&] {
        gate.Close();
        return left.load();
    });
    mayLeave.set_value();

    EXPECT_EQ(closed.get(), CALLERS);
    for (std::thread& caller : callers)
    {
        caller.join();
    }
}

TEST(SharedCallbackGate, DoesNotWaitForCallsOnItsOwnThread)
{
    SharedCallbackGate gate;
    int calls = 0;
    std::function<void(int)> callback;
    callback = gate.Bind(std::function<void(int)>([&](int depth) {
        ++calls;
        if (depth > 0)
        {
            callback(depth - 1);
            return;
        }
        gate.Close(); // three calls of this thread are under way
    }));

    callback(2);
    callback(2);

    EXPECT_EQ(calls, 3);
}

TEST(SharedCallbackGate, KnowsTheCallsOfItsOwnFromThoseOfAnotherGate)
{
    SharedCallbackGate outer;
    SharedCallbackGate inner;
    int calls = 0;
    auto const innerCallback = inner.Bind(std::function<void()>([&] {
        ++calls;
        outer.Close(); // this thread is inside its call, which encloses the call of the other gate
    }));
    auto const outerCallback = outer.Bind(std::function<void()>([&] {
        innerCallback();
        inner.Close();
    }));

    outerCallback();
    outerCallback();
    innerCallback();

    EXPECT_EQ(calls, 1);
}

TEST(SharedCallbackGate, CountsACallThatThrowsAsEnded)
{
    SharedCallbackGate gate;
    auto const callback = gate.Bind(std::function<void()>([] { throw std::runtime_error("callback"); }));

    EXPECT_THROW(callback(), std::runtime_error);

    gate.Close(); // would hang here
    EXPECT_NO_THROW(callback());
}

TEST(SharedCallbackGate, ClosesWhileOthersCall)
{
    for (int i = 0; i < 100; ++i)
    {
        std::atomic<bool> call{true};
        auto alive = std::make_unique<int>(0); // calls use it; destroyed once the gate is closed
        std::optional<SharedCallbackGate> gate(std::in_place);
        std::atomic<int> calls{0};
        auto const callback = gate->Bind(std::function<void()>([&] {
            EXPECT_EQ(*alive, 0);
            ++calls;
        }));
        std::thread caller([&] {
            while (call)
            {
                callback();
            }
        });
        while (calls == 0)
        {
            std::this_thread::yield();
        }

        gate.reset();
        alive.reset();

        call = false;
        caller.join();
    }
}

} // namespace Zu

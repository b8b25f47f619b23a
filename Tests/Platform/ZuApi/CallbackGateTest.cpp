#include "ZuApi/CallbackGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <latch>
#include <optional>
#include <thread>

namespace Zu
{

namespace
{

constexpr std::chrono::seconds PATIENCE{30};

} // namespace

TEST(CallbackGate, PassesCallsOnWhileItIsOpen)
{
    CallbackGate gate;
    int sum = 0;
    auto const callback = gate.Bind(std::function<void(int)>([&sum](int number) { sum += number; }));

    callback(3);
    callback(4);

    EXPECT_EQ(sum, 7);
}

TEST(CallbackGate, LeavesAnEmptyFunctionEmpty)
{
    EXPECT_FALSE(CallbackGate().Bind(std::function<void()>()));
}

TEST(CallbackGate, LetsNothingThroughOnceItIsGone)
{
    std::optional<CallbackGate> gate(std::in_place);
    bool called = false;
    auto const callback = gate->Bind(std::function<void()>([&called] { called = true; }));

    gate.reset();
    callback();

    EXPECT_FALSE(called);
}

TEST(CallbackGate, WaitsForACallOnAnotherThread)
{
    CallbackGate gate;
    std::latch inside(1);
    std::promise<void> mayLeave;
    std::atomic<bool> hasLeft{false};
    auto const callback = gate.Bind(std::function<void()>([&] {
        inside.count_down();
        mayLeave.get_future().wait_for(PATIENCE);
        hasLeft = true;
    }));
    std::thread caller(callback);
    inside.wait();

    auto closed = std::async(std::launch::async, [&] {
        gate.Close();
        return hasLeft.load();
    });
    mayLeave.set_value();

    EXPECT_TRUE(closed.get());
    caller.join();
}

TEST(CallbackGate, DoesNotWaitForACallOnItsOwnThread)
{
    CallbackGate gate;
    int calls = 0;
    auto const callback = gate.Bind(std::function<void()>([&] {
        ++calls;
        gate.Close();
    }));

    callback();
    callback();

    EXPECT_EQ(calls, 1);
}

} // namespace Zu

#include "ZuScan/AlignCompletionStatus.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

namespace ZuScan
{

using AlignEvent = Zu::Event<AlignCompletionStatus>;

TEST(AlignmentCompletedEvent, BehavesAsAnyOtherEventOnOneThread)
{
    AlignEvent event;
    std::vector<int> calls;
    AlignEvent::CallbackId first;
    first = event.Add([&](AlignCompletionStatus status) {
        calls.push_back(static_cast<int>(status));
        event.Remove(first);
        event.Add([&](AlignCompletionStatus) { calls.push_back(30); });
    });
    event.Add([&](AlignCompletionStatus status) { calls.push_back(20 + static_cast<int>(status)); });

    EXPECT_FALSE(event.Add({}).second);
    event.Fire(AlignCompletionStatus::FAILED);
    event.Remove(first); // stale by now
    event.Fire(AlignCompletionStatus::SUCCESS);

    EXPECT_EQ(calls, (std::vector<int>{1, 21, 20, 30}));
    EXPECT_EQ(event.Count(), 2U);
    EXPECT_FALSE(event.Empty());
}

TEST(AlignmentCompletedEvent, LetsAnExceptionOfAHandlerOut)
{
    AlignEvent event;
    event.Add([](AlignCompletionStatus) { throw std::runtime_error("handler"); });

    EXPECT_THROW(event.Fire(AlignCompletionStatus::SUCCESS), std::runtime_error);
    EXPECT_EQ(event.Count(), 1U);
}

TEST(AlignmentCompletedEvent, WaitsInRemoveForACallOnAnotherThread)
{
    AlignEvent event;
    std::latch entered(1);
    std::latch removing(1);
    std::atomic<bool> ended{false};
    auto const id = event.Add([&](AlignCompletionStatus) {
        entered.count_down();
        removing.wait();
        ended = true;
    });

    std::thread scanner([&] { event.Fire(AlignCompletionStatus::SUCCESS); });
    entered.wait();
    removing.count_down();
    event.Remove(id);

    EXPECT_TRUE(ended);
    scanner.join();
}

TEST(AlignmentCompletedEvent, TakesAdditionsAndRemovalsWhileItFires)
{
    AlignEvent event;
    std::atomic<int> calls{0};
    event.Add([&calls](AlignCompletionStatus) { ++calls; });

    std::thread scanner([&event] {
        for (int i = 0; i < 500; ++i)
        {
            event.Fire(AlignCompletionStatus::SUCCESS);
        }
    });
    for (int i = 0; i < 500; ++i)
    {
        event.Remove(event.Add([](AlignCompletionStatus) {}));
    }
    scanner.join();

    EXPECT_EQ(calls, 500);
    EXPECT_EQ(event.Count(), 1U);
}

} // namespace ZuScan

#include "Host/Module/UpdateGate.h"

#include "Support/RecordingSink.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <vector>

namespace ZuHost
{

namespace
{

constexpr uint64 NO_PATIENCE_USEC = 1000;

/// Begins and ends an exclusive update on another thread. Returns the status of the attempt.
int32 StatusOnAnotherThread(UpdateGate& gate)
{
    return std::async(std::launch::async,
                      [&gate] {
                          try
                          {
                              gate.BeginUpdate(true);
                              gate.EndUpdate();
                              return int32{Zu::Status::SUCCESS};
                          }
                          catch (Zu::Exception const& exception)
                          {
                              return exception.Status();
                          }
                      })
        .get();
}

} // namespace

TEST(UpdateGate, NestsOnOneThread)
{
    UpdateGate gate(NO_PATIENCE_USEC);

    gate.BeginUpdate(true);
    gate.BeginUpdate(true);
    gate.EndUpdate();

    EXPECT_TRUE(gate.IsOpen());
    EXPECT_EQ(StatusOnAnotherThread(gate), Zu::Status::BUSY);
    gate.EndUpdate();
    EXPECT_FALSE(gate.IsOpen());
    EXPECT_EQ(StatusOnAnotherThread(gate), Zu::Status::SUCCESS);
}

TEST(UpdateGate, IgnoresAnEndWithoutABegin)
{
    UpdateGate gate(NO_PATIENCE_USEC);
    gate.EndUpdate();
    gate.BeginUpdate(true);

    std::async(std::launch::async, [&gate] { gate.EndUpdate(); }).get();

    EXPECT_TRUE(gate.IsOpen());
}

TEST(UpdateGate, ClosesWhatARequestLeftOpen)
{
    ZuTest::LogRecorder log;
    UpdateGate gate(NO_PATIENCE_USEC);
    {
        UpdateGate::Request const request(gate);
        gate.BeginUpdate(true);
        gate.BeginUpdate(true);
    }

    EXPECT_FALSE(gate.IsOpen());
    EXPECT_EQ(StatusOnAnotherThread(gate), Zu::Status::SUCCESS);
    EXPECT_EQ(log.CountOfText("A request has ended during its change of the configuration. What it has changed stays"),
              1u);
}

TEST(UpdateGate, LeavesTheBracketsOfOtherThreadsToTheirRequests)
{
    UpdateGate gate(NO_PATIENCE_USEC);
    gate.BeginUpdate(true);

    std::async(std::launch::async, [&gate] { UpdateGate::Request const request(gate); }).get();

    EXPECT_TRUE(gate.IsOpen());
}

TEST(UpdateGate, KnowsTheThreadWithTheOpenBracket)
{
    UpdateGate gate(NO_PATIENCE_USEC);
    EXPECT_FALSE(gate.IsOpenHere());

    gate.BeginUpdate(true);

    EXPECT_TRUE(gate.IsOpenHere());
    EXPECT_FALSE(std::async(std::launch::async, [&gate] { return gate.IsOpenHere(); }).get());
}

TEST(UpdateGate, LetsOneThreadInAtATime)
{
    UpdateGate gate;
    int unguarded = 0; // the gate guards it
    std::vector<std::future<void>> threads;

    for (int i = 0; i < 4; ++i)
    {
        threads.push_back(std::async(std::launch::async, [&] {
            for (int round = 0; round < 500; ++round)
            {
                gate.BeginUpdate(true);
                ++unguarded;
                gate.EndUpdate();
            }
        }));
    }
    for (auto& thread : threads)
    {
        thread.get();
    }

    EXPECT_EQ(unguarded, 2000);
}

} // namespace ZuHost

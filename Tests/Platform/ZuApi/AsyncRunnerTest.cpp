#include "ZuApi/AsyncRunner.h"

#include "Support/RecordingSink.h"
#include "Support/SignalCounter.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using ZuTest::LogRecorder;
using ZuTest::SignalCounter;

namespace Zu
{

namespace
{

/// The status that an operation throws; 1 if it throws nothing.
int32 StatusOf(std::function<void()> operation)
{
    try
    {
        operation();
        return Status::SUCCESS;
    }
    catch (Exception const& exception)
    {
        return exception.Status();
    }
}

std::string NameOfThisThread()
{
    std::array<char, 32> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

} // namespace

TEST(AsyncRunner, RunsTasksInOrderOnAThreadOfItsOwn)
{
    AsyncRunner runner;
    std::vector<int> order;
    std::vector<std::thread::id> threads;

    for (int number = 0; number < 3; ++number)
    {
        runner.Run([&order, &threads, number] {
            order.push_back(number);
            threads.push_back(std::this_thread::get_id());
        });
    }
    runner.RunAndWait([] {}, wTIMEOUT_INFINITE);

    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
    ASSERT_EQ(threads.size(), 3u);
    EXPECT_NE(threads[0], std::this_thread::get_id());
    EXPECT_EQ(threads[0], threads[2]);
}

TEST(AsyncRunner, NamesItsThread)
{
    std::string first;
    std::string second;
    AsyncRunner unnamed;
    AsyncRunner named("Fetch");

    unnamed.RunAndWait([&first] { first = NameOfThisThread(); }, wTIMEOUT_INFINITE);
    named.RunAndWait([&second] { second = NameOfThisThread(); }, wTIMEOUT_INFINITE);

    EXPECT_EQ(first, "AsyncRunner");
    EXPECT_EQ(second, "Fetch");
    EXPECT_EQ(StatusOf([] { AsyncRunner("a name that is too long"); }), Status::BAD_ARGUMENT);
}

TEST(AsyncRunner, ReturnsBeforeTheTaskHasRun)
{
    SignalCounter opened;
    SignalCounter ran;
    AsyncRunner runner;

    runner.Run([&] {
        EXPECT_TRUE(opened.Wait());
        ran.Signal();
    });
    EXPECT_EQ(ran.Count(), 0u);
    opened.Signal();

    EXPECT_TRUE(ran.Wait());
}

TEST(AsyncRunner, SurvivesATaskThatThrows)
{
    LogRecorder const log;
    AsyncRunner runner;

    runner.Run([] { ZU_THROW(Status::WRONG_STATE); });
    runner.Run([] { throw 7; });
    runner.RunAndWait([] {}, wTIMEOUT_INFINITE);

    EXPECT_EQ(log.CountOfText("EXCEPTION THROWN: "), 2u);
    EXPECT_GE(log.Lines().size(), 4u); // with the log entry and the back trace of the first
}

TEST(AsyncRunner, PassesOnWhatAWaitedTaskThrows)
{
    LogRecorder const log;
    AsyncRunner runner;

    EXPECT_THROW(runner.RunAndWait([] { throw std::out_of_range("beyond"); }, wTIMEOUT_INFINITE), std::out_of_range);
    EXPECT_EQ(StatusOf([&] { runner.RunAndWait([] { ZU_THROW(Status::NOT_FOUND); }, wTIMEOUT_INFINITE); }),
              Status::NOT_FOUND);

    EXPECT_TRUE(log.Lines().empty());
}

TEST(AsyncRunner, GivesUpAWaitAndRunsTheTaskAllTheSame)
{
    LogRecorder const log;
    SignalCounter opened;
    SignalCounter ran;
    {
        AsyncRunner runner;
        runner.Run([&opened] { EXPECT_TRUE(opened.Wait()); });

        EXPECT_EQ(StatusOf([&] {
                      runner.RunAndWait(
                          [&ran] {
                              ran.Signal();
                              throw std::runtime_error("too late");
                          },
                          1'000);
                  }),
                  Status::TIME_OUT);

        opened.Signal();
        EXPECT_TRUE(ran.Wait());
    }
    EXPECT_EQ(log.CountOfText("EXCEPTION THROWN: "), 1u); // logged, because no caller waits for the result
}

TEST(AsyncRunner, RefusesAnEmptyTask)
{
    AsyncRunner runner;

    EXPECT_EQ(StatusOf([&] { runner.Run({}); }), Status::BAD_ARGUMENT);
    EXPECT_EQ(StatusOf([&] { runner.RunAndWait({}, 0); }), Status::BAD_ARGUMENT);
}

TEST(AsyncRunner, RefusesATaskThatWouldWaitForItself)
{
    AsyncRunner runner;
    int32 status = Status::SUCCESS;

    runner.RunAndWait([&] { status = StatusOf([&] { runner.RunAndWait([] {}, wTIMEOUT_INFINITE); }); },
                      wTIMEOUT_INFINITE);

    EXPECT_EQ(status, Status::WRONG_STATE);
}

TEST(AsyncRunner, LetsATaskGiveItMore)
{
    SignalCounter ran;
    AsyncRunner runner;

    runner.Run([&] { runner.Run([&ran] { ran.Signal(); }); });

    EXPECT_TRUE(ran.Wait());
}

TEST(AsyncRunner, WaitsAtItsEndForWhatRunsAndDropsTheRest)
{
    SignalCounter begun;
    SignalCounter dropped;
    std::atomic<bool> ended{false};
    std::atomic<bool> ranBehind{false};
    {
        AsyncRunner runner;
        runner.Run([&] {
            begun.Signal();
            EXPECT_TRUE(dropped.Wait()); // the destructor of the runner has begun
            ended = true;
        });
        std::shared_ptr<void> const held(nullptr, [&](void*) { dropped.Signal(); });
        runner.Run([&ranBehind, held] { ranBehind = true; });
        ASSERT_TRUE(begun.Wait());
    }

    EXPECT_TRUE(ended);
    EXPECT_FALSE(ranBehind);
}

TEST(AsyncRunner, TellsWhoWaitsWhenItEndsFirst)
{
    SignalCounter begun;
    SignalCounter opened;
    auto runner = std::make_unique<AsyncRunner>();
    runner->Run([&] {
        begun.Signal();
        EXPECT_TRUE(opened.Wait());
    });
    ASSERT_TRUE(begun.Wait());
    AsyncRunner& waitedFor = *runner;
    int32 status = Status::SUCCESS;
    std::shared_ptr<void> entered(nullptr, [&](void*) { opened.Signal(); });
    SignalCounter given;
    std::thread waiting([&] {
        given.Signal();
        status = StatusOf([&] { waitedFor.RunAndWait([held = std::move(entered)] {}, wTIMEOUT_INFINITE); });
    });
    ASSERT_TRUE(given.Wait());
    // Both orders are correct: a runner that is ending drops queued tasks and tasks that arrive later.
    std::thread ending([&] { runner.reset(); });
    waiting.join();
    ending.join();

    EXPECT_EQ(status, Status::WRONG_STATE);
}

TEST(AsyncRunner, MayBeEndedByATaskOfItsOwn)
{
    SignalCounter ended;
    auto runner = std::make_shared<std::unique_ptr<AsyncRunner>>(std::make_unique<AsyncRunner>());

    (*runner)->Run([runner, &ended] {
        runner->reset();
        ended.Signal();
    });

    EXPECT_TRUE(ended.Wait());
}

} // namespace Zu

#include "Host/Retry/StartRetry.h"

#include "Support/CallLog.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <thread>

namespace ZuHost
{

namespace
{

using Calls = ZuTest::CallLog::Calls;

constexpr uint64 SECOND = 1'000'000;
constexpr char const* PATH = "/controls/One";

} // namespace

/// Services that start or fail as the test demands. The test sets the clock.
class StartRetryTest : public testing::Test
{
protected:
    StartRetryTest() : retry(problems, MakeServices(), [this] { return nowUsec.load(); })
    {
    }

    StartRetry::Services MakeServices()
    {
        StartRetry::Services services;
        services.runAsChange = [this](std::string const& typeName, std::function<void()> const& work) {
            calls.Add("turn " + typeName);
            if (onTurn)
            {
                onTurn();
            }
            work();
        };
        services.start = [this](std::string const& typeName) { StartService(typeName); };
        services.failedStarts = [this] {
            std::scoped_lock const guard(lock);
            std::vector<ZuControl::ControlVitals::FailedStarts> list;
            for (auto const& [typeName, failed] : failures)
            {
                list.push_back(failed);
            }
            return list;
        };
        services.noteChange = [this] { calls.Add("changed"); };
        return services;
    }

    /// Does the work of the module for an enabled service: starts it, or fails as the test demands.
    void StartService(std::string const& typeName)
    {
        calls.Add("start " + typeName);
        if (onStart)
        {
            onStart();
        }
        std::scoped_lock const guard(lock);
        if (auto const reason = taken.find(typeName); reason != taken.end())
        {
            auto& failed = failures[typeName];
            failed = {typeName, failed.count + 1, reason->second};
            ZU_THROW(-5, "%s", reason->second.c_str());
        }
    }

    void Take(std::string const& typeName, std::string const& reason)
    {
        std::scoped_lock const guard(lock);
        taken[typeName] = reason;
    }

    void Free(std::string const& typeName)
    {
        std::scoped_lock const guard(lock);
        taken.erase(typeName);
    }

    /// A load of a job that enables this service.
    void LoadJobWith(std::string const& typeName)
    {
        StartRetry::Load const load(retry);
        EXPECT_TRUE(retry.Wanted().empty());
        EXPECT_ANY_THROW(StartService(typeName));
    }

    void Update(nlohmann::json const& body, std::function<void()> const& update, char const* path = PATH)
    {
        retry.RunUpdate(path, body, update);
    }

    std::vector<std::string> ProblemTexts() const
    {
        std::vector<std::string> texts;
        for (auto const& problem : problems.List())
        {
            EXPECT_EQ(problem.severity, ZuCommon::ProblemsManager::SEVERITY_ERROR);
            EXPECT_EQ(problem.source, "Services");
            texts.push_back(problem.text);
        }
        return texts;
    }

    ZuCommon::ProblemsManager problems;
    ZuTest::CallLog calls;
    std::atomic<uint64> nowUsec{100 * SECOND};
    std::function<void()> onTurn;
    std::function<void()> onStart;
    std::mutex lock; // guards the two below
    std::map<std::string, std::string> taken;
    std::map<std::string, ZuControl::ControlVitals::FailedStarts> failures;
    StartRetry retry;
};

TEST_F(StartRetryTest, WantsNothingWhileEveryServiceStarts)
{
    ZuTest::LogRecorder const log;

    retry.Start("One");

    EXPECT_EQ(calls.All(), (Calls{"start One"}));
    EXPECT_TRUE(retry.Wanted().empty());
    EXPECT_EQ(retry.NextUsec(), wTIMEOUT_INFINITE);
    EXPECT_EQ(ProblemTexts(), std::vector<std::string>{});
    EXPECT_EQ(log.Lines(), std::vector<ZuTest::LogLine>{});
}

TEST_F(StartRetryTest, TriesAgainAfterASecondAndThenAfterTwiceTheWaitUpToAMinute)
{
    Take("One", "the port is taken");
    retry.Start("One");
    for (uint64 const waitSeconds : {1u, 2u, 4u, 8u, 16u, 32u, 60u, 60u, 60u})
    {
        EXPECT_EQ(retry.NextUsec(), nowUsec + waitSeconds * SECOND);
        EXPECT_EQ(ProblemTexts(),
                  std::vector<std::string>{
                      "Service One could not be started (the port is taken). The host tries again within " +
                      std::to_string(waitSeconds) + (waitSeconds == 1 ? " second." : " seconds.")});
        calls.Clear();
        nowUsec += waitSeconds * SECOND - 1;
        retry.TryDue();
        EXPECT_EQ(calls.All(), Calls{}) << waitSeconds;

        nowUsec += 1;
        retry.TryDue();

        EXPECT_EQ(calls.All(), (Calls{"turn One", "start One"})) << waitSeconds;
    }
    EXPECT_EQ(calls.Count("changed"), 0U) << "an attempt is no change that is to be saved";
}

TEST_F(StartRetryTest, EndsWithAnAttemptThatSucceeds)
{
    Take("One", "the port is taken");
    retry.Start("One");
    Free("One");
    nowUsec += SECOND;
    ZuTest::LogRecorder const log;

    retry.TryDue();

    EXPECT_TRUE(retry.Wanted().empty());
    EXPECT_EQ(ProblemTexts(), std::vector<std::string>{});
    EXPECT_EQ(log.Lines(), std::vector{ZuTest::UserInfo("Service One is running now")});
    EXPECT_EQ(calls.Count("changed"), 0U);
    Take("One", "the port is taken");
    retry.Start("One");
    EXPECT_EQ(retry.NextUsec(), nowUsec + SECOND) << "the next failure begins anew";
}

TEST_F(StartRetryTest, TellsTheUserOfEachReasonOnce)
{
    ZuTest::LogRecorder const log;
    auto const told = [&](char const* reason) {
        return log.CountOfText(std::string("Service One cannot be started: ") + reason);
    };
    Take("One", "the port is taken");
    retry.Start("One");
    nowUsec += SECOND;
    retry.TryDue();
    Take("One", "no such address");
    nowUsec += 2 * SECOND;
    retry.TryDue();

    std::vector<ZuTest::LogLine> const lines = log.Lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], ZuTest::UserError("Service One cannot be started: the port is taken"));
    EXPECT_EQ(lines[1].flags & Zu::Logging::FLAG_USER, 0U);
    EXPECT_EQ(lines[2], ZuTest::UserError("Service One cannot be started: no such address"));
    EXPECT_EQ(told("the port is taken"), 2U);
    EXPECT_EQ(ProblemTexts(),
              std::vector<std::string>{
                  "Service One could not be started (no such address). The host tries again within 4 seconds."});
}

TEST_F(StartRetryTest, LeavesAServiceThatIsWantedToTheAttempts)
{
    Take("One", "the port is taken");
    retry.Start("One");

    retry.Start("One");

    EXPECT_EQ(calls.Count("start One"), 1U);
    EXPECT_EQ(retry.NextUsec(), nowUsec + SECOND);
}

TEST_F(StartRetryTest, WantsWhatALoadCouldNotStart)
{
    Take("One", "the port is taken");
    Take("Two", "it was off before");
    EXPECT_ANY_THROW(StartService("Two"));

    LoadJobWith("One");

    EXPECT_EQ(
        retry.Wanted(),
        (std::map<std::string, std::string>{
            {"One", "Service One could not be started (the port is taken). The host tries again within 1 second."}}));
    EXPECT_EQ(retry.NextUsec(), nowUsec + SECOND);
}

TEST_F(StartRetryTest, ForgetsAtALoadWhatTheJobBeforeWanted)
{
    Take("One", "the port is taken");
    Take("Two", "the port is taken");
    LoadJobWith("One");
    nowUsec += SECOND;
    retry.TryDue();

    LoadJobWith("Two");

    EXPECT_EQ(ProblemTexts(),
              std::vector<std::string>{
                  "Service Two could not be started (the port is taken). The host tries again within 1 second."});
    {
        StartRetry::Load const load(retry);
    }
    EXPECT_TRUE(retry.Wanted().empty());
    EXPECT_EQ(ProblemTexts(), std::vector<std::string>{});
}

TEST_F(StartRetryTest, EndsWithARequestThatNamesEnabled)
{
    for (bool const enables : {false, true})
    {
        Take("One", "the port is taken");
        retry.Start("One");
        calls.Clear();
        Free("One");

        Update({{"enabled", enables}}, [this] {
            EXPECT_EQ(retry.Wanted().size(), 1U); // a save in between is followed by another save
            calls.Add("update");
        });

        EXPECT_EQ(calls.All(), (Calls{"update", "changed"}));
        EXPECT_TRUE(retry.Wanted().empty());
        EXPECT_EQ(ProblemTexts(), std::vector<std::string>{});
    }
}

TEST_F(StartRetryTest, EndsWithARequestWhoseStartFails)
{
    Take("One", "the port is taken");
    retry.Start("One");

    EXPECT_THROW(Update({{"enabled", true}}, [this] { StartService("One"); }), Zu::Exception);

    EXPECT_TRUE(retry.Wanted().empty());
    EXPECT_EQ(calls.Count("changed"), 1U);
}

TEST_F(StartRetryTest, StandsBehindARequestThatIsRefusedOrNamesSomethingElse)
{
    Take("One", "the port is taken");
    retry.Start("One");
    calls.Clear();
    auto const update = [this] { calls.Add("update"); };
    auto const refuse = [] { ZU_THROW(Zu::Status::BAD_ARGUMENT, "no"); };

    Update({{"parameters", {{"enabled", false}}}}, update);
    Update("enabled", update);
    Update({{"enabled", false}}, update, "/controls/Two");
    Update({{"enabled", false}}, update, "/controls/One/outputs");
    Update({{"enabled", false}}, update, "/scanners/One");
    EXPECT_THROW(Update({{"enabled", "perhaps"}}, refuse), Zu::Exception);

    EXPECT_EQ(calls.All(), (Calls{"update", "update", "update", "update", "update"}));
    EXPECT_EQ(retry.Wanted().size(), 1U);
}

TEST_F(StartRetryTest, BeginsTheWaitsAnewAfterAChangeOfTheService)
{
    Take("One", "the port is taken");
    retry.Start("One");
    for (uint64 const waitSeconds : {1u, 2u, 4u})
    {
        nowUsec += waitSeconds * SECOND;
        retry.TryDue();
    }
    EXPECT_EQ(retry.NextUsec(), nowUsec + 8 * SECOND);
    EXPECT_THROW(Update({{"parameters", {}}}, [] { ZU_THROW(Zu::Status::BAD_ARGUMENT, "no"); }), Zu::Exception);
    EXPECT_EQ(retry.NextUsec(), nowUsec + 8 * SECOND);

    Update({{"parameters", {{"port", 1502}}}}, [] {});

    EXPECT_EQ(retry.NextUsec(), nowUsec + SECOND);
    EXPECT_EQ(ProblemTexts(),
              std::vector<std::string>{
                  "Service One could not be started (the port is taken). The host tries again within 1 second."});
}

TEST_F(StartRetryTest, DoesNotStartWhatARequestHasEndedWhileTheAttemptWaitedForItsTurn)
{
    Take("One", "the port is taken");
    retry.Start("One");
    Free("One");
    nowUsec += SECOND;
    calls.Clear();
    onTurn = [this] { Update({{"enabled", false}}, [] {}); };

    retry.TryDue();

    EXPECT_EQ(calls.All(), (Calls{"turn One", "changed"}));
}

TEST_F(StartRetryTest, GoesOnBehindATurnThatDoesNotCome)
{
    Take("One", "the port is taken");
    retry.Start("One");
    Free("One");
    onTurn = [] { throw std::runtime_error("no memory"); };
    nowUsec += SECOND;
    retry.TryDue();
    EXPECT_EQ(retry.NextUsec(), nowUsec + 2 * SECOND);

    onTurn = nullptr;
    nowUsec += 2 * SECOND;
    retry.TryDue();

    EXPECT_TRUE(retry.Wanted().empty());
}

TEST_F(StartRetryTest, TriesEachServiceInItsOwnTime)
{
    Take("One", "the port is taken");
    Take("Two", "no such address");
    retry.Start("One");
    nowUsec += SECOND / 2;
    retry.Start("Two");
    calls.Clear();

    nowUsec += SECOND / 2;
    retry.TryDue();
    EXPECT_EQ(calls.All(), (Calls{"turn One", "start One"}));
    Free("Two");
    nowUsec += SECOND / 2;
    retry.TryDue();

    EXPECT_EQ(calls.All(), (Calls{"turn One", "start One", "turn Two", "start Two"}));
    ASSERT_EQ(retry.Wanted().size(), 1U);
    EXPECT_EQ(retry.Wanted().begin()->first, "One");
}

TEST_F(StartRetryTest, MakesTheAttemptsOnItsThreadUntilItIsStopped)
{
    Take("One", "the port is taken");
    retry.Run();
    retry.Start("One");
    nowUsec += SECOND;
    Take("Two", "no such address");
    retry.Start("Two"); // wakes the thread; moving the clock of the test does not
    ASSERT_TRUE(calls.WaitFor("start One", 2));

    retry.Stop();

    nowUsec += 100 * SECOND;
    EXPECT_EQ(calls.Count("start One"), 2U);
    EXPECT_EQ(retry.Wanted().size(), 2U) << "what is wanted stays wanted, so that it is saved";
}

TEST_F(StartRetryTest, StopsWhileAnAttemptIsFarAway)
{
    Take("One", "the port is taken");
    retry.Start("One");
    retry.Run();

    retry.Stop();

    EXPECT_EQ(calls.Count("start One"), 1U);
}

TEST_F(StartRetryTest, MakesNoAttemptBehindAStop)
{
    Take("One", "the port is taken");
    Take("Two", "the port is taken");
    retry.Start("One");
    retry.Start("Two");
    calls.Clear();
    nowUsec += SECOND;
    onStart = [this] { retry.Stop(); };

    retry.TryDue();

    EXPECT_EQ(calls.All(), (Calls{"turn One", "start One"}));
}

TEST_F(StartRetryTest, WaitsAtItsStopForTheAttemptThatRuns)
{
    Take("One", "the port is taken");
    retry.Start("One");
    calls.Clear();
    nowUsec += SECOND;
    ZuTest::Latch begun;
    ZuTest::Latch end;
    onStart = [&] {
        begun.Open();
        EXPECT_TRUE(end.Wait());
        calls.Add("end");
    };
    retry.Run();
    ASSERT_TRUE(begun.Wait());
    std::thread stopper([this] {
        retry.Stop();
        calls.Add("stopped");
    });
    end.Open();
    stopper.join();

    EXPECT_EQ(calls.All(), (Calls{"turn One", "start One", "end", "stopped"}));
}

TEST(StartRetry, TakesItsProblemsWithIt)
{
    ZuCommon::ProblemsManager problems;
    {
        StartRetry::Services services;
        services.start = [](std::string const&) { ZU_THROW(-5); };
        services.failedStarts = [] { return std::vector<ZuControl::ControlVitals::FailedStarts>{}; };
        StartRetry retry(problems, services);
        retry.Start("One");
        EXPECT_EQ(problems.Count(), 1U);
    }
    EXPECT_EQ(problems.Count(), 0U);
}

} // namespace ZuHost

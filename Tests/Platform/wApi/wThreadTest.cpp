#include "wApi/wThread.h"
#include "Support/SignalCounter.h"
#include "wApi/wTime.h"
#include "wApi/wTypes.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <pthread.h>
#include <string>

using ZuTest::SignalCounter;

namespace
{

int Give(void* argument)
{
    return *static_cast<int*>(argument);
}

int WaitFor(void* argument)
{
    return static_cast<SignalCounter*>(argument)->Wait() ? 1 : 0;
}

class wThreadTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(wThread_Construct(&thread), Zu::Status::SUCCESS);
    }

    wStatus Join(uint64 timeoutUsec = wTIMEOUT_INFINITE)
    {
        return wThread_Join(thread, timeoutUsec, &exitCode);
    }

    SignalCounter opened;
    int exitCode = -1;
    wThread thread;
};

} // namespace

TEST_F(wThreadTest, GivesTheExitCodeOfItsFunction)
{
    int given = 42;
    ASSERT_EQ(wThread_Start(thread, &Give, &given), Zu::Status::SUCCESS);

    EXPECT_EQ(Join(), Zu::Status::SUCCESS);

    EXPECT_EQ(exitCode, 42);
}

TEST_F(wThreadTest, ShowsItsName)
{
    static std::string seen;
    ASSERT_EQ(wThread_SetName(thread, "CtlProtoOp.Disp"), Zu::Status::SUCCESS);

    ASSERT_EQ(wThread_Start(
                  thread,
                  [](void*) {
                      std::array<char, 32> name{};
                      pthread_getname_np(pthread_self(), name.data(), name.size());
                      seen = name.data();
                      return 1;
                  },
                  nullptr),
              Zu::Status::SUCCESS);
    ASSERT_EQ(Join(), Zu::Status::SUCCESS);

    EXPECT_EQ(seen, "CtlProtoOp.Disp");
}

TEST_F(wThreadTest, RefusesANameThatTheSystemCannotShow)
{
    EXPECT_EQ(wThread_SetName(thread, "sixteen bytes..."), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wThread_SetName(thread, nullptr), Zu::Status::BAD_ARGUMENT);
}

TEST_F(wThreadTest, IsJoinedAgainAfterATimeOut)
{
    ASSERT_EQ(wThread_Start(thread, &WaitFor, &opened), Zu::Status::SUCCESS);
    uint64 const begun = wTime_NowUsec();

    EXPECT_EQ(Join(0), Zu::Status::TIME_OUT);
    EXPECT_EQ(Join(10'000), Zu::Status::TIME_OUT);
    EXPECT_GE(wTime_NowUsec() - begun, 10'000u);
    EXPECT_EQ(exitCode, -1);

    opened.Signal();
    EXPECT_EQ(Join(wTIMEOUT_INFINITE - 1), Zu::Status::SUCCESS);
    EXPECT_EQ(exitCode, 1);
}

TEST_F(wThreadTest, RefusesToJoinItself)
{
    struct Self
    {
        wThread& thread;
        wStatus joined;
        wStatus destroyed;
    } self{thread, 1, 1};

    ASSERT_EQ(wThread_Start(
                  thread,
                  [](void* argument) {
                      auto& given = *static_cast<Self*>(argument);
                      given.joined = wThread_Join(given.thread, wTIMEOUT_INFINITE, nullptr);
                      given.destroyed = wThread_Destroy(&given.thread);
                      return 1;
                  },
                  &self),
              Zu::Status::SUCCESS);
    ASSERT_EQ(Join(), Zu::Status::SUCCESS);

    EXPECT_EQ(self.joined, Zu::Status::WRONG_STATE);
    EXPECT_EQ(self.destroyed, Zu::Status::WRONG_STATE);
}

TEST_F(wThreadTest, RefusesToJoinWhatWasNotStarted)
{
    EXPECT_EQ(Join(), Zu::Status::WRONG_STATE);

    int given = 1;
    ASSERT_EQ(wThread_Start(thread, &Give, &given), Zu::Status::SUCCESS);
    ASSERT_EQ(Join(), Zu::Status::SUCCESS);
    EXPECT_EQ(Join(), Zu::Status::WRONG_STATE);
}

TEST_F(wThreadTest, RefusesASecondStartWhileThereIsOneToJoin)
{
    ASSERT_EQ(wThread_Start(thread, &WaitFor, &opened), Zu::Status::SUCCESS);

    EXPECT_EQ(wThread_Start(thread, &WaitFor, &opened), Zu::Status::WRONG_STATE);
    EXPECT_EQ(wThread_Start(thread, nullptr, nullptr), Zu::Status::BAD_ARGUMENT);

    opened.Signal();
    EXPECT_EQ(Join(), Zu::Status::SUCCESS);
}

TEST_F(wThreadTest, IsMadeAnewAfterItsDestruction)
{
    int given = 7;
    EXPECT_EQ(wThread_Construct(&thread), Zu::Status::WRONG_STATE);
    ASSERT_EQ(wThread_Destroy(&thread), Zu::Status::SUCCESS);
    EXPECT_EQ(wThread_Start(thread, &Give, &given), Zu::Status::WRONG_STATE);

    ASSERT_EQ(wThread_Construct(&thread), Zu::Status::SUCCESS);
    ASSERT_EQ(wThread_Start(thread, &Give, &given), Zu::Status::SUCCESS);
    EXPECT_EQ(Join(), Zu::Status::SUCCESS);

    EXPECT_EQ(exitCode, 7);
}

TEST_F(wThreadTest, IsJoinedByItsDestructor)
{
    static std::atomic<bool> ended;
    ended = false;
    {
        wThread scoped;
        ASSERT_EQ(wThread_Construct(&scoped), Zu::Status::SUCCESS);
        ASSERT_EQ(wThread_Start(
                      scoped,
                      [](void*) {
                          wThread_Sleep(1000);
                          ended = true;
                          return 1;
                      },
                      nullptr),
                  Zu::Status::SUCCESS);
    }

    EXPECT_TRUE(ended);
}

TEST_F(wThreadTest, GoesItsOwnWayWhenItEndsItsObject)
{
    struct Given
    {
        std::unique_ptr<wThread> thread = std::make_unique<wThread>();
        SignalCounter started;
        SignalCounter ended;
    } given;
    ASSERT_EQ(wThread_Construct(given.thread.get()), Zu::Status::SUCCESS);

    ASSERT_EQ(wThread_Start(
                  *given.thread,
                  [](void* argument) {
                      auto& shared = *static_cast<Given*>(argument);
                      static_cast<void>(shared.started.Wait());
                      shared.thread.reset();
                      shared.ended.Signal();
                      return 1;
                  },
                  &given),
              Zu::Status::SUCCESS);
    given.started.Signal();

    EXPECT_TRUE(given.ended.Wait());
}

TEST_F(wThreadTest, RestsForAtLeastTheTimeGiven)
{
    uint64 const begun = wTime_NowUsec();

    EXPECT_EQ(wThread_Sleep(2'000), Zu::Status::SUCCESS);

    EXPECT_GE(wTime_NowUsec() - begun, 2'000u);
}

#include "Host/Security/LoginBrake.h"

#include <gtest/gtest.h>

namespace ZuHost
{

class LoginBrakeTest : public testing::Test
{
protected:
    static constexpr uint64 SECOND = 1'000'000;

    /// Makes failing attempts until one has to wait, and returns that time.
    uint64 FailUntilSlow(std::string const& user, std::string const& source)
    {
        for (unsigned i = 0; i < 100; ++i)
        {
            if (uint64 const wait = brake.Begin(user, source, nowUsec); wait != 0)
            {
                return wait;
            }
        }
        return 0;
    }

    LoginBrake brake;
    uint64 nowUsec = 100 * SECOND;
};

TEST_F(LoginBrakeTest, LetsTheFirstFailuresPass)
{
    for (unsigned i = 0; i < LoginBrake::PROMPT_FAILURES; ++i)
    {
        EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), 0U) << i;
    }
    EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), SECOND);
}

TEST_F(LoginBrakeTest, DoublesTheWaitUpToAMinute)
{
    for (uint64 const seconds : {1U, 2U, 4U, 8U, 16U, 32U, 60U, 60U, 60U})
    {
        EXPECT_EQ(FailUntilSlow("anna", "192.0.2.1"), seconds * SECOND);
        nowUsec += seconds * SECOND;
    }
}

TEST_F(LoginBrakeTest, IsNotLengthenedByAttemptsDuringTheWait)
{
    ASSERT_EQ(FailUntilSlow("anna", "192.0.2.1"), SECOND);
    for (unsigned i = 0; i < 1000; ++i)
    {
        brake.Begin("anna", "192.0.2.1", nowUsec + i);
    }
    EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec + SECOND), 0U);
}

TEST_F(LoginBrakeTest, SlowsAGuesserAtOneUserFromManyAddresses)
{
    for (unsigned i = 0; i < LoginBrake::PROMPT_FAILURES; ++i)
    {
        EXPECT_EQ(brake.Begin("anna", "192.0.2." + std::to_string(i), nowUsec), 0U);
    }
    EXPECT_EQ(brake.Begin("anna", "198.51.100.1", nowUsec), SECOND);
    EXPECT_EQ(brake.Begin("bert", "198.51.100.1", nowUsec), 0U);
}

TEST_F(LoginBrakeTest, SlowsAGuesserAtManyUsersFromOneAddress)
{
    for (unsigned i = 0; i < LoginBrake::PROMPT_FAILURES; ++i)
    {
        EXPECT_EQ(brake.Begin("user" + std::to_string(i), "192.0.2.1", nowUsec), 0U);
    }
    EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), SECOND);
    EXPECT_EQ(brake.Begin("anna", "192.0.2.2", nowUsec), 0U);
}

TEST_F(LoginBrakeTest, KeepsNoUserOutOfAnAddressThatIsKnown)
{
    EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), 0U);
    brake.Succeed("anna", "192.0.2.1", nowUsec);
    FailUntilSlow("anna", "198.51.100.1");

    EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), 0U);
    EXPECT_NE(brake.Begin("anna", "192.0.2.2", nowUsec), 0U);
    EXPECT_NE(FailUntilSlow("anna", "192.0.2.1"), 0U) << "guesses from the known address are slowed too";
}

TEST_F(LoginBrakeTest, KeepsNoUserOutForGood)
{
    uint64 const begin = nowUsec;
    for (unsigned i = 0; i < 40; ++i) // a guesser takes every chance
    {
        nowUsec += FailUntilSlow("anna", "198.51.100.1");
    }
    EXPECT_LT(nowUsec, begin + 40 * LoginBrake::MAX_WAIT_USEC);

    EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), 0U);
    brake.Succeed("anna", "192.0.2.1", nowUsec);
    EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), 0U);
}

TEST_F(LoginBrakeTest, GivesTheHolderOfOnePasswordNoFreeGuessesAtOthers)
{
    for (unsigned i = 0; i < LoginBrake::PROMPT_FAILURES; ++i)
    {
        brake.Begin("bert", "192.0.2.1", nowUsec);
    }
    nowUsec += SECOND;
    ASSERT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), 0U);
    brake.Succeed("anna", "192.0.2.1", nowUsec);

    EXPECT_EQ(FailUntilSlow("bert", "192.0.2.1"), 2 * SECOND);
}

TEST_F(LoginBrakeTest, TakesAttemptsBack)
{
    for (unsigned i = 0; i < 100; ++i)
    {
        EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), 0U) << i;
        brake.Cancel("anna", "192.0.2.1", nowUsec);
    }
    FailUntilSlow("anna", "192.0.2.1");
    EXPECT_NE(brake.Begin("anna", "192.0.2.1", nowUsec), 0U) << "the address is not known by that";
}

TEST_F(LoginBrakeTest, ForgetsFailures)
{
    FailUntilSlow("anna", "192.0.2.1");
    nowUsec += LoginBrake::MEMORY_USEC;
    for (unsigned i = 0; i < LoginBrake::PROMPT_FAILURES; ++i)
    {
        EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), 0U) << i;
    }
    EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), SECOND);
}

TEST_F(LoginBrakeTest, RemembersABoundedNumberOfGuessers)
{
    for (unsigned i = 0; i < 3 * LoginBrake::MAX_ROWS; ++i)
    {
        brake.Begin("user" + std::to_string(i), "address" + std::to_string(i), nowUsec);
    }
    EXPECT_NE(brake.Begin("anna", "192.0.2.1", nowUsec), 0U) << "it shares a row with the last ones";
    EXPECT_LE(brake.Begin("anna", "192.0.2.1", nowUsec), LoginBrake::MAX_WAIT_USEC);

    nowUsec += LoginBrake::MEMORY_USEC;
    EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), 0U) << "the first ones are forgotten";
    EXPECT_EQ(brake.Begin("anna", "192.0.2.1", nowUsec), 0U);
}

TEST_F(LoginBrakeTest, RemembersABoundedNumberOfKnownAddresses)
{
    for (unsigned i = 0; i <= LoginBrake::MAX_KNOWN; ++i)
    {
        ++nowUsec;
        std::string const source = "address" + std::to_string(i);
        brake.Begin("anna", source, nowUsec);
        brake.Succeed("anna", source, nowUsec);
    }
    FailUntilSlow("anna", "198.51.100.1");

    EXPECT_NE(brake.Begin("anna", "address0", nowUsec), 0U) << "the oldest is forgotten";
    EXPECT_EQ(brake.Begin("anna", "address1", nowUsec), 0U);
}

} // namespace ZuHost

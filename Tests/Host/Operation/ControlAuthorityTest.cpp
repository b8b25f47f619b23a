#include "Host/Operation/ControlAuthority.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

constexpr uint64 SECOND = 1'000'000;

} // namespace

TEST(ControlAuthority, LetsRestAlwaysRunTheSensorAtFirst)
{
    ControlAuthority authority;
    authority.NoteCommand("ModbusTcp", 100 * SECOND);

    ControlAuthority::State const state = authority.At(101 * SECOND);

    EXPECT_TRUE(state.mayCommand);
    EXPECT_EQ(state.lastProtocol, "ModbusTcp");
    EXPECT_EQ(state.agoUsec, SECOND);
    EXPECT_EQ(RefusalOf([&] { authority.Check(101 * SECOND); }).status, Zu::Status::SUCCESS);
}

TEST(ControlAuthority, NeverLetsRestRunTheSensorIfItIsSetSo)
{
    ControlAuthority authority;
    authority.Set({RestAuthority::NEVER, 10});

    EXPECT_FALSE(authority.At(1000 * SECOND).mayCommand);
    EXPECT_EQ(RefusalOf([&] { authority.Check(1000 * SECOND); }),
              (Refusal{-1000, "REST may not run the sensor: only the protocols may."}));
}

TEST(ControlAuthority, LetsRestWaitUntilNoProtocolHasSentACommandForTheTime)
{
    ControlAuthority authority;
    authority.Set({RestAuthority::WHEN_IDLE, 10});
    EXPECT_TRUE(authority.At(SECOND).mayCommand); // no command so far

    authority.NoteCommand("ModbusTcp", 100 * SECOND);

    EXPECT_FALSE(authority.At(103 * SECOND).mayCommand);
    EXPECT_EQ(authority.At(103 * SECOND).waitUsec, 7 * SECOND);
    EXPECT_EQ(
        RefusalOf([&] { authority.Check(103 * SECOND); }),
        (Refusal{-1000, "REST may not run the sensor now: ModbusTcp has sent a command less than 10 seconds ago."}));
    EXPECT_FALSE(authority.At(110 * SECOND - 1).mayCommand);
    EXPECT_TRUE(authority.At(110 * SECOND).mayCommand);
}

TEST(ControlAuthority, KeepsTheLatestCommand)
{
    ControlAuthority authority;

    authority.NoteCommand("B", 20);
    authority.NoteCommand("A", 10);
    EXPECT_EQ(authority.At(20).lastProtocol, "B");

    authority.NoteCommand("", 30);
    EXPECT_EQ(authority.At(30).lastProtocol, "an unknown protocol");
    EXPECT_EQ(authority.At(10).agoUsec, 0u); // a look that is older than the command
}

} // namespace ZuHost

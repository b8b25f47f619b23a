#include "Host/Http/IoLoop.h"

#include "Host/Http/IIoUser.h"
#include "ZuApi/Exception.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <functional>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace ZuHost
{

namespace
{

constexpr uint64 PATIENCE_USEC = 30'000'000;

/// Both ends of a connection, one of them watched.
class Watched final : public IIoUser
{
public:
    Watched()
    {
        int ends[2]{};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends), 0);
        near = Descriptor(ends[0]);
        far = Descriptor(ends[1]);
    }

    void OnReady(uint32 events) override
    {
        seen.push_back(events);
        if (whenReady)
        {
            whenReady();
        }
    }

    void SendFromFar() const
    {
        EXPECT_EQ(write(far.Number(), "x", 1), 1);
    }

    Descriptor near;
    Descriptor far;
    std::vector<uint32> seen;
    std::function<void()> whenReady;
};

} // namespace

class IoLoopTest : public testing::Test
{
protected:
    /// Runs until `isReached`, or fails.
    void RunUntil(std::function<bool()> const& isReached)
    {
        uint64 const deadlineUsec = wTime_AfterUsec(PATIENCE_USEC);
        while (!isReached() && wTime_NowUsec() < deadlineUsec)
        {
            loop.RunOne(deadlineUsec);
        }
        EXPECT_TRUE(isReached());
    }

    IoLoop loop;
};

TEST_F(IoLoopTest, TellsOfWhatIsWatchedAlone)
{
    Watched watched;
    Watched other;
    loop.Watch(watched.near.Number(), EPOLLIN, watched);
    other.SendFromFar();
    watched.SendFromFar();

    RunUntil([&] { return !watched.seen.empty(); });

    EXPECT_EQ(watched.seen, std::vector<uint32>{EPOLLIN});
    EXPECT_TRUE(other.seen.empty());
}

TEST_F(IoLoopTest, TellsNothingWhileNothingIsAskedFor)
{
    Watched watched;
    loop.Watch(watched.near.Number(), EPOLLIN, watched);
    loop.Change(watched.near.Number(), 0, watched);
    watched.SendFromFar();
    loop.RunOne(0);
    loop.RunOne(0);
    EXPECT_TRUE(watched.seen.empty());

    loop.Change(watched.near.Number(), EPOLLIN, watched);
    RunUntil([&] { return !watched.seen.empty(); });

    EXPECT_EQ(watched.seen, std::vector<uint32>{EPOLLIN});
}

TEST_F(IoLoopTest, CannotWatchWhatIsClosed)
{
    Watched watched;
    int const number = watched.near.Number();
    watched.near.Close();

    EXPECT_THROW(loop.Watch(number, EPOLLIN, watched), Zu::Exception);
    EXPECT_THROW(loop.Change(number, EPOLLIN, watched), Zu::Exception);
}

TEST_F(IoLoopTest, IsWokenForWhatAnotherThreadPosts)
{
    std::vector<int> ran;
    std::thread poster([&] {
        loop.Post([&ran] { ran.push_back(1); });
        loop.Post([&ran] { ran.push_back(2); });
    });

    RunUntil([&] { return ran.size() == 2; });
    poster.join();

    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
}

TEST_F(IoLoopTest, LooksAtTheSocketsAlsoWhileStepsPostSteps)
{
    Watched watched;
    loop.Watch(watched.near.Number(), EPOLLIN, watched);
    std::function<void()> const again = [&] { loop.Post(again); };
    loop.Post(again);
    watched.SendFromFar();

    RunUntil([&] { return !watched.seen.empty(); });

    EXPECT_FALSE(watched.seen.empty());
}

TEST_F(IoLoopTest, RunsAStepBehindWhatHasBeenSeenAlready)
{
    Watched first;
    Watched second;
    bool isSecondTold = false;
    bool hasRun = false;
    auto const close = [&](Watched& other) {
        other.near.Close(); // what has been seen of it is told all the same
        loop.Post([&] {
            isSecondTold = first.seen.size() + second.seen.size() == 2;
            hasRun = true;
        });
    };
    first.whenReady = [&] { close(second); };
    second.whenReady = [&] { close(first); };
    for (Watched* const one : {&first, &second})
    {
        loop.Watch(one->near.Number(), EPOLLIN | EPOLLET, *one);
        one->SendFromFar();
    }

    RunUntil([&] { return hasRun; });

    EXPECT_TRUE(isSecondTold);
}

TEST_F(IoLoopTest, WaitsNoLongerThanItMay)
{
    uint64 const deadlineUsec = wTime_AfterUsec(5'000);

    loop.RunOne(deadlineUsec);

    EXPECT_GE(loop.NowUsec(), deadlineUsec);
    EXPECT_LT(loop.NowUsec(), deadlineUsec + PATIENCE_USEC);
}

TEST_F(IoLoopTest, GoesOnBehindAStepThatThrows)
{
    bool hasRun = false;
    loop.Post([] { throw std::runtime_error("broken"); });
    loop.Post([&hasRun] { hasRun = true; });

    EXPECT_THROW(RunUntil([] { return false; }), std::runtime_error);
    RunUntil([&] { return hasRun; });
}

} // namespace ZuHost

#include "Host/Clinic/ChildProcess.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace ZuHost
{

namespace
{

using Say = ChildProcess::Say;
using Texts = std::vector<std::string>;

constexpr std::chrono::seconds PATIENCE{30};

} // namespace

TEST(ChildProcess, TellsWhatTheWorkSaid)
{
    std::string const longText(100'000, 'x'); // more than a pipe holds

    auto const end = ChildProcess::Run(
        [&](Say const& say) {
            say("first");
            say("");
            say(longText);
        },
        PATIENCE);

    EXPECT_EQ(end.said, (Texts{"first", "", longText}));
    EXPECT_EQ(end.fault, "");
}

TEST(ChildProcess, LeavesThisProcessAsItWas)
{
    int number = 1;

    auto const end = ChildProcess::Run([&](Say const&) { number = 2; }, PATIENCE);

    EXPECT_EQ(end.fault, "");
    EXPECT_EQ(number, 1);
}

TEST(ChildProcess, TakesAnExceptionForAnEnd)
{
    auto const end = ChildProcess::Run(
        [](Say const& say) {
            say("before");
            throw std::runtime_error("away");
        },
        PATIENCE);

    EXPECT_EQ(end.said, (Texts{"before"}));
    EXPECT_EQ(end.fault, "");
}

TEST(ChildProcess, TellsOfASignal)
{
    auto const end = ChildProcess::Run(
        [](Say const& say) {
            say("before");
            raise(SIGKILL);
        },
        PATIENCE);

    EXPECT_EQ(end.said, (Texts{"before"}));
    EXPECT_EQ(end.fault, "ended the process with signal 9 (Killed)");
}

TEST(ChildProcess, TellsOfAnEndThatTheWorkChose)
{
    EXPECT_EQ(ChildProcess::Run([](Say const&) { _exit(0); }, PATIENCE).fault, "ended the process with status 0");
    EXPECT_EQ(ChildProcess::Run([](Say const&) { _exit(7); }, PATIENCE).fault, "ended the process with status 7");
}

TEST(ChildProcess, EndsWhatIsSilent)
{
    auto const end = ChildProcess::Run(
        [](Say const& say) {
            say("before");
            while (true)
            {
                pause();
            }
        },
        std::chrono::milliseconds(2000));

    EXPECT_EQ(end.said, (Texts{"before"}));
    EXPECT_EQ(end.fault, "came to no end within 2000 ms");
}

TEST(ChildProcess, EndsWhatDoesNotStopTalking)
{
    auto const end = ChildProcess::Run(
        [](Say const& say) {
            while (true)
            {
                say("and another thing");
            }
        },
        PATIENCE);

    EXPECT_EQ(end.fault, "did not stop talking");
    EXPECT_GE(end.said.size(), ChildProcess::MOST_BYTES / 18);
    EXPECT_LE(end.said.size(), 2 * ChildProcess::MOST_BYTES / 18);
}

TEST(ChildProcess, DoesNotWaitForWhatTheWorkLeavesBehind)
{
    int lifeline[2] = {-1, -1};
    ASSERT_EQ(pipe(lifeline), 0);

    auto const end = ChildProcess::Run(
        [&](Say const&) {
            if (fork() == 0) // keeps the child's descriptors until this process closes its end
            {
                close(lifeline[1]);
                char byte = 0;
                static_cast<void>(!read(lifeline[0], &byte, 1));
                _exit(0);
            }
        },
        PATIENCE);
    close(lifeline[0]);
    close(lifeline[1]);

    EXPECT_EQ(end.fault, "");
}

} // namespace ZuHost

#include "Host/Service/ServiceNotifier.h"

#include <gtest/gtest.h>

#include <vector>

namespace ZuHost
{

namespace
{

class ServiceNotifierTest : public testing::Test
{
protected:
    static constexpr uint64 BEGIN = 1'000'000'000;
    static constexpr uint64 WATCHDOG = 30'000'000;

    std::vector<std::string> sent;
    ServiceNotifier::Send const record = [this](std::string const& message) { sent.push_back(message); };
    ServiceNotifier notifier{record, WATCHDOG};
};

} // namespace

TEST_F(ServiceNotifierTest, TellsStartReloadAndStop)
{
    notifier.TellReady("Serves http on 127.0.0.1:8080.");
    notifier.TellReloading(17);
    notifier.TellStopping();

    EXPECT_EQ(sent, (std::vector<std::string>{"READY=1\nSTATUS=Serves http on 127.0.0.1:8080.",
                                              "RELOADING=1\nMONOTONIC_USEC=17\nSTATUS=Reads its files again.",
                                              "STOPPING=1\nSTATUS=Stops in order."}));
}

TEST_F(ServiceNotifierTest, BeatsTwiceInTheTimeOfTheWatchdog)
{
    notifier.Beat({}, BEGIN);
    notifier.Beat({}, BEGIN + WATCHDOG / 2 - 1);
    EXPECT_EQ(sent, (std::vector<std::string>{"WATCHDOG=1"}));

    notifier.Beat({}, BEGIN + WATCHDOG / 2);
    EXPECT_EQ(sent, (std::vector<std::string>{"WATCHDOG=1", "WATCHDOG=1"}));
}

TEST_F(ServiceNotifierTest, DoesNotBeatWithAFaultAndShowsIt)
{
    notifier.Beat({"A hangs.", "B hangs."}, BEGIN);
    notifier.Beat({"A hangs.", "B hangs."}, BEGIN + WATCHDOG);
    EXPECT_EQ(sent, (std::vector<std::string>{"STATUS=A hangs."}));

    notifier.Beat({}, BEGIN + 2 * WATCHDOG);
    EXPECT_EQ(sent, (std::vector<std::string>{"STATUS=A hangs.", "STATUS=Runs without faults.", "WATCHDOG=1"}));
}

TEST_F(ServiceNotifierTest, DoesNotBeatWithoutAWatchdog)
{
    ServiceNotifier without(record, 0);

    without.Beat({}, BEGIN);
    without.Beat({}, BEGIN + WATCHDOG);

    EXPECT_TRUE(sent.empty());
}

} // namespace ZuHost

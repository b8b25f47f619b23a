#include "Host/Sensor/Aligner.h"

#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <vector>

namespace ZuHost
{

namespace
{

using ZuScan::AlignCompletionStatus;
using ZuScan::AlignState;

constexpr uint64 SHORT_USEC = 1000;
constexpr uint64 FOR_EVER_USEC = 3'600'000'000;

class AlignerTest : public testing::Test
{
protected:
    using Statuses = std::vector<AlignCompletionStatus>;

    void Listen(Aligner& aligner)
    {
        aligner.CompletedEvent().Add([this](AlignCompletionStatus status) {
            {
                std::scoped_lock const guard(lock);
                statuses.push_back(status);
            }
            changed.notify_all();
        });
    }

    Statuses WaitForStatuses(std::size_t count)
    {
        std::unique_lock guard(lock);
        changed.wait_for(guard, std::chrono::seconds(10), [&] { return statuses.size() >= count; });
        return statuses;
    }

    std::mutex lock; // guards statuses
    std::condition_variable changed;
    Statuses statuses;
};

} // namespace

TEST_F(AlignerTest, IsAlignedWhenTheTimeIsOver)
{
    Aligner aligner(SHORT_USEC);
    Listen(aligner);
    EXPECT_EQ(aligner.State(), AlignState::NOT_ALIGNED);

    aligner.Begin();

    EXPECT_EQ(WaitForStatuses(1), (Statuses{AlignCompletionStatus::SUCCESS}));
    EXPECT_EQ(aligner.State(), AlignState::ALIGNED);
}

TEST_F(AlignerTest, RefusesASecondAlignmentWhileOneRuns)
{
    Aligner aligner(FOR_EVER_USEC);

    aligner.Begin();

    EXPECT_EQ(aligner.State(), AlignState::ALIGNING);
    try
    {
        aligner.Begin();
        FAIL() << "not refused";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), Zu::Status::BUSY);
    }
}

TEST_F(AlignerTest, TellsOfAnAlignmentThatWasTakenBackWhileItRan)
{
    Aligner aligner(FOR_EVER_USEC);
    Listen(aligner);
    aligner.Begin();

    aligner.Clear();

    EXPECT_EQ(aligner.State(), AlignState::NOT_ALIGNED);
    EXPECT_EQ(WaitForStatuses(1), (Statuses{AlignCompletionStatus::CANCELLED}));
    EXPECT_EQ(aligner.State(), AlignState::NOT_ALIGNED);
}

TEST_F(AlignerTest, SaysNothingWhenThereWasNoAlignmentToTakeBack)
{
    Aligner aligner(SHORT_USEC);
    Listen(aligner);
    aligner.Begin();
    WaitForStatuses(1);

    aligner.Clear();
    EXPECT_EQ(aligner.State(), AlignState::NOT_ALIGNED);
    aligner.Begin(); // the marker: its end is the second one, so no other end came before it

    EXPECT_EQ(WaitForStatuses(2), (Statuses{AlignCompletionStatus::SUCCESS, AlignCompletionStatus::SUCCESS}));
}

TEST_F(AlignerTest, AlignsAgainAfterACancellation)
{
    Aligner aligner(SHORT_USEC);
    Listen(aligner);

    for (int i = 0; i < 20; ++i)
    {
        aligner.Begin();
        aligner.Clear();
    }
    aligner.Begin();

    Statuses const told = WaitForStatuses(21);
    ASSERT_EQ(told.size(), 21u);
    EXPECT_EQ(told.back(), AlignCompletionStatus::SUCCESS);
    EXPECT_EQ(aligner.State(), AlignState::ALIGNED);
}

TEST_F(AlignerTest, MayBeStartedAgainByAHandler)
{
    Aligner aligner(SHORT_USEC);
    int rounds = 0;
    aligner.CompletedEvent().Add([&](AlignCompletionStatus) {
        if (++rounds < 3)
        {
            aligner.Begin();
        }
    });
    Listen(aligner);

    aligner.Begin();

    EXPECT_EQ(WaitForStatuses(3).size(), 3u);
}

TEST_F(AlignerTest, EndsWhileItAligns)
{
    {
        Aligner aligner(FOR_EVER_USEC);
        Listen(aligner);
        aligner.Begin();
    }

    EXPECT_TRUE(statuses.empty());
}

} // namespace ZuHost

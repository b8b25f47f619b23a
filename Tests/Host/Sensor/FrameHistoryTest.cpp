#include "Host/Sensor/FrameHistory.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

constexpr uint64 MSEC = 1000;

SharedFrame FrameAt(uint64 sequence, uint64 usec)
{
    auto frame = std::make_shared<Frame>();
    frame->sequence = sequence;
    frame->stamp.stampTime = usec;
    return frame;
}

std::vector<uint64> SequencesOf(std::vector<SharedFrame> const& frames)
{
    std::vector<uint64> sequences;
    for (SharedFrame const& frame : frames)
    {
        sequences.push_back(frame->sequence);
    }
    return sequences;
}

} // namespace

TEST(FrameHistory, IsEmptyAtFirst)
{
    FrameHistory const history;
    EXPECT_EQ(history.Newest(), nullptr);
    EXPECT_TRUE(history.After(0, 10).empty());
    EXPECT_EQ(history.RateHz(5), 0);
}

TEST(FrameHistory, GivesTheNewestFramesInTheirOrder)
{
    FrameHistory history;
    for (uint64 i = 1; i <= 5; ++i)
    {
        history.Add(FrameAt(i, i));
    }

    EXPECT_EQ(history.Newest()->sequence, 5u);
    EXPECT_EQ(SequencesOf(history.After(0, 10)), (std::vector<uint64>{1, 2, 3, 4, 5}));
    EXPECT_EQ(SequencesOf(history.After(0, 2)), (std::vector<uint64>{4, 5}));
    EXPECT_EQ(SequencesOf(history.After(3, 10)), (std::vector<uint64>{4, 5}));
    EXPECT_TRUE(history.After(5, 10).empty());
    EXPECT_TRUE(history.After(9, 10).empty());
}

TEST(FrameHistory, ForgetsTheOldestFrames)
{
    FrameHistory history;
    for (uint64 i = 1; i <= FrameHistory::MAX_FRAMES + 3; ++i)
    {
        history.Add(FrameAt(i, i));
    }

    auto const frames = history.After(0, 1000);
    EXPECT_EQ(frames.size(), FrameHistory::MAX_FRAMES);
    EXPECT_EQ(frames.front()->sequence, 4u);
}

TEST(FrameHistory, ForgetsAllAtAStart)
{
    FrameHistory history;
    history.Add(FrameAt(1, 1));
    history.Clear();
    EXPECT_EQ(history.Newest(), nullptr);

    history.Add(FrameAt(2, 2));
    EXPECT_EQ(SequencesOf(history.After(0, 10)), (std::vector<uint64>{2}));
}

TEST(FrameHistory, MeasuresTheRateOverASecond)
{
    FrameHistory history;
    history.Add(FrameAt(1, 1'000 * MSEC));
    EXPECT_EQ(history.RateHz(1'000 * MSEC), 0); // of one frame

    history.Add(FrameAt(2, 4'000 * MSEC)); // after a pause
    history.Add(FrameAt(3, 4'020 * MSEC));
    history.Add(FrameAt(4, 4'040 * MSEC));

    EXPECT_DOUBLE_EQ(history.RateHz(4'050 * MSEC), 50);
    EXPECT_EQ(history.RateHz(5'041 * MSEC), 0); // it has stopped
}

} // namespace ZuHost

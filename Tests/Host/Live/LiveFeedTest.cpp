#include "Host/Live/LiveFeed.h"

#include "Host/Live/RecordingBody.h"
#include "Support/Latch.h"
#include "Support/Refusal.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using Message = LiveFeed::Message;
using ZuTest::RefusalOf;

class LiveFeedTest : public testing::Test
{
protected:
    /// A view whose messages count from 1.
    static LiveFeed::View Counting(double rateHz)
    {
        return {rateHz, [count = 0]() mutable { return Message{std::to_string(++count)}; }};
    }

    std::shared_ptr<RecordingBody> Open(LiveFeed::View view)
    {
        auto body = std::make_shared<RecordingBody>();
        feed.Admit(std::move(view))(body);
        return body;
    }

    LiveFeed feed;
};

TEST_F(LiveFeedTest, SendsMessagesAtTheRate)
{
    uint64 const beginUsec = wTime_NowUsec();
    auto const body = Open(Counting(25));

    ASSERT_TRUE(body->parts.WaitFor("6"));

    EXPECT_GE(wTime_NowUsec() - beginUsec, 5 * 40'000 - 10'000u);
}

TEST_F(LiveFeedTest, SendsNothingToAViewerThatHasNotTakenTheLastMessage)
{
    auto const slow = Open(Counting(1000));
    ASSERT_TRUE(slow->parts.WaitFor("1"));
    slow->isReady = false;
    std::size_t const count = slow->parts.All().size();
    auto const marker = Open(Counting(1000));
    ASSERT_TRUE(marker->parts.WaitFor("3"));

    EXPECT_LE(slow->parts.All().size(), count + 1); // one may have been under way

    std::string const next = std::to_string(slow->parts.All().size() + 1);
    slow->isReady = true;
    EXPECT_TRUE(slow->parts.WaitFor(next)); // messages are made when they can be sent
}

TEST_F(LiveFeedTest, ForgetsAViewerThatIsGone)
{
    auto const body = Open(Counting(1000));
    ASSERT_TRUE(body->parts.WaitFor("1"));
    EXPECT_EQ(feed.ViewerCount(), 1u);

    body->isOpen = false;
    auto const marker = Open(Counting(1000));
    ASSERT_TRUE(marker->parts.WaitFor("3"));

    EXPECT_EQ(feed.ViewerCount(), 1u);
}

TEST_F(LiveFeedTest, EndsAStreamBehindItsLastMessage)
{
    auto const body = Open({1, [] { return Message{"bye", true}; }});

    ASSERT_TRUE(body->parts.WaitFor("end"));
    EXPECT_EQ(body->parts.All(), (ZuTest::CallLog::Calls{"bye", "end"}));
}

TEST_F(LiveFeedTest, EndsAStreamWhoseMessageCannotBeMade)
{
    auto const body = Open({1, []() -> Message { ZU_THROW(Zu::Status::NOT_FOUND, "it is gone"); }});

    ASSERT_TRUE(body->parts.WaitFor("end"));
    EXPECT_EQ(body->parts.All(), (ZuTest::CallLog::Calls{"end"}));
}

TEST_F(LiveFeedTest, TellsThatItLivesWhenNothingIsNew)
{
    uint64 const beginUsec = wTime_NowUsec();
    auto const body = Open({25, [] { return Message(); }, "alive"});

    ASSERT_TRUE(body->parts.WaitFor("alive"));

    EXPECT_GE(wTime_NowUsec() - beginUsec, LiveFeed::HEARTBEAT_USEC);
}

TEST_F(LiveFeedTest, AdmitsALimitedNumberOfViewers)
{
    std::vector<LiveFeed::OpenBody> admitted;
    for (std::size_t i = 0; i < LiveFeed::MAX_VIEWERS; ++i)
    {
        admitted.push_back(feed.Admit(Counting(1)));
    }

    EXPECT_EQ(RefusalOf([this] { feed.Admit(Counting(1)); }),
              (ZuTest::Refusal{-976, "There are 64 streams of the sensor already."}));
    EXPECT_EQ(feed.ViewerCount(), LiveFeed::MAX_VIEWERS);

    admitted.pop_back(); // its client is gone before the stream has begun
    EXPECT_EQ(RefusalOf([this] { feed.Admit(Counting(1)); }).status, Zu::Status::SUCCESS);
}

TEST_F(LiveFeedTest, StartsAgainForAViewerAfterTheLastOne)
{
    auto const first = Open({1, [] { return Message{"bye", true}; }});
    ASSERT_TRUE(first->parts.WaitFor("end"));

    auto const second = Open({1, [] { return Message{"again", true}; }});

    EXPECT_TRUE(second->parts.WaitFor("end"));
}

TEST_F(LiveFeedTest, EndsAllStreamsWhenItStops)
{
    auto const open = Open(Counting(25));
    ASSERT_TRUE(open->parts.WaitFor("1"));
    auto const late = feed.Admit(Counting(25));

    feed.Stop();

    EXPECT_FALSE(open->isOpen);
    auto const body = std::make_shared<RecordingBody>();
    late(body);
    EXPECT_EQ(body->parts.All(), (ZuTest::CallLog::Calls{"end"}));
}

} // namespace ZuHost

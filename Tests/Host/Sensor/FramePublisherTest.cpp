#include "Host/Sensor/FramePublisher.h"

#include "Host/Sensor/FrameCollector.h"
#include "wBeacon/wMsgInfo.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

ProfileTool::Results const RESULTS{{{1.5, 1}, {-2, 0}, {3, 1}, {4, 1}, {5, 0}}};

class FramePublisherTest : public testing::Test
{
protected:
    ZuCore::ResultHub hub{true};
    FramePublisher publisher{hub};
};

} // namespace

TEST_F(FramePublisherTest, PublishesTheStampAndThenTheMeasurementsInTheirOrder)
{
    ZuTest::FrameCollector collector(hub);
    wStamp const stamp{3, 7, 1234, -50, 9};

    publisher.Publish(stamp, RESULTS, false);

    auto const frames = collector.WaitForFrames(1);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].stamp, stamp);
    EXPECT_EQ(frames[0].results, (std::vector<ZuTest::FrameCollector::Result>{{"profile/stamp", 11, 0, 0},
                                                                              {"profile/zMax", 19, 1.5, 1},
                                                                              {"profile/zMin", 19, -2, 0},
                                                                              {"profile/width", 19, 3, 1},
                                                                              {"profile/meanZ", 19, 4, 1},
                                                                              {"profile/points", 19, 5, 0}}));
}

TEST_F(FramePublisherTest, MarksNoSetAsALiveSimulation)
{
    bool isFromSimulation = true;
    hub.AddResultHandler([&](void* set) {
        isFromSimulation = ZuCore::ResultSet_FromLiveSimulation(static_cast<ZuCore::ResultSet>(set));
    });

    publisher.Publish({}, RESULTS, false);

    EXPECT_FALSE(isFromSimulation);
}

TEST_F(FramePublisherTest, CountsASetForAsLongAsSomebodyHoldsIt)
{
    ZuTest::FrameCollector collector(hub);
    collector.Keep(true);

    publisher.Publish({}, RESULTS, true);
    publisher.Publish({}, RESULTS, true);

    EXPECT_EQ(publisher.CountAlive(), 2u);
    EXPECT_TRUE(publisher.HasRoom(3));
    EXPECT_FALSE(publisher.HasRoom(2));
    collector.Keep(false);
    EXPECT_TRUE(publisher.HasRoom(2));
    EXPECT_EQ(publisher.CountAlive(), 0u);
}

TEST_F(FramePublisherTest, CountsASetForAsLongAsSomebodyHoldsOneOfItsMessages)
{
    wHandle<wMsgInfo> kept;
    hub.AddResultHandler([&](void* set) {
        kept = wHandle_Share(ZuCore::ResultItem_MsgInfo(ZuCore::ResultSet_At(static_cast<ZuCore::ResultSet>(set), 4)));
    });

    publisher.Publish({}, RESULTS, true);

    EXPECT_EQ(publisher.CountAlive(), 1u);
    kept.reset();
    EXPECT_EQ(publisher.CountAlive(), 0u);
}

TEST_F(FramePublisherTest, KeepsNothingOfASetThatIsNotWatched)
{
    ZuTest::FrameCollector collector(hub);
    collector.Keep(true);

    publisher.Publish({}, RESULTS, false);

    EXPECT_EQ(publisher.CountAlive(), 0u);
}

} // namespace ZuHost

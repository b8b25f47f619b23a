#include "wBeacon/wMsgInfo.h"
#include "Support/CountedObject.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

#include <gtest/gtest.h>

using ZuTest::CountedObject;

TEST(wMsgInfo, SharesItsMessageForItsLife)
{
    std::atomic<int> destroyed{0};
    wHandle<CountedObject> msg(new CountedObject(destroyed));
    wMsgInfo* info = nullptr;

    ASSERT_EQ(wMsgInfo_Construct(&info, 11, ~uint64{0}, msg.get(), nullptr), Zu::Status::SUCCESS);

    EXPECT_EQ(wObject_RefCount(info), 1u);
    EXPECT_EQ(wObject_RefCount(msg.get()), 2u);
    EXPECT_TRUE(wObject_Is(info, wMsgInfo_Class));
    EXPECT_EQ(wMsgInfo_Msg(info), msg.get());
    EXPECT_EQ(wMsgInfo_First(info), 11u);
    EXPECT_EQ(wMsgInfo_Second(info), ~uint64{0});
    msg.reset();
    EXPECT_EQ(destroyed, 0);
    wObject_Release(info);
    EXPECT_EQ(destroyed, 1);
}

TEST(wMsgInfo, MayCarryNoMessage)
{
    wMsgInfo* info = nullptr;

    ASSERT_EQ(wMsgInfo_Construct(&info, 0, 0, nullptr, nullptr), Zu::Status::SUCCESS);

    EXPECT_EQ(wMsgInfo_Msg(info), nullptr);
    wObject_Release(info);
}

TEST(wMsgInfo, RefusesNull)
{
    EXPECT_EQ(wMsgInfo_Construct(nullptr, 0, 0, nullptr, nullptr), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wMsgInfo_Msg(nullptr), nullptr);
    EXPECT_EQ(wMsgInfo_First(nullptr), 0u);
    EXPECT_EQ(wMsgInfo_Second(nullptr), 0u);
}

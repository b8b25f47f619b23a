#include "ZuVision/ZvMessages.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"
#include "wBeacon/wMsgInfo.h"

#include <gtest/gtest.h>

#include <limits>

namespace ZuVision
{

using Handle = wHandle<void>;

namespace
{

wStamp const STAMP{0x33, 7, 1000, -5, 9};

Handle NullMsg()
{
    ZvNullMsg* msg = nullptr;
    EXPECT_EQ(ZvNullMsg_Construct(&msg, nullptr), Zu::Status::SUCCESS);
    return Handle(msg);
}

Handle StampMsg()
{
    ZvStampMsg* msg = nullptr;
    EXPECT_EQ(ZvStampMsg_Construct(&msg, STAMP, nullptr), Zu::Status::SUCCESS);
    return Handle(msg);
}

Handle DataMsg(wStamp const* stamp)
{
    ZvDataMsg* msg = nullptr;
    EXPECT_EQ(ZvDataMsg_Construct(&msg, stamp, 12, -34, nullptr), Zu::Status::SUCCESS);
    return Handle(msg);
}

Handle MeasurementMsg(double value, uint8 decision)
{
    ZvMeasurementMsg* msg = nullptr;
    EXPECT_EQ(ZvMeasurementMsg_Construct(&msg, value, decision, nullptr), Zu::Status::SUCCESS);
    return Handle(msg);
}

} // namespace

TEST(ZvMsg, IsOfItsOwnClassAndOfTheBase)
{
    struct Case
    {
        Handle msg;
        wClass const& own;
    };
    Case const cases[] = {{NullMsg(), ZvNullMsg_Class},
                          {StampMsg(), ZvStampMsg_Class},
                          {DataMsg(nullptr), ZvDataMsg_Class},
                          {MeasurementMsg(1, 1), ZvMeasurementMsg_Class}};
    for (Case const& tested : cases)
    {
        EXPECT_TRUE(wObject_Is(tested.msg.get(), ZvMsg_Class)) << tested.own.name;
        for (Case const& other : cases)
        {
            EXPECT_EQ(wObject_Is(tested.msg.get(), other.own), &tested == &other) << tested.own.name << other.own.name;
        }
    }
}

TEST(ZvStampMsg, KeepsACopyOfItsStamp)
{
    Handle const msg = StampMsg();

    ASSERT_NE(ZvMsg_StampAt(msg.get(), 0), nullptr);
    EXPECT_EQ(*ZvMsg_StampAt(msg.get(), 0), STAMP);
    EXPECT_EQ(ZvMsg_StampAt(msg.get(), 1), nullptr);
}

TEST(ZvDataMsg, HasTimeAndEncoderBesideItsStamp)
{
    Handle const with = DataMsg(&STAMP);
    Handle const without = DataMsg(nullptr);

    EXPECT_EQ(ZvDataMsg_Time(with.get()), 12U);
    EXPECT_EQ(ZvDataMsg_Encoder(with.get()), -34);
    ASSERT_NE(ZvMsg_StampAt(with.get(), 0), nullptr);
    EXPECT_EQ(*ZvMsg_StampAt(with.get(), 0), STAMP);
    EXPECT_EQ(ZvMsg_StampAt(without.get(), 0), nullptr);
}

TEST(ZvMeasurementMsg, HoldsValueAndDecision)
{
    Handle const msg = MeasurementMsg(1.2345, 1);

    EXPECT_EQ(ZvMeasurementMsg_Value(msg.get()), 1.2345);
    EXPECT_EQ(ZvMeasurementMsg_Decision(msg.get()), 1);
    EXPECT_EQ(MISSING_MEASUREMENT, std::numeric_limits<double>::lowest());
}

TEST(ZvArrayMsg, SharesItsElementsAndReleasesThemWithItself)
{
    Handle const element = MeasurementMsg(5, 0);
    void* const elements[] = {element.get(), nullptr, element.get()};
    ZvArrayMsg* made = nullptr;
    ASSERT_EQ(ZvArrayMsg_Construct(&made, elements, 3, nullptr), Zu::Status::SUCCESS);
    Handle array(made);

    EXPECT_EQ(ZvArrayMsg_Count(array.get()), 3U);
    EXPECT_EQ(ZvArrayMsg_At(array.get(), 0), element.get());
    EXPECT_EQ(ZvArrayMsg_At(array.get(), 1), nullptr);
    EXPECT_EQ(ZvArrayMsg_At(array.get(), 3), nullptr);
    EXPECT_EQ(wObject_RefCount(element.get()), 3U);

    array.reset();
    EXPECT_EQ(wObject_RefCount(element.get()), 1U);
}

TEST(ZvArrayMsg, MayBeEmpty)
{
    ZvArrayMsg* made = nullptr;
    ASSERT_EQ(ZvArrayMsg_Construct(&made, nullptr, 0, nullptr), Zu::Status::SUCCESS);
    Handle const array(made);

    EXPECT_TRUE(wObject_Is(array.get(), ZvArrayMsg_Class));
    EXPECT_EQ(ZvArrayMsg_Count(array.get()), 0U);
    EXPECT_EQ(ZvArrayMsg_Construct(&made, nullptr, 1, nullptr), Zu::Status::BAD_ARGUMENT);
}

TEST(ZvMsg, AnswersHarmlesslyForMessagesOfAnotherClassAndNull)
{
    Handle const other = NullMsg();
    for (void const* const msg : {static_cast<void const*>(other.get()), static_cast<void const*>(nullptr)})
    {
        EXPECT_EQ(ZvMsg_StampAt(msg, 0), nullptr);
        EXPECT_EQ(ZvArrayMsg_Count(msg), 0U);
        EXPECT_EQ(ZvArrayMsg_At(msg, 0), nullptr);
        EXPECT_EQ(ZvDataMsg_Time(msg), std::numeric_limits<uint64>::max());
        EXPECT_EQ(ZvDataMsg_Encoder(msg), std::numeric_limits<int64>::min());
        EXPECT_EQ(ZvMeasurementMsg_Value(msg), MISSING_MEASUREMENT);
        EXPECT_EQ(ZvMeasurementMsg_Decision(msg), 0);
    }
    EXPECT_EQ(ZvNullMsg_Construct(nullptr, nullptr), Zu::Status::BAD_ARGUMENT);
}

} // namespace ZuVision

#include "wApi/wMsgQueue.h"
#include "Support/CountedObject.h"
#include "Support/SignalCounter.h"
#include "wApi/wObject.h"
#include "wApi/wTime.h"
#include "wApi/wTypes.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using ZuTest::CountedObject;
using ZuTest::SignalCounter;

namespace
{

wClass const OTHER_CLASS{"Other", nullptr, &CountedObject::Destroy};

class wMsgQueueTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(wMsgQueue_Construct(&queue, &CountedObject::CLASS, 0, nullptr), Zu::Status::SUCCESS);
        auto const note = [](void* item, void* context) { static_cast<std::vector<void*>*>(context)->push_back(item); };
        ASSERT_EQ(wMsgQueue_SetDropHandler(queue, note, &dropped), Zu::Status::SUCCESS);
    }

    /// A new item in the queue, which owns it.
    void* Add()
    {
        void* const item = new CountedObject(destroyed);
        EXPECT_EQ(wMsgQueue_AddEx(queue, item, 0), Zu::Status::SUCCESS);
        return item;
    }

    std::atomic<int> destroyed{0};
    std::vector<void*> dropped;
    wMsgQueue queue;
};

} // namespace

TEST_F(wMsgQueueTest, GivesItemsInOrderOfAddition)
{
    void* const first = Add();
    void* const second = Add();
    EXPECT_EQ(wMsgQueue_Count(queue), 2u);

    for (void* const expected : {first, second})
    {
        void* item = nullptr;
        EXPECT_EQ(wMsgQueue_Remove(queue, &item, 0), Zu::Status::SUCCESS);
        EXPECT_EQ(item, expected);
        EXPECT_EQ(wObject_RefCount(item), 1u);
        wObject_Release(item);
    }

    EXPECT_EQ(destroyed, 2);
    EXPECT_TRUE(dropped.empty());
}

TEST_F(wMsgQueueTest, TimesOutWithoutAnItem)
{
    void* item = &dropped;
    uint64 const begun = wTime_NowUsec();

    EXPECT_EQ(wMsgQueue_Remove(queue, &item, 0), Zu::Status::TIME_OUT);
    EXPECT_EQ(wMsgQueue_Remove(queue, &item, 10'000), Zu::Status::TIME_OUT);

    EXPECT_GE(wTime_NowUsec() - begun, 10'000u);
    EXPECT_EQ(item, &dropped);
}

TEST_F(wMsgQueueTest, WakesWhoWaitsForAnItem)
{
    SignalCounter begun;
    void* removed = nullptr;
    std::thread reader([&] {
        begun.Signal();
        EXPECT_EQ(wMsgQueue_Remove(queue, &removed, wTIMEOUT_INFINITE), Zu::Status::SUCCESS);
    });

    ASSERT_TRUE(begun.Wait());
    void* const added = Add();
    reader.join();

    EXPECT_EQ(removed, added);
    wObject_Release(removed);
}

TEST_F(wMsgQueueTest, LeavesTheItemWithItsCallerAtTheMaximum)
{
    ASSERT_EQ(wMsgQueue_SetMaxCount(queue, 1), Zu::Status::SUCCESS);
    Add();
    wHandle<CountedObject> const refused(new CountedObject(destroyed));

    EXPECT_EQ(wMsgQueue_AddEx(queue, refused.get(), 0), Zu::Status::FULL);
    EXPECT_EQ(wMsgQueue_AddEx(queue, refused.get(), 1'000), Zu::Status::FULL);

    EXPECT_EQ(wObject_RefCount(refused.get()), 1u);
    EXPECT_EQ(wMsgQueue_Count(queue), 1u);
}

TEST_F(wMsgQueueTest, WakesWhoWaitsForRoom)
{
    ASSERT_EQ(wMsgQueue_SetMaxCount(queue, 1), Zu::Status::SUCCESS);
    Add();
    SignalCounter begun;
    std::thread writer([&] {
        begun.Signal();
        EXPECT_EQ(wMsgQueue_AddEx(queue, new CountedObject(destroyed), wTIMEOUT_INFINITE), Zu::Status::SUCCESS);
    });

    ASSERT_TRUE(begun.Wait());
    void* item = nullptr;
    EXPECT_EQ(wMsgQueue_Remove(queue, &item, wTIMEOUT_INFINITE), Zu::Status::SUCCESS);
    wObject_Release(item);
    writer.join();

    EXPECT_EQ(wMsgQueue_Count(queue), 1u);
}

TEST_F(wMsgQueueTest, KeepsWhatItHoldsWhenTheMaximumSinks)
{
    Add();
    Add();

    EXPECT_EQ(wMsgQueue_SetMaxCount(queue, 1), Zu::Status::SUCCESS);
    EXPECT_EQ(wMsgQueue_SetMaxCount(queue, 0), Zu::Status::BAD_ARGUMENT);

    EXPECT_EQ(wMsgQueue_Count(queue), 2u);
}

TEST_F(wMsgQueueTest, DropsEveryItemOfAPurge)
{
    void* const first = Add();
    void* const second = Add();

    EXPECT_EQ(wMsgQueue_PurgeEx(queue, 1), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(wMsgQueue_PurgeEx(queue, wMsgQueue::PURGE_DROP), Zu::Status::SUCCESS);

    EXPECT_EQ(dropped, (std::vector<void*>{first, second}));
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(wMsgQueue_Count(queue), 0u);
}

TEST_F(wMsgQueueTest, DropsWhatIsLeftAtItsEnd)
{
    {
        wMsgQueue scoped;
        ASSERT_EQ(wMsgQueue_Construct(&scoped, nullptr, 10, nullptr), Zu::Status::SUCCESS);
        ASSERT_EQ(wMsgQueue_AddEx(scoped, new CountedObject(destroyed, OTHER_CLASS), 0), Zu::Status::SUCCESS);
    }

    EXPECT_EQ(destroyed, 1);
}

TEST_F(wMsgQueueTest, RefusesWhatIsNoItemOfItsClass)
{
    wHandle<CountedObject> const other(new CountedObject(destroyed, OTHER_CLASS));

    EXPECT_EQ(wMsgQueue_AddEx(queue, other.get(), 0), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wMsgQueue_AddEx(queue, nullptr, 0), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wMsgQueue_Remove(queue, nullptr, 0), Zu::Status::BAD_ARGUMENT);
}

TEST_F(wMsgQueueTest, RefusesEverythingBeforeItIsMade)
{
    wMsgQueue empty;
    wHandle<CountedObject> const item(new CountedObject(destroyed));
    void* removed = nullptr;

    EXPECT_EQ(wMsgQueue_AddEx(empty, item.get(), 0), Zu::Status::WRONG_STATE);
    EXPECT_EQ(wMsgQueue_Remove(empty, &removed, wTIMEOUT_INFINITE), Zu::Status::WRONG_STATE);
    EXPECT_EQ(wMsgQueue_PurgeEx(empty, wMsgQueue::PURGE_DROP), Zu::Status::WRONG_STATE);
    EXPECT_EQ(wMsgQueue_SetMaxCount(empty, 1), Zu::Status::WRONG_STATE);
    EXPECT_EQ(wMsgQueue_SetDropHandler(empty, nullptr, nullptr), Zu::Status::WRONG_STATE);
    EXPECT_EQ(wMsgQueue_Construct(&queue, nullptr, 0, nullptr), Zu::Status::WRONG_STATE);
    EXPECT_EQ(wMsgQueue_Construct(nullptr, nullptr, 0, nullptr), Zu::Status::BAD_ARGUMENT);
}

TEST_F(wMsgQueueTest, LosesNothingBetweenManyThreads)
{
    constexpr int WRITERS = 3;
    constexpr int EACH = 500;
    ASSERT_EQ(wMsgQueue_SetMaxCount(queue, 4), Zu::Status::SUCCESS);
    std::vector<std::thread> writers;
    for (int i = 0; i < WRITERS; ++i)
    {
        writers.emplace_back([this] {
            for (int number = 0; number < EACH; ++number)
            {
                EXPECT_EQ(wMsgQueue_AddEx(queue, new CountedObject(destroyed), wTIMEOUT_INFINITE), Zu::Status::SUCCESS);
            }
        });
    }

    for (int number = 0; number < WRITERS * EACH; ++number)
    {
        void* item = nullptr;
        ASSERT_EQ(wMsgQueue_Remove(queue, &item, wTIMEOUT_INFINITE), Zu::Status::SUCCESS);
        wObject_Release(item);
    }
    for (auto& writer : writers)
    {
        writer.join();
    }

    EXPECT_EQ(destroyed, WRITERS * EACH);
    EXPECT_EQ(wMsgQueue_Count(queue), 0u);
}

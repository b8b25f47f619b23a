#include "wApi/wArrayList.h"
#include "Support/CountedObject.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

#include <gtest/gtest.h>

#include <utility>

using ZuTest::CountedObject;

namespace
{

wClass const OTHER_CLASS{"Other", nullptr, &CountedObject::Destroy};

class wArrayListTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(wArrayList_Construct(&list, &CountedObject::CLASS, 2, nullptr), Zu::Status::SUCCESS);
    }

    void* Add()
    {
        void* const item = new CountedObject(destroyed);
        EXPECT_EQ(wArrayList_Add(list, item), Zu::Status::SUCCESS);
        return item;
    }

    std::atomic<int> destroyed{0};
    wArrayList list;
};

} // namespace

TEST_F(wArrayListTest, GrowsBeyondItsCapacity)
{
    EXPECT_EQ(wArrayList_Capacity(list), 2u);
    void* const first = Add();
    Add();
    void* const third = Add();

    EXPECT_EQ(wArrayList_Count(list), 3u);
    EXPECT_EQ(wArrayList_At(list, 0), first);
    EXPECT_EQ(wArrayList_At(list, 2), third);
    EXPECT_EQ(wArrayList_At(list, 3), nullptr);
}

TEST_F(wArrayListTest, TakesNoReferenceOfItsOwn)
{
    void* const item = Add();

    EXPECT_EQ(wObject_RefCount(item), 1u);
}

TEST_F(wArrayListTest, ReleasesItsItemsAndKeepsItsRoom)
{
    wHandle<CountedObject> const kept(new CountedObject(destroyed));
    ASSERT_EQ(wArrayList_Add(list, kept.get()), Zu::Status::SUCCESS);
    wObject_Share(kept.get());
    Add();
    Add();
    uint64 const capacity = wArrayList_Capacity(list);

    EXPECT_EQ(wArrayList_Purge(list), Zu::Status::SUCCESS);

    EXPECT_EQ(wArrayList_Count(list), 0u);
    EXPECT_EQ(wArrayList_Capacity(list), capacity);
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(wObject_RefCount(kept.get()), 1u);
}

TEST_F(wArrayListTest, ReleasesWhatIsLeftAtItsEnd)
{
    {
        wArrayList scoped;
        ASSERT_EQ(wArrayList_Construct(&scoped, nullptr, 0, nullptr), Zu::Status::SUCCESS);
        ASSERT_EQ(wArrayList_Add(scoped, new CountedObject(destroyed, OTHER_CLASS)), Zu::Status::SUCCESS);
    }

    EXPECT_EQ(destroyed, 1);
}

TEST_F(wArrayListTest, IsSwappedWithItsItems)
{
    void* const item = Add();
    wArrayList other;
    ASSERT_EQ(wArrayList_Construct(&other, &CountedObject::CLASS, 0, nullptr), Zu::Status::SUCCESS);

    std::swap(list, other);

    EXPECT_EQ(wArrayList_Count(list), 0u);
    ASSERT_EQ(wArrayList_Count(other), 1u);
    EXPECT_EQ(wArrayList_At(other, 0), item);
    EXPECT_EQ(destroyed, 0);
    Add();
    EXPECT_EQ(wArrayList_Count(list), 1u);
}

TEST_F(wArrayListTest, ReleasesWhatAMoveReplaces)
{
    Add();
    wArrayList other;
    ASSERT_EQ(wArrayList_Construct(&other, nullptr, 0, nullptr), Zu::Status::SUCCESS);

    list = std::move(other);

    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(wArrayList_Count(list), 0u);
}

TEST_F(wArrayListTest, RefusesWhatIsNoItemOfItsClass)
{
    wHandle<CountedObject> const other(new CountedObject(destroyed, OTHER_CLASS));

    EXPECT_EQ(wArrayList_Add(list, other.get()), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wArrayList_Add(list, nullptr), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wArrayList_Count(list), 0u);
}

TEST_F(wArrayListTest, IsMadeOnceAndNotBeyondAllMemory)
{
    wArrayList empty;
    wHandle<CountedObject> const item(new CountedObject(destroyed));

    EXPECT_EQ(wArrayList_Add(empty, item.get()), Zu::Status::WRONG_STATE);
    EXPECT_EQ(wArrayList_Purge(empty), Zu::Status::WRONG_STATE);
    EXPECT_EQ(wArrayList_Construct(&empty, nullptr, ~uint64{0}, nullptr), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wArrayList_Construct(nullptr, nullptr, 0, nullptr), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(wArrayList_Construct(&list, nullptr, 0, nullptr), Zu::Status::WRONG_STATE);
}

#include "ZuCore/ResultSet.h"

#include "Support/AllocationCounter.h"
#include "ZuVision/ZvMessages.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"
#include "wBeacon/wMsgInfo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <latch>
#include <set>
#include <thread>
#include <vector>

namespace ZuCore
{

class ResultSetTest : public testing::Test
{
protected:
    ResultSetTest()
    {
        ResultInfo madeInfo = nullptr;
        EXPECT_EQ(ResultInfo_Construct(&madeInfo, "profile/zMax", RESULT_TYPE_MEASUREMENT, nullptr), SUCCESS);
        info.reset(madeInfo);
        ZuVision::ZvMeasurementMsg* made = nullptr;
        EXPECT_EQ(ZuVision::ZvMeasurementMsg_Construct(&made, 1.5, 1, nullptr), SUCCESS);
        wHandle<void> const msg(made);
        wMsgInfo* madeMsgInfo = nullptr;
        EXPECT_EQ(wMsgInfo_Construct(&madeMsgInfo, 1, 2, msg.get(), nullptr), SUCCESS);
        msgInfo.reset(madeMsgInfo);
    }

    static wHandle<ResultSetObject> NewSet()
    {
        ResultSet made = nullptr;
        EXPECT_EQ(ResultSet_Construct(&made, nullptr), SUCCESS);
        return wHandle<ResultSetObject>(made);
    }

    wStatus Append(ResultSet set)
    {
        wObject_Share(msgInfo.get());
        wObject_Share(info.get());
        return ResultSet_Add(set, msgInfo.get(), info.get(), 0);
    }

    static constexpr wStatus SUCCESS = Zu::Status::SUCCESS;

    wHandle<ResultInfoObject> info;
    wHandle<wMsgInfo> msgInfo;
};

TEST_F(ResultSetTest, IsEmptyAtFirst)
{
    auto const set = NewSet();

    EXPECT_EQ(ResultSet_Count(set.get()), 0U);
    EXPECT_EQ(ResultSet_At(set.get(), 0), nullptr);
    EXPECT_FALSE(ResultSet_FromLiveSimulation(set.get()));
    EXPECT_EQ(wObject_RefCount(set.get()), 1U);
    EXPECT_TRUE(wObject_Is(set.get(), ResultSet_Class));
}

TEST_F(ResultSetTest, TakesOverOneReferenceToEachPartOfAnItem)
{
    auto set = NewSet();

    ASSERT_EQ(Append(set.get()), SUCCESS);

    EXPECT_EQ(wObject_RefCount(info.get()), 2U);
    EXPECT_EQ(wObject_RefCount(msgInfo.get()), 2U);
    ResultItem const item = ResultSet_At(set.get(), 0);
    EXPECT_EQ(ResultItem_ResultInfo(item), info.get());
    EXPECT_EQ(ResultItem_MsgInfo(item), msgInfo.get());
    EXPECT_TRUE(wObject_Is(item, ResultItem_Class));
    set.reset();
    EXPECT_EQ(wObject_RefCount(info.get()), 1U);
    EXPECT_EQ(wObject_RefCount(msgInfo.get()), 1U);
}

TEST_F(ResultSetTest, LeavesTheReferencesToTheCallerWhenItRefuses)
{
    auto const set = NewSet();

    EXPECT_EQ(ResultSet_Add(set.get(), nullptr, info.get(), 0), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(ResultSet_Add(set.get(), msgInfo.get(), nullptr, 0), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(ResultSet_Add(nullptr, msgInfo.get(), info.get(), 0), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(ResultSet_Reserve(set.get(), ~uint64{0}), Zu::Status::FULL);

    EXPECT_EQ(ResultSet_Count(set.get()), 0U);
    EXPECT_EQ(wObject_RefCount(info.get()), 1U);
    EXPECT_EQ(wObject_RefCount(msgInfo.get()), 1U);
}

TEST_F(ResultSetTest, KeepsItsItemsWhereTheyAreWhileItGrows)
{
    auto const set = NewSet();
    std::vector<ResultItem> items;
    for (uint64 i = 0; i < 5000; ++i)
    {
        ASSERT_EQ(Append(set.get()), SUCCESS);
        items.push_back(ResultSet_At(set.get(), i));
    }

    ASSERT_EQ(ResultSet_Count(set.get()), 5000U);
    for (uint64 i = 0; i < 5000; ++i)
    {
        ASSERT_EQ(ResultSet_At(set.get(), i), items[i]);
        ASSERT_EQ(ResultItem_ResultInfo(items[i]), info.get());
    }
    EXPECT_EQ(ResultSet_At(set.get(), 5000), nullptr);
}

TEST_F(ResultSetTest, LivesAsLongAsAReferenceToOneOfItsItems)
{
    auto set = NewSet();
    ASSERT_EQ(Append(set.get()), SUCCESS);

    wHandle<ResultItemObject> item = wHandle_Share(ResultSet_At(set.get(), 0));
    EXPECT_EQ(wObject_RefCount(set.get()), 2U);
    set.reset();
    EXPECT_EQ(ResultItem_MsgInfo(item.get()), msgInfo.get());
    item.reset();

    EXPECT_EQ(wObject_RefCount(msgInfo.get()), 1U);
}

TEST_F(ResultSetTest, ComesBackEmptyWhenItsMemoryIsUsedAgain)
{
    for (int round = 0; round < 3; ++round)
    {
        auto const set = NewSet();
        EXPECT_EQ(ResultSet_Count(set.get()), 0U);
        EXPECT_FALSE(ResultSet_FromLiveSimulation(set.get()));
        EXPECT_EQ(wObject_RefCount(set.get()), 1U);
        ASSERT_EQ(Append(set.get()), SUCCESS);
        ResultSet_SetFromLiveSimulation(set.get(), true);
        EXPECT_TRUE(ResultSet_FromLiveSimulation(set.get()));
    }
}

TEST_F(ResultSetTest, CostsNoAllocationInSteadyState)
{
    auto const fill = [this] {
        auto const set = NewSet();
        for (int i = 0; i < 1000; ++i)
        {
            ASSERT_EQ(Append(set.get()), SUCCESS);
        }
    };
    fill();

    ZuTest::AllocationCounter const counter;
    for (int round = 0; round < 10; ++round)
    {
        fill();
    }

    EXPECT_EQ(counter.Count(), 0U);
}

TEST_F(ResultSetTest, MayBeReleasedOnAnyThread)
{
    for (int round = 0; round < 50; ++round)
    {
        auto set = NewSet();
        ASSERT_EQ(Append(set.get()), SUCCESS);
        std::thread other([shared = wHandle_Share(set.get())]() mutable { shared.reset(); });
        set.reset();
        other.join();
    }

    EXPECT_EQ(wObject_RefCount(info.get()), 1U);
    EXPECT_EQ(wObject_RefCount(msgInfo.get()), 1U);
}

TEST_F(ResultSetTest, ComesBackFromManyThreadsAtOnce)
{
    constexpr int THREADS = 4;
    constexpr int SETS = 200;
    std::latch ready(THREADS + 1);
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i)
    {
        std::vector<wHandle<ResultSetObject>> sets(SETS);
        std::ranges::generate(sets, [this] {
            auto set = NewSet();
            EXPECT_EQ(Append(set.get()), SUCCESS);
            return set;
        });
        threads.emplace_back([&ready, held = std::move(sets)]() mutable {
            ready.arrive_and_wait();
            held.clear();
        });
    }

    ready.arrive_and_wait();
    std::vector<wHandle<ResultSetObject>> taken(SETS);
    std::ranges::generate(taken, NewSet);
    std::ranges::for_each(threads, &std::thread::join);

    std::set<ResultSet> distinct;
    for (auto const& set : taken)
    {
        EXPECT_EQ(ResultSet_Count(set.get()), 0U);
        EXPECT_EQ(wObject_RefCount(set.get()), 1U);
        distinct.insert(set.get());
    }
    EXPECT_EQ(distinct.size(), taken.size());
    EXPECT_EQ(wObject_RefCount(info.get()), 1U);
}

TEST_F(ResultSetTest, KeepsEachItemsOwnPartsWhenItsMemoryIsUsedAgain)
{
    ResultInfo madeInfo = nullptr;
    ASSERT_EQ(ResultInfo_Construct(&madeInfo, "other", RESULT_TYPE_STAMP, nullptr), SUCCESS);
    wHandle<ResultInfoObject> const other(madeInfo);
    constexpr uint64 ITEMS = 300; // beyond the set's own room, and one piece of room further
    auto const fill = [this, &other](ResultSet set, uint64 oddOne) {
        for (uint64 i = 0; i < ITEMS; ++i)
        {
            ResultInfo const used = i % 2 == oddOne ? info.get() : other.get();
            wObject_Share(msgInfo.get());
            wObject_Share(used);
            ASSERT_EQ(ResultSet_Add(set, msgInfo.get(), used, 0), SUCCESS);
        }
    };
    for (uint64 round = 0; round < 4; ++round)
    {
        auto const set = NewSet();

        fill(set.get(), round % 2);

        for (uint64 i = 0; i < ITEMS; ++i)
        {
            ResultItem const item = ResultSet_At(set.get(), i);
            ASSERT_EQ(ResultItem_ResultInfo(item), i % 2 == round % 2 ? info.get() : other.get()) << i;
            ASSERT_EQ(ResultItem_MsgInfo(item), msgInfo.get());
        }
    }
    EXPECT_EQ(wObject_RefCount(other.get()), 1U);
    EXPECT_EQ(wObject_RefCount(msgInfo.get()), 1U);
}

TEST_F(ResultSetTest, KeepsWhatChangesWithEveryUseWithinOneCacheLine)
{
    auto const set = NewSet();

    auto const addressOf = [](void const* place) { return reinterpret_cast<std::uintptr_t>(place); };
    EXPECT_EQ(addressOf(set.get()) % 64, 0U);
    EXPECT_LE(addressOf(&set->capacity) + sizeof set->capacity, addressOf(set.get()) + 64);
}

TEST(ResultItem, SharesItsPartsWhenItStandsAlone)
{
    ResultInfo info = nullptr;
    ASSERT_EQ(ResultInfo_Construct(&info, "a", RESULT_TYPE_STAMP, nullptr), Zu::Status::SUCCESS);
    wMsgInfo* msgInfo = nullptr;
    ASSERT_EQ(wMsgInfo_Construct(&msgInfo, 0, 0, nullptr, nullptr), Zu::Status::SUCCESS);
    ResultItem item = nullptr;

    ASSERT_EQ(ResultItem_Construct(&item, msgInfo, info, nullptr), Zu::Status::SUCCESS);
    EXPECT_EQ(wObject_RefCount(info), 2U);
    EXPECT_EQ(wObject_RefCount(msgInfo), 2U);
    wObject_Release(item);

    EXPECT_EQ(wObject_RefCount(info), 1U);
    EXPECT_EQ(wObject_RefCount(msgInfo), 1U);
    EXPECT_EQ(ResultItem_Construct(&item, nullptr, info, nullptr), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(ResultItem_Construct(&item, msgInfo, nullptr, nullptr), Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(ResultItem_MsgInfo(nullptr), nullptr);
    EXPECT_EQ(ResultItem_ResultInfo(nullptr), nullptr);
    wObject_Release(info);
    wObject_Release(msgInfo);
}

struct HashCase
{
    char const* dataSource;
    uint64 hash;
};

TEST(ResultInfo, NumbersADataSourceByItsHash)
{
    HashCase const cases[] = {{"", 0xcbf29ce484222325}, {"a", 0xaf63dc4c8601ec8c}, {"foobar", 0x85944171f73967e8}};
    for (HashCase const& given : cases)
    {
        ResultInfo info = nullptr;
        ASSERT_EQ(ResultInfo_Construct(&info, given.dataSource, 12, nullptr), Zu::Status::SUCCESS);

        EXPECT_EQ(ResultInfo_NumericId(info), given.hash) << given.dataSource;
        EXPECT_EQ(ResultInfo_Type(info), 12);
        EXPECT_EQ(ResultInfo_DataSourceId(info), given.dataSource);
        wObject_Release(info);
    }
    EXPECT_EQ(ResultInfo_NumericId(nullptr), 0U);
    EXPECT_EQ(ResultInfo_Type(nullptr), 0);
    EXPECT_EQ(ResultInfo_DataSourceId(nullptr), "");
    EXPECT_EQ(ResultInfo_Construct(nullptr, "a", 11, nullptr), Zu::Status::BAD_ARGUMENT);
}

} // namespace ZuCore

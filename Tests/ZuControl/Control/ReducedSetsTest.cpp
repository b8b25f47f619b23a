#include "ZuControl/Control/ReducedSets.h"

#include "Support/AllocationCounter.h"
#include "Support/AllocationFailure.h"
#include "Support/ResultSets.h"
#include "ZuControl/Control/ScanOutputPlan.h"

#include <gtest/gtest.h>

#include <list>

namespace ZuControl
{

using ZuTest::Items;
using ZuTest::ItemsOf;
using ZuTest::OwnedSet;

class ReducedSetsTest : public testing::Test
{
protected:
    using Sources = std::vector<std::string>;

    /// Adds a receiver that wants these sources.
    void Want(Sources const& sources)
    {
        ScanOutputMap::Texts texts;
        for (std::string const& source : sources)
        {
            texts.emplace(ScanOutputMap::NumericId(source), source);
        }
        wanted.push_back(&maps.emplace_back(std::move(texts)));
    }

    void Publish(Sources const& sources)
    {
        set = ZuTest::MakeSet(sources);
    }

    ReducedSets Reduce(ReducedSets::Receivers listeners)
    {
        return ReducedSets(set.get(), ScanOutputPlan(wanted), listeners, nullptr);
    }

    uint64 ReferencesOf(uint64 index)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(set.get(), index);
        uint64 const references = wObject_RefCount(ZuCore::ResultItem_MsgInfo(item));
        EXPECT_EQ(wObject_RefCount(ZuCore::ResultItem_ResultInfo(item)), references);
        return references;
    }

    /// Makes sets without chunks the next ones that are taken for reuse.
    static void ReuseSetsWithoutChunks(uint64 count)
    {
        std::vector<OwnedSet> small;
        std::vector<OwnedSet> large; // destroyed first
        while (small.size() < count)
        {
            OwnedSet taken = ZuTest::MakeSet({});
            (taken->capacity == ZuCore::ResultSetObject::OWN_ITEMS ? small : large).push_back(std::move(taken));
        }
    }

    std::list<ScanOutputMap> maps;
    std::vector<ScanOutputMap const*> wanted;
    OwnedSet set;
};

TEST_F(ReducedSetsTest, GivesEachListenerWhatItWantsInTheOrderOfTheSet)
{
    Want({"a", "c"});
    Want({"b"});
    Want({"c"});
    Publish({"c", "b", "a", "d", "c"});

    ReducedSets const reduced = Reduce(0b111);

    EXPECT_EQ(reduced.Status(), Zu::Status::SUCCESS);
    ASSERT_EQ(reduced.Served(), 0b111u);
    EXPECT_EQ(ItemsOf(reduced.At(0)), (Items{{"c", 0}, {"a", 2}, {"c", 4}}));
    EXPECT_EQ(ItemsOf(reduced.At(1)), (Items{{"b", 1}}));
    EXPECT_EQ(ItemsOf(reduced.At(2)), (Items{{"c", 0}, {"c", 4}}));
}

TEST_F(ReducedSetsTest, PassesOverWhoDoesNotListen)
{
    Want({"a"});
    Want({"a"});
    Publish({"a"});

    ReducedSets const reduced = Reduce(0b10);

    EXPECT_EQ(reduced.Served(), 0b10u);
    EXPECT_EQ(ItemsOf(reduced.At(1)), (Items{{"a", 0}}));
    EXPECT_EQ(ReferencesOf(0), 2u);
}

TEST_F(ReducedSetsTest, MakesAnEmptySetForWhoFindsNothing)
{
    Want({"b"});
    Publish({"a"});

    ReducedSets const reduced = Reduce(1);

    ASSERT_EQ(reduced.Served(), 1u);
    EXPECT_EQ(ItemsOf(reduced.At(0)), Items());
    EXPECT_EQ(ReferencesOf(0), 1u);
}

TEST_F(ReducedSetsTest, HoldsAReferenceOfEachSetAndGivesThemBack)
{
    Want({"a", "b"});
    Want({"a"});
    Publish({"a", "b"});
    OwnedSet kept;
    {
        ReducedSets const reduced = Reduce(0b11);

        EXPECT_EQ(ReferencesOf(0), 3u);
        EXPECT_EQ(ReferencesOf(1), 2u);
        kept = wHandle_Share(reduced.At(1));
    }

    EXPECT_EQ(ReferencesOf(0), 2u); // `kept` still refers to the item
    EXPECT_EQ(ReferencesOf(1), 1u);
    EXPECT_EQ(ItemsOf(kept.get()), (Items{{"a", 0}}));
}

TEST_F(ReducedSetsTest, LeavesOutTheReceiverWhoseSetCannotGrowAndThoseBehind)
{
    constexpr uint64 MANY = ZuCore::ResultSetObject::OWN_ITEMS + 1;
    Sources sources(MANY, "a");
    sources.insert(sources.begin(), "b");
    Want({"b"});
    Want({"a"});
    Want({"b"});
    Publish(sources);
    ScanOutputPlan const plan(wanted);
    ReuseSetsWithoutChunks(3);
    {
        ZuTest::AllocationFailure const failure(1); // the chunk of the second set
        ReducedSets const reduced(set.get(), plan, 0b111, nullptr);

        EXPECT_TRUE(failure.HasHappened());
        EXPECT_EQ(reduced.Status(), Zu::Status::FAILURE);
        ASSERT_EQ(reduced.Served(), 0b001u);
        EXPECT_EQ(ItemsOf(reduced.At(0)), (Items{{"b", 0}}));
    }

    EXPECT_EQ(ReferencesOf(0), 1u);
    EXPECT_EQ(ReferencesOf(1), 1u);
    EXPECT_EQ(ReferencesOf(MANY), 1u);
}

TEST_F(ReducedSetsTest, AllocatesNothingOnceItsMemoryIsThere)
{
    Want({"a"});
    Want({"a"});
    Publish({"a"});
    ScanOutputPlan const plan(wanted);
    auto const reduce = [&] { ReducedSets const reduced(set.get(), plan, 0b11, nullptr); };
    reduce();

    ZuTest::AllocationCounter const counter;
    reduce();

    EXPECT_EQ(counter.Count(), 0u);
}

} // namespace ZuControl

#include "Support/AllocationCounter.h"
#include "Support/FailAtEachAllocation.h"
#include "Support/RegisterBlocks.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <memory>

namespace ZuControl::ControlProtocol
{

using ZuTest::FailAtEachAllocation;

namespace
{

using Json = nlohmann::json;
using Serializer = Zu::Properties::JsonSerializer;

/// Long enough for a string to allocate.
std::string Long(char const* text)
{
    return "a text that does not fit into itself: " + std::string(text);
}

/// A map of one kind with three items, and the arguments of its changes.
struct MapCase
{
    char const* name;
    std::function<std::unique_ptr<IProtocolOutput>()> make;
    std::vector<Json> items; ///< at first
    Json added;              ///< goes in between them
    Json listed;             ///< arguments with several items
    Json moved;              ///< arguments with an id and a new one
};

Json Numbered(uint16 id, char const* source)
{
    return {{"outputId", id}, {"outputSize", 2}, {"source", Long(source)}, {"autoShift", true}};
}

Json Named(char const* id, char const* source)
{
    return {{"outputId", Long(id)}, {"source", Long(source)}};
}

Json ListOf(std::vector<Json> const& items)
{
    return {{"map", items}};
}

std::vector<MapCase> AllMaps()
{
    std::vector<Json> const numbers{Numbered(1, "a"), Numbered(2, "b"), Numbered(3, "c")};
    Json const moreNumbers = ListOf({Numbered(0, "x"), Numbered(0, "y"), Numbered(0, "z")});
    Json const movedNumber = ListOf({Numbered(2, ""), Numbered(9, "")});
    return {
        {"Numbers", [] { return std::make_unique<StandardProtocolOutputMap>(8, 0, 99); }, numbers, Numbered(2, "new"),
         moreNumbers, movedNumber},
        {"Registers", [] { return std::make_unique<RegisterProtocolOutputMap>(0, 99, 2, 8); }, numbers,
         Numbered(1, "new"), moreNumbers, movedNumber},
        {"Texts",
         [] { return std::make_unique<TextIdStandardProtocolOutputMap>(8); },
         {Named("a", "a"), Named("c", "b"), Named("d", "c")},
         Named("b", "new"),
         ListOf({Named("x", "x"), Named("y", "y"), Named("z", "z")}),
         ListOf({Named("c", ""), Named("e", "")})},
    };
}

} // namespace

class OutOfMemoryMap : public testing::TestWithParam<MapCase>
{
protected:
    void Renew()
    {
        map = GetParam().make();
        for (Json const& item : GetParam().items)
        {
            FillItem(item);
            map->Add(*args);
        }
    }

    void FillItem(Json const& item)
    {
        args = map->CreateOutputMapItemArgs();
        Serializer::Deserialize(*args, item);
    }

    void FillList(Json const& list)
    {
        args = map->CreateOutputsArgs();
        Serializer::Deserialize(*args, list);
    }

    /// The items. Expects that their number equals the map's count.
    std::vector<Json> Items() const
    {
        map->BeginLock();
        auto items = Serializer::Serialize(map->OutputMap()).at("map").get<std::vector<Json>>();
        map->EndLock();
        EXPECT_EQ(map->Count(), items.size());
        return items;
    }

    /// Expects the items of `whole` without the first `gone` items, and expects the lookup to find each of them.
    void ExpectAllBut(std::ptrdiff_t gone, std::vector<Json> const& whole)
    {
        EXPECT_EQ(Items(), std::vector<Json>(whole.begin() + gone, whole.end()));
        ExpectEachItemToBeFound();
    }

    /// Removes each item by its id. The removal fails for an item that is missing in the lookup.
    void ExpectEachItemToBeFound()
    {
        for (Json const& item : Items())
        {
            FillItem(item);
            EXPECT_NO_THROW(map->Remove(*args)) << item;
        }
        EXPECT_EQ(map->Count(), 0u);
    }

    std::unique_ptr<IProtocolOutput> map;
    std::shared_ptr<Zu::Params::Group> args;
};

TEST_P(OutOfMemoryMap, StaysAsItWasWhenAnItemCannotBeAdded)
{
    Renew();
    auto const before = Items();
    FillItem(GetParam().added);
    map->Add(*args);
    auto const after = Items();

    uint64 const allocations = FailAtEachAllocation(
        [this] {
            Renew();
            FillItem(GetParam().added);
        },
        [this] { map->Add(*args); },
        [&](bool isRefused) {
            EXPECT_EQ(Items(), isRefused ? before : after);
            map->Add(*args); // adds the item if the failed attempt did not
            EXPECT_EQ(Items(), after);
            ExpectEachItemToBeFound();
        });
    EXPECT_GT(allocations, 0u);
}

TEST_P(OutOfMemoryMap, TakesEachItemOfAListWholeOrNotAtAll)
{
    Renew();
    FillList(GetParam().listed);
    map->AddAll(*args);
    auto const all = Items();

    uint64 const allocations = FailAtEachAllocation(
        [this] {
            Renew();
            FillList(GetParam().listed);
        },
        [this] { map->AddAll(*args); },
        [&](bool isRefused) {
            auto const now = Items();
            for (Json const& item : now)
            {
                bool const isKnown =
                    std::ranges::any_of(all, [&](Json const& known) { return known["source"] == item["source"]; });
                EXPECT_TRUE(isKnown) << item;
            }
            EXPECT_TRUE(isRefused || now == all);
            EXPECT_GE(now.size(), GetParam().items.size());
            ExpectEachItemToBeFound();
        });
    EXPECT_GT(allocations, 0u);
}

TEST_P(OutOfMemoryMap, LosesNothingButTheItemThatIsToMove)
{
    Renew();
    auto const before = Items();
    FillList(GetParam().moved);
    map->UpdateId(*args);
    auto const after = Items();
    std::vector<Json> const withoutIt{before.at(0), before.at(2)};

    uint64 const allocations = FailAtEachAllocation(
        [this] {
            Renew();
            FillList(GetParam().moved);
        },
        [this] { map->UpdateId(*args); },
        [&](bool isRefused) {
            auto const now = Items();
            EXPECT_TRUE(isRefused ? now == before || now == withoutIt : now == after);
            ExpectEachItemToBeFound();
        });
    EXPECT_GT(allocations, 0u);
}

TEST_P(OutOfMemoryMap, NeedsNoMemoryToTakeItemsOutOrToCloseGaps)
{
    Renew();
    FillItem(GetParam().items.at(1));
    ZuTest::AllocationCounter const counter;

    map->Remove(*args);
    map->CompactId();
    map->Clear();

    EXPECT_EQ(counter.Count(), 0u);
    EXPECT_EQ(map->Count(), 0u);
}

TEST_P(OutOfMemoryMap, TakesAnItemOutOrLeavesItWhereAnotherCouldNotBeAdded)
{
    uint64 allocations = 0;
    bool hasFailed = true;
    for (uint64 number = 1; hasFailed; ++number)
    {
        std::vector<Json> before;
        allocations += FailAtEachAllocation(
            [&] {
                Renew();
                FillItem(GetParam().added);
                {
                    ZuTest::AllocationFailure const failure(number);
                    EXPECT_NO_THROW(try { map->Add(*args); } catch (std::bad_alloc const&){});
                    hasFailed = failure.HasHappened();
                }
                before = Items();
                FillItem(GetParam().items.at(0));
            },
            [this] { map->Remove(*args); }, [&](bool isRefused) { ExpectAllBut(isRefused ? 0 : 1, before); });
    }
    EXPECT_GT(allocations, 0u) << "no addition was broken off in a way that a removal has to mend";
}

INSTANTIATE_TEST_SUITE_P(Every, OutOfMemoryMap, testing::ValuesIn(AllMaps()),
                         [](auto const& tested) { return std::string(tested.param.name); });

/// An assembly with blocks of two registers at 0, 2 and 10.
class OutOfMemoryAssembly : public testing::Test
{
protected:
    static constexpr char const* TYPE = "a type whose name does not fit into itself";
    static constexpr char const* DEFAULT_TYPE = "another one, of which a block must be there";

    struct Place
    {
        uint16 outputId;
        std::string displayName;

        bool operator==(Place const&) const = default;
    };

    void Renew()
    {
        assembly = std::make_unique<ProtocolRegisterAssemblyBase>(true, uint16{0}, uint16{99});
        assembly->AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(ZuTest::TypeParams<>(TYPE, 2)));
        for (uint16 const outputId : {uint16{0}, uint16{2}, uint16{10}})
        {
            FillAdd(outputId, "old");
            assembly->Add(*added);
        }
    }

    void FillAdd(uint16 outputId, char const* displayName)
    {
        added = std::make_unique<AddBlockParams>();
        added->autoShift.Set(true);
        auto& block = added->blocks.Add();
        block.type.Set(TYPE);
        block.outputId.Set(outputId);
        block.displayName.Set(Long(displayName));
    }

    /// The blocks. Expects them in order, without overlaps, and as many as their types count.
    std::vector<Place> Places()
    {
        std::vector<Place> places;
        assembly->BeginLock();
        std::size_t counted = 0;
        for (auto const& type : assembly->SupportedRegisterBlockTypes())
        {
            counted += Serializer::Serialize(*type).at("instanceCount").get<std::size_t>();
        }
        EXPECT_EQ(counted, assembly->AddedRegisterBlocks().size());
        for (auto const& block : assembly->AddedRegisterBlocks())
        {
            EXPECT_TRUE(places.empty() || places.back().outputId + 2 <= block->OutputId());
            places.push_back({block->OutputId(), Serializer::Serialize(*block).at("displayName")});
        }
        assembly->EndLock();
        return places;
    }

    void FillRemove(std::initializer_list<uint16> outputIds)
    {
        removed.outputIdList.Clear();
        for (uint16 const outputId : outputIds)
        {
            removed.outputIdList.Add().outputId.Set(outputId);
        }
    }

    /// Removes each block by its id. The removal fails for a block that is missing in the index.
    void ExpectEachBlockToBeFound()
    {
        for (Place const& place : Places())
        {
            FillRemove({place.outputId});
            EXPECT_NO_THROW(assembly->Remove(removed)) << place.outputId;
        }
        EXPECT_TRUE(Places().empty());
    }

    std::unique_ptr<ProtocolRegisterAssemblyBase> assembly;
    std::unique_ptr<AddBlockParams> added;
    RemoveBlockParams removed;
    UpdateBlockParams update;
};

TEST_F(OutOfMemoryAssembly, TakesABlockWholeOrNotAtAll)
{
    std::string const old = Long("old");
    std::vector<Place> const with{{0, old}, {2, Long("new")}, {4, old}, {10, old}};
    std::vector<Place> const without{{0, old}, {2, old}, {10, old}};
    std::vector<Place> const afterTheShift{{0, old}, {4, old}, {10, old}}; // the shift is not undone

    uint64 const allocations = FailAtEachAllocation(
        [this] {
            Renew();
            FillAdd(2, "new");
        },
        [this] { assembly->Add(*added); },
        [&](bool isRefused) {
            auto const now = Places();
            EXPECT_TRUE(isRefused ? now == without || now == afterTheShift : now == with);
            if (isRefused)
            {
                FillAdd(2, "new");
                assembly->Add(*added);
                EXPECT_EQ(Places(), with);
            }
            ExpectEachBlockToBeFound();
        });
    EXPECT_GT(allocations, 0u);
}

TEST_F(OutOfMemoryAssembly, KeepsItsOrderWhenABlockCannotBeChanged)
{
    std::string const old = Long("old");
    std::vector<Place> const after{{0, old}, {10, Long("moved")}, {12, old}};

    uint64 const allocations = FailAtEachAllocation(
        [this] {
            Renew();
            update.outputId.Set(2);
            update.autoShift.Set(true);
            update.newParams.outputId.Set(10);
            update.newParams.displayName.Set(Long("moved"));
        },
        [this] { assembly->Update(update); },
        [&](bool isRefused) {
            auto const now = Places();
            EXPECT_EQ(now.size(), 3u);
            EXPECT_TRUE(isRefused || now == after);
            ExpectEachBlockToBeFound();
        });
    EXPECT_GT(allocations, 0u);
}

TEST_F(OutOfMemoryAssembly, NeedsNoMemoryToTakeBlocksOutOrToCloseGaps)
{
    Renew();
    FillRemove({2});
    CompactBlocksParams const compacted;
    ZuTest::AllocationCounter const counter;

    assembly->Compact(compacted);
    assembly->Remove(removed);
    assembly->Compact(compacted);
    uint64 const allocations = counter.Count();

    EXPECT_EQ(allocations, 0u);
    std::string const old = Long("old");
    EXPECT_EQ(Places(), (std::vector<Place>{{0, old}, {2, old}}));
}

TEST_F(OutOfMemoryAssembly, TakesEachBlockOfAListOutOrLeavesIt)
{
    std::string const old = Long("old");
    std::vector<Place> const all{{0, old}, {2, old}, {10, old}};
    std::vector<Place> const firstGone{{0, old}, {10, old}};
    std::vector<Place> const bothGone{{10, old}};

    uint64 const allocations = FailAtEachAllocation(
        [this] {
            Renew();
            FillRemove({77, 2, 78, 0});
        },
        [this] { assembly->Remove(removed); },
        [&](bool isRefused) {
            auto const now = Places();
            EXPECT_TRUE(isRefused ? now == all || now == firstGone || now == bothGone : now == bothGone);
            ExpectEachBlockToBeFound();
        });
    EXPECT_GT(allocations, 0u);
}

TEST_F(OutOfMemoryAssembly, HasTheOldBlocksOrWholeNewOnesWhereTheDefaultsCannotBeMade)
{
    std::string const old = Long("old");
    std::string const name = std::string(DEFAULT_TYPE) + " name";
    std::vector<Place> const before{{0, old}, {2, old}, {10, old}};
    std::vector<Place> const after{{0, name}};

    uint64 const allocations = FailAtEachAllocation(
        [this] {
            Renew();
            auto type = ZuTest::TypeParams<>(DEFAULT_TYPE, 2);
            type.minInstanceCount = 1;
            assembly->AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(type));
        },
        [this] { assembly->InitDefaultRegisterBlocksForRegisterAssembly(); },
        [&](bool isRefused) {
            auto const now = Places();
            EXPECT_TRUE(isRefused ? now == before || now.empty() : now == after);
            assembly->InitDefaultRegisterBlocksForRegisterAssembly();
            EXPECT_EQ(Places(), after);
        });
    EXPECT_GT(allocations, 0u);
}

} // namespace ZuControl::ControlProtocol

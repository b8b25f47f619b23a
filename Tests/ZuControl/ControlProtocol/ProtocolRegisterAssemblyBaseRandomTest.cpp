#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuControl/ControlProtocol/AddBlockParams.h"
#include "ZuControl/ControlProtocol/CompactBlocksParams.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/RemoveBlockParams.h"
#include "ZuControl/ControlProtocol/UpdateBlockParams.h"

#include <gtest/gtest.h>

#include <list>
#include <random>

namespace ZuControl::ControlProtocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

// A million operations where they are fast; enough of them to meet every case where they are not.
#ifdef NDEBUG
constexpr int OPERATIONS = 1'000'000;
#else
constexpr int OPERATIONS = 30'000;
#endif

constexpr uint16 NO_ID = 65535;

struct WalkedType
{
    std::string name;
    uint16 registers;
    uint16 least;
    uint16 most;
    uint16 instances = 0;
};

struct WalkedBlock
{
    std::size_t type;
    std::string name;
    uint16 id;
};

/// The same assembly without any index: everything is found by walking along the list.
class WalkedAssembly
{
public:
    WalkedAssembly(bool isGlobal, uint16 leastId, uint16 greatestId, std::vector<WalkedType> supported)
        : types(std::move(supported)), global(isGlobal), idMin(leastId), idMax(greatestId)
    {
    }

    /// Status and text of one block that is to be added; `id` and `name` are filled in.
    Refusal Add(std::size_t type, uint16& id, std::string& name, bool autoShift)
    {
        WalkedType& info = types[type];
        if (info.instances >= info.most)
        {
            return {-997, "Cannot add block. The maximum number of blocks of block type " + info.name +
                              " have already been added."};
        }
        name = name.empty() ? info.name + " name" : name;
        id = id > 65534 ? NextId() : id;
        if (!IsInRange(id, info.registers))
        {
            return {-997, OutOfRange("add", info, id)};
        }
        uint16 const end = global ? static_cast<uint16>(id - 1 + info.registers) : id;
        auto position = blocks.begin();
        if (Refusal const refusal = Position(id, end, autoShift, NO_ID, position); refusal.status != 1)
        {
            return refusal;
        }
        blocks.insert(position, {type, name, id});
        ++info.instances;
        return {1, ""};
    }

    Refusal Remove(uint16 id)
    {
        if (id > 65534)
        {
            return {-997, "Cannot remove block. Register block output id must be specified in order to remove a "
                          "register block."};
        }
        for (auto position = blocks.begin(); position != blocks.end(); ++position)
        {
            if (position->id == id)
            {
                WalkedType& info = types[position->type];
                if (info.instances <= info.least)
                {
                    return {-997, "Cannot remove block with output id " + std::to_string(id) +
                                      ". The minimum number of instances of this block type exist in the register "
                                      "assembly."};
                }
                --info.instances;
                blocks.erase(position);
                return {1, ""};
            }
        }
        return {-999, "Cannot remove block. There are no register blocks with output id " + std::to_string(id) + "."};
    }

    Refusal Update(uint16 id, uint16 newId, std::string const& name, bool autoShift)
    {
        if (id > 65534)
        {
            return {-997, "Register output id must be specified in order to update a register block."};
        }
        for (auto position = blocks.begin(); position != blocks.end(); ++position)
        {
            if (position->id == id)
            {
                Refusal const refusal = newId < NO_ID ? Move(position, newId, autoShift) : Refusal{1, ""};
                if (refusal.status == 1 && !name.empty())
                {
                    position->name = name;
                }
                return refusal;
            }
        }
        return {-999, "There are no register blocks with output id " + std::to_string(id) + "."};
    }

    Refusal Compact(uint16 start)
    {
        if (start <= 65534 && global)
        {
            std::string const range = "[" + std::to_string(idMin) + ", " + std::to_string(idMax) + "].";
            if (idMax < start || idMin > start)
            {
                return {-997, "Cannot compact blocks. The requested output id " + std::to_string(start) +
                                  " cannot lie outside the valid output id range " + range};
            }
            uint16 const used = Used(blocks.begin());
            if (idMax - start + 1 < used)
            {
                return {-977, "Cannot compact blocks. The requested output id range [" + std::to_string(start) + ", " +
                                  std::to_string(start - 1 + used) + "] cannot lie outside the valid output id range " +
                                  range};
            }
        }
        uint16 next = start <= 65534 ? start : global ? idMin : uint16{0};
        for (WalkedBlock& block : blocks)
        {
            block.id = next;
            next = static_cast<uint16>(End(block) + 1);
        }
        return {1, ""};
    }

    void Reset()
    {
        blocks.clear();
        for (WalkedType& type : types)
        {
            type.instances = 0;
        }
    }

    std::vector<WalkedType> types;
    std::list<WalkedBlock> blocks;

private:
    using Place = std::list<WalkedBlock>::iterator;

    uint16 End(WalkedBlock const& block) const
    {
        return global ? static_cast<uint16>(block.id + types[block.type].registers - 1) : block.id;
    }

    uint16 NextId() const
    {
        return !blocks.empty() ? static_cast<uint16>(End(blocks.back()) + 1) : global ? idMin : uint16{0};
    }

    bool IsInRange(uint16 id, uint16 registers) const
    {
        return !global || (id <= idMax && id + registers - 1 <= idMax && id >= idMin);
    }

    std::string OutOfRange(std::string const& verb, WalkedType const& info, uint16 id) const
    {
        return "Cannot " + verb + " block " + info.name + " because the block output id range [" + std::to_string(id) +
               ", " + std::to_string(id - 1 + info.registers) + "] lies outside the valid output id range [" +
               std::to_string(idMin) + ", " + std::to_string(idMax) + "].";
    }

    uint16 Used(Place place) const
    {
        uint16 used = 0;
        for (; place != blocks.end(); ++place)
        {
            used = static_cast<uint16>(used + types[place->type].registers);
        }
        return used;
    }

    Refusal Position(uint16 start, uint16 end, bool autoShift, uint16 excluded, Place& place)
    {
        for (place = blocks.begin(); place != blocks.end(); ++place)
        {
            uint16 const from = place->id;
            uint16 const to = End(*place);
            if (excluded != NO_ID && from == excluded)
            {
                continue;
            }
            if ((start >= from && start <= to) || (end >= from && end <= to) || (start <= from && end >= to))
            {
                return autoShift ? Shift(place, start, end, excluded) : Conflict(start, end, *place);
            }
            if (end < from)
            {
                break;
            }
        }
        return {1, ""};
    }

    Refusal Conflict(uint16 start, uint16 end, WalkedBlock const& block) const
    {
        if (start == end)
        {
            return {-980, "The block output id " + std::to_string(start) + " conflicts with the output id " +
                              std::to_string(block.id) + " of an existing block: " + block.name + "."};
        }
        return {-980, "The block output id range [" + std::to_string(start) + " - " + std::to_string(end) +
                          "] overlaps with the output id range [" + std::to_string(block.id) + " - " +
                          std::to_string(End(block)) + "] of an existing block: " + block.name + "."};
    }

    Refusal Shift(Place place, uint16 start, uint16 end, uint16 excluded)
    {
        if (global && Used(place) + static_cast<uint16>(end - start + 1) > static_cast<uint16>(idMax - start + 1))
        {
            return {-977, ""};
        }
        uint16 lastEnd = end;
        for (; place != blocks.end(); ++place)
        {
            if (excluded != NO_ID && place->id == excluded)
            {
                continue;
            }
            if (lastEnd < place->id)
            {
                break;
            }
            place->id = static_cast<uint16>(place->id + static_cast<uint16>(lastEnd - place->id + 1));
            lastEnd = End(*place);
        }
        return {1, ""};
    }

    Refusal Move(Place block, uint16 newId, bool autoShift)
    {
        WalkedType const& info = types[block->type];
        if (!IsInRange(newId, info.registers))
        {
            return {-997, OutOfRange("update", info, newId)};
        }
        uint16 const newEnd = global ? static_cast<uint16>(newId - 1 + info.registers) : newId;
        Place place = blocks.begin();
        if (Refusal const refusal = Position(newId, newEnd, autoShift, block->id, place); refusal.status != 1)
        {
            return refusal;
        }
        block->id = newId;
        if (place != block && place != std::next(block))
        {
            blocks.splice(place, blocks, block);
        }
        return {1, ""};
    }

    bool const global;
    uint16 const idMin;
    uint16 const idMax;
};

/// One way of using an assembly.
struct Usage
{
    char const* name;
    bool isGlobal;
    uint16 leastId;
    uint16 greatestId;
    uint16 lowest;  // of the ids that are asked for
    uint16 highest; // likewise
};

std::ostream& operator<<(std::ostream& stream, Usage const& usage)
{
    return stream << usage.name;
}

std::vector<WalkedType> const TYPES = {
    {"Four", 4, 0, 30}, {"One", 1, 0, 30}, {"Ten", 10, 1, 5}, {"None", 0, 0, 2}, {"Few", 2, 0, 3}};

} // namespace

class ProtocolRegisterAssemblyBaseRandomTest : public testing::TestWithParam<Usage>
{
protected:
    ProtocolRegisterAssemblyBaseRandomTest()
    {
        for (WalkedType const& type : TYPES)
        {
            auto params = ZuTest::TypeParams(type.name, type.registers);
            params.minInstanceCount = type.least;
            params.maxInstanceCount = type.most;
            assembly.AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(params));
        }
    }

    uint32 Below(uint32 limit)
    {
        return static_cast<uint32>(random() % limit);
    }

    /// An id that is asked for: mostly one near the others, at times none.
    uint16 SomeId()
    {
        if (Below(8) == 0)
        {
            return NO_ID;
        }
        if (Below(2) == 0 && !walked.blocks.empty())
        {
            return std::next(walked.blocks.begin(), Below(static_cast<uint32>(walked.blocks.size())))->id;
        }
        return static_cast<uint16>(usage.lowest + Below(uint32{usage.highest} - usage.lowest + 1));
    }

    void AddSome()
    {
        AddBlockParams params;
        bool const autoShift = Below(2) == 0;
        params.autoShift.Set(autoShift);
        std::vector<ZuTest::LogLine> lines;
        uint32 const count = 1 + Below(3);
        uint32 added = 0;
        for (uint32 i = 0; i < count; ++i)
        {
            std::size_t const type = Below(static_cast<uint32>(TYPES.size()));
            uint16 id = SomeId();
            std::string name = Below(2) == 0 ? "" : "n" + std::to_string(Below(1000));
            RegisterBlockParams& block = params.blocks.Add();
            block.type.Set(TYPES[type].name);
            block.outputId.Set(id);
            block.displayName.Set(name);
            pending.push_back({type, name, id});
        }
        for (WalkedBlock& block : pending)
        {
            Refusal const refusal = walked.Add(block.type, block.id, block.name, autoShift);
            Note(refusal, lines, added);
        }
        Refusal const refusal = RefusalOf([&] { assembly.Add(params); });
        ASSERT_EQ(refusal, added > 0 ? (Refusal{1, ""}) : (Refusal{0, "No register blocks were added."}));
        ASSERT_EQ(log.Lines(), lines);
        for (uint32 i = 0; i < count; ++i)
        {
            ASSERT_EQ(params.blocks.At(i).outputId.Get(), pending[i].id);
            ASSERT_EQ(params.blocks.At(i).displayName.Get(), pending[i].name);
        }
        pending.clear();
    }

    void RemoveSome()
    {
        RemoveBlockParams params;
        std::vector<ZuTest::LogLine> lines;
        uint32 removed = 0;
        uint32 const count = 1 + Below(2);
        for (uint32 i = 0; i < count; ++i)
        {
            uint16 const id = SomeId();
            params.outputIdList.Add().outputId.Set(id);
            Note(walked.Remove(id), lines, removed);
        }
        Refusal const refusal = RefusalOf([&] { assembly.Remove(params); });
        ASSERT_EQ(refusal, removed > 0 ? (Refusal{1, ""}) : (Refusal{0, "No register blocks were removed."}));
        ASSERT_EQ(log.Lines(), lines);
    }

    void UpdateOne()
    {
        uint16 const id = SomeId();
        uint16 const newId = SomeId();
        bool const autoShift = Below(2) == 0;
        std::string const name = Below(4) == 0 ? "u" + std::to_string(Below(1000)) : "";
        UpdateBlockParams params;
        params.outputId.Set(id);
        params.autoShift.Set(autoShift);
        params.newParams.outputId.Set(newId);
        params.newParams.displayName.Set(name);
        ASSERT_EQ(RefusalOf([&] { assembly.Update(params); }), walked.Update(id, newId, name, autoShift));
        ASSERT_EQ(log.Lines().size(), 0u);
    }

    void CompactAll()
    {
        uint16 const start = SomeId();
        CompactBlocksParams params;
        params.startingOutputId.Set(start);
        ASSERT_EQ(RefusalOf([&] { assembly.Compact(params); }), walked.Compact(start));
        ASSERT_EQ(log.Lines().size(), 0u);
    }

    void ResetAll()
    {
        assembly.ResetRegisterAssembly();
        walked.Reset();
    }

    void Operate()
    {
        uint32 const choice = Below(1000);
        if (choice < 400)
        {
            AddSome();
        }
        else if (choice < 650)
        {
            RemoveSome();
        }
        else if (choice < 980)
        {
            UpdateOne();
        }
        else if (choice < 998)
        {
            CompactAll();
        }
        else
        {
            ResetAll();
        }
    }

    void ExpectTheSameBlocks()
    {
        assembly.BeginLock();
        auto const& blocks = assembly.AddedRegisterBlocks();
        ASSERT_EQ(blocks.size(), walked.blocks.size());
        auto expected = walked.blocks.begin();
        for (auto const& block : blocks)
        {
            ASSERT_EQ(block->OutputId(), expected->id);
            ASSERT_EQ(block->DisplayName(), expected->name);
            ASSERT_EQ(block->Type(), walked.types[expected->type].name);
            ++expected;
        }
        assembly.EndLock();
    }

    static void Note(Refusal const& refusal, std::vector<ZuTest::LogLine>& lines, uint32& done)
    {
        if (refusal.status == 1)
        {
            ++done;
            return;
        }
        lines.push_back(ZuTest::UserWarning(refusal.text));
    }

    Usage const usage = GetParam();
    std::mt19937 random{7};
    ProtocolRegisterAssemblyBase assembly{usage.isGlobal, usage.leastId, usage.greatestId};
    WalkedAssembly walked{usage.isGlobal, usage.leastId, usage.greatestId, TYPES};
    std::vector<WalkedBlock> pending;
    ZuTest::LogRecorder log;
};

TEST_P(ProtocolRegisterAssemblyBaseRandomTest, DoesWhatAWalkAlongTheListDoes)
{
    for (int i = 0; i < OPERATIONS / 4; ++i)
    {
        Operate();
        ASSERT_FALSE(HasFatalFailure()) << "operation " << i;
        ExpectTheSameBlocks();
        ASSERT_FALSE(HasFatalFailure()) << "operation " << i;
        log.Clear();
    }
}

INSTANTIATE_TEST_SUITE_P(EveryUsage, ProtocolRegisterAssemblyBaseRandomTest,
                         testing::Values(Usage{"Addresses", true, 100, 260, 90, 270},
                                         Usage{"AllAddresses", true, 0, 65534, 65400, 65534},
                                         Usage{"PlainNumbers", false, 0, 65534, 0, 60},
                                         Usage{"LastPlainNumbers", false, 0, 65534, 65500, 65534}),
                         [](auto const& tested) { return std::string(tested.param.name); });

} // namespace ZuControl::ControlProtocol

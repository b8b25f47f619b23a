#pragma once

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"

#include <algorithm>
#include <list>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace ZuTest
{

struct WalkedType
{
    std::string name;
    uint16 registers = 0;
    uint16 least = 0;
    uint16 most = 0;
    bool hasDataSource = false;
    Refusal construction{1, ""};        ///< the outcome of a block's constructor
    bool isConstructionForeign = false; ///< the constructor throws an exception that is no Zu::Exception
    uint16 instances = 0;
};

/// A block, or the arguments for a new block.
struct WalkedBlock
{
    std::string type;
    std::string dataSource;
    std::string scannerId;
    std::string displayName;
    uint16 outputId = 65535;

    bool operator==(WalkedBlock const&) const = default;
};

/// The reference model of a register assembly: a plain list of blocks that is searched from the start for every
/// operation.
///
/// A refused operation throws a `Refusal`; its log lines are appended to `lines`.
class WalkedAssembly final
{
public:
    static constexpr uint16 NO_ID = 65535;

    WalkedAssembly(bool isGlobal, uint16 leastId, uint16 greatestId, std::vector<WalkedType> supported)
        : types(std::move(supported)), global(isGlobal), idMin(leastId), idMax(greatestId)
    {
    }

    WalkedAssembly(WalkedAssembly const&) = delete;
    WalkedAssembly& operator=(WalkedAssembly const&) = delete;

    void Add(std::vector<WalkedBlock>& list, bool autoShift)
    {
        bool const isDone = TryEach(list, [&](WalkedBlock& element) { AddOne(element, autoShift); });
        if (!isDone && !list.empty())
        {
            throw Refusal{0, "No register blocks were added."};
        }
    }

    void Remove(std::vector<uint16> const& list)
    {
        bool const isDone = TryEach(list, [&](uint16 id) { RemoveOne(id); });
        if (!isDone && !list.empty())
        {
            throw Refusal{0, "No register blocks were removed."};
        }
    }

    /// Takes over the members of `given` that are not empty and that the block's type has.
    void Update(uint16 id, WalkedBlock const& given, bool autoShift)
    {
        if (id > 65534)
        {
            throw Refusal{-997, "Register output id must be specified in order to update a register block."};
        }
        Place const block = Find(id);
        if (block == blocks.end())
        {
            throw Refusal{-999, "There are no register blocks with output id " + std::to_string(id) + "."};
        }
        if (given.outputId < NO_ID)
        {
            Move(block, given.outputId, autoShift);
        }
        block->scannerId = given.scannerId.empty() ? block->scannerId : given.scannerId;
        block->displayName = given.displayName.empty() ? block->displayName : given.displayName;
        if (TypeOf(*block).hasDataSource && !given.dataSource.empty())
        {
            block->dataSource = given.dataSource;
        }
    }

    void Compact(uint16 start)
    {
        if (start <= 65534 && global)
        {
            if (idMax < start || idMin > start)
            {
                throw Refusal{-997, "Cannot compact blocks. The requested output id " + std::to_string(start) +
                                        " cannot lie outside the valid output id range " + Range() + "."};
            }
            uint16 const used = Used(blocks.begin());
            if (idMax - start + 1 < used)
            {
                throw Refusal{-977, "Cannot compact blocks. The requested output id range [" + std::to_string(start) +
                                        ", " + std::to_string(static_cast<uint32>(start - 1 + used)) +
                                        "] cannot lie outside the valid output id range " + Range() + "."};
            }
        }
        uint16 next = start <= 65534 ? start : FirstId();
        for (WalkedBlock& block : blocks)
        {
            block.outputId = next;
            next = static_cast<uint16>(End(block) + 1);
        }
    }

    void Reset()
    {
        blocks.clear();
        for (WalkedType& type : types)
        {
            type.instances = 0;
        }
    }

    void InitDefaults()
    {
        Reset();
        std::vector<WalkedBlock> list;
        for (WalkedType const& type : types)
        {
            if (type.least != 0)
            {
                list.push_back({type.name, "", "", "", NO_ID});
            }
        }
        Add(list, false);
    }

    std::vector<WalkedBlock> OfTypes(std::list<std::string> const& names) const
    {
        std::vector<WalkedBlock> found;
        std::copy_if(blocks.begin(), blocks.end(), std::back_inserter(found), [&](WalkedBlock const& block) {
            return std::find(names.begin(), names.end(), block.type) != names.end();
        });
        return found;
    }

    std::map<std::string, WalkedBlock> ByDataSource()
    {
        std::map<std::string, WalkedBlock> found;
        for (WalkedBlock const& block : blocks)
        {
            if (TypeOf(block).hasDataSource && found.count(block.dataSource) == 0)
            {
                found[block.dataSource] = block;
            }
        }
        return found;
    }

    std::vector<std::string> DataSources()
    {
        std::vector<std::string> sources;
        for (WalkedBlock const& block : blocks)
        {
            if (TypeOf(block).hasDataSource)
            {
                sources.push_back(block.dataSource);
            }
        }
        return sources;
    }

    /// The last id that a block takes.
    uint16 End(WalkedBlock const& block)
    {
        return End(block.outputId, TypeOf(block));
    }

    std::vector<WalkedType> types;
    std::list<WalkedBlock> blocks;
    std::vector<LogLine> lines;

private:
    using Place = std::list<WalkedBlock>::iterator;

    /// Whether the step succeeded for at least one element. Each refused element adds a line.
    template <typename List, typename Step>
    bool TryEach(List& list, Step&& step)
    {
        bool isDone = false;
        for (auto& element : list)
        {
            try
            {
                step(element);
                isDone = true;
            }
            catch (Refusal const& refusal)
            {
                lines.push_back(UserWarning(refusal.text));
            }
        }
        return isDone;
    }

    void AddOne(WalkedBlock& element, bool autoShift)
    {
        if (element.type.empty())
        {
            throw Refusal{-997,
                          "Cannot add block. Register block type must be specified in order to add a register block."};
        }
        auto const type =
            std::find_if(types.begin(), types.end(), [&](WalkedType const& one) { return one.name == element.type; });
        if (type == types.end())
        {
            throw Refusal{-999, "Cannot add block. The type or size of the " + element.type +
                                    " block is incompatible with this protocol."};
        }
        if (type->instances >= type->most)
        {
            throw Refusal{-997, "Cannot add block. The maximum number of blocks of block type " + type->name +
                                    " have already been added."};
        }
        Format(*type, element);
        uint16 const end = End(element.outputId, *type);
        Place const place = Position(element.outputId, end, autoShift, NO_ID);
        if (type->isConstructionForeign)
        {
            throw std::runtime_error(type->construction.text);
        }
        if (type->construction.status != 1)
        {
            throw type->construction;
        }
        WalkedBlock block = element;
        block.dataSource = type->hasDataSource ? element.dataSource : "";
        blocks.insert(place, block);
        ++type->instances;
    }

    void Format(WalkedType const& type, WalkedBlock& element)
    {
        if (type.hasDataSource && element.dataSource.empty())
        {
            throw Refusal{-997, "Cannot add block. A data source is required for block type " + type.name + "."};
        }
        if (element.displayName.empty())
        {
            element.displayName = type.name + " name";
        }
        if (element.outputId > 65534)
        {
            element.outputId = blocks.empty() ? FirstId() : static_cast<uint16>(End(blocks.back()) + 1);
        }
        CheckRange("add", type, element.outputId);
    }

    void RemoveOne(uint16 id)
    {
        if (id > 65534)
        {
            throw Refusal{-997, "Cannot remove block. Register block output id must be specified in order to remove a "
                                "register block."};
        }
        Place const block = Find(id);
        if (block == blocks.end())
        {
            throw Refusal{-999, "Cannot remove block. There are no register blocks with output id " +
                                    std::to_string(id) + "."};
        }
        WalkedType& type = TypeOf(*block);
        if (type.instances <= type.least)
        {
            throw Refusal{-997, "Cannot remove block with output id " + std::to_string(id) +
                                    ". The minimum number of instances of this block type exist in the register "
                                    "assembly."};
        }
        --type.instances;
        blocks.erase(block);
    }

    void Move(Place block, uint16 newId, bool autoShift)
    {
        CheckRange("update", TypeOf(*block), newId);
        Place const place = Position(newId, End(newId, TypeOf(*block)), autoShift, block->outputId);
        block->outputId = newId;
        if (place != block && place != std::next(block))
        {
            blocks.splice(place, blocks, block);
        }
    }

    Place Position(uint16 start, uint16 end, bool autoShift, uint16 excluded)
    {
        for (Place place = blocks.begin(); place != blocks.end(); ++place)
        {
            uint16 const from = place->outputId;
            uint16 const to = End(*place);
            if (excluded != NO_ID && from == excluded)
            {
                continue;
            }
            if ((start >= from && start <= to) || (end >= from && end <= to) || (start <= from && end >= to))
            {
                if (!autoShift)
                {
                    throw Conflict(start, end, *place);
                }
                Shift(place, start, end, excluded);
                return place;
            }
            if (end < from)
            {
                return place;
            }
        }
        return blocks.end();
    }

    Refusal Conflict(uint16 start, uint16 end, WalkedBlock const& block)
    {
        if (start == end)
        {
            return {-980, "The block output id " + std::to_string(start) + " conflicts with the output id " +
                              std::to_string(block.outputId) + " of an existing block: " + block.displayName + "."};
        }
        return {-980, "The block output id range [" + std::to_string(start) + " - " + std::to_string(end) +
                          "] overlaps with the output id range [" + std::to_string(block.outputId) + " - " +
                          std::to_string(End(block)) + "] of an existing block: " + block.displayName + "."};
    }

    void Shift(Place place, uint16 start, uint16 end, uint16 excluded)
    {
        if (global && Used(place) + static_cast<uint16>(end - start + 1) > static_cast<uint16>(idMax - start + 1))
        {
            throw Refusal{-977, ""};
        }
        uint16 lastEnd = end;
        for (; place != blocks.end(); ++place)
        {
            if (excluded != NO_ID && place->outputId == excluded)
            {
                continue;
            }
            if (lastEnd < place->outputId)
            {
                break;
            }
            place->outputId = static_cast<uint16>(place->outputId + static_cast<uint16>(lastEnd - place->outputId + 1));
            lastEnd = End(*place);
        }
    }

    void CheckRange(std::string const& verb, WalkedType const& type, uint16 id) const
    {
        if (global && !(id <= idMax && id + type.registers - 1 <= idMax && id >= idMin))
        {
            throw Refusal{-997, "Cannot " + verb + " block " + type.name + " because the block output id range [" +
                                    std::to_string(id) + ", " +
                                    std::to_string(static_cast<uint32>(id - 1 + type.registers)) +
                                    "] lies outside the valid output id range " + Range() + "."};
        }
    }

    uint16 Used(Place place)
    {
        uint16 used = 0;
        for (; place != blocks.end(); ++place)
        {
            used = static_cast<uint16>(used + TypeOf(*place).registers);
        }
        return used;
    }

    Place Find(uint16 id)
    {
        return std::find_if(blocks.begin(), blocks.end(),
                            [id](WalkedBlock const& block) { return block.outputId == id; });
    }

    WalkedType& TypeOf(WalkedBlock const& block)
    {
        return *std::find_if(types.begin(), types.end(),
                             [&](WalkedType const& type) { return type.name == block.type; });
    }

    uint16 End(uint16 id, WalkedType const& type) const
    {
        return global ? static_cast<uint16>(id - 1 + type.registers) : id;
    }

    uint16 FirstId() const
    {
        return global ? idMin : uint16{0};
    }

    std::string Range() const
    {
        return "[" + std::to_string(idMin) + ", " + std::to_string(idMax) + "]";
    }

    bool const global;
    uint16 const idMin;
    uint16 const idMax;
};

} // namespace ZuTest

#include "ZuControl/ControlProtocol/RegisterPlacement.h"

#include "ZuControl/ControlProtocol/PlannedBlock.h"

#include <algorithm>
#include <utility>

namespace ZuControl::ControlProtocol
{

template <typename BlockPointer>
RegisterPlacement<BlockPointer>::RegisterPlacement() = default;

template <typename BlockPointer>
RegisterPlacement<BlockPointer>::~RegisterPlacement() = default;

template <typename BlockPointer>
typename RegisterPlacement<BlockPointer>::BlockList const& RegisterPlacement<BlockPointer>::Blocks() const
{
    return blocks;
}

template <typename BlockPointer>
typename RegisterPlacement<BlockPointer>::Position RegisterPlacement<BlockPointer>::Begin()
{
    return blocks.begin();
}

template <typename BlockPointer>
typename RegisterPlacement<BlockPointer>::Position RegisterPlacement<BlockPointer>::End()
{
    return blocks.end();
}

template <typename BlockPointer>
void RegisterPlacement<BlockPointer>::Refresh(uint64 placementChangeCount)
{
    if (!isStale && placementChangeCount == knownChangeCount)
    {
        return;
    }
    index.clear();
    for (Position position = blocks.begin(); position != blocks.end(); ++position)
    {
        index.push_back(EntryOf(position));
    }
    isOrdered = IsInOrder(index.begin(), index.end());
    isStale = false;
    knownChangeCount = placementChangeCount;
}

template <typename BlockPointer>
typename RegisterPlacement<BlockPointer>::Position RegisterPlacement<BlockPointer>::Find(uint16 outputId)
{
    if (!isOrdered || isStale)
    {
        return std::ranges::find_if(blocks, [outputId](auto const& block) { return block->OutputId() == outputId; });
    }
    Slot const slot = std::ranges::lower_bound(index, outputId, {}, &Entry::start);
    return slot != index.end() && slot->start == outputId ? slot->position : blocks.end();
}

template <typename BlockPointer>
typename RegisterPlacement<BlockPointer>::Position
RegisterPlacement<BlockPointer>::FindInsertPosition(uint16 startId, uint16 endId, uint16 excludedOutputId)
{
    if (!isOrdered || isStale || endId < startId)
    {
        return WalkToInsertPosition(startId, endId, excludedOutputId);
    }
    // Skips all blocks that end before the range; the next block overlaps the range or lies behind it.
    Slot slot = std::ranges::lower_bound(index, startId, {}, &Entry::end);
    if (slot != index.end() && excludedOutputId != NOTHING_EXCLUDED && slot->start == excludedOutputId)
    {
        ++slot;
    }
    return slot != index.end() ? slot->position : blocks.end();
}

template <typename BlockPointer>
bool RegisterPlacement<BlockPointer>::IsOverlapping(uint16 startId, uint16 endId, Block const& block)
{
    uint16 const blockStart = block.OutputId();
    uint16 const blockEnd = block.EndAddress();
    return (startId >= blockStart && startId <= blockEnd) || (endId >= blockStart && endId <= blockEnd) ||
           (startId <= blockStart && endId >= blockEnd);
}

template <typename BlockPointer>
uint16 RegisterPlacement<BlockPointer>::UsedRegisters(Position position)
{
    uint32 used = 0;
    if (!isOrdered || isStale)
    {
        for (; position != blocks.end(); ++position)
        {
            used += (*position)->RegisterCount();
        }
        return static_cast<uint16>(used); // 16 bits, as the ids are
    }
    for (Slot slot = SlotOf(position); slot != index.end(); ++slot)
    {
        used += slot->registerCount;
    }
    return static_cast<uint16>(used);
}

template <typename BlockPointer>
void RegisterPlacement<BlockPointer>::Shift(Position position, uint16 endId, uint16 excludedOutputId)
{
    bool const isIndexKept = isOrdered && !isStale && excludedOutputId == NOTHING_EXCLUDED;
    Slot const firstSlot = isIndexKept ? SlotOf(position) : index.end();
    Slot slot = firstSlot;
    uint16 lastEnd = endId;
    for (; position != blocks.end(); ++position)
    {
        Block& block = **position;
        uint16 const id = block.OutputId();
        if (excludedOutputId != NOTHING_EXCLUDED && id == excludedOutputId)
        {
            continue;
        }
        if (lastEnd < id)
        {
            break;
        }
        SetOutputId(block, static_cast<uint16>(lastEnd + 1));
        lastEnd = block.EndAddress();
        if (isIndexKept)
        {
            *slot = EntryOf(position);
            ++slot;
        }
    }
    if (isIndexKept)
    {
        CheckOrder(firstSlot, slot);
    }
    else
    {
        isStale = true;
    }
}

template <typename BlockPointer>
void RegisterPlacement<BlockPointer>::Insert(Position position, BlockPointer block)
{
    bool const isIndexKept = isOrdered && !isStale;
    Slot const slot = isIndexKept ? SlotOf(position) : index.end();
    auto const offset = slot - index.begin();
    if (index.size() == index.capacity()) // the allocation, which can fail, comes first: list and index stay in step
    {
        index.reserve(std::max<std::size_t>(8, 2 * index.size()));
    }
    Position const placed = blocks.insert(position, std::move(block));
    if (!isIndexKept)
    {
        isStale = true;
        return;
    }
    index.insert(index.begin() + offset, EntryOf(placed));
    CheckOrder(index.begin() + offset, index.begin() + offset + 1);
}

template <typename BlockPointer>
void RegisterPlacement<BlockPointer>::Erase(Position position)
{
    if (isOrdered && !isStale)
    {
        index.erase(SlotOf(position)); // removing an entry does not break the order
    }
    else
    {
        isStale = true;
    }
    blocks.erase(position);
}

template <typename BlockPointer>
void RegisterPlacement<BlockPointer>::Move(Position position, Position target, uint16 newOutputId)
{
    bool const isIndexKept = isOrdered && !isStale;
    auto const from = isIndexKept ? SlotOf(position) - index.begin() : 0;
    auto to = isIndexKept ? SlotOf(target) - index.begin() : 0;
    SetOutputId(**position, newOutputId);
    if (target != position && target != std::next(position))
    {
        blocks.splice(target, blocks, position);
    }
    if (!isIndexKept)
    {
        isStale = true;
        return;
    }
    to = to > from ? to - 1 : to; // the new place, once the entry has left its old one
    if (from < to)
    {
        std::rotate(index.begin() + from, index.begin() + from + 1, index.begin() + to + 1);
    }
    else
    {
        std::rotate(index.begin() + to, index.begin() + from, index.begin() + from + 1);
    }
    index[static_cast<std::size_t>(to)] = EntryOf(position);
    CheckOrder(index.begin() + to, index.begin() + to + 1);
}

template <typename BlockPointer>
void RegisterPlacement<BlockPointer>::Compact(uint16 firstId)
{
    uint16 next = firstId;
    for (auto const& block : blocks)
    {
        SetOutputId(*block, next);
        next = static_cast<uint16>(block->EndAddress() + 1);
    }
    isStale = true;
}

template <typename BlockPointer>
void RegisterPlacement<BlockPointer>::Clear()
{
    blocks.clear();
    index.clear();
    isOrdered = true;
    isStale = false;
}

template <typename BlockPointer>
typename RegisterPlacement<BlockPointer>::Entry RegisterPlacement<BlockPointer>::EntryOf(Position position)
{
    Block const& block = **position;
    return {block.OutputId(), block.EndAddress(), block.RegisterCount(), position};
}

template <typename BlockPointer>
void RegisterPlacement<BlockPointer>::SetOutputId(Block& block, uint16 newOutputId)
{
    if (block.OutputId() == newOutputId)
    {
        return;
    }
    block.SetOutputId(newOutputId);
    ++knownChangeCount; // the block's observer counts it as well
}

template <typename BlockPointer>
typename RegisterPlacement<BlockPointer>::Position
RegisterPlacement<BlockPointer>::WalkToInsertPosition(uint16 startId, uint16 endId, uint16 excludedOutputId)
{
    for (Position position = blocks.begin(); position != blocks.end(); ++position)
    {
        Block const& block = **position;
        if (excludedOutputId != NOTHING_EXCLUDED && block.OutputId() == excludedOutputId)
        {
            continue;
        }
        if (IsOverlapping(startId, endId, block) || endId < block.OutputId())
        {
            return position;
        }
    }
    return blocks.end();
}

template <typename BlockPointer>
typename RegisterPlacement<BlockPointer>::Slot RegisterPlacement<BlockPointer>::SlotOf(Position position)
{
    if (position == blocks.end())
    {
        return index.end();
    }
    return std::ranges::lower_bound(index, (*position)->OutputId(), {}, &Entry::start);
}

template <typename BlockPointer>
bool RegisterPlacement<BlockPointer>::IsInOrder(Slot first, Slot last) const
{
    for (Slot slot = first; slot != last; ++slot)
    {
        if (slot->end < slot->start || (slot != index.begin() && std::prev(slot)->end >= slot->start))
        {
            return false;
        }
    }
    return last == index.end() || last == index.begin() || std::prev(last)->end < last->start;
}

template <typename BlockPointer>
void RegisterPlacement<BlockPointer>::CheckOrder(Slot first, Slot last)
{
    isOrdered = IsInOrder(first, last);
}

template <typename BlockPointer>
uint64 RegisterPlacement<BlockPointer>::KnownChangeCount() const
{
    return knownChangeCount;
}

template class RegisterPlacement<std::shared_ptr<ProtocolRegisterBlock>>;
template class RegisterPlacement<PlannedBlock*>;

} // namespace ZuControl::ControlProtocol

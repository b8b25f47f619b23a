#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <list>
#include <memory>
#include <vector>

namespace ZuControl::ControlProtocol
{

class PlannedBlock;

/// The blocks of an assembly in a list, with a flat index by output id, so that a large assembly is searched by
/// bisection. `BlockPointer` points to a block, or to a record that stands for a block in a preview.
///
/// A search by the index gives the same result as a walk along the list. Ids that are plain numbers may wrap and leave
/// the list unsorted: as long as that lasts, the list is walked.
/// Threads: the class takes no lock; the assembly's lock guards it.
template <typename BlockPointer>
class ZUCONTROL_INTERNAL_API RegisterPlacement final
{
public:
    using Block = typename std::pointer_traits<BlockPointer>::element_type;
    using BlockList = std::list<BlockPointer>;
    using Position = typename BlockList::iterator;

    /// Passed as the excluded output id: no block is skipped.
    static constexpr uint16 NOTHING_EXCLUDED = 65535;

    RegisterPlacement();
    ~RegisterPlacement();

    RegisterPlacement(RegisterPlacement const&) = delete;
    RegisterPlacement& operator=(RegisterPlacement const&) = delete;

    BlockList const& Blocks() const;
    Position Begin();
    Position End();

    /// The caller calls this before each search. `placementChangeCount` is `PlacementChanges::all`: the index is built
    /// anew when it differs from the number of changes that this object has made itself.
    void Refresh(uint64 placementChangeCount);

    /// The number of changes that this object knows: for blocks that nothing else changes.
    uint64 KnownChangeCount() const;

    /// The first block with this output id, else the end.
    Position Find(uint16 outputId);

    /// The first block that overlaps the range or lies behind it, else the end. Blocks with the excluded id are
    /// skipped.
    Position FindInsertPosition(uint16 startId, uint16 endId, uint16 excludedOutputId);

    static bool IsOverlapping(uint16 startId, uint16 endId, Block const& block);

    /// Registers of all blocks from `position` on, in 16 bits; gaps do not count.
    uint16 UsedRegisters(Position position);

    /// Moves the blocks from `position` on behind `endId`, up to the first gap that is large enough.
    void Shift(Position position, uint16 endId, uint16 excludedOutputId);

    void Insert(Position position, BlockPointer block);
    void Erase(Position position);

    /// Gives the block a new id and moves it to before `target`.
    void Move(Position position, Position target, uint16 newOutputId);

    /// Gives all blocks ids from `firstId` on, without gaps, in 16 bits; the order stays.
    void Compact(uint16 firstId);

    void Clear();

private:
    struct Entry
    {
        uint16 start;
        uint16 end;
        uint16 registerCount;
        Position position;
    };

    using Slot = typename std::vector<Entry>::iterator;

    static Entry EntryOf(Position position);
    void SetOutputId(Block& block, uint16 newOutputId);
    Position WalkToInsertPosition(uint16 startId, uint16 endId, uint16 excludedOutputId);
    Slot SlotOf(Position position);
    bool IsInOrder(Slot first, Slot last) const;
    void CheckOrder(Slot first, Slot last);

    BlockList blocks;
    std::vector<Entry> index; // of the blocks in list order
    // No block ends before its start, and each ends before the next one starts. Only then the index is searched.
    bool isOrdered = true;
    bool isStale = false; // the index must be rebuilt before its next use
    uint64 knownChangeCount = 0;
};

extern template class RegisterPlacement<std::shared_ptr<ProtocolRegisterBlock>>;
extern template class RegisterPlacement<PlannedBlock*>;

} // namespace ZuControl::ControlProtocol

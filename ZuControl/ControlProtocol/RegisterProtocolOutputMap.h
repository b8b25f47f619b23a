#pragma once

#include "ZuControl/ControlProtocol/NumericIdProtocolOutputBase.h"
#include "ZuControl/ControlProtocol/RegisterOutputItemArgs.h"
#include "ZuControl/ControlProtocol/RegisterOutputsArgs.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

extern template class ProtocolOutputBase<RegisterOutputs, RegisterOutputItem, RegisterOutputsArgs,
                                         RegisterOutputItemArgs>;
extern template class NumericIdProtocolOutputBase<RegisterOutputs, RegisterOutputItem, RegisterOutputsArgs,
                                                  RegisterOutputItemArgs>;

/// The output map for protocols with a register space: an output id is the address of an item's first register, and an item
/// takes as many registers as its size calls for.
///
/// How items meet is judged in part by rough rules that existing configurations rely on; see GetOverlappingState. With
/// leave to shift an item may land one place ahead of its address: the list is out of order then, and searches in it may
/// miss.
class ZUCONTROL_API RegisterProtocolOutputMap
    : public NumericIdProtocolOutputBase<RegisterOutputs, RegisterOutputItem, RegisterOutputsArgs,
                                         RegisterOutputItemArgs>
{
public:
    // The flags of GetOverlappingState.
    static constexpr ZuProtocolOutputDataOverlapState RUNS_INTO_NEXT = 1; ///< or has its address
    static constexpr ZuProtocolOutputDataOverlapState BEHIND_PREVIOUS = 2;

    /// The register space begins at `start` and has `count` registers of `itemSize` each, in the unit of the items'
    /// "outputSize". A size of 0 is refused by the first operation that needs it: -997.
    RegisterProtocolOutputMap(uint16 start, uint16 count, uint16 itemSize, uint16 mostItems);
    ~RegisterProtocolOutputMap() override;

    RegisterProtocolOutputMap(RegisterProtocolOutputMap const&) = delete;
    RegisterProtocolOutputMap& operator=(RegisterProtocolOutputMap const&) = delete;

    /// Takes a `RegisterOutputItemArgs`, else std::bad_cast. Without leave to shift it refuses what does not lie ahead of
    /// the first item or behind the last. Behind the last nothing is tested. Throws -997 also for an address outside of the
    /// register space, -977 also where the items that move may not fit.
    void Add(Zu::Params::Group const& itemArgs) override;

    /// Takes a `RegisterOutputs`, else std::bad_cast. Places its items behind the last one, also beyond the register
    /// space; the address is written into the caller's record when the item comes in. For the rest as with plain numbers.
    void AddAll(Zu::Params::Group& outputs) override;

    /// Places the items one behind the other from the start that the constructor was given.
    void CompactId() override;

    /// Throws -997 for a new address outside of the register space, before it looks at the ids.
    void UpdateId(Zu::Params::Group& outputsArgs) override;

    /// Adds `item` at `index`; the items behind it move up just far enough, until a gap takes the shift up.
    void OverlapInsert(uint64 index, RegisterOutputItem const& item) override;

    /// The two flags together; 0 behind the last item.
    ZuProtocolOutputDataOverlapState GetOverlappingState(Zu::Params::Group const& item) const override;

    /// Moves the register space and all items with it, in 16 bits.
    void SetStartAddress(uint16 newStart);
    uint16 StartAddress() const;

private:
    // These two hide those of the base, which moves its items through its own, without the test for room.
    void Add_Helper(Zu::Params::Group const& group, bool autoShift);
    void ShiftOutputMap(uint64 index, RegisterOutputItem const& item) ZU_REQUIRES(lock);
    void CheckRoom(uint64 index, RegisterOutputItem const& item) const ZU_REQUIRES(lock);

    uint16 NumOfRegisterOccupies(RegisterOutputItem const& item) const ZU_REQUIRES(lock);
    /// Whether the space behind `index` can take the item, by a rough estimate.
    bool hasGap(uint64 index, RegisterOutputItem const& item) const ZU_REQUIRES(lock);
    void CheckAddress(uint16 address) const ZU_REQUIRES(lock);
    /// Behind the last register of the item at `index`.
    uint32 EndOf(uint64 index) const ZU_REQUIRES(lock);

    uint16 const initialStart;
};

} // namespace ZuControl::ControlProtocol

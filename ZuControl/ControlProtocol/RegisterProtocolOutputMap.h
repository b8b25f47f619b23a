#pragma once

#include "ZuControl/ControlProtocol/NumericIdProtocolOutputBase.h"
#include "ZuControl/ControlProtocol/RegisterOutputs.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

extern template class ProtocolOutputBase<RegisterOutputs, RegisterOutputItem, RegisterOutputsArgs,
                                         RegisterOutputItemArgs>;
extern template class NumericIdProtocolOutputBase<RegisterOutputs, RegisterOutputItem, RegisterOutputsArgs,
                                                  RegisterOutputItemArgs>;

/// The output map for protocols with a register space: an output id is the address of an item's first register, and an
/// item takes as many registers as its size needs.
///
/// The test for overlaps follows approximate rules that existing configurations rely on; see GetOverlappingState. With
/// `autoShift` an item may be inserted one place before its address: the list is then out of order, and a search may
/// not find an item.
class ZUCONTROL_API RegisterProtocolOutputMap
    : public NumericIdProtocolOutputBase<RegisterOutputs, RegisterOutputItem, RegisterOutputsArgs,
                                         RegisterOutputItemArgs>
{
public:
    // The flags of GetOverlappingState.
    static constexpr ZuProtocolOutputDataOverlapState RUNS_INTO_NEXT = 1; ///< or has its address
    static constexpr ZuProtocolOutputDataOverlapState BEHIND_PREVIOUS = 2;

    /// The register space begins at `start` and has `count` registers of `itemSize` each, in the unit of the items'
    /// "outputSize". An `itemSize` of 0 is refused by the first operation that needs it, with
    /// `Zu::Status::BAD_ARGUMENT`.
    RegisterProtocolOutputMap(uint16 start, uint16 count, uint16 itemSize, uint16 mostItems);
    ~RegisterProtocolOutputMap() override;

    RegisterProtocolOutputMap(RegisterProtocolOutputMap const&) = delete;
    RegisterProtocolOutputMap& operator=(RegisterProtocolOutputMap const&) = delete;

    /// Takes a `RegisterOutputItemArgs`, else throws std::bad_cast. Without `autoShift` it accepts an item only before
    /// the first item or behind the last; behind the last nothing is tested. Beside the cases of the base it throws
    /// `Zu::Status::BAD_ARGUMENT` for an address outside of the register space and `Zu::Status::FULL` where the items
    /// that move may not fit.
    void Add(Zu::Params::Group const& itemArgs) override;

    /// Takes a `RegisterOutputs`, else throws std::bad_cast. Places its items behind the last item, also beyond the
    /// register space. The address is written into the caller's record when the item is added. Otherwise as the base.
    void AddAll(Zu::Params::Group& outputs) override;

    /// Places the items without gaps, beginning at the start address that the constructor has received.
    void CompactId() override;

    /// Throws `Zu::Status::BAD_ARGUMENT` for a new address outside of the register space, before it checks the ids.
    void UpdateId(Zu::Params::Group& outputsArgs) override;

    /// Adds `item` at `index`. The items behind it move up just far enough, up to the first gap that is large enough.
    void OverlapInsert(uint64 index, RegisterOutputItem const& item) override;

    /// The two flags together; 0 behind the last item.
    ZuProtocolOutputDataOverlapState GetOverlappingState(Zu::Params::Group const& item) const override;

    /// Moves the register space and all items with it, in 16 bits.
    void SetStartAddress(uint16 newStart);
    uint16 StartAddress() const;

private:
    // These two hide those of the base. The base moves items through its own versions, without the test for room.
    void Add_Helper(Zu::Params::Group const& group, bool autoShift);
    void ShiftOutputMap(uint64 index, RegisterOutputItem const& item) ZU_REQUIRES(lock);
    void CheckRoom(uint64 index, RegisterOutputItem const& item) const ZU_REQUIRES(lock);

    uint16 NumOfRegisterOccupies(RegisterOutputItem const& item) const ZU_REQUIRES(lock);
    /// Whether the item fits behind `index`, by a rough estimate.
    bool hasGap(uint64 index, RegisterOutputItem const& item) const ZU_REQUIRES(lock);
    void CheckAddress(uint16 address) const ZU_REQUIRES(lock);
    /// The address behind the last register of the item at `index`.
    uint32 EndOf(uint64 index) const ZU_REQUIRES(lock);

    uint16 const initialStart;
};

} // namespace ZuControl::ControlProtocol

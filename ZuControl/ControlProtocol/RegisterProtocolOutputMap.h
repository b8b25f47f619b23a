#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/NumericIdProtocolOutputBase.h"
#include "ZuControl/ControlProtocol/ProtocolOutputBase.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>

namespace ZuControl::ControlProtocol
{

/// One data source of a register map, where an output id is a register address.
struct ZUCONTROL_API RegisterOutputItem : public Zu::Params::Group
{
    using OutputId = uint16;

    // The defaults; an item with one of these is not complete.
    static constexpr OutputId DEFAULT_OUTPUT_ID = 65535; ///< also the only id that is not valid
    static constexpr uint16 DEFAULT_OUTPUT_SIZE = 0;
    static constexpr char const* DEFAULT_SOURCE = "";

    RegisterOutputItem();
    ~RegisterOutputItem() override;

    /// Whether the item has all members that a map needs.
    bool IsComplete() const;

    /// Whether both items are equal in every member of this record.
    bool IsSameOutput(RegisterOutputItem const& other) const;

    /// Copies the members of `other`. `CopyValues` would also copy the marks and the sort counter, which differ in an
    /// argument record.
    void TakeOver(RegisterOutputItem const& other);

    Zu::Params::Value<uint16> outputId;   ///< address of the first register
    Zu::Params::Value<uint16> outputSize; ///< in the unit of the map's "itemSize"
    Zu::Params::Value<std::string> source;
    Zu::Params::Value<uint16> dataOffset; ///< into the data of the source
    Zu::Params::Value<uint16> dataLength; ///< of the data of the source
};

} // namespace ZuControl::ControlProtocol

extern template class Zu::Properties::Array<ZuControl::ControlProtocol::RegisterOutputItem>;
extern template class Zu::Params::Array<ZuControl::ControlProtocol::RegisterOutputItem>;

namespace ZuControl::ControlProtocol
{

/// The arguments for one item of a register map.
struct ZUCONTROL_API RegisterOutputItemArgs : public RegisterOutputItem
{
    RegisterOutputItemArgs();
    ~RegisterOutputItemArgs() override;

    Zu::Params::Value<bool> autoShift; ///< items in the way move to higher ids
};

/// The register space of a map.
struct ZUCONTROL_API RegisterOutputsAttributes : public Zu::Params::Group
{
    RegisterOutputsAttributes();
    ~RegisterOutputsAttributes() override;

    Zu::Params::Value<uint16> start;    ///< address of the first register
    Zu::Params::Value<uint16> count;    ///< how many registers there are
    Zu::Params::Value<uint16> itemSize; ///< of one register, in the unit of the items' "outputSize"
};

/// The record of a register map. Clients read it, and jobs store it.
struct ZUCONTROL_API RegisterOutputs : public CommonProtocolOutputProp
{
    RegisterOutputs();
    ~RegisterOutputs() override;

    Zu::Params::Array<RegisterOutputItem> map;
    RegisterOutputsAttributes attributes;
};

/// The arguments for several items of a register map.
struct ZUCONTROL_API RegisterOutputsArgs : public RegisterOutputs
{
    RegisterOutputsArgs();
    ~RegisterOutputsArgs() override;

    Zu::Params::Value<bool> autoShift; ///< items in the way move to higher ids
};

extern template class ProtocolOutputBase<RegisterOutputs, RegisterOutputItem, RegisterOutputsArgs,
                                         RegisterOutputItemArgs>;
extern template class NumericIdProtocolOutputBase<RegisterOutputs, RegisterOutputItem, RegisterOutputsArgs,
                                                  RegisterOutputItemArgs>;

/// Where the registers of a map are: `count` registers from `start` on, of `itemSize` each.
struct RegisterSpace
{
    uint16 start = 0;
    uint16 count = 0;
    uint16 itemSize = 0;
};

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

    /// A copy for a preview: its operations write no log line and change nothing but the copy. `newNotes` receives the
    /// refusals and outlives the copy.
    std::unique_ptr<RegisterProtocolOutputMap> CopyForPreview(RefusalNotes& newNotes) const;

    RegisterSpace Space() const;

private:
    // These two hide those of the base. The base moves items through its own versions, without the test for room.
    void Add_Helper(Zu::Params::Group const& group, bool autoShift);
    void ShiftOutputMap(uint64 index, RegisterOutputItem const& item) ZU_REQUIRES(lock);
    void CheckRoom(uint64 index, RegisterOutputItem const& item) const ZU_REQUIRES(lock);

    uint16 NumOfRegisterOccupies(RegisterOutputItem const& item) const ZU_REQUIRES(lock);
    uint16 RegistersFor(uint16 size) const ZU_REQUIRES(lock);
    /// Whether the item fits behind `index`, by a rough estimate.
    bool hasGap(uint64 index, RegisterOutputItem const& item) const ZU_REQUIRES(lock);
    void CheckAddress(uint16 address) const ZU_REQUIRES(lock);
    /// The address behind the last register of the item at `index`.
    uint32 EndOf(uint64 index) const ZU_REQUIRES(lock);

    uint16 const initialStart;
};

} // namespace ZuControl::ControlProtocol

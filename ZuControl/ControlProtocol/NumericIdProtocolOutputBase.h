#pragma once

#include "ZuControl/ControlProtocol/ProtocolOutputBase.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

/// An output map with plain numbers as ids: it assigns ids, closes gaps and makes room for an item in a run of ids.
///
/// A kind with records of its own includes "ZuControl/ControlProtocol/NumericIdProtocolOutputBaseDefinition.h" where it
/// instantiates the template.
template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
class ZUCONTROL_API NumericIdProtocolOutputBase
    : public ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>
{
public:
    explicit NumericIdProtocolOutputBase(uint16 mostItems);
    ~NumericIdProtocolOutputBase() override;

    NumericIdProtocolOutputBase(NumericIdProtocolOutputBase const&) = delete;
    NumericIdProtocolOutputBase& operator=(NumericIdProtocolOutputBase const&) = delete;

    /// Takes an `Outputs`, else throws std::bad_cast. Adds its items behind the last item, with the ids that follow.
    /// The ids are written into the caller's record, also those of refused items. A refused item does not stop the
    /// others: at the end the last failing status is thrown, `Zu::Status::BAD_ARGUMENT` or
    /// `Zu::Status::ALREADY_EXISTS`. A full map throws `Zu::Status::FULL` at once. Items that are added by then stay.
    /// When a shift has given the invalid id to the last item of the map, every new item is refused.
    void AddAll(Zu::Params::Group& outputs) override;

    /// The items get the ids from 0 on; their order stays.
    void CompactId() override;

    /// A new id that is taken is not refused as such: the items there may shift.
    void UpdateId(Zu::Params::Group& outputsArgs) override;

    /// Adds `item` at `index`. The items from there on move to the next id each, up to the first free id. The last item
    /// may get the invalid id.
    void OverlapInsert(uint64 index, OutputItem const& item) override;

    bool IsDataShiftSupported() const override; ///< true

protected:
    /// The items of an empty map begin at `nextId`.
    void AddAll(Zu::Params::Group& outputs, uint16 nextId);
    void CompactId(uint16 nextId);

    /// Passes each entry of a list to `addEntry`, which adds it, or logs why not and returns the failing status. Throws
    /// as `AddAll`, under the label `function`.
    template <typename AddEntry>
    void AddEntries(char const* function, Outputs& listed, AddEntry addEntry) ZU_REQUIRES(this->lock);

    uint16 firstId = 0;
};

} // namespace ZuControl::ControlProtocol

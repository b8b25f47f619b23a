#pragma once

#include "ZuControl/ControlProtocol/ProtocolOutputBase.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

/// An output map whose ids are plain numbers: it hands out ids, closes gaps and makes room for an item in a run of ids.
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

    /// Takes an `Outputs`, else std::bad_cast. Adds its items behind the last one, with the ids that follow; these are
    /// written into the caller's record, also for what is refused. One bad item does not stop the others: at the end the
    /// last failing status is thrown, -997 or -987. -977 at once when the map is full; what came in stays. Behind the invalid
    /// id, which a shift may give to the last item, every item is refused.
    void AddAll(Zu::Params::Group& outputs) override;

    /// The items get the ids from 0 on; their order stays.
    void CompactId() override;

    /// A taken new id is no refusal of its own: the items there may shift.
    void UpdateId(Zu::Params::Group& outputsArgs) override;

    /// Adds `item` at `index`. The items there move to the next id each, until a free one takes the shift up; the last id
    /// of all may become the invalid one.
    void OverlapInsert(uint64 index, OutputItem const& item) override;

    bool IsDataShiftSupported() const override; ///< true

protected:
    /// The items of an empty map begin at `nextId`.
    void AddAll(Zu::Params::Group& outputs, uint16 nextId);
    void CompactId(uint16 nextId);

    uint16 firstId = 0;
};

} // namespace ZuControl::ControlProtocol

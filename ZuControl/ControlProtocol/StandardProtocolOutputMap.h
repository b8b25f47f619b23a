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

/// One data source of a map with numeric ids.
struct ZUCONTROL_API StandardOutputItem : public Zu::Params::Group
{
    using OutputId = uint16;

    // The defaults; an item with one of these is not complete.
    static constexpr OutputId DEFAULT_OUTPUT_ID = 65535; ///< also the only id that is not valid
    static constexpr char const* DEFAULT_SOURCE = "";

    StandardOutputItem();
    ~StandardOutputItem() override;

    /// Whether the item has all members that a map needs.
    bool IsComplete() const;

    /// Whether both items are equal in every member of this record.
    bool IsSameOutput(StandardOutputItem const& other) const;

    /// Copies the members of `other`. `CopyValues` would also copy the marks and the sort counter, which differ in an
    /// argument record.
    void TakeOver(StandardOutputItem const& other);

    Zu::Params::Value<uint16> outputId;
    Zu::Params::Value<std::string> source;
};

} // namespace ZuControl::ControlProtocol

extern template class Zu::Properties::Array<ZuControl::ControlProtocol::StandardOutputItem>;
extern template class Zu::Params::Array<ZuControl::ControlProtocol::StandardOutputItem>;

namespace ZuControl::ControlProtocol
{

/// The arguments for one item of a map with numeric ids.
struct ZUCONTROL_API StandardOutputItemArgs : public StandardOutputItem
{
    StandardOutputItemArgs();
    ~StandardOutputItemArgs() override;

    Zu::Params::Value<bool> autoShift; ///< items in the way move to higher ids
};

/// The ids that the protocol can send, as information for clients. The map accepts other ids too.
struct ZUCONTROL_API StandardOutputsAttributes : public Zu::Params::Group
{
    StandardOutputsAttributes();
    ~StandardOutputsAttributes() override;

    Zu::Params::Value<uint16> outputIdMin;
    Zu::Params::Value<uint16> outputIdMax;
};

/// The record of a map with numeric ids, sorted by id. Clients read it, and jobs store it.
struct ZUCONTROL_API StandardOutputs : public CommonProtocolOutputProp
{
    StandardOutputs();
    ~StandardOutputs() override;

    Zu::Params::Array<StandardOutputItem> map;
    StandardOutputsAttributes attributes;
};

/// The arguments for several items of a map with numeric ids.
struct ZUCONTROL_API StandardOutputsArgs : public StandardOutputs
{
    StandardOutputsArgs();
    ~StandardOutputsArgs() override;

    Zu::Params::Value<bool> autoShift; ///< items in the way move to higher ids
};

extern template class ProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs,
                                         StandardOutputItemArgs>;
extern template class NumericIdProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs,
                                                  StandardOutputItemArgs>;

/// The output map for protocols that number their outputs.
class ZUCONTROL_API StandardProtocolOutputMap
    : public NumericIdProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs,
                                         StandardOutputItemArgs>
{
public:
    static constexpr uint16 OUTPUT_ID_MIN = 0;
    static constexpr uint16 OUTPUT_ID_MAX = 65534;

    /// The range is shown to clients and not enforced. Throws `Zu::Status::BAD_ARGUMENT` for a minimum above the
    /// maximum and for a maximum above OUTPUT_ID_MAX.
    StandardProtocolOutputMap(uint16 mostItems, uint16 minId, uint16 maxId);
    ~StandardProtocolOutputMap() override;

    StandardProtocolOutputMap(StandardProtocolOutputMap const&) = delete;
    StandardProtocolOutputMap& operator=(StandardProtocolOutputMap const&) = delete;

    /// A copy for a preview: its operations write no log line and change nothing but the copy. `newNotes` receives the
    /// refusals and outlives the copy.
    std::unique_ptr<StandardProtocolOutputMap> CopyForPreview(RefusalNotes& newNotes) const;
};

} // namespace ZuControl::ControlProtocol

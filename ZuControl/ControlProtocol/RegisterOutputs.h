#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/CommonProtocolOutputProp.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

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

} // namespace ZuControl::ControlProtocol

#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuControl::ControlProtocol
{

/// One data source of a map with numeric ids.
struct ZUCONTROL_API StandardOutputItem : public Zu::Params::Group
{
    using OutputId = uint16;

    // An item with one of these is not complete.
    static constexpr OutputId DEFAULT_OUTPUT_ID = 65535; ///< also the one id that is not valid
    static constexpr char const* DEFAULT_SOURCE = "";

    StandardOutputItem();
    ~StandardOutputItem() override;

    /// Whether the item says all that a map needs of it.
    bool IsComplete() const;

    /// Whether the two agree in every member of this record.
    bool IsSameOutput(StandardOutputItem const& other) const;

    /// Stores the other's members. `CopyValues` would take over the other's marks and sort counter too, which differ in a
    /// record with arguments.
    void TakeOver(StandardOutputItem const& other);

    Zu::Params::Value<uint16> outputId;
    Zu::Params::Value<std::string> source;
};

} // namespace ZuControl::ControlProtocol

extern template class Zu::Properties::Array<ZuControl::ControlProtocol::StandardOutputItem>;
extern template class Zu::Params::Array<ZuControl::ControlProtocol::StandardOutputItem>;

#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"

#include <string>

namespace ZuControl::ControlProtocol
{

/// One data source of a map whose ids are texts.
struct ZUCONTROL_API TextIdStandardOutputItem : public Zu::Params::Group
{
    using OutputId = std::string;

    // An item with one of these is not complete.
    static constexpr char const* DEFAULT_OUTPUT_ID = "";
    static constexpr char const* DEFAULT_SOURCE = "";

    TextIdStandardOutputItem();
    ~TextIdStandardOutputItem() override;

    /// Whether the item says all that a map needs of it.
    bool IsComplete() const;

    /// Whether the two agree in every member of this record.
    bool IsSameOutput(TextIdStandardOutputItem const& other) const;

    /// Stores the other's members. `CopyValues` would take over the other's marks and sort counter too, which differ in a
    /// record with arguments.
    void TakeOver(TextIdStandardOutputItem const& other);

    Zu::Params::Value<std::string> outputId;
    Zu::Params::Value<std::string> source;
};

} // namespace ZuControl::ControlProtocol

extern template class Zu::Properties::Array<ZuControl::ControlProtocol::TextIdStandardOutputItem>;
extern template class Zu::Params::Array<ZuControl::ControlProtocol::TextIdStandardOutputItem>;

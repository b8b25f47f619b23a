#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"

#include <string>

namespace ZuControl::ControlProtocol
{

/// One data source of a map with text ids.
struct ZUCONTROL_API TextIdStandardOutputItem : public Zu::Params::Group
{
    using OutputId = std::string;

    // The defaults; an item with one of these is not complete.
    static constexpr char const* DEFAULT_OUTPUT_ID = "";
    static constexpr char const* DEFAULT_SOURCE = "";

    TextIdStandardOutputItem();
    ~TextIdStandardOutputItem() override;

    /// Whether the item has all members that a map needs.
    bool IsComplete() const;

    /// Whether both items are equal in every member of this record.
    bool IsSameOutput(TextIdStandardOutputItem const& other) const;

    /// Copies the members of `other`. `CopyValues` would also copy the marks and the sort counter, which differ in an
    /// argument record.
    void TakeOver(TextIdStandardOutputItem const& other);

    Zu::Params::Value<std::string> outputId;
    Zu::Params::Value<std::string> source;
};

} // namespace ZuControl::ControlProtocol

extern template class Zu::Properties::Array<ZuControl::ControlProtocol::TextIdStandardOutputItem>;
extern template class Zu::Params::Array<ZuControl::ControlProtocol::TextIdStandardOutputItem>;

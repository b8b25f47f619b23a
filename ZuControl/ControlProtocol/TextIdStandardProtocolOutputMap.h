#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/ProtocolOutputBase.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <memory>
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

namespace ZuControl::ControlProtocol
{

/// The arguments for one item of a map with text ids.
struct ZUCONTROL_API TextIdStandardOutputItemArgs : public TextIdStandardOutputItem
{
    TextIdStandardOutputItemArgs();
    ~TextIdStandardOutputItemArgs() override;

    Zu::Params::Value<bool> autoShift; ///< has no effect: there is no next text that an item could move to
};

/// The record of a map with text ids, sorted by their bytes. Clients read it, and jobs store it.
struct ZUCONTROL_API TextIdStandardOutputs : public CommonProtocolOutputProp
{
    TextIdStandardOutputs();
    ~TextIdStandardOutputs() override;

    Zu::Params::Array<TextIdStandardOutputItem> map;
};

/// The arguments for several items of a map with text ids. Such items cannot shift, so there is no `autoShift`.
struct ZUCONTROL_API TextIdStandardOutputsArgs : public TextIdStandardOutputs
{
    TextIdStandardOutputsArgs();
    ~TextIdStandardOutputsArgs() override;
};

extern template class ProtocolOutputBase<TextIdStandardOutputs, TextIdStandardOutputItem, TextIdStandardOutputsArgs,
                                         TextIdStandardOutputItemArgs>;

/// The output map for protocols that name their outputs by text. Ids are sorted by their bytes and cannot shift: a
/// taken id is refused.
class ZUCONTROL_API TextIdStandardProtocolOutputMap
    : public ProtocolOutputBase<TextIdStandardOutputs, TextIdStandardOutputItem, TextIdStandardOutputsArgs,
                                TextIdStandardOutputItemArgs>
{
public:
    explicit TextIdStandardProtocolOutputMap(uint16 mostItems);
    ~TextIdStandardProtocolOutputMap() override;

    TextIdStandardProtocolOutputMap(TextIdStandardProtocolOutputMap const&) = delete;
    TextIdStandardProtocolOutputMap& operator=(TextIdStandardProtocolOutputMap const&) = delete;

    /// Takes a `TextIdStandardOutputs`, else throws std::bad_cast. An item without id gets its source as id, in the
    /// caller's record. A refused item does not stop the others: it is logged, and at the end the first failing status
    /// is thrown. The lock is taken for each item and not for the call.
    void AddAll(Zu::Params::Group& outputs) override;

    /// A copy for a preview: its operations write no log line and change nothing but the copy. `newNotes` receives the
    /// refusals and outlives the copy.
    std::unique_ptr<TextIdStandardProtocolOutputMap> CopyForPreview(RefusalNotes& newNotes) const;
};

} // namespace ZuControl::ControlProtocol

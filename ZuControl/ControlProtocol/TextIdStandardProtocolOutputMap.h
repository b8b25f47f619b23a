#pragma once

#include "ZuControl/ControlProtocol/ProtocolOutputBase.h"
#include "ZuControl/ControlProtocol/TextIdStandardOutputs.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

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
};

} // namespace ZuControl::ControlProtocol

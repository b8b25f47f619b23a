#pragma once

#include "ZuControl/ControlProtocol/NumericIdProtocolOutputBase.h"
#include "ZuControl/ControlProtocol/StandardOutputs.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

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
};

} // namespace ZuControl::ControlProtocol

#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"

#include "ZuControl/ControlProtocol/NumericIdProtocolOutputBaseDefinition.h"

namespace ZuControl::ControlProtocol
{

template class ProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs, StandardOutputItemArgs>;
template class NumericIdProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs,
                                           StandardOutputItemArgs>;

StandardProtocolOutputMap::StandardProtocolOutputMap(uint16 mostItems, uint16 minId, uint16 maxId)
    : NumericIdProtocolOutputBase(mostItems)
{
    if (minId > maxId || maxId > OUTPUT_ID_MAX)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "Minimum output id value %1$u and/or maximum output id value %2$u are invalid.", unsigned{minId},
                 unsigned{maxId});
    }
    Zu::Locker const guard(lock);
    outputs.attributes.outputIdMin.Set(minId);
    outputs.attributes.outputIdMax.Set(maxId);
}

StandardProtocolOutputMap::~StandardProtocolOutputMap() = default;

} // namespace ZuControl::ControlProtocol

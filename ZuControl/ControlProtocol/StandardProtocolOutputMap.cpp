#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"

#include "ZuControl/ControlProtocol/NumericIdProtocolOutputBaseDefinition.h"

template class Zu::Properties::Array<ZuControl::ControlProtocol::StandardOutputItem>;
template class Zu::Params::Array<ZuControl::ControlProtocol::StandardOutputItem>;

namespace ZuControl::ControlProtocol
{

StandardOutputItem::StandardOutputItem() : Group(""), outputId(DEFAULT_OUTPUT_ID)
{
    Register("outputId", "Id", outputId);
    Register("source", "Source", source);
}

StandardOutputItem::~StandardOutputItem() = default;

bool StandardOutputItem::IsComplete() const
{
    return outputId.Get() != DEFAULT_OUTPUT_ID && source.Get() != DEFAULT_SOURCE;
}

bool StandardOutputItem::IsSameOutput(StandardOutputItem const& other) const
{
    return outputId.Get() == other.outputId.Get() && source.Get() == other.source.Get();
}

void StandardOutputItem::TakeOver(StandardOutputItem const& other)
{
    outputId.Set(other.outputId.Get());
    source.Set(other.source.Get());
}

StandardOutputItemArgs::StandardOutputItemArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

StandardOutputItemArgs::~StandardOutputItemArgs() = default;

StandardOutputsAttributes::StandardOutputsAttributes() : Group("")
{
    Register("outputIdMin", "Minimum Output Id", outputIdMin);
    Register("outputIdMax", "Maximum Output Id", outputIdMax);
}

StandardOutputsAttributes::~StandardOutputsAttributes() = default;

StandardOutputs::StandardOutputs()
{
    Register("map", "OutputMap", map);
    Register("attributes", "Attributes", attributes);
}

StandardOutputs::~StandardOutputs() = default;

StandardOutputsArgs::StandardOutputsArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

StandardOutputsArgs::~StandardOutputsArgs() = default;

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

std::unique_ptr<StandardProtocolOutputMap> StandardProtocolOutputMap::CopyForPreview(RefusalNotes& newNotes) const
{
    auto copy = std::make_unique<StandardProtocolOutputMap>(maxCount, OUTPUT_ID_MIN, OUTPUT_ID_MAX); // not enforced
    copy->BecomeCopyOf(*this, newNotes);
    return copy;
}

} // namespace ZuControl::ControlProtocol

#include "ZuControl/ControlProtocol/StandardOutputs.h"

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

} // namespace ZuControl::ControlProtocol

#include "ZuControl/ControlProtocol/RegisterOutputs.h"

template class Zu::Properties::Array<ZuControl::ControlProtocol::RegisterOutputItem>;
template class Zu::Params::Array<ZuControl::ControlProtocol::RegisterOutputItem>;

namespace ZuControl::ControlProtocol
{

RegisterOutputItem::RegisterOutputItem() : Group(""), outputId(DEFAULT_OUTPUT_ID)
{
    Register("outputId", "Id", outputId);
    Register("outputSize", "Size", outputSize);
    Register("source", "Source", source);
    Register("dataOffset", "Offset", dataOffset);
    Register("dataLength", "Length", dataLength);
}

RegisterOutputItem::~RegisterOutputItem() = default;

bool RegisterOutputItem::IsComplete() const
{
    return outputId.Get() != DEFAULT_OUTPUT_ID && source.Get() != DEFAULT_SOURCE &&
           outputSize.Get() != DEFAULT_OUTPUT_SIZE;
}

bool RegisterOutputItem::IsSameOutput(RegisterOutputItem const& other) const
{
    return outputId.Get() == other.outputId.Get() && outputSize.Get() == other.outputSize.Get() &&
           source.Get() == other.source.Get() && dataOffset.Get() == other.dataOffset.Get() &&
           dataLength.Get() == other.dataLength.Get();
}

void RegisterOutputItem::TakeOver(RegisterOutputItem const& other)
{
    outputId.Set(other.outputId.Get());
    outputSize.Set(other.outputSize.Get());
    source.Set(other.source.Get());
    dataOffset.Set(other.dataOffset.Get());
    dataLength.Set(other.dataLength.Get());
}

RegisterOutputItemArgs::RegisterOutputItemArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

RegisterOutputItemArgs::~RegisterOutputItemArgs() = default;

RegisterOutputsAttributes::RegisterOutputsAttributes() : Group("")
{
    Register("start", "Start", start);
    Register("count", "Count", count);
    Register("itemSize", "ItemSize", itemSize);
}

RegisterOutputsAttributes::~RegisterOutputsAttributes() = default;

RegisterOutputs::RegisterOutputs()
{
    Register("map", "OutputMap", map);
    Register("attributes", "Attributes", attributes);
}

RegisterOutputs::~RegisterOutputs() = default;

RegisterOutputsArgs::RegisterOutputsArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

RegisterOutputsArgs::~RegisterOutputsArgs() = default;

} // namespace ZuControl::ControlProtocol

#include "ZuControl/ControlProtocol/TextIdStandardOutputs.h"

template class Zu::Properties::Array<ZuControl::ControlProtocol::TextIdStandardOutputItem>;
template class Zu::Params::Array<ZuControl::ControlProtocol::TextIdStandardOutputItem>;

namespace ZuControl::ControlProtocol
{

TextIdStandardOutputItem::TextIdStandardOutputItem() : Group("")
{
    Register("outputId", "Id", outputId);
    Register("source", "Source", source);
}

TextIdStandardOutputItem::~TextIdStandardOutputItem() = default;

bool TextIdStandardOutputItem::IsComplete() const
{
    return outputId.Get() != DEFAULT_OUTPUT_ID && source.Get() != DEFAULT_SOURCE;
}

bool TextIdStandardOutputItem::IsSameOutput(TextIdStandardOutputItem const& other) const
{
    return outputId.Get() == other.outputId.Get() && source.Get() == other.source.Get();
}

void TextIdStandardOutputItem::TakeOver(TextIdStandardOutputItem const& other)
{
    outputId.Set(other.outputId.Get());
    source.Set(other.source.Get());
}

TextIdStandardOutputItemArgs::TextIdStandardOutputItemArgs()
{
    Register("autoShift", "AutoShift", autoShift);
}

TextIdStandardOutputItemArgs::~TextIdStandardOutputItemArgs() = default;

TextIdStandardOutputs::TextIdStandardOutputs()
{
    Register("map", "OutputMap", map);
}

TextIdStandardOutputs::~TextIdStandardOutputs() = default;

TextIdStandardOutputsArgs::TextIdStandardOutputsArgs() = default;
TextIdStandardOutputsArgs::~TextIdStandardOutputsArgs() = default;

} // namespace ZuControl::ControlProtocol

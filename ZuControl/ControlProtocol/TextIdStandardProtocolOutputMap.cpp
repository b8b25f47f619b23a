#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include "ZuControl/ControlProtocol/ProtocolOutputBaseDefinition.h"

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

template class ProtocolOutputBase<TextIdStandardOutputs, TextIdStandardOutputItem, TextIdStandardOutputsArgs,
                                  TextIdStandardOutputItemArgs>;

TextIdStandardProtocolOutputMap::TextIdStandardProtocolOutputMap(uint16 mostItems) : ProtocolOutputBase(mostItems)
{
}

TextIdStandardProtocolOutputMap::~TextIdStandardProtocolOutputMap() = default;

void TextIdStandardProtocolOutputMap::AddAll(Zu::Params::Group& outputs)
{
    auto& list = dynamic_cast<TextIdStandardOutputs&>(outputs).map;
    int32 status = Zu::Status::SUCCESS;
    for (uint64 i = 0; i < list.Count(); ++i)
    {
        TextIdStandardOutputItem& entry = list.At(i);
        if (notes != nullptr)
        {
            notes->entry = i;
        }
        if (entry.outputId.Get().empty())
        {
            entry.outputId.Set(entry.source.Get());
        }
        try
        {
            Add_Helper(entry, false);
        }
        catch (std::exception const&)
        {
            int32 const failed =
                OutputMapRefusal(notes).OfCaughtEntry(__LINE__, __FILE__, ZU_FUNCTION_LABEL, entry.source.Get());
            status = status == Zu::Status::SUCCESS ? failed : status;
        }
    }
    OutputMapRefusal::UnlessAllAdded(ZU_FUNCTION_LABEL, status);
}

std::unique_ptr<TextIdStandardProtocolOutputMap>
TextIdStandardProtocolOutputMap::CopyForPreview(RefusalNotes& newNotes) const
{
    auto copy = std::make_unique<TextIdStandardProtocolOutputMap>(maxCount);
    copy->BecomeCopyOf(*this, newNotes);
    return copy;
}

} // namespace ZuControl::ControlProtocol

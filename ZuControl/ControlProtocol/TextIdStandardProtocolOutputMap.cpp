#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include "ZuControl/ControlProtocol/ProtocolOutputBaseDefinition.h"

namespace ZuControl::ControlProtocol
{

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
        if (entry.outputId.Get().empty())
        {
            entry.outputId.Set(entry.source.Get());
        }
        try
        {
            Add_Helper(entry, false);
        }
        catch (std::exception const& exception)
        {
            ZU_LOG_CAUGHT("Error adding data source <%s>", entry.source.Get().c_str());
            if (status == Zu::Status::SUCCESS)
            {
                auto const* const ours = dynamic_cast<Zu::Exception const*>(&exception);
                status = ours != nullptr ? ours->Status() : Zu::Status::BAD_ARGUMENT;
            }
        }
    }
    OutputMapRefusal::UnlessAllAdded(ZU_FUNCTION_LABEL, status);
}

} // namespace ZuControl::ControlProtocol

#include "Plugins/ModbusTcp/Blocks/DiscreteInputs.h"

namespace ModbusTcp
{

using ZuControl::ControlProtocol::FieldArea;
using ZuControl::ControlProtocol::FieldType;
using ZuControl::ControlProtocol::RegisterField;

std::vector<RegisterField> WithInputs(std::vector<RegisterField> fields, uint16 outputId, bool areBytesSwapped)
{
    constexpr uint32 LAST_INPUT = 65535;
    std::vector<RegisterField> inputs;
    for (RegisterField const& field : fields)
    {
        uint32 const bit = areBytesSwapped ? field.bit ^ 8u : field.bit;
        uint32 const number = 16 * (uint32{outputId} + field.offset) + bit;
        if (field.type != FieldType::BIT || number > LAST_INPUT)
        {
            continue;
        }
        RegisterField& input = inputs.emplace_back(field);
        input.name += "Input";
        input.type = FieldType::BOOL;
        input.area = FieldArea::DISCRETE_INPUTS;
        input.offset = static_cast<uint16>(number);
        input.bit = 0;
    }
    fields.insert(fields.end(), inputs.begin(), inputs.end());
    return fields;
}

} // namespace ModbusTcp

#include "Host/Sensor/NumberListValue.h"

#include "ZuApi/IValueIo.h"
#include "ZuApi/NodeType.h"
#include "ZuApi/Structure.h"

#include <utility>

namespace ZuHost
{

NumberListValue::NumberListValue(std::vector<uint64> allNumbers)
    : ShownValue(&NumberListValue::BuildSchema), numbers(std::move(allNumbers))
{
}

NumberListValue::~NumberListValue() = default;

void NumberListValue::WriteValue(Zu::Properties::IValueWriter& writer) const
{
    writer.BeginArray();
    for (uint64 const number : numbers)
    {
        writer.NextElement();
        writer.WriteUint64(number);
    }
    writer.EndArray();
}

void NumberListValue::BuildSchema(Zu::Properties::Node& /*node*/, Zu::Properties::Structure& schema)
{
    using Zu::Properties::Internal::NodeType;
    schema.Register("type", NodeType::Shared(NodeType::Kind::ARRAY));
}

} // namespace ZuHost

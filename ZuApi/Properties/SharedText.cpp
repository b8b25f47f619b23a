#include "ZuApi/Properties/SharedText.h"

#include "ZuApi/IValueIo.h"
#include "ZuApi/NodeType.h"
#include "ZuApi/Structure.h"
#include "wApi/wMutex.h"

#include <utility>

namespace Zu::Properties
{

SharedText::SharedText() : ValueBase(&SharedText::BuildSchema)
{
}

SharedText::~SharedText() = default;

std::string SharedText::Get() const
{
    Zu::MutexLock const guard(lock);
    return text;
}

void SharedText::Set(std::string newText)
{
    Zu::MutexLock const guard(lock);
    text.swap(newText);
}

void SharedText::CopyValues(Node const& other)
{
    Set(dynamic_cast<SharedText const&>(other).Get());
}

void SharedText::ReadValue(IValueReader& reader)
{
    Set(reader.ReadString());
}

void SharedText::WriteValue(IValueWriter& writer) const
{
    writer.WriteString(Get());
}

void SharedText::ValidateValue(IValueReader& reader)
{
    reader.ReadString(); // throws if the value is no text
}

void SharedText::BuildSchema(Node& /*node*/, Structure& schema)
{
    schema.Register("type", Internal::NodeType::Shared(Internal::NodeType::Kind::STRING));
}

} // namespace Zu::Properties

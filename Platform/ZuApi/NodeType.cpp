#include "ZuApi/NodeType.h"

#include "ZuApi/Exception.h"
#include "ZuApi/IValueIo.h"

#include <utility>

namespace Zu::Properties::Internal
{

NodeType::NodeType(std::string newName) : ValueBase(nullptr), name(std::move(newName))
{
}

NodeType::NodeType(char const* newName, bool isShared) : ValueBase(nullptr), name(newName), shared(isShared)
{
}

NodeType::~NodeType() = default;

NodeType& NodeType::Shared(Kind kind)
{
    // Never freed: values in static objects may be destroyed after any other static. The order is that of `Kind`.
    static auto* const nodes = new NodeType[7]{{"", true},       {"boolean", true}, {"integer", true}, {"number", true},
                                               {"string", true}, {"array", true},   {"object", true}};
    return nodes[static_cast<std::size_t>(kind)];
}

void NodeType::CopyValues(Node const& other)
{
    auto const& source = dynamic_cast<NodeType const&>(other);
    if (name != source.name)
    {
        if (shared)
        {
            ZU_THROW(Status::WRITE_ONLY_REFUSED, "The type of a value cannot be changed.");
        }
        name = source.name;
    }
    CopySchema(other);
}

void NodeType::SetWriteOnly(bool newWriteOnly)
{
    if (newWriteOnly)
    {
        ZU_THROW(Status::WRITE_ONLY_REFUSED);
    }
}

void NodeType::ReadValue(IValueReader& /*reader*/)
{
    ZU_THROW(Status::NOT_SUPPORTED);
}

void NodeType::WriteValue(IValueWriter& writer) const
{
    writer.WriteString(name);
}

void NodeType::ValidateValue(IValueReader& /*reader*/)
{
    ZU_THROW(Status::NOT_SUPPORTED);
}

std::string const& NodeType::Get() const noexcept
{
    return name;
}

} // namespace Zu::Properties::Internal

#include "ZuApi/Structure.h"

#include "ZuApi/Exception.h"
#include "ZuApi/INodeVisitor.h"
#include "ZuApi/NodeType.h"

#include <algorithm>
#include <utility>

namespace Zu::Properties
{

namespace
{

constexpr std::size_t FIRST_CAPACITY = 6; // most records have two to six members

} // namespace

Structure::Structure(bool isDescribed) : Node(isDescribed ? &Structure::BuildSchema : nullptr)
{
}

Structure::Structure(SchemaBuilder builder) noexcept : Node(builder)
{
}

Structure::~Structure() = default;

void Structure::CopyValues(Node const& other)
{
    auto const& source = dynamic_cast<Structure const&>(other);
    for (std::size_t i = 0; i < children.size(); ++i)
    {
        // Records of one class have the same keys in the same places; only other records need the search.
        bool const samePlace = i < source.children.size() && source.children[i].key == children[i].key;
        Node const* const from = samePlace ? source.children[i].node : source.Find(children[i].key.Get());
        if (from != nullptr && from != children[i].node) // a shared type node needs no copy
        {
            children[i].node->CopyValues(*from);
        }
    }
}

void Structure::SetWriteOnly(bool newWriteOnly)
{
    for (Child const& child : children)
    {
        child.node->SetWriteOnly(newWriteOnly);
    }
}

void Structure::Accept(INodeVisitorConst& visitor) const
{
    visitor.VisitStructure(*this);
}

void Structure::Accept(INodeVisitor& visitor)
{
    visitor.VisitStructure(*this);
}

Node& Structure::Register(std::string const& key, Node& node)
{
    Enter(Internal::InternedText(key), node);
    return node;
}

void Structure::Deregister(std::string const& key)
{
    if (auto const found = Position(key); found != children.end())
    {
        children.erase(found);
    }
}

uint64 Structure::Count() const noexcept
{
    return children.size();
}

std::string const& Structure::KeyAt(uint64 index) const
{
    return ChildAt(index).key.Get();
}

Node& Structure::At(uint64 index)
{
    return *ChildAt(index).node;
}

Node const& Structure::At(uint64 index) const
{
    return *ChildAt(index).node;
}

Node* Structure::Find(std::string const& key)
{
    auto const found = Position(key);
    return found != children.end() ? found->node : nullptr;
}

Node const* Structure::Find(std::string const& key) const
{
    auto const found = Position(key);
    return found != children.end() ? found->node : nullptr;
}

void Structure::BuildSchema(Node& /*node*/, Structure& schema)
{
    schema.Register("type", Internal::NodeType::Shared(Internal::NodeType::Kind::OBJECT));
}

void Structure::Enter(Internal::InternedText key, Node& node)
{
    // Equal keys share one entry, so this compares pointers.
    if (auto const found = std::ranges::find(children, key, &Child::key); found != children.end())
    {
        found->node = &node;
        return;
    }
    if (children.capacity() == 0)
    {
        children.reserve(FIRST_CAPACITY);
    }
    children.push_back({std::move(key), &node});
}

Structure::Child const& Structure::ChildAt(uint64 index) const
{
    if (index >= children.size())
    {
        ZU_THROW(Status::NOT_FOUND);
    }
    return children[index];
}

std::vector<Structure::Child>::const_iterator Structure::Position(std::string const& key) const
{
    return std::ranges::find_if(children, [&key](Child const& child) { return child.key.Get() == key; });
}

} // namespace Zu::Properties

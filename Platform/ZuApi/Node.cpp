#include "ZuApi/Node.h"

#include "ZuApi/LazyBuildLock.h"
#include "ZuApi/Structure.h"
#include "wApi/wMutex.h"

#include <memory>

namespace Zu::Properties
{

/// The parts that few nodes need, created on first use.
struct Node::Side
{
    ~Side()
    {
        delete schema.load(std::memory_order_relaxed);
    }

    std::atomic<Structure*> schema{nullptr}; // owned; publishes the complete schema
    Event<Node&> observers;
    bool writeOnly = false;
};

Node::Node(SchemaBuilder newBuilder) noexcept : builder(newBuilder)
{
}

Node::~Node()
{
    // The nodes in the schema are members of derived classes, which are destroyed already: this must not access them.
    delete side.load(std::memory_order_relaxed);
}

void Node::SetWriteOnly(bool newWriteOnly)
{
    if (newWriteOnly != IsWriteOnly())
    {
        MadeSide().writeOnly = newWriteOnly;
    }
}

bool Node::IsWriteOnly() const
{
    Side const* const made = side.load(std::memory_order_acquire);
    return made != nullptr && made->writeOnly;
}

void Node::RegisterSchema(std::string const& key, Node& node)
{
    Schema()->Register(key, node);
}

void Node::RegisterSchema(std::string const& key, Node& node, bool /*isFixed*/)
{
    Schema()->Register(key, node);
}

void Node::DeregisterSchema(std::string const& key)
{
    Schema()->Deregister(key);
}

Structure* Node::Schema() const
{
    if (Structure* const made = MadeSchema())
    {
        return made;
    }
    Zu::MutexLock const guard(Internal::LazyBuildLock());
    Side& holder = MadeSide();
    if (holder.schema.load(std::memory_order_relaxed) == nullptr)
    {
        auto schema = std::make_unique<Structure>(false);
        if (builder != nullptr)
        {
            builder(const_cast<Node&>(*this), *schema); // building the schema does not change the values of the node
        }
        holder.schema.store(schema.release(), std::memory_order_release);
    }
    return holder.schema.load(std::memory_order_relaxed);
}

Node::ObserverId Node::AddObserver(Observer observer)
{
    return MadeSide().observers.Add(std::move(observer));
}

void Node::RemoveObserver(ObserverId const& id)
{
    if (HasObservers())
    {
        MadeSide().observers.Remove(id);
    }
}

void Node::CopySchema(Node const& other)
{
    Structure* const mine = MadeSchema();
    Structure const* const theirs = other.MadeSchema();
    if (mine != nullptr && theirs != nullptr && mine != theirs)
    {
        mine->CopyValues(*theirs);
    }
}

void Node::RunObservers()
{
    if (HasObservers())
    {
        MadeSide().observers.Fire(*this);
    }
}

bool Node::HasObservers() const noexcept
{
    Side const* const made = side.load(std::memory_order_acquire);
    return made != nullptr && !made->observers.Empty();
}

Structure* Node::MadeSchema() const noexcept
{
    Side const* const made = side.load(std::memory_order_acquire);
    return made != nullptr ? made->schema.load(std::memory_order_acquire) : nullptr;
}

void Node::UpdateSchema(std::string const& key, Node& node)
{
    if (Structure* const schema = MadeSchema())
    {
        schema->Register(key, node);
    }
}

void Node::RemoveFromSchema(std::string const& key)
{
    if (Structure* const schema = MadeSchema())
    {
        schema->Deregister(key);
    }
}

Node::Side& Node::MadeSide() const
{
    if (Side* const made = side.load(std::memory_order_acquire))
    {
        return *made;
    }
    Zu::MutexLock const guard(Internal::LazyBuildLock());
    if (side.load(std::memory_order_relaxed) == nullptr)
    {
        side.store(new Side, std::memory_order_release);
    }
    return *side.load(std::memory_order_relaxed);
}

} // namespace Zu::Properties

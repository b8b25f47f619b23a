#pragma once

#include "ZuApi/Event.h"
#include "wApi/wExport.h"

#include <atomic>
#include <functional>
#include <string>

namespace Zu::Properties
{

class INodeVisitor;
class INodeVisitorConst;
class Structure;

/// A node in a tree of self-describing values. It has a schema, which is a structure of further nodes, and observers.
///
/// Schema and observers are created on first use. Nodes refer to each other by address, so a node is never copied or
/// moved; `CopyValues` copies contents.
///
/// Threads: no lock; one thread at a time may use a tree. Several threads may read it at the same time.
class ZUAPI_API Node
{
public:
    using Observer = std::function<void(Node&)>;
    using ObserverId = Event<Node&>::CallbackId;

    virtual ~Node();

    Node(Node const&) = delete;
    Node& operator=(Node const&) = delete;

    /// Copies the contents of `other`. Throws std::bad_cast if `other` is of another kind.
    virtual void CopyValues(Node const& other) = 0;

    /// A write-only node accepts values but is left out of serialised documents.
    virtual void SetWriteOnly(bool newWriteOnly);

    virtual void Accept(INodeVisitorConst& visitor) const = 0;
    virtual void Accept(INodeVisitor& visitor) = 0;

    bool IsWriteOnly() const;

    /// Adds an entry to the schema, or replaces the entry with the same key. `node` is not owned: deregister it before
    /// it is destroyed.
    void RegisterSchema(std::string const& key, Node& node);

    /// As above. `isFixed` is false for an optional entry, which may be deregistered later; the flag has no effect.
    void RegisterSchema(std::string const& key, Node& node, bool isFixed);

    /// Removes an entry; does nothing for an absent one.
    void DeregisterSchema(std::string const& key);

    /// Returns the schema that describes this node. The node owns it and creates it on the first call. The schema of a
    /// schema is empty.
    Structure* Schema() const;

    /// Adds an observer. It runs before this node changes, on the thread that changes it, and may remove itself. An
    /// empty function is not stored.
    ObserverId AddObserver(Observer observer);

    /// Removes an observer. Does nothing for a stale id or an id of another node.
    void RemoveObserver(ObserverId const& id);

protected:
    /// Adds the entries that describe a node of its class, in order, to the empty `schema`. It may run at any time
    /// after construction. Null for a class without entries of its own.
    using SchemaBuilder = void (*)(Node& node, Structure& schema);

    explicit Node(SchemaBuilder builder) noexcept;

    /// Copies the values of the entries that both schemas have; the nodes behind the entries stay the same. It does
    /// nothing unless both schemas have been created: a schema that has not been created has only its builder's
    /// entries, which the classes copy themselves.
    void CopySchema(Node const& other);

    /// Runs the observers in order. They see the values from before the change.
    void RunObservers();
    bool HasObservers() const noexcept;

    /// Returns the schema if it has been created, else null.
    Structure* MadeSchema() const noexcept;

    /// Adds an entry if the schema has been created. If not, the builder of the class adds it later.
    void UpdateSchema(std::string const& key, Node& node);
    void RemoveFromSchema(std::string const& key);

private:
    struct Side;

    Side& MadeSide() const;

    SchemaBuilder const builder;
    mutable std::atomic<Side*> side{nullptr}; // owned; publishes the new object
};

} // namespace Zu::Properties

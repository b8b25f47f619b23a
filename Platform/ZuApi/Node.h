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

/// One node of a tree of self-describing values: it has a schema, which is a structure of further nodes, and observers.
///
/// A node is lean: schema and observers are made when somebody first asks for them. Nodes refer to each other by address,
/// so none is ever copied or moved; `CopyValues` takes over contents.
/// Threads: no lock; a tree belongs to one thread at a time. Threads that only read may do so side by side.
class ZUAPI_API Node
{
public:
    using Observer = std::function<void(Node&)>;
    using ObserverId = Event<Node&>::CallbackId;

    virtual ~Node();

    Node(Node const&) = delete;
    Node& operator=(Node const&) = delete;

    /// Takes over the contents of `other`; std::bad_cast when it is of another kind.
    virtual void CopyValues(Node const& other) = 0;

    /// A write-only node takes values in and gives none out: it is left out of what is serialised.
    virtual void SetWriteOnly(bool newWriteOnly);

    virtual void Accept(INodeVisitorConst& visitor) const = 0;
    virtual void Accept(INodeVisitor& visitor) = 0;

    bool IsWriteOnly() const;

    /// Adds an entry to the schema, in place of one with the same key. `node` is not owned: deregister it before it ends.
    void RegisterSchema(std::string const& key, Node& node);

    /// The same for an entry that can go again; `isFixed` is false for it.
    void RegisterSchema(std::string const& key, Node& node, bool isFixed);

    /// Removes an entry; an absent one is no error.
    void DeregisterSchema(std::string const& key);

    /// What describes this node, owned by it and made at the first call. The schema of a schema is empty.
    Structure* Schema() const;

    /// Adds an observer, which runs before this node changes, on the thread that changes it. It may remove itself. An
    /// empty function is not stored.
    ObserverId AddObserver(Observer observer);

    /// An id that is stale or not of this node does nothing.
    void RemoveObserver(ObserverId const& id);

protected:
    /// Enters what a node of its class describes itself with, in order, into the empty `schema`. It may run at any time
    /// once construction has ended; null for a class without entries of its own.
    using SchemaBuilder = void (*)(Node& node, Structure& schema);

    explicit Node(SchemaBuilder builder) noexcept;

    /// Copies the values of those entries that both schemas have; what the entries refer to stays. A schema that has not
    /// been made yet has no entries but those of its builder, which the classes copy by themselves.
    void CopySchema(Node const& other);

    /// Runs the observers in order; they see what is still stored.
    void RunObservers();
    bool HasObservers() const noexcept;

    /// The schema when it has been made, else null.
    Structure* MadeSchema() const noexcept;

    /// For entries that the builder of the class knows: changes the schema when it has been made already.
    void UpdateSchema(std::string const& key, Node& node);
    void RemoveFromSchema(std::string const& key);

private:
    struct Side;

    Side& MadeSide() const;

    SchemaBuilder const builder;
    mutable std::atomic<Side*> side{nullptr}; // publishes what was made; owned
};

} // namespace Zu::Properties

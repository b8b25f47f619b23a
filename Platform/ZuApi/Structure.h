#pragma once

#include "ZuApi/InternedText.h"
#include "ZuApi/Node.h"

#include <span>
#include <vector>

namespace Zu::Properties
{

/// Child nodes by key, in order of registration. It does not own them: they are members of the record that derives from
/// it, or live elsewhere and are deregistered before they end.
class ZUAPI_API Structure : public Node
{
public:
    struct Child
    {
        Internal::InternedText key;
        Node* node;
    };

    /// `isDescribed` is true for a record, which shows its type in its schema, and false for a bare one inside a schema.
    explicit Structure(bool isDescribed);
    ~Structure() override;

    /// Each child takes over the other's child with the same key; one that the other lacks is passed over.
    void CopyValues(Node const& other) override;

    /// Passes it on to each child there is.
    void SetWriteOnly(bool newWriteOnly) override;

    void Accept(INodeVisitorConst& visitor) const override;
    void Accept(INodeVisitor& visitor) override;

    /// Adds a child behind those there are and gives it back. A key that is there keeps its place and names `node` now.
    Node& Register(std::string const& key, Node& node);

    /// Removes a child; an absent one is no error.
    void Deregister(std::string const& key);

    uint64 Count() const noexcept;

    /// All of them, as they stand until the next change of this.
    std::span<Child const> Children() const noexcept
    {
        return children;
    }

    /// -999 behind the last.
    std::string const& KeyAt(uint64 index) const;
    Node& At(uint64 index);
    Node const& At(uint64 index) const;

    /// Null when no child has this key.
    Node* Find(std::string const& key);
    Node const* Find(std::string const& key) const;

protected:
    /// For a class with schema entries of its own.
    explicit Structure(SchemaBuilder builder) noexcept;

    /// Enters "type".
    static void BuildSchema(Node& node, Structure& schema);

    /// As `Register`.
    void Enter(Internal::InternedText key, Node& node);

private:
    Child const& ChildAt(uint64 index) const;
    std::vector<Child>::const_iterator Position(std::string const& key) const;

    std::vector<Child> children;
};

} // namespace Zu::Properties

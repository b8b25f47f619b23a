#pragma once

#include "ZuApi/InternedText.h"
#include "ZuApi/Node.h"

#include <span>
#include <vector>

namespace Zu::Properties
{

/// Child nodes by key, in order of registration. A structure does not own its children: they are members of the derived
/// record, or they live elsewhere and are deregistered before they are destroyed.
class ZUAPI_API Structure : public Node
{
public:
    struct Child
    {
        Internal::InternedText key;
        Node* node;
    };

    /// `isDescribed` is true for a record, which shows its type in its schema, and false for a bare structure inside a
    /// schema.
    explicit Structure(bool isDescribed);
    ~Structure() override;

    /// Copies each child from the child of `other` with the same key. Children that `other` lacks stay unchanged.
    /// Throws std::bad_cast if `other` is no structure.
    void CopyValues(Node const& other) override;

    /// Sets the mark on each present child.
    void SetWriteOnly(bool newWriteOnly) override;

    void Accept(INodeVisitorConst& visitor) const override;
    void Accept(INodeVisitor& visitor) override;

    /// Appends a child and returns it. A key that exists keeps its place and refers to `node` from now on.
    Node& Register(std::string const& key, Node& node);

    /// Removes a child; does nothing for an absent key.
    void Deregister(std::string const& key);

    uint64 Count() const noexcept;

    /// All children; valid until this structure changes.
    std::span<Child const> Children() const noexcept
    {
        return children;
    }

    /// Throws `Zu::Status::NOT_FOUND` if there is no such child. So does `At`.
    std::string const& KeyAt(uint64 index) const;
    Node& At(uint64 index);
    Node const& At(uint64 index) const;

    /// Returns null if no child has this key.
    Node* Find(std::string const& key);
    Node const* Find(std::string const& key) const;

protected:
    /// For derived classes with schema entries of their own.
    explicit Structure(SchemaBuilder builder) noexcept;

    /// Adds "type" to the schema.
    static void BuildSchema(Node& node, Structure& schema);

    /// As `Register`, for an interned key.
    void Enter(Internal::InternedText key, Node& node);

private:
    Child const& ChildAt(uint64 index) const;
    std::vector<Child>::const_iterator Position(std::string const& key) const;

    std::vector<Child> children;
};

} // namespace Zu::Properties

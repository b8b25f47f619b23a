#pragma once

#include "ZuApi/Node.h"

#include <functional>
#include <memory>
#include <vector>

namespace Zu::Properties::Internal
{

class ReferenceArray;

/// A node that owns an ordered list of structures of one kind and makes them through a factory.
///
/// The schema of the array shows the schemas of its elements under "items". They are made when the schema of the array
/// is first requested and follow the elements from then on.
class ZUAPI_API ArrayBase : public Node
{
public:
    using Factory = std::function<std::unique_ptr<Structure>()>;

    ~ArrayBase() override;

    /// Resizes to the count of `other` and copies each element from its counterpart. Throws std::bad_cast if `other` is
    /// no array.
    void CopyValues(Node const& other) override;

    /// Sets the mark on each present element.
    void SetWriteOnly(bool newWriteOnly) override;

    void Accept(INodeVisitorConst& visitor) const override;
    void Accept(INodeVisitor& visitor) override;

    /// Removes elements from the end, or appends new ones. The observers run before the change, and again after each
    /// element that is added. Nothing runs if `count` is the present count. Throws `Zu::Status::BAD_ARGUMENT` if the
    /// factory makes no element; the elements added before stay.
    virtual void Resize(uint64 count);

    /// Throws `Zu::Status::NOT_FOUND` if there is no such element.
    virtual void Remove(uint64 index);
    virtual void Clear();

    uint64 Count() const noexcept;

    /// Throws `Zu::Status::NOT_FOUND` if there is no such element.
    Structure& ElementAt(uint64 index);
    Structure const& ElementAt(uint64 index) const;

    /// Returns a new element as `Resize` makes them. The caller owns it; it does not join the array.
    std::unique_ptr<Structure> MakeElement() const;

protected:
    ArrayBase(SchemaBuilder builder, Factory newFactory);

    /// Adds "type" and "items" to the schema.
    static void BuildSchema(Node& node, Structure& schema);

private:
    void Shrink(uint64 count);
    void Grow(uint64 count);

    std::vector<std::unique_ptr<Structure>> elements;
    std::unique_ptr<ReferenceArray> items; // created with the schema
    Factory const factory;
};

} // namespace Zu::Properties::Internal

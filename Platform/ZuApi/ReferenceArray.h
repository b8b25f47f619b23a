#pragma once

#include "ZuApi/Node.h"

#include <vector>

namespace Zu::Properties::Internal
{

/// The schemas of an array's elements, as one node of the array's schema. It does not own them.
class ZUAPI_API ReferenceArray final : public Node
{
public:
    ReferenceArray();
    ~ReferenceArray() override;

    /// Copies no references: each array refers to the schemas of its own elements.
    void CopyValues(Node const& other) override;

    void Accept(INodeVisitorConst& visitor) const override;
    void Accept(INodeVisitor& visitor) override;

    /// Appends `structure`. Throws `Zu::Status::BAD_ARGUMENT` for null.
    void Add(Structure* structure);

    /// Throws `Zu::Status::NOT_FOUND` if there is no such element.
    void Remove(uint64 index);

    /// Removes the last reference. Throws `Zu::Status::NOT_FOUND` if the array is empty.
    void Pop();
    void Clear() noexcept;

    uint64 Count() const noexcept;

    /// Throws `Zu::Status::NOT_FOUND` if there is no such element.
    Structure& At(uint64 index) const;

private:
    std::vector<Structure*> structures;
};

} // namespace Zu::Properties::Internal

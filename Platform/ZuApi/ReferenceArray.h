#pragma once

#include "ZuApi/Node.h"

#include <vector>

namespace Zu::Properties::Internal
{

/// The schemas of an array's elements, as one node of the array's schema. It owns none of them.
class ZUAPI_API ReferenceArray final : public Node
{
public:
    ReferenceArray();
    ~ReferenceArray() override;

    /// References are never taken over: each array refers to the schemas of its own elements.
    void CopyValues(Node const& other) override;

    void Accept(INodeVisitorConst& visitor) const override;
    void Accept(INodeVisitor& visitor) override;

    /// Adds `structure` behind the others; a null pointer is refused with -997.
    void Add(Structure* structure);

    /// -999 behind the last.
    void Remove(uint64 index);

    /// Removes the last; -999 when there is none.
    void Pop();
    void Clear() noexcept;

    uint64 Count() const noexcept;

    /// -999 behind the last.
    Structure& At(uint64 index) const;

private:
    std::vector<Structure*> structures;
};

} // namespace Zu::Properties::Internal

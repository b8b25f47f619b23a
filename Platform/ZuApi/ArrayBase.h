#pragma once

#include "ZuApi/Node.h"

#include <functional>
#include <memory>
#include <vector>

namespace Zu::Properties::Internal
{

class ReferenceArray;

/// A node that owns structures of one kind, one behind the other, and makes them through a factory.
///
/// Its schema shows the elements' schemas under "items"; they are made when the schema of the array is asked for, and kept
/// in step from then on.
class ZUAPI_API ArrayBase : public Node
{
public:
    using Factory = std::function<std::unique_ptr<Structure>()>;

    ~ArrayBase() override;

    /// As many elements as the other has, each with the contents of its counterpart.
    void CopyValues(Node const& other) override;

    /// Passes it on to each element there is.
    void SetWriteOnly(bool newWriteOnly) override;

    void Accept(INodeVisitorConst& visitor) const override;
    void Accept(INodeVisitor& visitor) override;

    /// Removes elements from the end, or adds new ones. The observers run before the change, and once more behind each
    /// element that is added; for the present count nothing runs.
    virtual void Resize(uint64 count);

    /// -999 behind the last.
    virtual void Remove(uint64 index);
    virtual void Clear();

    uint64 Count() const noexcept;

    /// -999 behind the last.
    Structure& ElementAt(uint64 index);
    Structure const& ElementAt(uint64 index) const;

    /// An element as `Resize` adds them, which belongs to the caller and not to the array.
    std::unique_ptr<Structure> MakeElement() const;

protected:
    ArrayBase(SchemaBuilder builder, Factory newFactory);

    /// Enters "type" and "items".
    static void BuildSchema(Node& node, Structure& schema);

private:
    void Shrink(uint64 count);
    void Grow(uint64 count);

    std::vector<std::unique_ptr<Structure>> elements;
    std::unique_ptr<ReferenceArray> items; // made with the schema
    Factory const factory;
};

} // namespace Zu::Properties::Internal

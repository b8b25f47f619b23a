#pragma once

#include "ZuApi/IValueIo.h"
#include "ZuApi/Node.h"

namespace Zu::Properties::Internal
{

/// A node that holds one value and can be moved through readers and writers.
class ZUAPI_API ValueBase : public Node, public IValueIo
{
public:
    ~ValueBase() override;

    void Accept(INodeVisitorConst& visitor) const override;
    void Accept(INodeVisitor& visitor) override;

protected:
    explicit ValueBase(SchemaBuilder builder) noexcept;
};

} // namespace Zu::Properties::Internal

#include "ZuApi/ValueBase.h"

#include "ZuApi/INodeVisitor.h"

namespace Zu::Properties::Internal
{

ValueBase::ValueBase(SchemaBuilder builder) noexcept : Node(builder)
{
}

ValueBase::~ValueBase() = default;

void ValueBase::Accept(INodeVisitorConst& visitor) const
{
    visitor.VisitValue(*this);
}

void ValueBase::Accept(INodeVisitor& visitor)
{
    visitor.VisitValue(*this);
}

} // namespace Zu::Properties::Internal

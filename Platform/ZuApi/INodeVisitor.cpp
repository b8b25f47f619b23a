#include "ZuApi/INodeVisitor.h"

namespace Zu::Properties
{

INodeVisitor::~INodeVisitor() = default;

} // namespace Zu::Properties

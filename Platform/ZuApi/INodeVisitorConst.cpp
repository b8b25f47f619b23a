#include "ZuApi/INodeVisitorConst.h"

namespace Zu::Properties
{

INodeVisitorConst::~INodeVisitorConst() = default;

} // namespace Zu::Properties

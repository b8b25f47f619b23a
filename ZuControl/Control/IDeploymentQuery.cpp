#include "ZuControl/Control/IDeploymentQuery.h"

namespace ZuControl
{

IDeploymentQuery::~IDeploymentQuery() = default;

} // namespace ZuControl

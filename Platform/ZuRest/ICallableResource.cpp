#include "ZuRest/ICallableResource.h"

namespace ZuRest
{

ICallableResource::~ICallableResource() = default;

} // namespace ZuRest

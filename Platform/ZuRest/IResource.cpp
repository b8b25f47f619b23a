#include "ZuRest/IResource.h"

namespace ZuRest
{

IResource::~IResource() = default;

} // namespace ZuRest

#include "ZuRest/IContentResource.h"

namespace ZuRest
{

IContentResource::~IContentResource() = default;

} // namespace ZuRest

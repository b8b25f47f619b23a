#include "ZuRest/IStreamableResource.h"

namespace ZuRest
{

IStreamableResource::~IStreamableResource() = default;

} // namespace ZuRest

#include "ZuRest/IPromptResource.h"

namespace ZuRest
{

IPromptResource::~IPromptResource() = default;

} // namespace ZuRest

#include "Host/Http/IHttpService.h"

namespace ZuHost
{

IHttpService::~IHttpService() = default;

} // namespace ZuHost

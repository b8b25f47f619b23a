#include "Host/Http/IIoUser.h"

namespace ZuHost
{

IIoUser::~IIoUser() = default;

} // namespace ZuHost

#pragma once

#include "Host/Store/JobName.h"

namespace ZuRest
{
struct RequestInfo;
}

namespace ZuHost
{

/// The name of the job in the path of a request. Throws `Zu::Status::BAD_ARGUMENT` for an invalid name.
JobName RequestedJob(ZuRest::RequestInfo const& info);

} // namespace ZuHost

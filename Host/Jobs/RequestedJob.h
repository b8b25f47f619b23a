#pragma once

#include <string>

namespace ZuRest
{
struct RequestInfo;
}

namespace ZuHost
{

/// The name of the job in the path of a request. The reference is valid as long as `info`.
std::string const& RequestedJob(ZuRest::RequestInfo const& info);

} // namespace ZuHost

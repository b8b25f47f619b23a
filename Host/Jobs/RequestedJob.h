#pragma once

#include <string>

namespace ZuRest
{
struct RequestInfo;
}

namespace ZuHost
{

/// The name of the job that a request is about, as it stands in the path. It lives as long as the record.
std::string const& RequestedJob(ZuRest::RequestInfo const& info);

} // namespace ZuHost

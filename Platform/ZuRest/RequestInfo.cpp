#include "ZuRest/RequestInfo.h"

#include <algorithm>
#include <utility>

namespace ZuRest
{

RequestInfo::RequestInfo() = default;

RequestInfo::RequestInfo(std::string requestPath, Keys routeKeys, bool schemaAskedFor)
    : path(std::move(requestPath)), keys(std::move(routeKeys)), wantsSchema(schemaAskedFor)
{
}

RequestInfo::RequestInfo(RequestInfo const&) = default;
RequestInfo& RequestInfo::operator=(RequestInfo const&) = default;
RequestInfo::~RequestInfo() = default;

std::string const* RequestInfo::FindKey(std::string const& name) const
{
    auto const found = std::ranges::find(keys, name, &Keys::value_type::first);
    return found != keys.end() ? &found->second : nullptr;
}

} // namespace ZuRest

#include "ZuControl/Protocol/RouteKey.h"

#include "ZuRest/RequestInfo.h"

#include <stdexcept>

namespace ZuControl::Protocol
{

std::string const& RouteKey(ZuRest::RequestInfo const& request, char const* key)
{
    std::string const* const value = request.FindKey(key);
    if (value == nullptr)
    {
        throw std::out_of_range("invalid map<K, T> key");
    }
    return *value;
}

} // namespace ZuControl::Protocol

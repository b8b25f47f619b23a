#include "ZuControl/Protocol/UnofferedResource.h"

#include "ZuApi/Exception.h"

#include <nlohmann/json.hpp>

namespace ZuControl::Protocol
{

UnofferedResource::UnofferedResource(char const* newReason) : reason(newReason)
{
}

UnofferedResource::~UnofferedResource() = default;

nlohmann::json UnofferedResource::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& /*response*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED, "%s", reason);
}

} // namespace ZuControl::Protocol

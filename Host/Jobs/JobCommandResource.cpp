#include "Host/Jobs/JobCommandResource.h"

#include "Host/Jobs/RequestedJob.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace ZuHost
{

JobCommandResource::JobCommandResource(Command newCommand) : command(std::move(newCommand))
{
}

JobCommandResource::~JobCommandResource() = default;

ZuRest::ICallableResource* JobCommandResource::CallableProvider()
{
    return this;
}

nlohmann::json JobCommandResource::Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& /*body*/)
{
    return command(RequestedJob(request));
}

} // namespace ZuHost

#pragma once

#include "Host/Store/JobName.h"
#include "ZuRest/ICallableResource.h"
#include "ZuRest/ResourceBase.h"

#include <functional>

namespace ZuHost
{

/// A command for one job, such as "/jobs/:name/load". It takes no arguments.
class JobCommandResource final : public ZuRest::ResourceBase, public ZuRest::ICallableResource
{
public:
    /// Gets the name of the job and returns the body of the response; null stands for no body.
    using Command = std::function<nlohmann::json(JobName const& name)>;

    explicit JobCommandResource(Command newCommand);
    ~JobCommandResource() override;

    ZuRest::ICallableResource* CallableProvider() override;
    nlohmann::json Invoke(ZuRest::RequestInfo const& request, nlohmann::json const& body) override;

private:
    Command const command;
};

} // namespace ZuHost

#pragma once

#include "Host/CommandLine/Options.h"
#include "ZuControl/Control/ControlModuleEnviron.h"

namespace ZuHost
{

/// Returns the deployment that the command line names. It never changes; any thread may call.
class DeploymentQuery final : public ZuControl::IDeploymentQuery
{
public:
    explicit DeploymentQuery(Deployment kindOfSystem);
    ~DeploymentQuery() override;

    bool IsPhysicalSensor() override;
    bool IsPhysicalBrackle() override;
    bool IsVirtualSensor() override;
    bool IsVirtualBrackle() override;
    bool IsTavrinServiceApp() override;

private:
    Deployment const kind;
};

} // namespace ZuHost

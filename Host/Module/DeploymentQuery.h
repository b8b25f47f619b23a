#pragma once

#include "Host/CommandLine/Options.h"
#include "ZuControl/Control/IDeploymentQuery.h"

namespace ZuHost
{

/// Answers as the command line said. It never changes; any thread may ask.
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

#include "Host/Module/DeploymentQuery.h"

namespace ZuHost
{

DeploymentQuery::DeploymentQuery(Deployment kindOfSystem) : kind(kindOfSystem)
{
}

DeploymentQuery::~DeploymentQuery() = default;

bool DeploymentQuery::IsPhysicalSensor()
{
    return kind == Deployment::PHYSICAL_SENSOR;
}

bool DeploymentQuery::IsPhysicalBrackle()
{
    return kind == Deployment::PHYSICAL_BRACKLE;
}

bool DeploymentQuery::IsVirtualSensor()
{
    return kind == Deployment::VIRTUAL_SENSOR;
}

bool DeploymentQuery::IsVirtualBrackle()
{
    return kind == Deployment::VIRTUAL_BRACKLE;
}

bool DeploymentQuery::IsTavrinServiceApp()
{
    return kind == Deployment::TAVRIN_SERVICE_APP;
}

} // namespace ZuHost

#include "ZuControl/Protocol/ControlDir.h"

#include "ZuApi/Guard.h"
#include "ZuControl/Protocol/ControlActionResource.h"
#include "ZuControl/Protocol/ControlOutputsResource.h"
#include "ZuControl/Protocol/ControlPlcResources.h"
#include "ZuControl/Protocol/ControlRegisterAssemblyResource.h"
#include "ZuControl/Protocol/ControlResource.h"
#include "ZuControl/Protocol/HardwareControlResource.h"
#include "ZuControl/Protocol/MetricsResources.h"
#include "ZuControl/Protocol/OutputResources.h"
#include "ZuRest/ResourceRouter.h"

#include <array>
#include <utility>

namespace ZuControl::Protocol
{

/// In the order of their routes.
struct ControlDir::Resources
{
    Resources(IControlManager& manager, ControlMetrics& controlMetrics)
        : control(manager),
          action(manager),
          metrics(controlMetrics),
          outputs(manager),
          outputsAction(manager),
          registerAssembly(manager),
          registerAssemblyAction(manager),
          hardware(manager),
          hardwareMetrics(controlMetrics),
          digitalOutput(manager),
          analogOutput(manager),
          marletOutput(manager),
          serialOutput(manager),
          outputsPreview(manager),
          registerAssemblyPreview(manager),
          plc(manager)
    {
    }

    using Route = std::pair<char const*, ZuRest::IResource*>;

    std::array<Route, 16> Routes()
    {
        return {{
            {"/controls/:protocol", &control},
            {"/controls/:protocol/commands/:command", &action},
            {"/controls/:protocol/metrics", &metrics},
            {"/controls/:protocol/outputs", &outputs},
            {"/controls/:protocol/outputs/commands/:command", &outputsAction},
            {"/controls/:protocol/registerAssemblies/:registerAssembly", &registerAssembly},
            {"/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command", &registerAssemblyAction},
            {"/controls/hardware/:device", &hardware},
            {"/controls/hardware/metrics", &hardwareMetrics},
            {"/controls/hardware/:device/digital/:port", &digitalOutput},
            {"/controls/hardware/:device/analog/:port", &analogOutput},
            {"/controls/hardware/:device/marlet/:port", &marletOutput},
            {"/controls/hardware/:device/serial/:port", &serialOutput},
            {"/controls/:protocol/outputs/preview", &outputsPreview},
            {"/controls/:protocol/registerAssemblies/:registerAssembly/preview", &registerAssemblyPreview},
            {"/controls/:protocol/plc", &plc},
        }};
    }

    ControlResource control;
    ControlActionResource action;
    ControlMetricsResource metrics;
    ControlOutputsResource outputs;
    ControlOutputsActionResource outputsAction;
    ControlRegisterAssemblyResource registerAssembly;
    ControlRegisterAssemblyActionResource registerAssemblyAction;
    HardwareControlResource hardware;
    HardwareMetricsResource hardwareMetrics;
    DigitalOutputResource digitalOutput;
    AnalogOutputResource analogOutput;
    MarletOutputResource marletOutput;
    SerialOutputResource serialOutput;
    ControlOutputsPreviewResource outputsPreview;
    ControlRegisterAssemblyPreviewResource registerAssemblyPreview;
    ControlPlcResource plc;
};

ControlDir::ControlDir(ZuRest::ResourceRouter& usedRouter, IControlManager& manager, ControlMetrics& metrics)
    : router(usedRouter), resources(std::make_unique<Resources>(manager, metrics))
{
    RegisterRoutes();
}

ControlDir::~ControlDir()
{
    ZU_GUARD_DESTRUCTOR([this] { router.Deregister("/controls", true); });
}

void ControlDir::RegisterRoutes()
{
    auto const routes = resources->Routes();
    auto registered = routes.begin();
    try
    {
        for (; registered != routes.end(); ++registered)
        {
            router.Register(registered->first, *registered->second);
        }
    }
    catch (...)
    {
        while (registered != routes.begin()) // not the whole tree, which may hold routes of others
        {
            --registered;
            router.Deregister(registered->first, false);
        }
        throw;
    }
}

} // namespace ZuControl::Protocol

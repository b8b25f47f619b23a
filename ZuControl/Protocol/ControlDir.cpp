#include "ZuControl/Protocol/ControlDir.h"

#include "ZuApi/Guard.h"
#include "ZuControl/Protocol/AnalogOutputResource.h"
#include "ZuControl/Protocol/ControlActionResource.h"
#include "ZuControl/Protocol/ControlOutputsActionResource.h"
#include "ZuControl/Protocol/ControlOutputsResource.h"
#include "ZuControl/Protocol/ControlRegisterAssemblyActionResource.h"
#include "ZuControl/Protocol/ControlRegisterAssemblyResource.h"
#include "ZuControl/Protocol/ControlResource.h"
#include "ZuControl/Protocol/DigitalOutputResource.h"
#include "ZuControl/Protocol/HardwareControlResource.h"
#include "ZuControl/Protocol/MarletOutputResource.h"
#include "ZuControl/Protocol/SerialOutputResource.h"
#include "ZuControl/Protocol/UnofferedResource.h"
#include "ZuRest/ResourceRouter.h"

#include <array>
#include <utility>

namespace ZuControl::Protocol
{

namespace
{

constexpr char const* NO_METRICS = "This system offers no metrics of protocols.";
constexpr char const* NO_HARDWARE_METRICS = "This system offers no metrics of inputs and outputs.";

} // namespace

/// In the order of their routes.
struct ControlDir::Resources
{
    explicit Resources(IControlManager& manager)
        : control(manager),
          action(manager),
          outputs(manager),
          outputsAction(manager),
          registerAssembly(manager),
          registerAssemblyAction(manager),
          hardware(manager),
          digitalOutput(manager),
          analogOutput(manager),
          marletOutput(manager),
          serialOutput(manager)
    {
    }

    using Route = std::pair<char const*, ZuRest::IResource*>;

    std::array<Route, 13> Routes()
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
        }};
    }

    ControlResource control;
    ControlActionResource action;
    UnofferedResource metrics{NO_METRICS};
    ControlOutputsResource outputs;
    ControlOutputsActionResource outputsAction;
    ControlRegisterAssemblyResource registerAssembly;
    ControlRegisterAssemblyActionResource registerAssemblyAction;
    HardwareControlResource hardware;
    UnofferedResource hardwareMetrics{NO_HARDWARE_METRICS};
    DigitalOutputResource digitalOutput;
    AnalogOutputResource analogOutput;
    MarletOutputResource marletOutput;
    SerialOutputResource serialOutput;
};

ControlDir::ControlDir(ZuRest::ResourceRouter& usedRouter, IControlManager& manager)
    : router(usedRouter), resources(std::make_unique<Resources>(manager))
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
        while (registered != routes.begin()) // one by one: what is there besides belongs to somebody else
        {
            --registered;
            router.Deregister(registered->first, false);
        }
        throw;
    }
}

} // namespace ZuControl::Protocol

#pragma once

#include "ZuControl/Control/ControlManager.h"
#include "ZuControl/Control/ControlMetrics.h"
#include "ZuControl/Control/ControlRegistry.h"
#include "ZuControl/Control/ControlScanResults.h"
#include "ZuControl/Control/ControlStatistics.h"
#include "ZuControl/Control/ControlVitals.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/Export.h"
#include "ZuControl/Protocol/ControlDir.h"

#include <optional>
#include <string>
#include <vector>

namespace ZuPlugin
{
class PluginManager;
}

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuControl
{

struct ControlModuleEnviron;

/// The whole module: the one object that a host constructs.
///
/// It reads the catalogue of the plug-ins that are loaded, attaches to the result hub and builds an instance of every type
/// that this system supports, keeps their metrics alive, and hangs its resources under `/controls`. One type that cannot be
/// built ends the construction. Build and destroy it on one thread, and destroy it before the router and anything that
/// `environ` points to.
class ZUCONTROL_API ControlModule final
{
public:
    ControlModule(ZuPlugin::PluginManager& pluginManager, ZuRest::ResourceRouter& router,
                  ControlModuleEnviron const& environ);
    ~ControlModule();

    /// The host's scan engines have their sensor: see ControlManager::FindHardware.
    void FindHardware();

    IControlManager& Controls();

    /// What the module has counted so far. Any thread may ask.
    ControlStatistics Statistics();

    /// How its services and threads fare. Any thread may ask; it waits for none of them.
    ControlVitals Vitals();

    ControlModule(ControlModule const&) = delete;
    ControlModule& operator=(ControlModule const&) = delete;

private:
    struct Service
    {
        std::string typeName;
        std::optional<ZuEthernetProtocol> protocol; // empty for a protocol that threw when it was asked
    };

    // The order is that of their life: each relies on those above it.
    ControlRegistry registry;
    ControlScanResults scanResults;
    ControlManager manager;
    std::vector<Service> const services; // by name; kept, since later calls must not run code of a plug-in
    ControlMetrics metrics;
    Protocol::ControlDir dir;
};

} // namespace ZuControl

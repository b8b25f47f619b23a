#pragma once

#include "ZuApi/Signal.h"
#include "ZuControl/Control/ControlManager.h"
#include "ZuControl/Control/ControlMetrics.h"
#include "ZuControl/Control/ControlRegistry.h"
#include "ZuControl/Control/ControlScanResults.h"
#include "ZuControl/Control/ControlVitals.h"
#include "ZuControl/Control/LastDelivery.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/Export.h"
#include "ZuControl/Protocol/ControlDir.h"

#include <functional>
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
/// It reads the catalogue of the loaded plug-ins, subscribes to the result hub, builds an instance of every type that
/// this system supports, keeps the metrics of the instances up to date, and registers its resources under `/controls`.
/// A type that cannot be built ends the construction. Build and destroy the module on one thread, and destroy it before
/// the router and all objects that `environ` points to.
class ZUCONTROL_API ControlModule final
{
public:
    ControlModule(ZuPlugin::PluginManager& pluginManager, ZuRest::ResourceRouter& router,
                  ControlModuleEnviron const& environ);
    ~ControlModule();

    /// The host calls this once its scan engines have their sensor: see ControlManager::FindHardware.
    void FindHardware();

    IControlManager& Controls();

    /// The module's counters. Any thread may call.
    ControlStatistics Statistics();

    /// The results that a service got last. Throws `Zu::Status::NOT_FOUND` for an unknown type. Any thread may call; the
    /// call waits for no service.
    LastDelivery::Content LastDeliveryTo(std::string const& typeName);

    /// The state of the services and threads of the module. Any thread may call; the call waits for no service and no
    /// thread.
    ControlVitals Vitals();

    /// The operations on the system. The host begins its own ones as `HOST_PROTOCOL`, so that they and those of the
    /// protocols exclude each other. Any thread may call.
    ControlProtocolOperations& Operations();

    /// Calls `handler` after the end of each operation of any protocol, and for each refused one, until the subscription
    /// is destroyed. `handler` must not block and must not throw.
    [[nodiscard]] Zu::Subscription SubscribeToOperations(std::function<void(ControlOperationEnd const&)> handler);

    /// Calls `handler` for each client and each request that a service refuses, until the subscription is destroyed.
    /// `handler` must not block and must not throw.
    [[nodiscard]] Zu::Subscription SubscribeToRefusals(std::function<void(ControlRefusal const&)> handler);

    /// Makes the services read the files again that their parameters name, such as certificates. Connections stay. Blocks
    /// until that is done. A service that cannot use a new file goes on with what it has read before, and has a problem.
    void ReadFilesAgain();

    ControlModule(ControlModule const&) = delete;
    ControlModule& operator=(ControlModule const&) = delete;

private:
    struct Service
    {
        std::string typeName;
        std::optional<ZuEthernetProtocol> protocol; // empty for a protocol that has thrown when it was asked
    };

    std::string TypeNameOf(ZuEthernetProtocol protocol) const;

    // In this order: each member uses those above it.
    ControlRegistry registry;
    ControlScanResults scanResults;
    ControlManager manager;
    std::vector<Service> const services; // by name; stored, since `Statistics` and `Vitals` must not call a plug-in
    ControlMetrics metrics;
    Protocol::ControlDir dir;
};

} // namespace ZuControl

#include "ZuControl/Control/ControlModule.h"

#include "ZuApi/Exception.h"
#include "ZuControl/Control/IControlInstance.h"

#include <algorithm>
#include <utility>

namespace ZuControl
{

namespace
{

/// The number of the protocol, or empty when the protocol throws: it then has no counters, and the others keep theirs.
std::optional<ZuEthernetProtocol> NumberOf(IControlInstance const& instance)
{
    try
    {
        return instance.EthernetProtocolId();
    }
    catch (...)
    {
        return std::nullopt;
    }
}

template <typename Services>
Services ServicesOf(ControlManager& manager)
{
    Services services;
    for (std::string const& typeName : manager.List())
    {
        services.push_back({typeName, NumberOf(manager.GetInstance(typeName))});
    }
    return services;
}

} // namespace

ControlModule::ControlModule(ZuPlugin::PluginManager& pluginManager, ZuRest::ResourceRouter& router,
                             ControlModuleEnviron const& environ)
    : registry(pluginManager),
      scanResults(environ.resultHub, environ.allocator),
      manager(registry, scanResults, environ),
      services(ServicesOf<std::vector<Service>>(manager)),
      metrics(manager),
      dir(router, manager, metrics)
{
}

ControlModule::~ControlModule() = default;

void ControlModule::FindHardware()
{
    manager.FindHardware();
}

IControlManager& ControlModule::Controls()
{
    return manager;
}

ControlStatistics ControlModule::Statistics()
{
    ControlStatistics statistics;
    statistics.resultSets = scanResults.SetCount();
    statistics.resultItems = scanResults.ItemCount();
    statistics.itemsHandedOn = scanResults.ItemsHandedOnCount();
    statistics.operationsSucceeded = manager.Operations().SucceededCount();
    statistics.operationsFailed = manager.Operations().FailedCount();
    statistics.operationsRefused = manager.Operations().RefusedCount();
    for (auto const& [typeName, protocol] : services)
    {
        auto& shown = statistics.protocols.emplace_back();
        shown.typeName = typeName;
        if (protocol.has_value())
        {
            auto const counters = scanResults.CountersOf(*protocol);
            shown.batches = counters->batches.load(std::memory_order_relaxed);
            shown.resultSets = counters->resultSets.load(std::memory_order_relaxed);
            shown.ageUsec = counters->ageUsec.load(std::memory_order_relaxed);
        }
    }
    return statistics;
}

LastDelivery::Content ControlModule::LastDeliveryTo(std::string const& typeName)
{
    auto const found = std::ranges::find(services, typeName, &Service::typeName);
    if (found == services.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no service '%s'.", typeName.c_str());
    }
    return found->protocol.has_value() ? scanResults.CountersOf(*found->protocol)->lastDelivery.Read()
                                       : LastDelivery::Content();
}

ControlVitals ControlModule::Vitals()
{
    ControlVitals vitals;
    auto const operation = manager.Operations().OperationUnderWay().value_or(ControlProtocolOperations::UnderWay());
    vitals.operation.name = operation.name;
    vitals.operation.sinceUsec = operation.sinceUsec;
    vitals.operation.isOfHost = operation.protocol == HOST_PROTOCOL;
    for (auto const& [typeName, protocol] : services)
    {
        if (!protocol.has_value())
        {
            continue;
        }
        auto const counters = scanResults.CountersOf(*protocol);
        vitals.dispatchers.push_back({typeName, counters->hasDied.load(std::memory_order_relaxed),
                                      counters->busySinceUsec.load(std::memory_order_relaxed)});
        if (operation.sinceUsec != 0 && *protocol == operation.protocol)
        {
            vitals.operation.typeName = typeName;
        }
    }
    vitals.metrics = metrics.Vitals();
    vitals.failedStarts = manager.FailedStarts();
    vitals.faults = manager.Faults();
    return vitals;
}

ControlProtocolOperations& ControlModule::Operations()
{
    return manager.Operations();
}

Zu::Subscription ControlModule::SubscribeToOperations(std::function<void(ControlOperationEnd const&)> handler)
{
    return manager.Operations().SubscribeToEveryEnd(
        [this, handler = std::move(handler)](ControlProtocolOperations::Ended const& end) {
            handler({TypeNameOf(end.protocol), end.name, end.argument, end.status, end.origin,
                     end.protocol == HOST_PROTOCOL, end.sinceUsec, end.cause.status, end.cause.text});
        });
}

Zu::Subscription ControlModule::SubscribeToRefusals(std::function<void(ControlRefusal const&)> handler)
{
    return manager.Operations().Notices().SubscribeToRefusals(
        [this, handler = std::move(handler)](ServiceNotices::Refusal const& refusal) {
            handler({TypeNameOf(refusal.protocol), refusal.client, refusal.what, refusal.reason});
        });
}

void ControlModule::ReadFilesAgain()
{
    manager.Operations().Notices().NotifyReplacedFiles();
}

std::string ControlModule::TypeNameOf(ZuEthernetProtocol protocol) const
{
    auto const found =
        std::ranges::find_if(services, [protocol](Service const& service) { return service.protocol == protocol; });
    return found == services.end() ? std::string() : found->typeName;
}

} // namespace ZuControl

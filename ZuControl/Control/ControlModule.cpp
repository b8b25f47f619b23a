#include "ZuControl/Control/ControlModule.h"

#include "ZuControl/Control/IControlInstance.h"

namespace ZuControl
{

ControlModule::ControlModule(ZuPlugin::PluginManager& pluginManager, ZuRest::ResourceRouter& router,
                             ControlModuleEnviron const& environ)
    : registry(pluginManager),
      scanResults(environ.resultHub, environ.allocator),
      manager(registry, scanResults, environ),
      metrics(manager),
      dir(router, manager, metrics)
{
}

ControlModule::~ControlModule() = default;

ControlStatistics ControlModule::Statistics()
{
    ControlStatistics statistics;
    statistics.resultSets = scanResults.SetCount();
    statistics.resultItems = scanResults.ItemCount();
    statistics.itemsHandedOn = scanResults.ItemsHandedOnCount();
    statistics.operationsSucceeded = manager.Operations().SucceededCount();
    statistics.operationsFailed = manager.Operations().FailedCount();
    statistics.operationsRefused = manager.Operations().RefusedCount();
    for (std::string const& typeName : manager.List())
    {
        auto const counters = scanResults.CountersOf(manager.GetInstance(typeName).EthernetProtocolId());
        statistics.protocols.push_back({typeName, counters->batches.load(std::memory_order_relaxed),
                                        counters->resultSets.load(std::memory_order_relaxed),
                                        counters->ageUsec.load(std::memory_order_relaxed)});
    }
    return statistics;
}

ControlVitals ControlModule::Vitals()
{
    ControlVitals vitals;
    auto const operation = manager.Operations().OperationUnderWay().value_or(ControlProtocolOperations::UnderWay());
    vitals.operation.name = operation.name;
    vitals.operation.sinceUsec = operation.sinceUsec;
    for (std::string const& typeName : manager.List())
    {
        ZuEthernetProtocol const protocol = manager.GetInstance(typeName).EthernetProtocolId();
        auto const counters = scanResults.CountersOf(protocol);
        vitals.dispatchers.push_back({typeName, counters->hasDied.load(std::memory_order_relaxed),
                                      counters->busySinceUsec.load(std::memory_order_relaxed)});
        if (operation.sinceUsec != 0 && protocol == operation.protocol)
        {
            vitals.operation.typeName = typeName;
        }
    }
    vitals.metrics = metrics.Vitals();
    return vitals;
}

} // namespace ZuControl

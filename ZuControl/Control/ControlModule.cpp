#include "ZuControl/Control/ControlModule.h"

#include "ZuControl/Control/IControlInstance.h"

#include <optional>

namespace ZuControl
{

namespace
{

/// Empty for a protocol that throws instead: it goes without numbers of its own, and the others keep theirs.
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

} // namespace

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
        auto& protocol = statistics.protocols.emplace_back();
        protocol.typeName = typeName;
        if (auto const number = NumberOf(manager.GetInstance(typeName)))
        {
            auto const counters = scanResults.CountersOf(*number);
            protocol.batches = counters->batches.load(std::memory_order_relaxed);
            protocol.resultSets = counters->resultSets.load(std::memory_order_relaxed);
            protocol.ageUsec = counters->ageUsec.load(std::memory_order_relaxed);
        }
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
        auto const number = NumberOf(manager.GetInstance(typeName));
        if (!number.has_value())
        {
            continue;
        }
        auto const counters = scanResults.CountersOf(*number);
        vitals.dispatchers.push_back({typeName, counters->hasDied.load(std::memory_order_relaxed),
                                      counters->busySinceUsec.load(std::memory_order_relaxed)});
        if (operation.sinceUsec != 0 && *number == operation.protocol)
        {
            vitals.operation.typeName = typeName;
        }
    }
    vitals.metrics = metrics.Vitals();
    vitals.failedStarts = manager.FailedStarts();
    return vitals;
}

} // namespace ZuControl

#include "Host/Module/SensorModule.h"

#include "Host/Module/PersistRegistry.h"
#include "Host/Module/UpdateGate.h"
#include "Host/Resources/HostResources.h"
#include "Host/Sensor/ProfileSource.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/IControlManager.h"

#include <utility>

namespace ZuHost
{

namespace
{

constexpr bool RESULTS_ON_THE_SENSORS_THREAD = true;

constexpr char const* HARDWARE = "/controls/hardware"; // its records belong to no protocol and to no job

} // namespace

SensorModule::SensorModule(Surroundings const& givenSurroundings, Settings const& settings,
                           std::unique_ptr<IProfileSource> source)
    : surroundings(givenSurroundings),
      deployment(settings.deployment),
      resultHub(RESULTS_ON_THE_SENSORS_THREAD),
      sensor(resultHub, std::move(source), settings.rateHz),
      scanner(sensor),
      core(sensor, settings.scansAtPowerUp),
      requestProcessor(router, HostResources::RELATION_TEMPLATE,
                       [this] { return std::make_shared<UpdateGate::Request>(surroundings.updateGate); },
                       {ZuRest::Place::Of(HARDWARE)}),
      pluginView(requestProcessor)
{
    scanner.AddTo(scanEngines);
    core.FactoryRestoreEvent().Add([this] { scanner.RestoreFactoryState(); });
}

SensorModule::~SensorModule() = default;

void SensorModule::Build(ZuPlugin::PluginManager& plugins)
{
    ZuControl::ControlModuleEnviron environ;
    environ.deployment = &deployment;
    environ.persistRegistry = &surroundings.persistRegistry;
    environ.problems = &surroundings.problems;
    environ.resultHub = &resultHub;
    environ.updateGate = &surroundings.updateGate;
    environ.scanEngines = &scanEngines;
    environ.scanStartStopEvent = &core.ScanStartStopEvent();
    environ.factoryRestoreEvent = &core.FactoryRestoreEvent();
    environ.persistManager = &surroundings.persistManager;
    environ.core = &core;
    environ.requestProcessor = &pluginView;
    module.emplace(plugins, router, environ);
    // Once, and before any protocol is enabled: the lists must not grow while a protocol reads them.
    module->FindHardware();
}

void SensorModule::Destroy()
{
    module.reset();
}

ZuControl::ControlModule& SensorModule::Module()
{
    return module.value();
}

ZuControl::IControlManager& SensorModule::Controls()
{
    return Module().Controls();
}

Sensor& SensorModule::UsedSensor()
{
    return sensor;
}

DeskCore& SensorModule::Core()
{
    return core;
}

ZuCore::ResultHub& SensorModule::ResultHub()
{
    return resultHub;
}

ZuScan::Internal::ScanEngineManager& SensorModule::ScanEngines()
{
    return scanEngines;
}

ZuRest::ResourceRouter& SensorModule::Router()
{
    return router;
}

ZuRest::ResourceRequestProcessor& SensorModule::RequestProcessor()
{
    return requestProcessor;
}

} // namespace ZuHost

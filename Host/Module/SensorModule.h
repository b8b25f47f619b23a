#pragma once

#include "Host/CommandLine/Options.h"
#include "Host/Module/DeploymentQuery.h"
#include "Host/Sensor/DeskCore.h"
#include "Host/Sensor/DeskScanner.h"
#include "Host/Sensor/Sensor.h"
#include "ZuControl/Control/ControlModule.h"
#include "ZuCore/ResultHub.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"
#include "ZuScan/ScanEngineManager.h"

#include <memory>
#include <optional>

namespace ZuCommon
{
class PersistManager;
class ProblemsManager;
} // namespace ZuCommon

namespace ZuPlugin
{
class PluginManager;
}

namespace ZuHost
{

class IProfileSource;
class PersistRegistry;
class UpdateGate;

/// A sensor on the desk with the module in it: everything that the module is given, connected in one place.
///
/// The sensor that runs and the trial of a plug-in both use this class, so that a plug-in finds the same surroundings in both.
/// One thread builds, uses and destroys it.
class SensorModule final
{
public:
    /// What the owner has beside the sensor. All of it outlives the SensorModule.
    struct Surroundings
    {
        ZuCommon::ProblemsManager& problems;
        PersistRegistry& persistRegistry;
        UpdateGate& updateGate;
        ZuCommon::PersistManager& persistManager;
    };

    struct Settings
    {
        Deployment deployment;
        double rateHz; ///< profiles per second
        bool scansAtPowerUp;
    };

    SensorModule(Surroundings const& givenSurroundings, Settings const& settings,
                 std::unique_ptr<IProfileSource> source);
    ~SensorModule();

    SensorModule(SensorModule const&) = delete;
    SensorModule& operator=(SensorModule const&) = delete;

    /// Builds the module with what `plugins`, which outlives it, offers, and lets it find the hardware of the sensor. Throws what
    /// a protocol throws that cannot be built.
    void Build(ZuPlugin::PluginManager& plugins);

    /// Destroys the module; another one can be built.
    void Destroy();

    /// These need the module.
    ZuControl::ControlModule& Module();
    ZuControl::IControlManager& Controls();

    DeskCore& Core();
    ZuCore::ResultHub& ResultHub();
    ZuScan::Internal::ScanEngineManager& ScanEngines();
    ZuRest::ResourceRouter& Router();
    ZuRest::ResourceRequestProcessor& RequestProcessor();

private:
    Surroundings const surroundings;

    // The order is that of their life: what the module is given outlives it.
    DeploymentQuery deployment;
    ZuCore::ResultHub resultHub;
    Sensor sensor;
    DeskScanner scanner;
    ZuScan::Internal::ScanEngineManager scanEngines;
    DeskCore core;
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor requestProcessor;
    std::optional<ZuControl::ControlModule> module;
};

} // namespace ZuHost

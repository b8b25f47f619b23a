#pragma once

#include "Host/CommandLine/Options.h"
#include "Host/Module/DeploymentQuery.h"
#include "Host/Security/PluginView.h"
#include "Host/Sensor/DeskCore.h"
#include "Host/Sensor/DeskScanner.h"
#include "Host/Sensor/Sensor.h"
#include "ZuControl/Control/ControlModule.h"
#include "ZuCore/ResultHub.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"
#include "ZuScan/ScanEngines.h"

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

/// A simulated sensor and the module, connected with everything that the module needs.
///
/// Both the running host and the check of a plug-in use this class, so a plug-in finds the same environment in both.
/// One thread builds, uses and destroys it.
class SensorModule final
{
public:
    /// The other objects of the owner that the module needs. All of them outlive the SensorModule.
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

    /// Builds the module with the protocols of `plugins`, which outlives it, and lets it find the hardware of the
    /// sensor. Throws what the constructor of a protocol throws.
    void Build(ZuPlugin::PluginManager& plugins);

    /// Destroys the module. `Build` may be called again.
    void Destroy();

    /// Call these two only while the module is built.
    ZuControl::ControlModule& Module();
    ZuControl::IControlManager& Controls();

    Sensor& UsedSensor();
    DeskCore& Core();
    ZuCore::ResultHub& ResultHub();
    ZuScan::Internal::ScanEngineManager& ScanEngines();
    ZuRest::ResourceRouter& Router();
    ZuRest::ResourceRequestProcessor& RequestProcessor();

private:
    Surroundings const surroundings;

    // The order is that of construction: an object outlives the objects below, which use it.
    DeploymentQuery deployment;
    ZuCore::ResultHub resultHub;
    Sensor sensor;
    DeskScanner scanner;
    ZuScan::Internal::ScanEngineManager scanEngines;
    DeskCore core;
    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor requestProcessor;
    PluginView pluginView;
    std::optional<ZuControl::ControlModule> module;
};

} // namespace ZuHost

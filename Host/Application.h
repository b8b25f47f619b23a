#pragma once

#include "Host/Clinic/PluginClinic.h"
#include "Host/CommandLine/Options.h"
#include "Host/Http/HttpServer.h"
#include "Host/Jobs/JobManager.h"
#include "Host/Jobs/JobsResources.h"
#include "Host/Metrics/MetricsPage.h"
#include "Host/Module/PersistRegistry.h"
#include "Host/Module/SensorModule.h"
#include "Host/Module/UpdateGate.h"
#include "Host/Resources/HostResources.h"
#include "Host/Retry/StartRetry.h"
#include "Host/Watch/Watch.h"
#include "ZuCommon/ProblemsManager.h"
#include "ZuPlugin/PluginManager.h"

#include <optional>

namespace ZuControl
{
class IControlInstance;
class IControlManager;
} // namespace ZuControl

namespace ZuHost
{

class DataFolder;

/// The sensor on the desk with the module in it. One thread builds, configures, starts and destroys it.
class Application final
{
public:
    /// A protocol, or "http", and where it listens: "127.0.0.1:1502".
    struct Listener
    {
        std::string name;
        std::string address;

        bool operator==(Listener const&) const = default;
    };

    /// Loads the plug-ins that were admitted, with a problem for each of the others, builds the module, loads the job or makes a
    /// new one, and takes the address of the REST service, which asks for `token` unless that is empty. The folder outlives
    /// this. Throws what a protocol throws that cannot be built, what a job throws that cannot be used, and what HttpServer
    /// throws.
    Application(Options const& newOptions, std::string const& token, DataFolder const& dataFolder,
                std::unique_ptr<IProfileSource> source, PluginClinic::Admission const& plugins);
    ~Application(); ///< ends the REST service, saves, stops scanning, then ends the protocols

    Application(Application const&) = delete;
    Application& operator=(Application const&) = delete;

    /// Sets what `--param` asks for. Throws -997 with one clear line for a protocol, a parameter or a value that is none,
    /// also for a protocol of `--enable`.
    void Configure();

    /// Enables what is to be enabled, scans when asked to, saves what changes and serves REST clients from then on, and tells
    /// who listens where. A service that cannot be started is a line in the log and is tried again; the others go on.
    std::vector<Listener> Start();

    ZuControl::IControlManager& Controls();

private:
    void LoadPlugins(PluginClinic::Admission const& plugins);
    void RaiseComplaint(std::string const& sentence);
    void BeginJob();
    void LetLoadsRunAlone();
    StartRetry::Services ServicesToRetry();
    void Enable(std::string const& typeName);
    ZuControl::IControlInstance& FindInstance(std::string const& typeName);

    Options const options;
    std::vector<std::string> heldBack; // enabled by the job, once they are configured

    // The order is that of their life: what the module is given outlives it.
    ZuCommon::ProblemsManager problems;
    PersistRegistry persistRegistry;
    UpdateGate updateGate;
    StartRetry startRetry;
    JobManager jobs;
    ZuPlugin::PluginManager pluginManager;
    SensorModule sensorModule;
    std::optional<Watch> watch;
    std::optional<MetricsPage> metricsPage;
    JobsResources jobsResources;
    std::optional<HostResources> hostResources; // behind everybody else's: it listens to them
    HttpServer httpServer;                      // last: the first to go, as nobody may ask for what is going
};

} // namespace ZuHost

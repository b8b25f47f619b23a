#pragma once

#include "Host/Audit/AuditResource.h"
#include "Host/Audit/TrailNotes.h"
#include "Host/Clinic/PluginClinic.h"
#include "Host/CommandLine/Options.h"
#include "Host/Console/ConsolePages.h"
#include "Host/Description/OpenApiPage.h"
#include "Host/Http/HttpServer.h"
#include "Host/Jobs/JobManager.h"
#include "Host/Jobs/JobsResources.h"
#include "Host/Live/LiveResources.h"
#include "Host/Live/SourceDestinations.h"
#include "Host/Metrics/MetricsPage.h"
#include "Host/Module/PersistRegistry.h"
#include "Host/Module/SensorModule.h"
#include "Host/Module/UpdateGate.h"
#include "Host/Operation/ControlAuthority.h"
#include "Host/Operation/SensorCommands.h"
#include "Host/Operation/SensorResources.h"
#include "Host/Operation/SensorSettings.h"
#include "Host/Resources/AuthorityPage.h"
#include "Host/Resources/HostResources.h"
#include "Host/Resources/LogPage.h"
#include "Host/Retry/StartRetry.h"
#include "Host/Security/Gatekeeper.h"
#include "Host/Security/LoginService.h"
#include "Host/Security/RefusalGatherer.h"
#include "Host/Security/RoutesResource.h"
#include "Host/Security/SecurityStore.h"
#include "Host/Security/TokenFile.h"
#include "Host/Security/TokenResources.h"
#include "Host/Security/TokenStore.h"
#include "Host/Tls/CertificateWatch.h"
#include "Host/Watch/Watch.h"
#include "ZuCommon/Problems.h"
#include "ZuPlugin/PluginManager.h"

#include <optional>

namespace ZuControl
{
class IControlInstance;
class IControlManager;
} // namespace ZuControl

namespace ZuHost
{

class AuditTrail;
class DataFolder;
class HttpsCertificate;
class LogScope;

/// The simulated sensor with the module, the jobs and the REST service. One thread builds, configures, starts and
/// destroys it.
class Application final
{
public:
    /// A protocol, or "http" or "https", and its address: "127.0.0.1:1502".
    struct Listener
    {
        std::string name;
        std::string address;

        bool operator==(Listener const&) const = default;
    };

    /// Binds the addresses of the REST service, loads the admitted plug-ins, builds the module, and loads the job or
    /// makes a new one. Each plug-in that was not admitted becomes a problem. REST beyond this machine without
    /// encryption is a problem. `token` is that of the token file, or empty. `certificate` is null without HTTPS; the
    /// certificate, `dataFolder`, `log` and `trail` outlive this. Throws as the constructor of a protocol, `JobManager::Begin` and
    /// `HttpServer::Listen` do.
    Application(Options const& newOptions, HttpServer::Settings const& httpSettings, std::string const& token,
                HttpsCertificate* certificate, DataFolder const& dataFolder, std::unique_ptr<IProfileSource> source,
                PluginClinic::Admission const& plugins, LogScope const& log, AuditTrail& usedTrail);
    ~Application(); ///< stops, then ends the protocols

    Application(Application const&) = delete;
    Application& operator=(Application const&) = delete;

    /// As `Gatekeeper::SetLoginNotice`. Call it before `Start`.
    void SetLoginNotice(std::string const& text);

    /// As `Watch::SetListener`. Call it before `Start`.
    void SetWatchListener(Watch::Listener listener);

    /// Applies the `--param` options. Throws `Zu::Status::BAD_ARGUMENT` with one line for an unknown protocol (also in
    /// `--enable`), an unknown parameter or an invalid value.
    void Configure();

    /// Enables the protocols, starts the scan if asked to, starts saving changes and serving REST clients, and returns
    /// the addresses of all listeners. A service that cannot be started is logged and tried again; the others go on.
    std::vector<Listener> Start();

    /// Ends the REST service, saves the job and stops scanning. Throws if the job could not be saved; all the rest has
    /// happened then too. Does nothing the second time.
    void Stop();

    /// As `TokenFile::Set`.
    void SetToken(std::string const& token);

    /// Reads the certificates of HTTPS and of the services for PLCs again. Blocks until that is done. A bad file leaves
    /// the old certificate in force, and is told in the log; that of a service is a problem, too.
    void ReadCertificatesAgain();

    ZuControl::IControlManager& Controls();
    ZuCommon::ProblemsManager& Problems();

private:
    void LoadPlugins(PluginClinic::Admission const& plugins);
    void ListenForRestClients(HttpServer::Settings settings, HttpsCertificate* certificate);
    void OfferFirstAdministrator();
    void RaiseComplaint(std::string const& sentence);
    void NoteChanges();
    void BeginTokens();
    void DescribeRoutes();
    void CheckRoutes();
    void BeginJob();
    void LetLoadsRunAlone();
    void RunUpdate(std::string const& path, std::function<void()> const& update);
    void MarkJobModified();
    void NotifyOfChange(std::string const& path);
    StartRetry::Services ServicesToRetry();
    void Enable(std::string const& typeName);
    ZuControl::IControlInstance& FindInstance(std::string const& typeName);

    Options const options;
    AuditTrail& trail;
    std::optional<TrailNotes::Run> run; // before all others: notes a failed stop after their end
    RefusalGatherer refusals;           // of the services for PLCs
    bool isStopped = false;
    std::vector<std::string> heldBack; // services of the job that `Start` enables, after `Configure`

    // The order is that of construction: an object outlives the objects below, which use it.
    ZuCommon::ProblemsManager problems;
    PersistRegistry persistRegistry;
    UpdateGate updateGate;
    StartRetry startRetry;
    JobManager jobs;
    ZuPlugin::PluginManager pluginManager;
    SensorModule sensorModule;
    ControlAuthority controlAuthority;
    SensorSettings sensorSettings;
    Zu::Subscription operationNotes;
    Zu::Subscription refusalNotes;
    std::optional<SensorCommands> sensorCommands;
    std::optional<SensorResources> sensorResources;
    SourceDestinations sourceDestinations;
    std::optional<LiveResources> liveResources;
    std::optional<AuditResource> auditResource;
    std::optional<Watch> watch;
    std::optional<MetricsPage> metricsPage;
    JobsResources jobsResources;
    std::optional<AuthorityPage> authorityPage;
    SecurityStore securityStore;
    LoginService loginService;
    TokenFile tokenFile;
    TokenStore tokens;
    TokenResources tokenResources;
    RoutesResource routesResource;
    LogPage logPage;
    ConsolePages consolePages;
    std::optional<HostResources> hostResources; // after all resources: it registers handlers with them
    std::optional<OpenApiPage> openApiPage;     // describes all resources
    Gatekeeper gatekeeper;
    Zu::Subscription revocations;
    Zu::Subscription sessionEnds;
    HttpServer httpServer; // behind all resources: no request may reach a member that is being destroyed
    std::optional<CertificateWatch> certificateWatch;
};

} // namespace ZuHost

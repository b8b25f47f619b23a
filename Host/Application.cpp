#include "Host/Application.h"

#include "Host/Audit/AuditTrail.h"
#include "Host/Log/LogSink.h"
#include "Host/Module/ListenerAddress.h"
#include "Host/Module/ParameterSetter.h"
#include "Host/Operation/SensorFigures.h"
#include "Host/OrderlyStop.h"
#include "Host/Store/DataFolder.h"
#include "Host/Tls/HttpsCertificate.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuRest/EventType.h"
#include "ZuRest/IResource.h"
#include "ZuRest/Path.h"
#include "ZuRest/Place.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr uint64 USEC_PER_SECOND = 1'000'000;
constexpr char const* PROBLEM_SOURCE = "Plug-ins";

std::string PathOf(std::string const& typeName)
{
    return ZuRest::Path::Format("/controls/:protocol", {typeName});
}

} // namespace

Application::Application(Options const& newOptions, HttpServer::Settings const& httpSettings, std::string const& token,
                         HttpsCertificate* certificate, DataFolder const& dataFolder,
                         std::unique_ptr<IProfileSource> source, PluginClinic::Admission const& plugins,
                         LogScope const& log, AuditTrail& usedTrail)
    : options(newOptions),
      trail(usedTrail),
      refusals(usedTrail, &wTime_NowUsec),
      startRetry(problems, ServicesToRetry()),
      jobs(persistRegistry, updateGate, startRetry, problems, dataFolder),
      sensorModule({problems, persistRegistry, updateGate, jobs}, {options.deployment, options.rateHz, options.start},
                   std::move(source)),
      sensorSettings(persistRegistry, sensorModule.UsedSensor(), controlAuthority),
      sourceDestinations(sensorModule),
      jobsResources(sensorModule.Router(), jobs),
      securityStore(dataFolder.SecurityFile()),
      loginService(sensorModule.Router(), securityStore, trail, options.dataFolder,
                   [this](ZuRest::Caller const& caller) { return gatekeeper.IsCurrent(caller); }),
      tokenFile(token),
      tokens(securityStore),
      tokenResources(sensorModule.Router(), tokens),
      routesResource(sensorModule.Router()),
      logPage(sensorModule.Router()),
      consolePages(sensorModule.Router()),
      gatekeeper({&tokenFile, &tokens, &loginService.Callers()}, trail,
                 [this](auto const& path) { return sensorModule.RequestProcessor().MethodsAt(path); }),
      httpServer(sensorModule.RequestProcessor(), gatekeeper)
{
    ListenForRestClients(httpSettings, certificate); // first: a port that is taken is told before anything runs
    run.emplace(trail, options.words);
    OrderlyStop::SetStep("loading the plug-ins");
    LoadPlugins(plugins);
    sensorModule.Build(pluginManager);
    log.SetServices(Controls().List());
    BeginTokens();
    OrderlyStop::SetStep("reading the job");
    BeginJob();
    LetLoadsRunAlone();
    sensorModule.RequestProcessor().SetUpdateRunner(
        [this](std::string const& path, nlohmann::json const& body, auto const& update) {
            startRetry.RunUpdate(path, body, [&] { RunUpdate(path, update); });
        });
    NoteChanges();
    sensorCommands.emplace(sensorModule.Module(), sensorModule.ScanEngines(), controlAuthority, trail);
    sensorResources.emplace(
        SensorResources::Parts{sensorModule, jobs, *sensorCommands, sensorSettings, controlAuthority});
    liveResources.emplace(sensorModule.Router(), sensorModule.UsedSensor(), sourceDestinations);
    metricsPage.emplace(
        sensorModule.Router(), [this] { return sensorModule.Module().Statistics(); },
        [this] { return sensorModule.Module().Vitals(); }, [this] { return SensorFigures::Of(sensorModule); },
        [this] { return httpServer.WrongTokenCount(); });
    WatchLimits limits;
    limits.operationUsec = USEC_PER_SECOND * options.operationLimitSeconds;
    watch.emplace(
        problems, [this] { return sensorModule.Module().Vitals(); }, limits,
        [&log, &usedTrail] {
            std::set<std::string> faults = log.Faults();
            faults.merge(usedTrail.Faults());
            return faults;
        });
    if (certificate != nullptr && certificate->IsOwn())
    {
        authorityPage.emplace(sensorModule.Router(), certificate->AuthorityPem());
    }
    hostResources.emplace(sensorModule.Router(), problems, sensorModule.ScanEngines(),
                          [this] { return watch->Faults(); });
    DescribeRoutes();
    CheckRoutes();
}

void Application::ListenForRestClients(HttpServer::Settings settings, HttpsCertificate* certificate)
{
    if (certificate != nullptr)
    {
        settings.tls = certificate->Current();
        certificateWatch.emplace(*certificate, problems, &trail,
                                 [this](std::shared_ptr<ZuTls::Context const> const& tls) { httpServer.SetTls(tls); });
    }
    httpServer.Listen(settings);
    gatekeeper.SetBeyondLoopback(!httpServer.IsLocal());
    if (!httpServer.IsPlainLocal())
    {
        problems.Add(
            ZuCommon::ProblemsManager::SEVERITY_WARNING, "REST service",
            "The REST service on %1$s is not encrypted (--insecure): everyone on the network can read its tokens "
            "and change its answers",
            httpServer.Endpoint().c_str());
    }
}

Application::~Application()
{
    ZU_GUARD_DESTRUCTOR([this] { Stop(); });
}

void Application::Stop()
{
    if (std::exchange(isStopped, true))
    {
        return;
    }
    certificateWatch.reset(); // before the server that it changes
    OrderlyStop::SetStep("ending the requests of REST clients");
    if (liveResources.has_value())
    {
        liveResources->EndStreams();
    }
    httpServer.Stop();
    ZU_GUARD_DESTRUCTOR([this] { tokens.Save(); }); // a failure loses only the last uses
    OrderlyStop::SetStep("saving the job");
    std::exception_ptr failure;
    try
    {
        jobs.Close(); // before anything ends: services that run or are wanted are saved as enabled
    }
    catch (...)
    {
        failure = std::current_exception();
    }
    OrderlyStop::SetStep("ending the attempts to start services");
    startRetry.Stop(); // after the save, which must not wait for a long attempt
    OrderlyStop::SetStep("ending the scan and the protocols");
    // The module still exists, so it sees the stop. After this no event of the core or the hub reaches it.
    ZU_GUARD_DESTRUCTOR([this] { sensorModule.Core().Close(); });
    if (failure != nullptr)
    {
        std::rethrow_exception(failure);
    }
    run->Stopped();
}

void Application::SetLoginNotice(std::string const& text)
{
    gatekeeper.SetLoginNotice(text);
}

void Application::SetWatchListener(Watch::Listener listener)
{
    watch->SetListener(std::move(listener));
}

void Application::Configure()
{
    for (std::string const& typeName : options.enabledTypes)
    {
        FindInstance(typeName);
    }
    for (ParameterSetting const& setting : options.settings)
    {
        UpdateGate::Request const request(updateGate);
        SetParameter(FindInstance(setting.typeName), setting);
    }
}

std::vector<Application::Listener> Application::Start()
{
    OrderlyStop::SetStep("starting the protocols");
    for (std::string const& typeName : heldBack)
    {
        startRetry.Start(typeName);
    }
    for (std::string const& typeName : options.enabledTypes)
    {
        startRetry.Start(typeName);
    }
    if (options.start)
    {
        sensorModule.Core().Start(false);
    }
    OfferFirstAdministrator();
    jobs.Run();
    startRetry.Run();
    watch->Start();
    if (certificateWatch.has_value())
    {
        certificateWatch->Start();
    }
    httpServer.Start(); // a client finds what was asked for on the command line done
    std::vector<Listener> listeners{{"http", httpServer.Endpoint()}};
    if (std::string const endpoint = httpServer.EncryptedEndpoint(); !endpoint.empty())
    {
        listeners.push_back({"https", endpoint});
    }
    for (std::string const& typeName : Controls().List())
    {
        ZuControl::IControlInstance& instance = Controls().GetInstance(typeName);
        if (!instance.IsEnabled())
        {
            continue;
        }
        if (std::string address = WaitForListenerAddress(sensorModule.RequestProcessor(), typeName); !address.empty())
        {
            listeners.push_back({typeName, std::move(address)});
        }
    }
    return listeners;
}

void Application::ReadCertificatesAgain()
{
    if (certificateWatch.has_value())
    {
        certificateWatch->ReadAgain();
    }
    sensorModule.Module().ReadFilesAgain();
}

/// Offers a one-time code if nobody could use a service that other machines reach, or if it was asked for.
void Application::OfferFirstAdministrator()
{
    if (std::string const fault = loginService.Fault(); !fault.empty())
    {
        ZU_LOG_ERROR("%s", fault.c_str());
        problems.Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, "Users", "%1$s", fault.c_str());
    }
    if (options.resetsAdministrator || (!httpServer.IsLocal() && !gatekeeper.HasCallers()))
    {
        loginService.OfferFirstAdministrator();
    }
}

void Application::SetToken(std::string const& token)
{
    tokenFile.Set(token);
}

ZuControl::IControlManager& Application::Controls()
{
    return sensorModule.Controls();
}

ZuCommon::ProblemsManager& Application::Problems()
{
    return problems;
}

void Application::LoadPlugins(PluginClinic::Admission const& plugins)
{
    for (PluginClinic::Complaint const& complaint : plugins.complaints)
    {
        ZU_LOG_USER_ERROR("%1$s", complaint.sentence.c_str());
        ZU_LOG_ERROR("%s", complaint.sentence.c_str());
        RaiseComplaint(complaint.sentence);
        trail.Note(TrailNotes::OfRefusedPlugin(complaint.file, complaint.sentence));
    }
    for (std::string const& warning : plugins.warnings)
    {
        ZU_LOG_USER_WARNING("%1$s", warning.c_str());
        ZU_LOG_WARNING("%s", warning.c_str());
        problems.Add(ZuCommon::ProblemsManager::SEVERITY_WARNING, PROBLEM_SOURCE, "%1$s", warning.c_str());
    }
    for (std::filesystem::path const& file : plugins.files)
    {
        std::filesystem::path const loadPath = plugins.LoadPath(file);
        if (pluginManager.LoadFile(file.string(), loadPath.string()))
        {
            trail.Note(TrailNotes::OfPlugin(file, loadPath));
        }
    }
    for (auto const& refusal : pluginManager.Refusals()) // refused although the trial had passed; already logged
    {
        RaiseComplaint(refusal.reason);
        trail.Note(TrailNotes::OfRefusedPlugin(refusal.path, refusal.reason));
    }
}

void Application::RaiseComplaint(std::string const& sentence)
{
    problems.Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, PROBLEM_SOURCE, "%1$s", sentence.c_str());
}

/// Lets the trail know of each change over REST, and of each command and each refusal of a PLC.
void Application::NoteChanges()
{
    auto const note = [this](std::optional<TrailEntry> entry) {
        if (entry.has_value())
        {
            trail.Note(std::move(*entry));
        }
    };
    sensorModule.RequestProcessor().SetChangeObserver(
        [note](auto const& change) { ZU_GUARD_BOUNDARY([&] { note(TrailNotes::OfChange(change)); }); });
    operationNotes = sensorModule.Module().SubscribeToOperations(
        [note](auto const& end) { ZU_GUARD_BOUNDARY([&] { note(TrailNotes::OfOperation(end)); }); });
    refusalNotes = sensorModule.Module().SubscribeToRefusals(
        [this](auto const& refusal) { ZU_GUARD_BOUNDARY([&] { refusals.Note(TrailNotes::OfRefusal(refusal)); }); });
    auditResource.emplace(sensorModule.Router(), trail);
}

void Application::DescribeRoutes()
{
    ZuRest::ResourceRequestProcessor& processor = sensorModule.RequestProcessor();
    openApiPage.emplace(sensorModule.Router(),
                        OpenApi::Service{ZU_VERSION, [&](auto const& route) { return processor.MethodsAt(route); },
                                         [&](auto const& path) { return processor.Read(path, {}, "schema=true"); }});
}

/// A request that the table of routes does not name is refused. Tells the developer of its resource.
void Application::CheckRoutes()
{
    auto const findMethods = [this](auto const& route) { return sensorModule.RequestProcessor().MethodsAt(route); };
    for (std::string const& request : RouteTable::Missing(sensorModule.Router().Routes(), findMethods))
    {
        ZU_LOG_ERROR("The table of routes does not name %s, so nobody has access", request.c_str());
    }
}

void Application::BeginTokens()
{
    if (std::string const& fault = tokens.Fault(); !fault.empty())
    {
        ZU_LOG_ERROR("%s", fault.c_str());
        problems.Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, "Tokens", "%1$s", fault.c_str());
    }
    revocations = tokens.RevokedSignal().Subscribe([this] { gatekeeper.EndedSignal().Fire(); });
    sessionEnds = loginService.Callers().EndedSignal().Subscribe([this] { gatekeeper.EndedSignal().Fire(); });
}

void Application::BeginJob()
{
    std::set<std::string> configured;
    for (ParameterSetting const& setting : options.settings)
    {
        configured.insert(setting.typeName);
    }
    heldBack = jobs.Begin(options.jobName, configured);
}

/// A load changes several protocols. No request may read them meanwhile.
void Application::LetLoadsRunAlone()
{
    std::vector<std::string> heads{"/controls"};
    for (std::string const& typeName : Controls().List())
    {
        heads.push_back(PathOf(typeName));
    }
    jobs.SetAloneRunner(
        [this, heads](std::function<void()> const& load) { sensorModule.RequestProcessor().RunAlone(heads, load); });
}

/// If an update fails after it has begun to change a service, the parameters that it has set stay, and the module reports no
/// change and leaves the gate open. The host then saves the job, and reports the change on `/events`.
void Application::RunUpdate(std::string const& path, std::function<void()> const& update)
{
    try
    {
        update();
    }
    catch (...)
    {
        ZU_GUARD_BOUNDARY([&] {
            if (updateGate.IsOpenHere())
            {
                MarkJobModified();
                NotifyOfChange(ZuRest::Place::Of(path).HeadPath());
            }
        });
        throw;
    }
}

void Application::MarkJobModified()
{
    persistRegistry.MarkModified(Controls(), ZuCommon::PersistDomain::JOB, 0);
}

void Application::NotifyOfChange(std::string const& path)
{
    if (auto const match = sensorModule.Router().Find(path); match.has_value())
    {
        ZuRest::IResource& resource = *match->resource;
        resource.NotificationEvent().Fire(resource, ZuRest::EventType::CHANGED, path);
    }
}

StartRetry::Services Application::ServicesToRetry()
{
    StartRetry::Services services;
    services.runAsChange = [this](std::string const& typeName, std::function<void()> const& work) {
        sensorModule.RequestProcessor().RunAsChange(PathOf(typeName), work);
    };
    services.start = [this](std::string const& typeName) { Enable(typeName); };
    services.failedStarts = [this] { return sensorModule.Module().Vitals().failedStarts; };
    services.noteChange = [this] { MarkJobModified(); };
    return services;
}

void Application::Enable(std::string const& typeName)
{
    FindInstance(typeName).Enable(true);
    trail.Note({"host", "", "enable " + typeName, "", "", "done"}); // an enabling over REST is a change of its own
    // The module notifies clients only of changes that clients make. Followers of `/events` need this change too.
    NotifyOfChange(PathOf(typeName));
}

ZuControl::IControlInstance& Application::FindInstance(std::string const& typeName)
{
    ZuControl::IControlManager& controls = Controls();
    std::vector<std::string> const known = controls.List();
    if (std::find(known.begin(), known.end(), typeName) != known.end())
    {
        return controls.GetInstance(typeName);
    }
    std::string list;
    for (std::string const& name : known)
    {
        list.append(list.empty() ? "" : ", ").append(name);
    }
    ZU_THROW(Zu::Status::BAD_ARGUMENT, "there is no protocol '%s' (%s)", typeName.c_str(),
             list.empty() ? "no plug-in offers one" : list.c_str());
}

} // namespace ZuHost

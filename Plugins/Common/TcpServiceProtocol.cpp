#include "Plugins/Common/TcpServiceProtocol.h"

#include "Plugins/Common/TcpConnection.h"
#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Logging.h"
#include "ZuControl/Control/CommandOrigin.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "wApi/wMutex.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace PluginCommon
{

using namespace ZuControl::ControlProtocol;
using ZuControl::ProtocolStatus;

namespace
{

ZuControl::CommandOrigin OriginOf(ClientInfo const* client)
{
    return client == nullptr ? ZuControl::CommandOrigin() : ZuControl::CommandOrigin{client->address, client->role};
}

template <typename Needed>
Needed& Required(Needed* needed, char const* displayName, char const* name)
{
    if (needed == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s cannot do without the %s", displayName, name);
    }
    return *needed;
}

} // namespace

ITcpConversation::~ITcpConversation() = default;

void ITcpConversation::SetClient(ClientInfo newClient)
{
    client = std::move(newClient);
}

void ITcpConversation::SetDenialHandler(std::function<void(std::string const& request)> newHandler)
{
    denialHandler = std::move(newHandler);
}

void ITcpConversation::TellDenied(std::string const& request) const
{
    if (denialHandler)
    {
        denialHandler(request);
    }
}

void ITcpConversation::TakeData()
{
}

bool ITcpConversation::MayBeSilent() const
{
    return false;
}

ICommandRunner::~ICommandRunner() = default;

TcpServiceProtocol::TcpServiceProtocol(Identity const& newIdentity, ControlProtocolEnviron const& environ)
    : ProtocolBase(newIdentity.number, newIdentity.displayName, environ),
      identity(newIdentity),
      fetcher(std::string(newIdentity.typeName) + ".State",
              Required(environ.dataCache, newIdentity.displayName, "data cache"),
              Required(environ.problems, newIdentity.displayName, "problems manager")),
      problems(*environ.problems),
      notices(environ.operations->Notices()), // the base class has checked the pointer
      restoreProblem(environ.problems),
      exposureProblem(environ.problems),
      certificateProblem(environ.problems)
{
}

TcpServiceProtocol::~TcpServiceProtocol() = default;

void TcpServiceProtocol::InitService(Records const& records, ProtocolInitParams initParams)
{
    params = &records.params;
    metrics = &records.metrics;
    counters = &records.counters;
    server = std::make_unique<TcpServer>(
        TcpServer::Service{.displayName = identity.displayName,
                           .threadName = std::string(identity.typeName) + ".Io",
                           .makeConversation = [this] { return MakeConversation(); },
                           .clientsChanged = [this](uint64 count) { OnClientsChanged(count); },
                           .writeTimeout = identity.writeTimeout,
                           .refused =
                               [this](ClientInfo const& client, std::string const& what, std::string const& reason) {
                                   notices.NotifyRefusal({identity.number, OriginOf(&client), what, reason});
                               }},
        *counters);
    initParams.params = params;
    initParams.metricsData = metrics;
    Init(initParams);
    {
        Zu::MutexLock const guard(lifecycleLock);
        KeepAccepted();
    }
    replacedFiles = notices.SubscribeToReplacedFiles([this] { ReadCertificatesAgain(); });
}

void TcpServiceProtocol::EndService() noexcept
{
    CloseResultHandlerGate();
    replacedFiles.End();
    server->Stop();
    fetcher.Stop();
}

Zu::Properties::Structure& TcpServiceProtocol::UpdateMetrics()
{
    Zu::MutexLock const guard(metricsLock);
    ShowMetrics();
    metrics->Show();
    metrics->listening.Set(server->Endpoint());
    CheckControlDrops();
    return *metrics;
}

void TcpServiceProtocol::ResetMetrics()
{
    Zu::MutexLock const guard(metricsLock);
    metrics->Reset();
    counters->largestHandlingUsec.store(0, std::memory_order_relaxed);
}

void TcpServiceProtocol::ParamsUpdate()
{
    Zu::MutexLock guard(lifecycleLock);
    bool const wasRunning = server->IsRunning();
    try
    {
        ApplyParams();
        KeepAccepted();
        ShowExposure();
    }
    catch (...)
    {
        std::string const refusal = Zu::CaughtReason();
        RestoreAccepted(refusal);
        bool const isLost = wasRunning && !server->IsRunning();
        if (isLost)
        {
            Report(refusal); // it names the new address and the old one
            fetcher.Stop();  // as after a failed start
            ShowExposure();
            SetServing(false);
        }
        guard.Unlock(); // handlers may call this service
        if (isLost)
        {
            NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStart);
        }
        throw;
    }
}

void TcpServiceProtocol::ResetParams()
{
    Zu::MutexLock const guard(lifecycleLock);
    params->SetDefaults();
    KeepAccepted();
}

void TcpServiceProtocol::Start()
{
    {
        Zu::MutexLock const guard(lifecycleLock);
        if (server->IsRunning())
        {
            return;
        }
        ApplyOwnParams();
        fetcher.Start();
        try
        {
            server->Start(params->Settings());
        }
        catch (...)
        {
            fetcher.Stop();
            throw;
        }
        metrics->listening.Set(server->Endpoint()); // at once: the host prints the address before the next update
        SetServing(true);
        KeepAccepted();
        ShowExposure();
    }
    NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Running);
}

void TcpServiceProtocol::Stop()
{
    {
        Zu::MutexLock const guard(lifecycleLock);
        server->Stop();
        fetcher.Stop();
        SetServing(false);
        ShowExposure();
    }
    NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Stopped);
}

void TcpServiceProtocol::RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results)
{
    ProtocolBase::RegisterControlScanResultsHandler(results);
    results.UpdateOutputMap(EthernetProtocolId(), DataSourceList());
    {
        Zu::MutexLock const guard(fanOutLock);
        fanOut = &results;
    }
    TellClientCount();
}

void TcpServiceProtocol::DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results)
{
    {
        Zu::MutexLock const guard(fanOutLock);
        fanOut = nullptr; // not held during the call below, which waits for a running batch
    }
    ProtocolBase::DeregisterControlScanResultsHandler(results);
}

void TcpServiceProtocol::OnStartScan()
{
    Zu::MutexLock const guard(metricsLock);
    metrics->Show(); // earlier drops do not count for this scan
    ProtocolBase::OnStartScan();
}

void TcpServiceProtocol::ApplyOwnParams()
{
}

void TcpServiceProtocol::ShowMetrics()
{
}

void TcpServiceProtocol::TellDataSources()
{
    Zu::MutexLock const guard(fanOutLock);
    if (fanOut != nullptr)
    {
        fanOut->UpdateOutputMap(EthernetProtocolId(), DataSourceList());
    }
}

void TcpServiceProtocol::VisitEach(std::function<bool(ITcpConversation&)> visit)
{
    server->PostToEach(std::move(visit));
}

void TcpServiceProtocol::DisconnectAll()
{
    server->DisconnectAll();
}

StateFetcher::State TcpServiceProtocol::LatestState(std::string const& scannerId)
{
    return fetcher.Latest(scannerId);
}

void TcpServiceProtocol::RunCommand(Command const& command)
{
    ClientInfo const* const client = TcpConnection::Served();
    if (client != nullptr && client->role < ZuCommon::Role::OPERATOR)
    {
        ZU_THROW(Zu::Status::NOT_OFFERED, "This client may run no commands");
    }
    ZuControl::CommandOrigin const origin = OriginOf(client);
    ZuControl::CommandOriginScope const scope(origin);
    try
    {
        ProcessReceivedCommonCommands(command);
    }
    catch (...)
    {
        SetOperationInProgress(false); // refused: the result of the previous operation stays
        throw;
    }
}

void TcpServiceProtocol::FailCommand()
{
    OperationCompleted(Zu::Status::FAILURE);
}

TcpServiceProtocol::Status TcpServiceProtocol::CommandStatus()
{
    return GetCommandStatus();
}

bool TcpServiceProtocol::IsSameCommand(Command const& first, Command const& second)
{
    return IsDuplicateCommand(first, second);
}

void TcpServiceProtocol::ApplyParams()
{
    ApplyOwnParams();
    server->Apply(params->Settings());
}

void TcpServiceProtocol::KeepAccepted()
{
    accepted = std::make_unique<nlohmann::json>(Zu::Properties::JsonSerializer::Serialize(*params));
    restoreProblem.Begin();
    restoreProblem.End(); // no problem any more
    certificateProblem.Begin();
    certificateProblem.End();
}

void TcpServiceProtocol::RestoreAccepted(std::string const& refusal)
{
    try
    {
        Zu::Properties::JsonSerializer::Deserialize(*params, *accepted);
        ApplyParams();
    }
    catch (...)
    {
        Report(std::string(DisplayName()) + " refused new parameters (" + refusal +
               ") and cannot go back to the earlier ones: " + Zu::CaughtReason());
    }
}

/// Reads the files of the running server again. A file that cannot be used is a problem until a good one is read.
void TcpServiceProtocol::ReadCertificatesAgain()
{
    Zu::MutexLock const guard(lifecycleLock);
    certificateProblem.Begin();
    try
    {
        if (server->ReadCertificatesAgain())
        {
            ZU_LOG_INFO("%s has read its certificate again", DisplayName());
        }
    }
    catch (...)
    {
        std::string const reason = Zu::CaughtReason();
        ZU_LOG_ERROR("The certificate of %s stays as it was: %s", DisplayName(), reason.c_str());
        certificateProblem.Register(problems.Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, "ZuControl",
                                                 "The certificate of %1$s stays as it was: %2$s", DisplayName(),
                                                 reason.c_str()));
    }
    certificateProblem.End();
}

/// Replaces the problem of an earlier restoration.
void TcpServiceProtocol::Report(std::string const& problem)
{
    restoreProblem.Begin();
    restoreProblem.Register(
        problems.Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, "ZuControl", "%1$s", problem.c_str()));
    restoreProblem.End();
}

/// Reports a service that is open to a network, for as long as it is.
void TcpServiceProtocol::ShowExposure()
{
    std::string const newExposure = server->IsOpenToNetwork() ? server->Endpoint() : "";
    if (newExposure == exposure)
    {
        return;
    }
    exposureProblem.Begin();
    if (!newExposure.empty())
    {
        exposureProblem.Register(problems.Add(
            ZuCommon::ProblemsManager::SEVERITY_WARNING, "ZuControl",
            "%1$s at %2$s serves every machine that reaches it: list the networks of its clients in allowedClients, "
            "ask them for certificates (security), or let it listen on 127.0.0.1",
            DisplayName(), newExposure.c_str()));
    }
    exposureProblem.End();
    exposure = newExposure; // last: a failed report is repeated
}

void TcpServiceProtocol::OnClientsChanged(uint64 count)
{
    fetcher.SetHasClients(count > 0);
    TellClientCount();
}

void TcpServiceProtocol::SetServing(bool newIsServing)
{
    {
        Zu::MutexLock const guard(fanOutLock);
        isServing = newIsServing;
    }
    TellClientCount();
}

void TcpServiceProtocol::TellClientCount()
{
    Zu::MutexLock const guard(fanOutLock);
    if (fanOut != nullptr)
    {
        uint64 const ownCount = isServing && identity.isLive ? 1 : 0;
        UpdateConnectedClientCount(counters->clients.load(std::memory_order_relaxed) + ownCount);
    }
}

} // namespace PluginCommon

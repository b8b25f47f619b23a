#include "Plugins/AsciiTcp/AsciiTcpProtocol.h"

#include "Plugins/AsciiTcp/AsciiText.h"
#include "Plugins/AsciiTcp/SendTextParams.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "wApi/wArrayList.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace AsciiTcp
{

using namespace ZuControl::ControlProtocol;
using ZuCommon::PersistDomain;
using ZuControl::ProtocolStatus;

namespace
{

constexpr uint64 USEC_PER_SECOND = 1'000'000;
constexpr char const* TEXT_KEY = "lastText";

template <typename Service>
Service& Required(Service* service, char const* name)
{
    if (service == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "ASCII over TCP cannot do without the %s", name);
    }
    return *service;
}

/// Whether `text` may be in the settings: a text that could be sent, or the empty text of a factory restore.
bool IsStorable(std::string const& text)
{
    return text.empty() || SendTextParams::IsValid(text);
}

char const* NameOfRunState(uint8 runState)
{
    constexpr char const* NAMES[] = {"ready", "running", "error"};
    return runState < std::size(NAMES) ? NAMES[runState] : "unknown";
}

char const* NameOfOperation(ControlRegisterCommandStatus status)
{
    constexpr char const* NAMES[] = {"none", "running", "done", "failed"};
    return NAMES[std::min<std::size_t>(status, CommandStatusFailed)];
}

} // namespace

AsciiTcpProtocol::AsciiTcpProtocol(ControlProtocolEnviron const& environ)
    : ProtocolBase(PROTOCOL_ID, DISPLAY_NAME, environ),
      outputActions(outputMap),
      commands({.disconnectAll = [this] { return DisconnectAll(); },
                .sendText = [this](std::string const& text) { return SendText(text); }}),
      board(feed, counters),
      fetcher("AsciiTcp.State", Required(environ.dataCache, "data cache"),
              Required(environ.problems, "problems manager")),
      server(*this, feed, counters, [this](uint64 count) { OnClientsChanged(count); }),
      runner(*environ.operations, PROTOCOL_ID,
             [this](uint64 ticket, bool isDone) { server.OperationEnded(ticket, isDone); }),
      slowRequests(environ.hardwareManager, environ.resourceAdaptor,
                   [this](uint64 ticket, std::string const& line) { server.Answered(ticket, line); })
{
    ProtocolInitParams initParams;
    initParams.params = &params;
    initParams.outputs = &outputMap;
    initParams.outputsActionTarget = &outputActions;
    initParams.metricsData = &metrics;
    Init(initParams);
    board.SetDecimals(params.decimals.Get());
    TakeTable();
}

AsciiTcpProtocol::~AsciiTcpProtocol()
{
    CloseResultHandlerGate(); // the base class would do it only after the members are destroyed
    server.Stop();
    fetcher.Stop();
}

Zu::Properties::Structure& AsciiTcpProtocol::UpdateMetrics()
{
    auto const load = [](std::atomic<uint64> const& counter) { return counter.load(std::memory_order_relaxed); };
    Zu::MutexLock const guard(metricsLock);
    metrics.controlDrops.Set(load(counters.controlDrops));
    metrics.listening.Set(server.Endpoint());
    metrics.clients.Set(load(counters.clients));
    metrics.acceptedClients.Set(load(counters.acceptedClients));
    metrics.rejectedClients.Set(load(counters.rejectedClients));
    metrics.droppedClients.Set(load(counters.droppedClients));
    metrics.requests.Set(load(counters.requests));
    metrics.errors.Set(load(counters.errors));
    metrics.bytesIn.Set(load(counters.bytesIn));
    metrics.bytesOut.Set(load(counters.bytesOut));
    metrics.resultSets.Set(load(counters.resultSets));
    metrics.lastHandlingUsec.Set(load(counters.lastHandlingUsec));
    metrics.largestHandlingUsec.Set(load(counters.largestHandlingUsec));
    metrics.lastText.Set(LastText());
    CheckControlDrops();
    return metrics;
}

void AsciiTcpProtocol::ResetMetrics()
{
    counters.Reset();
}

void AsciiTcpProtocol::ParamsUpdate()
{
    Zu::MutexLock guard(lifecycleLock);
    board.SetDecimals(params.decimals.Get());
    bool const wasRunning = server.IsRunning();
    try
    {
        server.Apply(WantedSettings());
    }
    catch (...)
    {
        bool const isLost = wasRunning && !server.IsRunning();
        if (isLost)
        {
            fetcher.Stop(); // as after a failed start
        }
        guard.Unlock(); // handlers may call this service
        if (isLost)
        {
            NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStart);
        }
        throw;
    }
}

void AsciiTcpProtocol::ResetParams()
{
    // A running server keeps its settings until the next update or start. A load resets the parameters before it sets
    // those of the job; applying the default port in between would drop all clients.
    params.SetDefaults();
}

void AsciiTcpProtocol::Start()
{
    {
        Zu::MutexLock const guard(lifecycleLock);
        if (server.IsRunning())
        {
            return;
        }
        board.SetDecimals(params.decimals.Get());
        fetcher.Start();
        try
        {
            server.Start(WantedSettings());
        }
        catch (...)
        {
            fetcher.Stop();
            throw;
        }
        metrics.listening.Set(server.Endpoint()); // at once: the host prints the address before the metrics are updated
    }
    NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Running);
}

void AsciiTcpProtocol::Stop()
{
    {
        Zu::MutexLock const guard(lifecycleLock);
        server.Stop();
        fetcher.Stop();
    }
    NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Stopped);
}

void AsciiTcpProtocol::OutputsUpdate()
{
    TakeTable();
}

void AsciiTcpProtocol::ProcessResultSets(void* resultSets)
{
    // An exception that left this function would end the delivery of results for good.
    ZU_GUARD_BOUNDARY([this, resultSets] {
        if (board.Process(*static_cast<wArrayList const*>(resultSets)))
        {
            server.DataCame();
        }
    });
}

void AsciiTcpProtocol::RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results)
{
    ProtocolBase::RegisterControlScanResultsHandler(results);
    results.UpdateOutputMap(EthernetProtocolId(), DataSourceList());
    {
        Zu::MutexLock const guard(fanOutLock);
        fanOut = &results;
    }
    TellClientCount();
}

void AsciiTcpProtocol::DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results)
{
    {
        Zu::MutexLock const guard(fanOutLock);
        fanOut = nullptr; // not held during the call below, which waits for a running batch
    }
    ProtocolBase::DeregisterControlScanResultsHandler(results);
}

ZuControl::IControlActionTarget* AsciiTcpProtocol::ActionTarget()
{
    return &commands;
}

std::vector<std::string> AsciiTcpProtocol::DataSourceList() const
{
    std::vector<std::string> sources = ProtocolBase::DataSourceList();
    if (!sources.empty() && std::ranges::find(sources, STAMP_SOURCE) == sources.end())
    {
        sources.emplace_back(STAMP_SOURCE);
    }
    return sources;
}

void AsciiTcpProtocol::OnStartScan()
{
    Zu::MutexLock const guard(metricsLock);
    metrics.controlDrops.Set(
        counters.controlDrops.load(std::memory_order_relaxed)); // earlier drops do not count for this scan
    ProtocolBase::OnStartScan();
}

void AsciiTcpProtocol::OnFactoryRestore()
{
    Zu::MutexLock const guard(textLock);
    if (lastText.has_value())
    {
        lastText = ""; // stored as empty: a null document would leave the old text in the store
    }
}

void AsciiTcpProtocol::InitPersistDomain(PersistDomain domain, nlohmann::json& /*document*/)
{
    if (domain == PersistDomain::PROTOCOL)
    {
        Zu::MutexLock const guard(textLock);
        lastText.reset();
    }
}

void AsciiTcpProtocol::LoadPersistDomain(PersistDomain domain, nlohmann::json const& document)
{
    if (domain != PersistDomain::PROTOCOL)
    {
        return;
    }
    auto const found = document.is_object() ? document.find(TEXT_KEY) : document.end();
    if (found == document.end() || !found->is_string() || !IsStorable(found->get_ref<std::string const&>()))
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The settings of ASCII over TCP hold no text that could be sent");
    }
    KeepText(found->get<std::string>());
}

void AsciiTcpProtocol::SavePersistDomain(PersistDomain domain, nlohmann::json& document)
{
    Zu::MutexLock const guard(textLock);
    if (domain == PersistDomain::PROTOCOL && lastText.has_value())
    {
        document = {{TEXT_KEY, *lastText}};
    }
}

bool AsciiTcpProtocol::AppendReading(std::string& line, std::string_view name)
{
    return board.AppendReading(line, name);
}

void AsciiTcpProtocol::AppendNames(std::string& line)
{
    board.AppendNames(line);
}

void AsciiTcpProtocol::AppendStatus(std::string& line)
{
    auto const system = fetcher.Latest("").system;
    line.append("state=").append(NameOfRunState(system.stateByte0));
    line.append(" job=");
    AppendName(line, std::string_view(system.jobFileName, system.jobFileNameLength));
    line.append(" operation=").append(NameOfOperation(GetCommandStatus()));
    line.append(" problems=");
    AppendNumber(line, system.stateByte3);
    line.append(" uptime=");
    AppendNumber(line, system.value64);
    line.append(" clients=");
    AppendNumber(line, counters.clients.load(std::memory_order_relaxed));
}

uint64 AsciiTcpProtocol::Begin(Command command, std::string_view argument)
{
    if (argument.size() >= ControlRegisterCommandData::TEXT_SIZE)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The argument has more than %u bytes",
                 static_cast<unsigned>(ControlRegisterCommandData::TEXT_SIZE - 1));
    }
    ControlRegisterCommandData data{};
    data.commandId = command;
    std::ranges::copy(argument, data.text);
    return runner.Begin([this, &data] {
        try
        {
            ProcessReceivedCommonCommands(data);
        }
        catch (...)
        {
            SetOperationInProgress(false); // refused: the previous operation's result stays
            throw;
        }
    });
}

uint64 AsciiTcpProtocol::Ask(AsciiRequest const& request)
{
    return slowRequests.Begin(request);
}

AsciiServer::Settings AsciiTcpProtocol::WantedSettings() const
{
    // Clamped, because settings from files are not validated.
    return {params.address.Get(), params.port.Get(), std::min(params.maxClients.Get(), AsciiParams::MOST_CLIENTS),
            USEC_PER_SECOND * std::clamp<uint64>(params.idleTimeout.Get(), 1, AsciiParams::LONGEST_IDLE_TIMEOUT)};
}

void AsciiTcpProtocol::TakeTable()
{
    Zu::MutexLock const guard(tableLock);
    board.Install(OutputTable::Take(outputMap));
}

void AsciiTcpProtocol::OnClientsChanged(uint64 count)
{
    fetcher.SetHasClients(count > 0);
    TellClientCount();
}

void AsciiTcpProtocol::TellClientCount()
{
    Zu::MutexLock const guard(fanOutLock);
    if (fanOut != nullptr)
    {
        UpdateConnectedClientCount(counters.clients.load(std::memory_order_relaxed));
    }
}

uint64 AsciiTcpProtocol::DisconnectAll()
{
    uint64 const count = counters.clients.load(std::memory_order_relaxed);
    server.DisconnectAll();
    return count;
}

uint64 AsciiTcpProtocol::SendText(std::string const& text)
{
    KeepText(text);
    uint64 const count = counters.clients.load(std::memory_order_relaxed);
    server.Tell("TEXT " + text);
    return count;
}

std::string AsciiTcpProtocol::LastText()
{
    Zu::MutexLock const guard(textLock);
    return lastText.value_or("");
}

void AsciiTcpProtocol::KeepText(std::string const& text)
{
    Zu::MutexLock const guard(textLock);
    lastText = text;
}

} // namespace AsciiTcp

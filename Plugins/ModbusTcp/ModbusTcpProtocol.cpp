#include "Plugins/ModbusTcp/ModbusTcpProtocol.h"

#include "Plugins/ModbusTcp/DefaultJob.h"
#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "wApi/wArrayList.h"
#include "wApi/wMutex.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;
using ZuControl::ProtocolStatus;

namespace
{

constexpr uint64 USEC_PER_SECOND = 1'000'000;
constexpr char const* KEY_LIFETIME = "lifetime";

template <typename Service>
Service& Required(Service* service, char const* name)
{
    if (service == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Modbus TCP cannot do without the %s", name);
    }
    return *service;
}

} // namespace

ModbusTcpProtocol::ModbusTcpProtocol(ControlProtocolEnviron const& environ)
    : ProtocolBase(PROTOCOL_ID, DISPLAY_NAME, environ),
      assembly(true, 0, LAST_REGISTER),
      assemblyActionTarget(assembly),
      encoder(image),
      fetcher("ModbusTcp.State", Required(environ.dataCache, "data cache"),
              Required(environ.problems, "problems manager")),
      map(image, fetcher, *this),
      server(map, counters, [this](uint64 count) { OnClientsChanged(count); })
{
    AddModbusBlockTypes(assembly);
    assemblyGroup.Add(assembly, assemblyActionTarget);
    ProtocolInitParams initParams;
    initParams.params = &params;
    initParams.metricsData = &metrics;
    initParams.registerAssemblyGroup = &assemblyGroup;
    Init(initParams);
    ConfigureDefaultJob(assembly);
    TakeLayout();
}

ModbusTcpProtocol::~ModbusTcpProtocol()
{
    CloseResultHandlerGate(); // the base class would do it only after the members are destroyed
    server.Stop();
    fetcher.Stop();
}

Zu::Properties::Structure& ModbusTcpProtocol::UpdateMetrics()
{
    Zu::MutexLock const guard(metricsLock);
    ModbusTotals const counted = Counted();
    metrics.Show(counted.Since(atReset));
    metrics.lifetime.Show(counted);
    metrics.listening.Set(server.Endpoint());
    metrics.clients.Set(counters.clients.load(std::memory_order_relaxed));
    metrics.lastHandlingUsec.Set(counters.lastHandlingUsec.load(std::memory_order_relaxed));
    metrics.largestHandlingUsec.Set(counters.largestHandlingUsec.load(std::memory_order_relaxed));
    CheckControlDrops();
    return metrics;
}

void ModbusTcpProtocol::ResetMetrics()
{
    Zu::MutexLock const guard(metricsLock);
    atReset = Counted(); // the counters go on: "lifetime" needs them
    counters.largestHandlingUsec.store(0, std::memory_order_relaxed);
}

void ModbusTcpProtocol::LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document)
{
    if (domain != ZuCommon::PersistDomain::PROTOCOL)
    {
        return;
    }
    nlohmann::json const& lifetime = document.at(KEY_LIFETIME);
    Zu::MutexLock const guard(metricsLock);
    Zu::Properties::JsonSerializer::Validate(metrics.lifetime, lifetime);
    Zu::Properties::JsonSerializer::Deserialize(metrics.lifetime, lifetime);
    metrics.lifetime.Loaded(Counted());
}

void ModbusTcpProtocol::SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document)
{
    if (domain != ZuCommon::PersistDomain::PROTOCOL)
    {
        return;
    }
    Zu::MutexLock const guard(metricsLock);
    metrics.lifetime.Show(Counted());
    document[KEY_LIFETIME] = Zu::Properties::JsonSerializer::Serialize(metrics.lifetime);
}

void ModbusTcpProtocol::ParamsUpdate()
{
    Zu::MutexLock guard(lifecycleLock);
    bool const wasRunning = server.IsRunning();
    try
    {
        ApplyRegisterOrder();
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

void ModbusTcpProtocol::ResetParams()
{
    // A running server keeps its settings until the next update or start. A load resets the parameters before it sets
    // those of the job; applying the default port in between would drop all clients.
    params.SetDefaults();
}

void ModbusTcpProtocol::Start()
{
    {
        Zu::MutexLock const guard(lifecycleLock);
        if (server.IsRunning())
        {
            return;
        }
        ApplyRegisterOrder();
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

void ModbusTcpProtocol::Stop()
{
    {
        Zu::MutexLock const guard(lifecycleLock);
        server.Stop();
        fetcher.Stop();
    }
    NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Stopped);
}

void ModbusTcpProtocol::ProcessResultSets(void* resultSets)
{
    if (assembly.ChangeCount() != layoutChangeCount.load(std::memory_order_relaxed))
    {
        TakeLayout(); // a change that failed halfway is not notified
    }
    encoder.Process(*static_cast<wArrayList const*>(resultSets));
}

void ModbusTcpProtocol::RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results)
{
    ProtocolBase::RegisterControlScanResultsHandler(results);
    results.UpdateOutputMap(EthernetProtocolId(), DataSourceList());
    {
        Zu::MutexLock const guard(fanOutLock);
        fanOut = &results;
    }
    TellClientCount();
}

void ModbusTcpProtocol::DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results)
{
    {
        Zu::MutexLock const guard(fanOutLock);
        fanOut = nullptr; // not held during the call below, which waits for a running batch
    }
    ProtocolBase::DeregisterControlScanResultsHandler(results);
}

void ModbusTcpProtocol::RegisterAssemblyUpdate(char const*)
{
    TakeLayout();
}

void ModbusTcpProtocol::ConfigureDefaultRegisterAssembly()
{
    ConfigureDefaultJob(assembly);
    TakeLayout();
    Zu::MutexLock const guard(fanOutLock);
    if (fanOut != nullptr)
    {
        fanOut->UpdateOutputMap(EthernetProtocolId(), DataSourceList());
    }
}

bool ModbusTcpProtocol::IsRunning() const
{
    return OperationInProgress();
}

bool ModbusTcpProtocol::IsSame(Command const& first, Command const& second)
{
    return IsDuplicateCommand(first, second);
}

void ModbusTcpProtocol::Run(Command const& command)
{
    ProcessReceivedCommonCommands(command);
}

void ModbusTcpProtocol::Fail()
{
    OperationCompleted(Zu::Status::FAILURE);
}

ICommandRunner::Status ModbusTcpProtocol::LastStatus()
{
    return GetCommandStatus();
}

ModbusTotals ModbusTcpProtocol::Counted() const
{
    auto const load = [](std::atomic<uint64> const& counter) { return counter.load(std::memory_order_relaxed); };
    auto const refused = [this, load](ModbusException code) {
        return load(counters.exceptionsByCode[static_cast<std::size_t>(code)]);
    };
    ModbusTotals counted;
    counted.controlDrops = encoder.DropCount();
    counted.acceptedClients = load(counters.acceptedClients);
    counted.rejectedClients = load(counters.rejectedClients);
    counted.droppedClients = load(counters.droppedClients);
    counted.requests = load(counters.requests);
    counted.exceptions = load(counters.exceptions);
    counted.illegalFunctions = refused(ModbusException::ILLEGAL_FUNCTION);
    counted.illegalAddresses = refused(ModbusException::ILLEGAL_DATA_ADDRESS);
    counted.illegalValues = refused(ModbusException::ILLEGAL_DATA_VALUE);
    counted.busyRefusals = refused(ModbusException::SERVER_DEVICE_BUSY);
    counted.bytesIn = load(counters.bytesIn);
    counted.bytesOut = load(counters.bytesOut);
    counted.resultSets = encoder.ResultSetCount();
    counted.commands = map.CommandCount();
    counted.registersWritten = map.WrittenCount();
    return counted;
}

ModbusServer::Settings ModbusTcpProtocol::WantedSettings() const
{
    // Clamped, because settings from files are not validated.
    return {params.address.Get(), params.port.Get(), std::min(params.maxClients.Get(), ModbusParams::MOST_CLIENTS),
            USEC_PER_SECOND * std::clamp<uint64>(params.idleTimeout.Get(), 1, ModbusParams::LONGEST_IDLE_TIMEOUT)};
}

void ModbusTcpProtocol::ApplyRegisterOrder()
{
    bool const isWantedBigEndian = params.registerOrder.Get() != RegisterOrderLittleEndian;
    if (isWantedBigEndian == isBigEndian)
    {
        return;
    }
    encoder.Pause(); // no read may see results in mixed orders
    map.ChangeOrder(isWantedBigEndian,
                    [this, isWantedBigEndian] { assembly.ChangeBigEndianSupportedBlocks(isWantedBigEndian); });
    encoder.Resume();
    isBigEndian = isWantedBigEndian;
}

void ModbusTcpProtocol::TakeLayout()
{
    auto const layout = RegisterLayout::Take(assembly);
    encoder.Install(layout);
    map.Install(layout);
    layoutChangeCount.store(layout->changeCount, std::memory_order_relaxed);
}

void ModbusTcpProtocol::OnClientsChanged(uint64 count)
{
    fetcher.SetHasClients(count > 0);
    TellClientCount();
}

void ModbusTcpProtocol::TellClientCount()
{
    Zu::MutexLock const guard(fanOutLock);
    if (fanOut != nullptr)
    {
        UpdateConnectedClientCount(counters.clients.load(std::memory_order_relaxed));
    }
}

} // namespace ModbusTcp

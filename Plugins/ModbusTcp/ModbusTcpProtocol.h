#pragma once

#include "Plugins/Common/StateFetcher.h"
#include "Plugins/ModbusTcp/ICommandRunner.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/ModbusParams.h"
#include "Plugins/ModbusTcp/ModbusServer.h"
#include "Plugins/ModbusTcp/ModbusTotals.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Plugins/ModbusTcp/RegisterMap.h"
#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "Plugins/ModbusTcp/ServerCounters.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <string>

namespace ModbusTcp
{

/// The service "Modbus TCP": results, commands and state in the registers of a Modbus TCP server.
///
/// Threads: results arrive on the dispatcher's thread, and the encoder writes them into the register image. The
/// server's I/O thread serves the clients from the register map. Another thread fetches the state of system and
/// scanner. No operation here waits for the end of a system operation, so a job that a client loads can stop and start
/// this service.
class ModbusTcpProtocol final : public ZuControl::ControlProtocol::ProtocolBase, private ICommandRunner
{
public:
    static constexpr ZuControl::ZuEthernetProtocol PROTOCOL_ID{1};
    static constexpr char const* TYPE_NAME = "ModbusTcp";
    static constexpr char const* DISPLAY_NAME = "Modbus TCP";

    /// Throws `Zu::Status::BAD_ARGUMENT` for an `environ` without a data cache or a problems manager, and as the base
    /// class does.
    explicit ModbusTcpProtocol(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);
    ~ModbusTcpProtocol() override;

    Zu::Properties::Structure& UpdateMetrics() override;
    void ResetMetrics() override; ///< resets all numbers except those under "lifetime"

    // These two load and save the numbers under "lifetime". Loading a document without valid numbers throws as
    // JsonSerializer does and changes nothing.
    void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) override;
    void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;

    /// Applies the parameters. A new port or address is bound, which closes all connections. If binding fails, the
    /// service goes on at the old address and the exception tells why.
    void ParamsUpdate() override;
    void ResetParams() override;

    /// Does nothing if the service runs. Throws as ModbusServer::Start does.
    void Start() override;
    void Stop() override;

    void ProcessResultSets(void* resultSets) override;

    // Registration also reports the data sources and the number of clients to the fan-out, which has neither for a new
    // job.
    void RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;
    void DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;

    /// Takes the assembly's lock, so the caller must not hold it.
    void RegisterAssemblyUpdate(char const* id) override;
    void ConfigureDefaultRegisterAssembly() override;

private:
    bool IsRunning() const override;
    bool IsSame(Command const& first, Command const& second) override;
    void Run(Command const& command) override;
    void Fail() override;
    Status LastStatus() override;

    ModbusTotals Counted() const;
    ModbusServer::Settings WantedSettings() const;
    void ApplyRegisterOrder();
    void TakeLayout();
    void OnClientsChanged(uint64 count);
    void TellClientCount();

    ModbusParams params;
    ModbusMetrics metrics;
    ServerCounters counters;

    // The blocks come first: the members after them share the blocks and are destroyed before them.
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase assembly;
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyActionTarget assemblyActionTarget;
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyGroup assemblyGroup;
    RegisterImage image;
    ResultEncoder encoder;
    PluginCommon::StateFetcher fetcher;
    RegisterMap map;
    std::atomic<uint64> layoutChangeCount{0}; // the assembly's count at the newest layout; publishes no other data

    // Lock order: this, then `fanOutLock`. Serialises starts, stops and parameter changes. It is held while the I/O
    // thread is joined, so the I/O thread never takes it.
    Zu::Mutex lifecycleLock;
    bool isBigEndian = true;

    // Held while the client count is reported to the fan-out, so that counts arrive in order. The dispatcher's thread
    // must not take it: the fan-out may join that thread under its own lock.
    Zu::Mutex fanOutLock;
    ZuControl::IControlScanResults* fanOut ZU_GUARDED_BY(fanOutLock) = nullptr; // set while registered for results

    // Held during an update of the metrics; readers of the record need no lock. Problems of the base class are reported
    // under it.
    Zu::Mutex metricsLock;
    ModbusTotals atReset ZU_GUARDED_BY(metricsLock);

    ModbusServer server; // last: its thread uses all members above
};

} // namespace ModbusTcp

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

/// The service: results, commands and state in the registers of a Modbus TCP server.
///
/// Results come on the dispatcher's thread and go through the encoder into the image; clients are served on the server's
/// I/O thread out of the register map; the state of system and scanner is fetched by a thread of its own.
/// Nothing here waits for the end of an operation, so that the job that a client loads can stop and start this service.
class ModbusTcpProtocol final : public ZuControl::ControlProtocol::ProtocolBase, private ICommandRunner
{
public:
    static constexpr ZuControl::ZuEthernetProtocol PROTOCOL_ID{1};
    static constexpr char const* TYPE_NAME = "ModbusTcp";
    static constexpr char const* DISPLAY_NAME = "Modbus TCP";

    /// Throws -997 for an `environ` without a data cache or a problems manager, beside what the base refuses.
    explicit ModbusTcpProtocol(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);
    ~ModbusTcpProtocol() override;

    Zu::Properties::Structure& UpdateMetrics() override;
    void ResetMetrics() override; ///< all but what is kept over restarts

    // The numbers that are kept over restarts. A document that does not hold them throws what JsonSerializer throws, and
    // nothing changes.
    void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) override;
    void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;

    /// Another port or address while it runs is bound anew, at the price of every connection; when that fails the service
    /// goes on where it was, and the exception says why. The rest applies in place.
    void ParamsUpdate() override;
    void ResetParams() override;

    /// Throws when it cannot listen; see ModbusServer::Start. Runs already: nothing happens.
    void Start() override;
    void Stop() override;

    void ProcessResultSets(void* resultSets) override;

    // Nobody else tells the fan-out the sources of a new job, nor the clients that were there before it was asked.
    void RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;
    void DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;

    /// Not to be called with the assembly's lock held, which is taken for the new view of it.
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

    // The blocks, and behind them what shares blocks: it goes first.
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase assembly;
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyActionTarget assemblyActionTarget;
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyGroup assemblyGroup;
    RegisterImage image;
    ResultEncoder encoder;
    PluginCommon::StateFetcher fetcher;
    RegisterMap map;
    std::atomic<uint64> layoutChangeCount{0}; // of the assembly when the newest layout was taken; publishes nothing

    // Order: this lock, then `fanOutLock`, which may not be held when this one is taken. Starts, stops and changes of the
    // parameters exclude each other by it; it is held while the I/O thread is joined, which never takes it.
    Zu::Mutex lifecycleLock;
    bool isBigEndian = true;

    // Held while the fan-out is told the number of clients, so that an old number never comes behind a newer one. The
    // dispatcher's thread never takes it: it may be joined under the fan-out's lock.
    Zu::Mutex fanOutLock;
    ZuControl::IControlScanResults* fanOut ZU_GUARDED_BY(fanOutLock) = nullptr; // while registered for results

    // One update of the metrics at a time; readers of the record need no lock. The problems of the base are reported under it.
    Zu::Mutex metricsLock;
    ModbusTotals atReset ZU_GUARDED_BY(metricsLock);

    ModbusServer server; // last: its thread uses all of the above
};

} // namespace ModbusTcp

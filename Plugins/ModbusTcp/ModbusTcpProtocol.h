#pragma once

#include "Plugins/Common/TcpServiceProtocol.h"
#include "Plugins/ModbusTcp/Blocks/BlockArguments.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/ModbusParams.h"
#include "Plugins/ModbusTcp/OrderTestCommand.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Plugins/ModbusTcp/RegisterMap.h"
#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ModbusTcp
{

/// The service "Modbus TCP": results, commands and state in the registers of a Modbus TCP server.
///
/// Threads: results arrive on the dispatcher's thread, and the encoder writes them into the register image. The I/O
/// thread serves the clients from the register map.
class ModbusTcpProtocol final : public PluginCommon::TcpServiceProtocol
{
public:
    static constexpr ZuControl::ZuEthernetProtocol PROTOCOL_ID{1};
    static constexpr char const* TYPE_NAME = "ModbusTcp";
    static constexpr char const* DISPLAY_NAME = "Modbus TCP";

    /// A client that has not taken an answer after this time is disconnected.
    static constexpr std::chrono::seconds WRITE_TIMEOUT{5};

    /// Throws as the base class does.
    explicit ModbusTcpProtocol(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);
    ~ModbusTcpProtocol() override;

    // These two load and save the numbers under "lifetime". Loading a document without valid numbers throws as
    // JsonSerializer does and changes nothing.
    void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) override;
    void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;

    /// The sources of lists, too, each by itself.
    std::vector<std::string> DataSourceList() const override;

    void ProcessResultSets(void* resultSets) override;

    /// Marks the values of the previous scan as missing. Result queues keep theirs.
    void OnStartScan() override;

    /// Takes the assembly's lock, so the caller must not hold it.
    void RegisterAssemblyUpdate(char const* id) override;
    void ConfigureDefaultRegisterAssembly() override;

    ZuControl::IControlActionTarget* ActionTarget() override;

private:
    std::unique_ptr<PluginCommon::ITcpConversation> MakeConversation() override;
    void ApplyOwnParams() override;
    void ShowMetrics() override;
    void ChangeOrder(ZuControl::ControlProtocol::BlockOrder newOrder);
    MapIdentity Identity();
    void TakeLayout();

    ModbusParams params;
    ModbusCounters counters;
    ModbusMetrics metrics{counters};

    // The blocks come first: the members after them share the blocks and are destroyed before them.
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase assembly;
    PluginCommon::LimitedActions<ModbusAssemblyActions> assemblyActionTarget;
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyGroup assemblyGroup;
    OrderTestCommand orderTest{assembly};
    RegisterImage image;
    ResultEncoder encoder;
    RegisterMap map;
    std::atomic<uint64> layoutChangeCount{0}; // the assembly's count at the newest layout; publishes no other data
    // of the service; used by `ApplyOwnParams` only
    ZuControl::ControlProtocol::BlockOrder order = ZuControl::ControlProtocol::BlockOrder::ABCD;
    ZuCommon::ProblemsManager& problems;
    ZuCommon::ProblemsTracker queueProblem;
    MapIdentity identity; // at the change count below; used by `Identity` only, on the I/O thread
    std::optional<uint64> identityChangeCount;
    int32 shownQueue = -1; // the register that `queueProblem` names; used by `ShowMetrics` only

    // Order only: one thread at a time takes a layout. Lock order: this, then the assembly's lock and those of the
    // encoder and the map.
    Zu::Mutex layoutLock;
};

} // namespace ModbusTcp

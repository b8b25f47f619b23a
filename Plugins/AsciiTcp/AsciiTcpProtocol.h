#pragma once

#include "Plugins/AsciiTcp/AsciiCommands.h"
#include "Plugins/AsciiTcp/AsciiCounters.h"
#include "Plugins/AsciiTcp/AsciiMetrics.h"
#include "Plugins/AsciiTcp/AsciiOutputActions.h"
#include "Plugins/AsciiTcp/AsciiOutputMap.h"
#include "Plugins/AsciiTcp/AsciiParams.h"
#include "Plugins/AsciiTcp/AsciiServer.h"
#include "Plugins/AsciiTcp/DataFeed.h"
#include "Plugins/AsciiTcp/IAsciiService.h"
#include "Plugins/AsciiTcp/OperationRunner.h"
#include "Plugins/AsciiTcp/ResultBoard.h"
#include "Plugins/AsciiTcp/SlowRequests.h"
#include "Plugins/Common/StateFetcher.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "wApi/wMutex.h"

#include <optional>
#include <string>

namespace AsciiTcp
{

/// The service "ASCII over TCP": results by name, commands and state as lines of text.
///
/// Threads: results arrive on the dispatcher's thread and go to the board and the feed. The server's I/O thread serves
/// the clients. One thread fetches the system state, another carries out slow requests. No operation here waits for the
/// end of a system operation, so a job that a client loads can stop and start this service.
class AsciiTcpProtocol final : public ZuControl::ControlProtocol::ProtocolBase, private IAsciiService
{
public:
    static constexpr ZuControl::ZuEthernetProtocol PROTOCOL_ID{2};
    static constexpr char const* TYPE_NAME = "AsciiTcp";
    static constexpr char const* DISPLAY_NAME = "ASCII over TCP";
    static constexpr char const* STAMP_SOURCE = "profile/stamp"; ///< source of the frame counter in result lines

    /// Throws `Zu::Status::BAD_ARGUMENT` for an `environ` without a data cache or a problems manager, and as the base
    /// class does.
    explicit AsciiTcpProtocol(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);
    ~AsciiTcpProtocol() override;

    Zu::Properties::Structure& UpdateMetrics() override;
    void ResetMetrics() override;

    /// Applies the parameters. A new port or address is bound, which closes all connections. If binding fails, the
    /// service goes on at the old address and the exception tells why.
    void ParamsUpdate() override;
    void ResetParams() override;

    /// Does nothing if the service runs. Throws as AsciiServer::Start does.
    void Start() override;
    void Stop() override;

    void OutputsUpdate() override;
    void ProcessResultSets(void* resultSets) override;

    // Registration also reports the data sources and the number of clients to the fan-out, which has neither for a new
    // job.
    void RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;
    void DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;

    ZuControl::IControlActionTarget* ActionTarget() override;

    /// The sources of the outputs, and the source of the stamp.
    std::vector<std::string> DataSourceList() const override;

    void OnStartScan() override;
    void OnFactoryRestore() override;

    // The last text sent to the clients is saved with the settings of the protocol, not with a job.

    /// Clears the text and leaves `document` unchanged, so that nothing is stored.
    void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;
    /// Throws `Zu::Status::BAD_FORMAT` unless the text in `document` is empty or could be sent.
    void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) override;
    /// Leaves `document` unchanged if there was never a text. After a factory restore it stores the empty text.
    void SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;

private:
    bool AppendReading(std::string& line, std::string_view name) override;
    void AppendNames(std::string& line) override;
    void AppendStatus(std::string& line) override;
    uint64 Begin(Command command, std::string_view argument) override;
    uint64 Ask(AsciiRequest const& request) override;

    AsciiServer::Settings WantedSettings() const;
    void TakeTable();
    void OnClientsChanged(uint64 count);
    void TellClientCount();
    uint64 DisconnectAll();
    uint64 SendText(std::string const& text);
    std::string LastText();
    void KeepText(std::string const& text);

    AsciiParams params;
    AsciiMetrics metrics;
    AsciiCounters counters;
    AsciiOutputMap outputMap;
    AsciiOutputActions outputActions;
    AsciiCommands commands;
    DataFeed feed;
    ResultBoard board;
    PluginCommon::StateFetcher fetcher;

    // Lock order: this, then `fanOutLock`. Serialises starts, stops and parameter changes. It is held while the I/O
    // thread is joined, so the I/O thread never takes it.
    Zu::Mutex lifecycleLock;

    // Held while the client count is reported to the fan-out, so that counts arrive in order. The dispatcher's thread
    // must not take it: the fan-out may join that thread under its own lock.
    Zu::Mutex fanOutLock;
    ZuControl::IControlScanResults* fanOut ZU_GUARDED_BY(fanOutLock) = nullptr; // set while registered for results

    // Held from reading the map to installing the table, so that an older table never replaces a newer one.
    Zu::Mutex tableLock;

    Zu::Mutex metricsLock; // held during an update of the metrics; problems of the base class are reported under it

    Zu::Mutex textLock;                                          // a leaf
    std::optional<std::string> lastText ZU_GUARDED_BY(textLock); // nullopt until sent or loaded; "" after a restore

    AsciiServer server;     // after the members above, which its thread uses
    OperationRunner runner; // these two call the server
    SlowRequests slowRequests;
};

} // namespace AsciiTcp

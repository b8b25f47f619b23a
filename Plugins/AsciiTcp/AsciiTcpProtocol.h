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

/// The service: results by name, commands and state in lines of text over TCP.
///
/// Results come on the dispatcher's thread and go to the board and the feed; clients are served on the server's I/O thread;
/// the state of the system is fetched by a thread of its own, and another one carries out what may take its time. Nothing here waits for the end of an operation, so that the
/// job that a client loads can stop and start this service.
class AsciiTcpProtocol final : public ZuControl::ControlProtocol::ProtocolBase, private IAsciiService
{
public:
    static constexpr ZuControl::ZuEthernetProtocol PROTOCOL_ID{2};
    static constexpr char const* TYPE_NAME = "AsciiTcp";
    static constexpr char const* DISPLAY_NAME = "ASCII over TCP";
    static constexpr char const* STAMP_SOURCE = "profile/stamp"; ///< gives the lines of results their frame counter

    /// Throws -997 for an `environ` without a data cache or a problems manager, beside what the base refuses.
    explicit AsciiTcpProtocol(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);
    ~AsciiTcpProtocol() override;

    Zu::Properties::Structure& UpdateMetrics() override;
    void ResetMetrics() override;

    /// Another port or address while it runs is bound anew, at the price of every connection; when that fails the service
    /// goes on where it was, and the exception says why. The rest applies in place.
    void ParamsUpdate() override;
    void ResetParams() override;

    /// Throws when it cannot listen; see AsciiServer::Start. Runs already: nothing happens.
    void Start() override;
    void Stop() override;

    void OutputsUpdate() override;
    void ProcessResultSets(void* resultSets) override;

    // Nobody else tells the fan-out the sources of a new job, nor the clients that were there before it was asked.
    void RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;
    void DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override;

    ZuControl::IControlActionTarget* ActionTarget() override;

    /// The sources of the outputs, and the stamp that goes with them.
    std::vector<std::string> DataSourceList() const override;

    void OnStartScan() override;
    void OnFactoryRestore() override;

    // The last text that was sent to the clients is kept with the settings of the protocol, whatever job is loaded.
    /// Forgets the text; `document` stays as it is, so that nothing is stored.
    void InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document) override;
    /// Throws `Zu::Status::BAD_FORMAT` for a document whose text is neither empty nor one that could be sent.
    void LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document) override;
    /// Leaves `document` as it is while there was never a text. After a factory restore it holds the empty text.
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

    // Order: this lock, then `fanOutLock`, which may not be held when this one is taken. Starts, stops and changes of the
    // parameters exclude each other by it; it is held while the I/O thread is joined, which never takes it.
    Zu::Mutex lifecycleLock;

    // Held while the fan-out is told the number of clients, so that an old number never comes behind a newer one. The
    // dispatcher's thread never takes it: it may be joined under the fan-out's lock.
    Zu::Mutex fanOutLock;
    ZuControl::IControlScanResults* fanOut ZU_GUARDED_BY(fanOutLock) = nullptr; // while registered for results

    Zu::Mutex tableLock; // held from the look at the map to the board, so that an older look never replaces a newer one

    Zu::Mutex metricsLock; // one update of the metrics at a time; the problems of the base are reported under it

    Zu::Mutex textLock; // a leaf
    std::optional<std::string> lastText ZU_GUARDED_BY(textLock); // none until a text is sent or loaded; empty after a restore

    AsciiServer server;     // behind all of the above, which its thread uses
    OperationRunner runner; // these two tell the server
    SlowRequests slowRequests;
};

} // namespace AsciiTcp

#pragma once

#include "Plugins/AsciiTcp/AsciiCommands.h"
#include "Plugins/AsciiTcp/AsciiConversation.h"
#include "Plugins/AsciiTcp/AsciiMetrics.h"
#include "Plugins/AsciiTcp/AsciiOutputMap.h"
#include "Plugins/AsciiTcp/AsciiParams.h"
#include "Plugins/AsciiTcp/DataFeed.h"
#include "Plugins/AsciiTcp/OperationRunner.h"
#include "Plugins/AsciiTcp/ResultBoard.h"
#include "Plugins/AsciiTcp/SlowRequests.h"
#include "Plugins/Common/TcpServiceProtocol.h"
#include "wApi/wMutex.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace AsciiTcp
{

class AsciiConversation;

/// The service "ASCII over TCP": results by name, commands and state as lines of text.
///
/// Threads: results arrive on the dispatcher's thread and go to the board and the feed. The I/O thread serves the
/// clients. The thread "AsciiTcp.Slow" carries out slow requests.
class AsciiTcpProtocol final : public PluginCommon::TcpServiceProtocol, private IAsciiService
{
public:
    static constexpr ZuControl::ZuEthernetProtocol PROTOCOL_ID{2};
    static constexpr char const* TYPE_NAME = "AsciiTcp";
    static constexpr char const* DISPLAY_NAME = "ASCII over TCP";
    static constexpr char const* STAMP_SOURCE = "profile/stamp"; ///< source of the frame counter in result lines

    /// Throws as the base class does.
    explicit AsciiTcpProtocol(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ);
    ~AsciiTcpProtocol() override;

    void OutputsUpdate() override;
    void ProcessResultSets(void* resultSets) override;

    ZuControl::IControlActionTarget* ActionTarget() override;

    /// The sources of the outputs, and the source of the stamp.
    std::vector<std::string> DataSourceList() const override;

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
    uint64 Begin(IAsciiService::Command command, std::string_view argument) override;
    uint64 Ask(AsciiRequest const& request) override;
    void Abandon(uint64 ticket) override;

    std::unique_ptr<PluginCommon::ITcpConversation> MakeConversation() override;
    void ApplyOwnParams() override;
    void ShowMetrics() override;

    void ToEach(std::function<bool(AsciiConversation&)> visit);
    void TakeTable();
    uint64 ClientCount() const;
    uint64 SendText(std::string const& text);
    std::string LastText();
    void KeepText(std::string const& text);

    AsciiParams params;
    AsciiCounters counters;
    AsciiMetrics metrics{counters};
    AsciiOutputMap outputMap;
    AsciiOutputActions outputActions;
    AsciiCommands commands;
    DataFeed feed;
    ResultBoard board;

    // Held from reading the map to installing the table, so that an older table never replaces a newer one.
    Zu::Mutex tableLock;

    Zu::Mutex textLock;                                          // a leaf
    std::optional<std::string> lastText ZU_GUARDED_BY(textLock); // nullopt until sent or loaded; "" after a restore

    OperationRunner runner; // these two visit the conversations
    SlowRequests slowRequests;
};

} // namespace AsciiTcp

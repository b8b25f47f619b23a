#include "Plugins/AsciiTcp/AsciiTcpProtocol.h"

#include "Plugins/AsciiTcp/AsciiCommands.h"
#include "Plugins/AsciiTcp/AsciiConversation.h"
#include "Plugins/AsciiTcp/AsciiText.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "wApi/wArrayList.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace AsciiTcp
{

using namespace ZuControl::ControlProtocol;
using ZuCommon::PersistDomain;

namespace
{

constexpr char const* TEXT_KEY = "lastText";

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
    : TcpServiceProtocol({.number = PROTOCOL_ID, .typeName = TYPE_NAME, .displayName = DISPLAY_NAME}, environ),
      outputActions(outputMap),
      commands({.disconnectAll =
                    [this] {
                        uint64 const count = ClientCount();
                        DisconnectAll();
                        return count;
                    },
                .sendText = [this](std::string const& text) { return SendText(text); }}),
      board(feed, counters),
      runner(*environ.operations, PROTOCOL_ID,
             [this](uint64 ticket, bool isDone) {
                 ToEach([ticket, isDone](AsciiConversation& client) { return client.OperationEnded(ticket, isDone); });
             }),
      slowRequests(environ.hardwareManager, environ.resourceAdaptor, [this](uint64 ticket, std::string const& line) {
          ToEach([ticket, line](AsciiConversation& client) { return client.Answered(ticket, line); });
      })
{
    ProtocolInitParams initParams;
    initParams.outputs = &outputMap;
    initParams.outputsActionTarget = &outputActions;
    InitService({params, metrics, counters}, initParams);
    board.SetDecimals(params.decimals.Get());
    TakeTable();
}

AsciiTcpProtocol::~AsciiTcpProtocol()
{
    EndService();
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
            ToEach([](AsciiConversation& client) { return client.IsSubscribed(); });
        }
    });
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
    auto const system = LatestState("").system;
    line.append("state=").append(NameOfRunState(system.stateByte0));
    line.append(" job=");
    AppendName(line, std::string_view(system.jobFileName, system.jobFileNameLength));
    line.append(" operation=").append(NameOfOperation(CommandStatus()));
    line.append(" problems=");
    AppendNumber(line, system.stateByte3);
    line.append(" uptime=");
    AppendNumber(line, system.value64);
    line.append(" clients=");
    AppendNumber(line, ClientCount());
}

uint64 AsciiTcpProtocol::Begin(IAsciiService::Command command, std::string_view argument)
{
    if (argument.size() >= ControlRegisterCommandData::TEXT_SIZE)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The argument has more than %u bytes",
                 static_cast<unsigned>(ControlRegisterCommandData::TEXT_SIZE - 1));
    }
    ControlRegisterCommandData data{};
    data.commandId = command;
    std::ranges::copy(argument, data.text);
    return runner.Begin([this, &data] { RunCommand(data); });
}

uint64 AsciiTcpProtocol::Ask(AsciiRequest const& request)
{
    return slowRequests.Begin(request);
}

void AsciiTcpProtocol::Abandon(uint64 ticket)
{
    slowRequests.Abandon(ticket);
}

std::unique_ptr<PluginCommon::ITcpConversation> AsciiTcpProtocol::MakeConversation()
{
    IAsciiService& service = *this;
    return std::make_unique<AsciiConversation>(service, feed, counters);
}

void AsciiTcpProtocol::ApplyOwnParams()
{
    board.SetDecimals(params.decimals.Get());
}

void AsciiTcpProtocol::ShowMetrics()
{
    metrics.lastText.Set(LastText());
}

void AsciiTcpProtocol::ToEach(std::function<bool(AsciiConversation&)> visit)
{
    VisitEach([visit = std::move(visit)](PluginCommon::ITcpConversation& conversation) {
        return visit(static_cast<AsciiConversation&>(conversation)); // this service makes no other type
    });
}

void AsciiTcpProtocol::TakeTable()
{
    Zu::MutexLock const guard(tableLock);
    board.Install(OutputTable::Take(outputMap));
}

uint64 AsciiTcpProtocol::ClientCount() const
{
    return counters.clients.load(std::memory_order_relaxed);
}

uint64 AsciiTcpProtocol::SendText(std::string const& text)
{
    KeepText(text);
    uint64 const count = ClientCount();
    ToEach([line = "TEXT " + text](AsciiConversation& client) {
        client.Tell(line);
        return true;
    });
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

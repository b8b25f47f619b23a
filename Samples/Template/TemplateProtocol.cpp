#include "TemplateProtocol.h"

#include "Plugins/Common/ProtocolPlugin.h"
#include "ZuApi/Exception.h"
#include "ZuCore/DataSourceHash.h"
#include "ZuCore/ResultItem.h"
#include "ZuCore/ResultSet.h"
#include "ZuPlugin/PluginEntry.h"
#include "ZuVision/ZvMessages.h"
#include "wApi/wArrayList.h"
#include "wBeacon/wMsgInfo.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace ZuControl::ControlProtocol;

namespace
{

constexpr uint16 DEFAULT_PORT = 9150;
constexpr uint16 MOST_OUTPUTS = 100;
constexpr uint32 MOST_DECIMALS = 9;
constexpr double LARGEST_VALUE = 1e9; // in millimetres

/// Appends a measurement such as "3=50.000:1" to `line`.
void AppendMeasurement(std::string& line, uint16 outputId, void const* message, int decimals)
{
    double const value = ZuVision::ZvMeasurementMsg_Value(message);
    unsigned const decision = ZuVision::ZvMeasurementMsg_Decision(message);
    char valueText[32] = "missing";
    if (std::abs(value) < LARGEST_VALUE) // a missing measurement has the lowest double as its value
    {
        std::snprintf(valueText, sizeof valueText, "%.*f", decimals, value);
    }
    line.append(line.empty() ? "" : " ").append(std::to_string(outputId)).append("=").append(valueText);
    line.append(":").append(std::to_string(decision));
}

} // namespace

TemplateParams::TemplateParams() : TcpParams(DEFAULT_PORT)
{
    Register("decimals", "Digits Behind the Point", decimals);
    Bound(decimals, 0, MOST_DECIMALS); // a request with another value is refused before anything changes
    RegisterLimits();                  // last: the limits of every TCP service
    TemplateParams::SetDefaults();
}

TemplateParams::~TemplateParams()
{
    Deregister("decimals"); // before the member, to which the base class refers, is destroyed
}

void TemplateParams::SetDefaults()
{
    TcpParams::SetDefaults();
    decimals.Set(3);
}

TemplateMetrics::TemplateMetrics(TemplateCounters const& counters) : TcpMetrics(counters)
{
    AddCounter("lines", "Result lines sent", counters.lines);
    AddTraffic(counters);
}

TemplateMetrics::~TemplateMetrics() = default;

TemplateProtocol::TemplateProtocol(ControlProtocolEnviron const& environ)
    : TcpServiceProtocol({.number = PROTOCOL_ID, .typeName = TYPE_NAME, .displayName = DISPLAY_NAME}, environ),
      outputs(MOST_OUTPUTS, 0, MOST_OUTPUTS - 1),
      outputsActionTarget(outputs)
{
    ProtocolInitParams init;
    init.outputs = &outputs;
    init.outputsActionTarget = &outputsActionTarget;
    InitService({params, metrics, counters}, init);
}

TemplateProtocol::~TemplateProtocol()
{
    EndService(); // first: until it returns, other threads use the members
}

void TemplateProtocol::OutputsUpdate()
{
    std::unordered_map<uint64, uint16> newIds;
    outputs.BeginLock(); // items that `At` returns stay valid until `EndLock`
    for (uint64 i = 0; i < outputs.Count(); ++i)
    {
        StandardOutputItem const& item = outputs.At(i);
        newIds[ZuCore::DataSourceHash(item.source.Get())] = item.outputId.Get();
    }
    outputs.EndLock();
    Zu::MutexLock const guard(lock);
    outputIds.swap(newIds);
}

void TemplateProtocol::ProcessResultSets(void* resultSets)
{
    auto const& sets = *static_cast<wArrayList const*>(resultSets);
    for (uint64 i = 0; i < wArrayList_Count(sets); ++i)
    {
        SendSet(wArrayList_At(sets, i));
    }
    Count(counters.resultSets, wArrayList_Count(sets));
}

std::unique_ptr<PluginCommon::ITcpConversation> TemplateProtocol::MakeConversation()
{
    return std::make_unique<TemplateConversation>([this](std::string_view request) { return Answer(request); },
                                                  counters);
}

void TemplateProtocol::ApplyOwnParams()
{
    decimals.store(static_cast<int>(std::min(params.decimals.Get(), MOST_DECIMALS)), std::memory_order_relaxed);
}

std::string TemplateProtocol::Answer(std::string_view request)
{
    Command command{};
    if (request == "start")
    {
        command.commandId = CommandStart;
    }
    else if (request == "stop")
    {
        command.commandId = CommandStop;
    }
    else
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "the requests are start and stop");
    }
    RunCommand(command); // begins the operation and does not wait for its end; throws if it is refused
    return "ok";
}

void TemplateProtocol::SendSet(void const* resultSet)
{
    std::string const line = LineOf(resultSet);
    if (!line.empty())
    {
        VisitEach([line](PluginCommon::ITcpConversation& conversation) {
            static_cast<TemplateConversation&>(conversation).AddResults(line); // this service makes no other type
            return true;                                                       // there is something to send
        });
    }
}

/// The line of a result set with its line end; empty if no output has a result.
std::string TemplateProtocol::LineOf(void const* resultSet)
{
    auto const* const set = static_cast<ZuCore::ResultSetObject const*>(resultSet);
    std::string line;
    Zu::MutexLock const guard(lock);
    for (uint64 i = 0; i < ZuCore::ResultSet_Count(set); ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(set, i);
        auto const* const info = ZuCore::ResultItem_ResultInfo(item);
        auto const output = outputIds.find(ZuCore::ResultInfo_NumericId(info));
        void const* const message = wMsgInfo_Msg(ZuCore::ResultItem_MsgInfo(item));
        if (output != outputIds.end() && wObject_Is(message, ZuVision::ZvMeasurementMsg_Class))
        {
            AppendMeasurement(line, output->second, message, decimals.load(std::memory_order_relaxed));
        }
    }
    return line.empty() ? line : line + "\n";
}

ZU_PLUGIN_ENTRY(PluginCommon::ProtocolPlugin<TemplateProtocol>::Make);

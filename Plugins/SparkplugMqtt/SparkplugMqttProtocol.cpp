#include "Plugins/SparkplugMqtt/SparkplugMqttProtocol.h"

#include "Plugins/SparkplugMqtt/Topics.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/Control/IControlScanResults.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <utility>

namespace SparkplugMqtt
{

using namespace ZuControl::ControlProtocol;
using ZuCommon::PersistDomain;
using ZuControl::ProtocolStatus;

namespace
{

constexpr char const* PASSWORD_KEY = "password";
constexpr char const* BD_SEQ_KEY = "bdSeq";

template <typename Needed>
Needed& Required(Needed* needed, char const* name)
{
    if (needed == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s cannot do without the %s", SparkplugMqttProtocol::DISPLAY_NAME, name);
    }
    return *needed;
}

uint64 UtcMsec()
{
    auto const utc = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<uint64>(std::chrono::duration_cast<std::chrono::milliseconds>(utc).count());
}

} // namespace

SparkplugMqttProtocol::SparkplugMqttProtocol(ControlProtocolEnviron const& environ)
    : ProtocolBase(PROTOCOL_ID, DISPLAY_NAME, environ),
      outputActions(outputMap),
      passwordCommand([this](std::string const& password) { KeepPassword(password); }),
      queue([this] { waker.Wake(); }),
      outputMetrics(queue),
      fetcher("Sparkplug.State", Required(environ.dataCache, "data cache"),
              Required(environ.problems, "problems manager")),
      commands(*environ.operations, PROTOCOL_ID,
               {.start = [this](CommandRunner::Command const& command) { RunCommand(command); },
                .ended = [this] { waker.Wake(); }}),
      resources(environ.resourceAdaptor),
      problems(*environ.problems)
{
    ProtocolInitParams initParams;
    initParams.params = &params;
    initParams.outputs = &outputMap;
    initParams.outputsActionTarget = &outputActions;
    initParams.metricsData = &metrics;
    Init(initParams);
    outputMetrics.Install(outputMap);
    metrics.password.Set("not set");
    Zu::MutexLock const guard(lifecycleLock);
    KeepAccepted();
}

SparkplugMqttProtocol::~SparkplugMqttProtocol()
{
    CloseResultHandlerGate();
    Zu::MutexLock const guard(lifecycleLock);
    StopNode();
}

void SparkplugMqttProtocol::Start()
{
    {
        Zu::MutexLock const guard(lifecycleLock);
        if (node != nullptr)
        {
            return;
        }
        StartNode(params.Settings(Password()));
        KeepAccepted();
        SetServing(true);
    }
    NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Running);
}

void SparkplugMqttProtocol::Stop()
{
    {
        Zu::MutexLock const guard(lifecycleLock);
        StopNode();
        SetServing(false);
    }
    NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Stopped);
}

void SparkplugMqttProtocol::ParamsUpdate()
{
    Zu::MutexLock const guard(lifecycleLock);
    try
    {
        EdgeNode::Settings const settings = params.Settings(Password());
        KeepAccepted();
        if (node != nullptr)
        {
            StopNode();
            StartNode(settings);
        }
    }
    catch (...)
    {
        Zu::Properties::JsonSerializer::Deserialize(params, *accepted);
        throw;
    }
}

void SparkplugMqttProtocol::ResetParams()
{
    Zu::MutexLock const guard(lifecycleLock);
    params.SetDefaults();
    KeepAccepted();
}

Zu::Properties::Structure& SparkplugMqttProtocol::UpdateMetrics()
{
    Zu::MutexLock const guard(metricsLock);
    metrics.Show();
    metrics.password.Set(Password().empty() ? "not set" : "set");
    CheckControlDrops();
    return metrics;
}

void SparkplugMqttProtocol::ResetMetrics()
{
    Zu::MutexLock const guard(metricsLock);
    metrics.Reset();
}

void SparkplugMqttProtocol::OnStartScan()
{
    Zu::MutexLock const guard(metricsLock);
    metrics.Show(); // earlier drops do not count for this scan
    ProtocolBase::OnStartScan();
}

void SparkplugMqttProtocol::OutputsUpdate()
{
    outputMetrics.Install(outputMap);
    waker.Wake();
}

void SparkplugMqttProtocol::ProcessResultSets(void* resultSets)
{
    // An exception that left this function would end the delivery of results for good.
    ZU_GUARD_BOUNDARY(
        [this, resultSets] { outputMetrics.Process(*static_cast<wArrayList const*>(resultSets), UtcMsec()); });
}

void SparkplugMqttProtocol::RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results)
{
    ProtocolBase::RegisterControlScanResultsHandler(results);
    results.UpdateOutputMap(EthernetProtocolId(), DataSourceList());
    {
        Zu::MutexLock const guard(fanOutLock);
        fanOut = &results;
    }
    TellClientCount();
}

void SparkplugMqttProtocol::DeregisterControlScanResultsHandler(ZuControl::IControlScanResults& results)
{
    {
        Zu::MutexLock const guard(fanOutLock);
        fanOut = nullptr; // not held during the call below, which waits for a running batch
    }
    ProtocolBase::DeregisterControlScanResultsHandler(results);
}

ZuControl::IControlActionTarget* SparkplugMqttProtocol::ActionTarget()
{
    return &passwordCommand;
}

std::vector<std::string> SparkplugMqttProtocol::DataSourceList() const
{
    std::vector<std::string> sources = ProtocolBase::DataSourceList();
    if (!sources.empty() && std::ranges::find(sources, STAMP_SOURCE) == sources.end())
    {
        sources.emplace_back(STAMP_SOURCE);
    }
    return sources;
}

void SparkplugMqttProtocol::OnFactoryRestore()
{
    Zu::MutexLock const guard(keptLock);
    kept.password.clear();
}

void SparkplugMqttProtocol::InitPersistDomain(PersistDomain domain, nlohmann::json& /*document*/)
{
    if (domain == PersistDomain::PROTOCOL)
    {
        Zu::MutexLock const guard(keptLock);
        kept = {};
    }
}

void SparkplugMqttProtocol::LoadPersistDomain(PersistDomain domain, nlohmann::json const& document)
{
    if (domain != PersistDomain::PROTOCOL)
    {
        return;
    }
    Kept loaded;
    if (document.is_object() && document.contains(PASSWORD_KEY) && document[PASSWORD_KEY].is_string())
    {
        loaded.password = document[PASSWORD_KEY].get<std::string>();
    }
    else
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The settings of Sparkplug MQTT are no record of this service");
    }
    if (document.contains(BD_SEQ_KEY) && document[BD_SEQ_KEY].is_number_unsigned())
    {
        loaded.bdSeq = static_cast<uint8>(document[BD_SEQ_KEY].get<uint64>());
    }
    Zu::MutexLock const guard(keptLock);
    kept = std::move(loaded);
}

void SparkplugMqttProtocol::SavePersistDomain(PersistDomain domain, nlohmann::json& document)
{
    Zu::MutexLock const guard(keptLock);
    saves.asked += domain == PersistDomain::PROTOCOL ? 1 : 0;
    if (domain == PersistDomain::PROTOCOL && (kept.bdSeq.has_value() || !kept.password.empty()))
    {
        document = {{PASSWORD_KEY, kept.password}};
        if (kept.bdSeq.has_value())
        {
            document[BD_SEQ_KEY] = *kept.bdSeq;
        }
    }
}

void SparkplugMqttProtocol::StartNode(EdgeNode::Settings const& settings)
{
    outputMetrics.SetRules(std::max(params.deadBand.Get(), 0.0), params.period.Get());
    fetcher.Start();
    fetcher.SetHasClients(true);
    std::optional<uint8> lastBdSeq;
    {
        Zu::MutexLock const guard(keptLock);
        lastBdSeq = kept.bdSeq;
    }
    try
    {
        EdgeNode::Services services{waker,    queue,    outputMetrics, fetcher, commands, resources,
                                    problems, counters, metrics,       {},      {}};
        services.keepBdSeq = [this](uint8 bdSeq) { KeepBdSeq(bdSeq); };
        services.isBdSeqKept = [this] { return IsBdSeqKept(); };
        node = std::make_unique<EdgeNode>(settings, services, lastBdSeq);
        metrics.dataTopic.Set(Topics(settings.session.ids, "").deviceData);
    }
    catch (...)
    {
        fetcher.Stop();
        throw;
    }
}

void SparkplugMqttProtocol::StopNode()
{
    node.reset();
    fetcher.SetHasClients(false);
    fetcher.Stop();
    metrics.session.Set("");
    metrics.server.Set("");
    metrics.dataTopic.Set("");
}

void SparkplugMqttProtocol::KeepAccepted()
{
    accepted = std::make_unique<nlohmann::json>(Zu::Properties::JsonSerializer::Serialize(params));
}

void SparkplugMqttProtocol::RunCommand(CommandRunner::Command const& command)
{
    try
    {
        ProcessReceivedCommonCommands(command);
    }
    catch (...)
    {
        SetOperationInProgress(false); // refused: the result of the previous operation stays
        throw;
    }
}

/// A running node uses the password from the next connection on: it begins anew.
void SparkplugMqttProtocol::KeepPassword(std::string const& password)
{
    {
        Zu::MutexLock const guard(keptLock);
        kept.password = password;
    }
    metrics.password.Set(password.empty() ? "not set" : "set");
    NotifyParamsInternalUpdateEventHandler(true); // has the settings saved
    Zu::MutexLock const guard(lifecycleLock);
    if (node != nullptr)
    {
        EdgeNode::Settings const settings = params.Settings(password);
        StopNode();
        StartNode(settings);
    }
}

void SparkplugMqttProtocol::KeepBdSeq(uint8 bdSeq)
{
    {
        Zu::MutexLock const guard(keptLock);
        kept.bdSeq = bdSeq;
        saves = {};
    }
    NotifyParamsInternalUpdateEventHandler(true); // has the settings saved
}

bool SparkplugMqttProtocol::IsBdSeqKept()
{
    {
        Zu::MutexLock const guard(keptLock);
        if (saves.asked != 1 || saves.isSecondWanted)
        {
            return saves.asked > 1;
        }
        saves.isSecondWanted = true;
    }
    NotifyParamsInternalUpdateEventHandler(true);
    return false;
}

std::string SparkplugMqttProtocol::Password() const
{
    Zu::MutexLock const guard(keptLock);
    return kept.password;
}

void SparkplugMqttProtocol::SetServing(bool newIsServing)
{
    {
        Zu::MutexLock const guard(fanOutLock);
        isServing = newIsServing;
    }
    TellClientCount();
}

void SparkplugMqttProtocol::TellClientCount()
{
    Zu::MutexLock const guard(fanOutLock);
    if (fanOut != nullptr)
    {
        UpdateConnectedClientCount(isServing ? 1 : 0);
    }
}

} // namespace SparkplugMqtt

#include "TemplateProtocol.h"

#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuCore/DataSourceHash.h"
#include "ZuCore/ResultInfo.h"
#include "ZuCore/ResultItem.h"
#include "ZuCore/ResultSet.h"
#include "ZuVision/ZvMeasurementMsg.h"
#include "wApi/wArrayList.h"
#include "wApi/wMutex.h"
#include "wBeacon/wMsgInfo.h"

#include <cmath>
#include <cstdio>

using namespace ZuControl::ControlProtocol;
using ZuControl::ProtocolStatus;

namespace
{

constexpr uint16 MOST_OUTPUTS = 100;
constexpr double LARGEST_VALUE = 1e9; // in millimetres

/// Appends a measurement such as "3=50.000:1" to `text`.
void AppendMeasurement(std::string& text, uint16 outputId, void const* message)
{
    double const value = ZuVision::ZvMeasurementMsg_Value(message);
    unsigned const decision = ZuVision::ZvMeasurementMsg_Decision(message);
    char valueText[32] = "missing";
    if (std::abs(value) < LARGEST_VALUE) // a missing measurement has the lowest double as its value
    {
        std::snprintf(valueText, sizeof valueText, "%.3f", value);
    }
    text.append(text.empty() ? "" : " ").append(std::to_string(outputId)).append("=").append(valueText);
    text.append(":").append(std::to_string(decision));
}

} // namespace

TemplateProtocol::TemplateProtocol(ControlProtocolEnviron const& environ)
    : ProtocolBase(PROTOCOL_ID, DISPLAY_NAME, environ),
      outputs(MOST_OUTPUTS, 0, MOST_OUTPUTS - 1),
      outputsActionTarget(outputs)
{
    ProtocolInitParams init;
    init.params = &params;
    init.metricsData = &metrics;
    init.outputs = &outputs;
    init.outputsActionTarget = &outputsActionTarget;
    Init(init);
}

TemplateProtocol::~TemplateProtocol()
{
    CloseResultHandlerGate(); // no more results: the base class would do this only after the members are gone
}

void TemplateProtocol::Start()
{
    {
        Zu::MutexLock const guard(lock);
        sender.Open(params.address.Get(), params.port.Get());
        isRunning = true;
    }
    NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Running); // not under the lock: it calls handlers
}

void TemplateProtocol::Stop()
{
    {
        Zu::MutexLock const guard(lock);
        sender.Close();
        isRunning = false;
    }
    NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Stopped);
}

void TemplateProtocol::ParamsUpdate()
{
    Zu::MutexLock const guard(lock);
    if (isRunning)
    {
        sender.Open(params.address.Get(), params.port.Get());
    }
}

void TemplateProtocol::ResetParams()
{
    params.SetDefaults();
    ParamsUpdate();
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

void TemplateProtocol::RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results)
{
    ProtocolBase::RegisterControlScanResultsHandler(results);
    results.UpdateOutputMap(EthernetProtocolId(), DataSourceList());
    UpdateConnectedClientCount(1); // results need a client; datagram receivers cannot be counted
}

void TemplateProtocol::ProcessResultSets(void* resultSets)
{
    auto const& sets = *static_cast<wArrayList const*>(resultSets);
    Zu::MutexLock const guard(lock);
    for (uint64 i = 0; i < wArrayList_Count(sets); ++i)
    {
        SendSet(wArrayList_At(sets, i));
    }
}

void TemplateProtocol::SendSet(void const* resultSet)
{
    auto const* const set = static_cast<ZuCore::ResultSetObject const*>(resultSet);
    text.clear();
    for (uint64 i = 0; i < ZuCore::ResultSet_Count(set); ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(set, i);
        auto const* const info = ZuCore::ResultItem_ResultInfo(item);
        auto const output = outputIds.find(ZuCore::ResultInfo_NumericId(info));
        void const* const message = wMsgInfo_Msg(ZuCore::ResultItem_MsgInfo(item));
        if (output != outputIds.end() && wObject_Is(message, ZuVision::ZvMeasurementMsg_Class))
        {
            AppendMeasurement(text, output->second, message);
        }
    }
    if (!text.empty())
    {
        (sender.Send(text) ? datagramCount : dropCount).fetch_add(1, std::memory_order_relaxed);
    }
}

Zu::Properties::Structure& TemplateProtocol::UpdateMetrics()
{
    Zu::MutexLock const guard(metricsLock);
    metrics.controlDrops.Set(dropCount.load(std::memory_order_relaxed));
    metrics.datagrams.Set(datagramCount.load(std::memory_order_relaxed));
    CheckControlDrops(); // tells the user when results are lost
    return metrics;
}

void TemplateProtocol::ResetMetrics()
{
    dropCount.store(0, std::memory_order_relaxed);
    datagramCount.store(0, std::memory_order_relaxed);
}

#pragma once

#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuCore/DataSourceHash.h"
#include "ZuCore/ResultItem.h"
#include "ZuCore/ResultSet.h"
#include "ZuVision/ZvMessages.h"
#include "wApi/wArrayList.h"
#include "wBeacon/wMsgInfo.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace NumericMaps
{

/// The id and the names of a protocol of these tests.
struct Names
{
    ZuControl::ZuEthernetProtocol id;
    char const* typeName;
    char const* displayName;
};

/// A protocol with an output map that has numeric ids. It has no client: its metric "sent" shows the values that it
/// would send, as "id=value" words in the order of the ids.
template <typename Map>
class MappedProtocol final : public ZuControl::ControlProtocol::ProtocolBase
{
public:
    template <typename... MapArguments>
    MappedProtocol(Names const& names, ZuControl::ControlProtocol::ControlProtocolEnviron const& environ,
                   MapArguments... mapArguments)
        : ProtocolBase(names.id, names.displayName, environ), outputMap(mapArguments...), actions(outputMap)
    {
        metrics.Register("controlDrops", controlDrops);
        metrics.Register("sent", sent);
        ZuControl::ControlProtocol::ProtocolInitParams init;
        init.params = &params;
        init.outputs = &outputMap;
        init.outputsActionTarget = &actions;
        init.metricsData = &metrics;
        Init(init);
    }

    ~MappedProtocol() override
    {
        CloseResultHandlerGate();
    }

    void Start() override
    {
        NotifyProtocolStatusUpdateEventHandler(ZuControl::ProtocolStatus::Running);
    }

    void Stop() override
    {
        NotifyProtocolStatusUpdateEventHandler(ZuControl::ProtocolStatus::Stopped);
    }

    void ParamsUpdate() override
    {
    }

    void ResetParams() override
    {
    }

    void OutputsUpdate() override
    {
        std::scoped_lock const guard(lock);
        idsBySource.clear();
        values.clear();
        outputMap.BeginLock();
        for (uint64 i = 0; i < outputMap.Count(); ++i)
        {
            auto const& item = outputMap.At(i);
            idsBySource[ZuCore::DataSourceHash(item.source.Get())] = item.outputId.Get();
        }
        outputMap.EndLock();
    }

    void ProcessResultSets(void* resultSets) override
    {
        auto const& batch = *static_cast<wArrayList const*>(resultSets);
        std::scoped_lock const guard(lock);
        for (uint64 i = 0; i < wArrayList_Count(batch); ++i)
        {
            TakeSet(static_cast<ZuCore::ResultSetObject const*>(wArrayList_At(batch, i)));
        }
    }

    void RegisterControlScanResultsHandler(ZuControl::IControlScanResults& results) override
    {
        ProtocolBase::RegisterControlScanResultsHandler(results);
        results.UpdateOutputMap(EthernetProtocolId(), DataSourceList());
        UpdateConnectedClientCount(1); // the metrics
    }

    Zu::Properties::Structure& UpdateMetrics() override
    {
        std::string text;
        std::scoped_lock const guard(lock);
        for (auto const& [id, value] : values)
        {
            text.append(text.empty() ? "" : " ").append(std::to_string(id)).append("=").append(std::to_string(value));
        }
        sent.Set(text);
        return metrics;
    }

    void ResetMetrics() override
    {
    }

private:
    void TakeSet(ZuCore::ResultSetObject const* set) // under the lock
    {
        for (uint64 i = 0; i < ZuCore::ResultSet_Count(set); ++i)
        {
            ZuCore::ResultItem const item = ZuCore::ResultSet_At(set, i);
            auto const found = idsBySource.find(ZuCore::ResultInfo_NumericId(ZuCore::ResultItem_ResultInfo(item)));
            if (found != idsBySource.end())
            {
                values[found->second] =
                    ZuVision::ZvMeasurementMsg_Value(wMsgInfo_Msg(ZuCore::ResultItem_MsgInfo(item)));
            }
        }
    }

    Zu::Params::Group params{""};
    Zu::Properties::Structure metrics{true};
    Zu::Properties::Value<uint64> controlDrops;
    Zu::Properties::Value<std::string> sent;
    Map outputMap;
    ZuControl::ControlProtocol::ProtocolOutputActionTarget actions;

    std::mutex lock; // guards the two below; the map's lock is taken under it
    std::map<uint64, uint16> idsBySource;
    std::map<uint16, double> values; // the newest, by output id
};

/// A plug-in with one protocol type; `Factory` makes it and knows its names.
template <typename Factory>
class MappedPlugin final : public ZuControl::ControlPlugin
{
public:
    MappedPlugin()
    {
        auto const factory = std::make_shared<Factory>();
        infos.push_back(ZuControl::ControlInfo()
                            .SetTypeName(Factory::NAMES.typeName)
                            .SetDisplayName(Factory::NAMES.displayName)
                            .SetFactory(*factory));
        factories.push_back(factory);
    }

    static std::shared_ptr<MappedPlugin> Make()
    {
        return std::make_shared<MappedPlugin>();
    }
};

} // namespace NumericMaps

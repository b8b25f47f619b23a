#include "ZuControl/Control/ControlScanResults.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuControl/Control/ControlScanResultsDispatcher.h"
#include "ZuCore/ResultHub.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wHandle.h"
#include "wBeacon/wMsgInfo.h"

#include <algorithm>
#include <utility>

namespace ZuControl
{

namespace
{

/// Appends the item's two parts, which the set shares from now on.
void ShareInto(ZuCore::ResultSet set, wMsgInfo* msgInfo, ZuCore::ResultInfo resultInfo)
{
    auto sharedInfo = wHandle_Share(resultInfo);
    auto sharedMsg = wHandle_Share(msgInfo);
    ZU_CHECK(ZuCore::ResultSet_Add(set, msgInfo, resultInfo, 0));
    static_cast<void>(sharedInfo.release()); // the set's by now
    static_cast<void>(sharedMsg.release());
}

} // namespace

ControlScanResults::ControlScanResults(ZuCore::ResultHub* usedResultHub, void* usedAllocator)
    : allocator(usedAllocator), resultHub(usedResultHub)
{
    ZU_CHECK(wLock_Construct(&lock, nullptr));
    if (resultHub == nullptr)
    {
        ZU_LOG_WARNING("No resultHub to listen to.");
        return;
    }
    auto const handler = hubGate.Bind(std::function<void(void*)>([this](void* set) { ProcessResultSet(set); }));
    hubCallbackId = resultHub->ShouldUseSyncHandler() ? resultHub->AddResultHandler(handler)
                                                      : resultHub->AddAsyncResultHandler(handler);
    ZU_LOG_INFO("ControlScanResults constructed.");
}

ControlScanResults::~ControlScanResults()
{
    if (resultHub != nullptr)
    {
        ZU_GUARD_DESTRUCTOR([this] {
            if (resultHub->ShouldUseSyncHandler())
            {
                resultHub->RemoveResultHandler(hubCallbackId);
            }
            else
            {
                resultHub->RemoveAsyncResultHandler(hubCallbackId);
            }
        });
    }
    hubGate.Close();
}

std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId>
ControlScanResults::AddResultHandler(std::function<void(void*)> handler, ZuEthernetProtocol protocol)
{
    std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId> id;
    {
        Zu::Locker const guard(lock);
        if (!dispatchers.contains(protocol))
        {
            dispatchers.emplace(protocol,
                                std::make_shared<ControlScanResultsDispatcher>(allocator, FindCounters(protocol)));
        }
        auto const position = dispatchers.find(protocol);
        if (position == dispatchers.end())
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "Failed to add new dispatcher of protocol:%d.",
                     static_cast<int32>(protocol));
        }
        id = {protocol, position->second->AddResultHandler(std::move(handler))};
    }
    ZU_LOG_INFO("ControlScanResults::AddResultHandler new handler registered for protocol:%d",
                static_cast<int32>(protocol));
    return id;
}

void ControlScanResults::RemoveResultHandler(std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId> id)
{
    int32 const protocol = static_cast<int32>(id.first);
    {
        Zu::Locker const guard(lock);
        auto const position = dispatchers.find(id.first);
        if (position == dispatchers.end())
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "Failed to find dispatcher of protocol:%d.", protocol);
        }
        position->second->RemoveResultHandler(id.second);
        if (position->second->ResultHandlerCount() == 0)
        {
            dispatchers.erase(position); // joins its thread
            ZU_LOG_INFO("ControlScanResults::dispatcher removed for protocol:%d", protocol);
        }
    }
    ZU_LOG_INFO("ControlScanResults::RemoveResultHandler handler removed for protocol:%d", protocol);
}

void ControlScanResults::ProcessResultSet(void* resultSet)
{
    auto* const set = static_cast<ZuCore::ResultSet>(resultSet);
    uint64 const count = ZuCore::ResultSet_Count(set);
    if (count == 0)
    {
        return;
    }
    setCount.fetch_add(1, std::memory_order_relaxed);
    itemCount.fetch_add(count, std::memory_order_relaxed);
    Zu::Locker const guard(lock);
    for (auto const& entry : dispatchers)
    {
        std::shared_ptr<ScanOutputMap const> const wanted = CurrentMap(entry.first);
        if (wanted == nullptr || wanted->Empty() || entry.second->GetClientCount() == 0)
        {
            continue;
        }
        if (ZuCore::ResultSet_FromLiveSimulation(set))
        {
            ZU_LOG_INFO("Live simulation data filtered out.");
            continue;
        }
        ZuCore::ResultSet reduced = nullptr;
        ZU_CHECK(ZuCore::ResultSet_Construct(&reduced, allocator));
        wHandle<ZuCore::ResultSetObject> const owned(reduced);
        CopyWanted(*wanted, set, reduced);
        if (uint64 const wantedCount = ZuCore::ResultSet_Count(reduced); wantedCount > 0)
        {
            itemsHandedOnCount.fetch_add(wantedCount, std::memory_order_relaxed);
            Dispatch(entry.second, reduced);
        }
    }
}

void ControlScanResults::UpdateOutputMap(ZuEthernetProtocol protocol, std::vector<std::string> dataSourceIds)
{
    ScanOutputMap::Texts texts;
    for (std::string const& id : dataSourceIds)
    {
        AddToMap(texts, id);
    }
    std::shared_ptr<ScanOutputMap const> map = std::make_shared<ScanOutputMap const>(std::move(texts));
    std::scoped_lock const guard(outputMapsLock);
    FindMap(protocol).swap(map);
}

void ControlScanResults::UpdateClientCount(ZuEthernetProtocol protocol, uint64 count)
{
    Zu::Locker const guard(lock);
    auto const position = dispatchers.find(protocol);
    if (position == dispatchers.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "Failed to find dispatcher of protocol:%d.", static_cast<int32>(protocol));
    }
    position->second->SetClientCount(count);
}

uint64 ControlScanResults::SetCount() const
{
    return setCount.load(std::memory_order_relaxed);
}

uint64 ControlScanResults::ItemCount() const
{
    return itemCount.load(std::memory_order_relaxed);
}

uint64 ControlScanResults::ItemsHandedOnCount() const
{
    return itemsHandedOnCount.load(std::memory_order_relaxed);
}

std::shared_ptr<DispatchCounters const> ControlScanResults::CountersOf(ZuEthernetProtocol protocol)
{
    return FindCounters(protocol);
}

std::shared_ptr<ScanOutputMap const>& ControlScanResults::FindMap(ZuEthernetProtocol protocol)
{
    outputMaps.try_emplace(protocol);
    auto const position = outputMaps.find(protocol);
    if (position == outputMaps.end())
    {
        ZU_LOG_ERROR("Failed to add new map of protocol:%s", std::to_string(static_cast<int32>(protocol)).c_str());
        ZU_THROW(Zu::Status::FAILURE);
    }
    return position->second;
}

void ControlScanResults::AddToMap(ScanOutputMap::Texts& map, std::string const& dataSourceId)
{
    map.try_emplace(ScanOutputMap::NumericId(dataSourceId), dataSourceId); // of two with one number the first stays
}

void ControlScanResults::RemoveFromMap(ScanOutputMap::Texts& map, std::string const& dataSourceId)
{
    map.erase(ScanOutputMap::NumericId(dataSourceId));
}

std::shared_ptr<ScanOutputMap const> ControlScanResults::CurrentMap(ZuEthernetProtocol protocol)
{
    std::scoped_lock const guard(outputMapsLock);
    auto const position = outputMaps.find(protocol);
    return position != outputMaps.end() ? position->second : nullptr;
}

std::shared_ptr<DispatchCounters> ControlScanResults::FindCounters(ZuEthernetProtocol protocol)
{
    std::scoped_lock const guard(countersLock);
    auto& counters = dispatchCounters[protocol];
    if (counters == nullptr)
    {
        counters = std::make_shared<DispatchCounters>();
    }
    return counters;
}

void ControlScanResults::CopyWanted(ScanOutputMap const& wanted, ZuCore::ResultSet from, ZuCore::ResultSet into)
{
    uint64 const count = ZuCore::ResultSet_Count(from);
    for (uint64 i = 0; i < count; ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(from, i);
        ZuCore::ResultInfo const resultInfo = ZuCore::ResultItem_ResultInfo(item);
        if (wanted.Contains(ZuCore::ResultInfo_NumericId(resultInfo)))
        {
            ShareInto(into, ZuCore::ResultItem_MsgInfo(item), resultInfo);
        }
    }
}

void ControlScanResults::Dispatch(std::shared_ptr<IControlScanResultsDispatcher> const& dispatcher, void* resultSet)
{
    dispatcher->AddResult(resultSet); // takes a reference of its own
}

} // namespace ZuControl

#include "ZuControl/Control/ControlScanResults.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuControl/Control/ControlScanResultsDispatcher.h"
#include "ZuControl/Control/ReducedSets.h"
#include "ZuCore/ResultHub.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <utility>

namespace ZuControl
{

ControlScanResults::ControlScanResults(ZuCore::ResultHub* usedResultHub, void* usedAllocator)
    : allocator(usedAllocator), resultHub(usedResultHub)
{
    ZU_CHECK(wLock_Construct(&lock, nullptr));
    if (resultHub == nullptr)
    {
        ZU_LOG_WARNING("No resultHub to listen to.");
        return;
    }
    auto const handler = [this](void* set) { ProcessResultSet(set); };
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
            groupedChangeCount = 0;
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
            groups.clear(); // they refer to the dispatcher
            groupedChangeCount = 0;
            dispatchers.erase(position); // joins the dispatcher's thread
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
    RefreshGroups();
    for (Group const& group : groups)
    {
        ZU_CHECK(Distribute(group, set)); // the protocols before a failure have their set
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
    Zu::MutexLock const guard(outputMapsLock);
    FindMap(protocol).swap(map);
    outputMapsChangeCount.fetch_add(1, std::memory_order_relaxed); // read again under this lock before the maps are
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
    map.try_emplace(ScanOutputMap::NumericId(dataSourceId), dataSourceId); // of two equal numbers the first stays
}

void ControlScanResults::RemoveFromMap(ScanOutputMap::Texts& map, std::string const& dataSourceId)
{
    map.erase(ScanOutputMap::NumericId(dataSourceId));
}

std::shared_ptr<DispatchCounters> ControlScanResults::FindCounters(ZuEthernetProtocol protocol)
{
    Zu::MutexLock const guard(countersLock);
    auto& counters = dispatchCounters[protocol];
    if (counters == nullptr)
    {
        counters = std::make_shared<DispatchCounters>();
    }
    return counters;
}

void ControlScanResults::RefreshGroups()
{
    uint64 const changeCount = outputMapsChangeCount.load(std::memory_order_relaxed); // read before the maps
    if (changeCount == groupedChangeCount)
    {
        return;
    }
    auto const maps = CurrentMaps();
    groups.clear();
    std::vector<ScanOutputMap const*> wanted;
    auto receivers = decltype(Group::receivers)();
    std::vector<Group> newGroups;
    auto const close = [&] {
        newGroups.push_back({std::exchange(receivers, {}), ScanOutputPlan(wanted)});
        wanted.clear();
    };
    for (auto const& entry : dispatchers)
    {
        auto const map = maps.find(entry.first);
        if (map == maps.end() || map->second->Empty())
        {
            continue;
        }
        wanted.push_back(map->second.get());
        receivers.push_back(&entry.second);
        if (wanted.size() == ScanOutputPlan::MAX_RECEIVERS)
        {
            close();
        }
    }
    if (!wanted.empty())
    {
        close();
    }
    groups.swap(newGroups);
    groupedChangeCount = changeCount;
}

std::map<ZuEthernetProtocol, std::shared_ptr<ScanOutputMap const>> ControlScanResults::CurrentMaps()
{
    Zu::MutexLock const guard(outputMapsLock);
    return outputMaps;
}

ScanOutputPlan::Receivers ControlScanResults::ListenersOf(Group const& group, ZuCore::ResultSet set)
{
    ScanOutputPlan::Receivers listeners = 0;
    for (uint64 i = 0; i < group.receivers.size(); ++i)
    {
        if ((*group.receivers[i])->GetClientCount() == 0)
        {
            continue;
        }
        if (ZuCore::ResultSet_FromLiveSimulation(set))
        {
            ZU_LOG_LINE(Zu::Logging::FLAGS_INFO, "ZuControl::ControlScanResults::ProcessResultSet",
                        "Live simulation data filtered out.");
            continue;
        }
        listeners |= ScanOutputPlan::Receivers{1} << i;
    }
    return listeners;
}

wStatus ControlScanResults::Distribute(Group const& group, ZuCore::ResultSet set)
{
    ScanOutputPlan::Receivers const listeners = ListenersOf(group, set);
    if (listeners == 0)
    {
        return Zu::Status::SUCCESS;
    }
    ReducedSets const reduced(set, group.plan, listeners, allocator);
    for (uint64 i = 0; i < group.receivers.size(); ++i)
    {
        bool const isServed = (reduced.Served() >> i & 1) != 0;
        uint64 const wantedCount = isServed ? ZuCore::ResultSet_Count(reduced.At(i)) : 0;
        if (wantedCount > 0)
        {
            itemsHandedOnCount.fetch_add(wantedCount, std::memory_order_relaxed);
            Dispatch(*group.receivers[i], reduced.At(i));
        }
    }
    return reduced.Status();
}

void ControlScanResults::Dispatch(std::shared_ptr<IControlScanResultsDispatcher> const& dispatcher, void* resultSet)
{
    dispatcher->AddResult(resultSet); // the dispatcher takes its own reference
}

} // namespace ZuControl

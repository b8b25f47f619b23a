#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/Control/IControlScanResultsDispatcher.h"
#include "ZuControl/Control/ScanOutputPlan.h"
#include "ZuControl/Export.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wLock.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZuCore
{
class ResultHub;
}

namespace ZuControl
{

class IControlScanResultsDispatcher;

/// Gives each protocol its own reduced copy of every result set: the items with the data sources that the protocol
/// wants, while it has a client.
///
/// The fan-out copies no result data and waits for no handler: each protocol has a dispatcher, which hands over the
/// sets on a thread of its own. `ProcessResultSet` runs on the thread that publishes the set, or on a thread of the
/// hub.
class ZUCONTROL_API ControlScanResults final : public IControlScanResults
{
public:
    /// A null hub is allowed: sets then come by direct calls only. The hub outlives the object.
    ControlScanResults(ZuCore::ResultHub* usedResultHub, void* usedAllocator);
    ~ControlScanResults();

    ControlScanResults(ControlScanResults const&) = delete;
    ControlScanResults& operator=(ControlScanResults const&) = delete;

    std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId> AddResultHandler(std::function<void(void*)> handler,
                                                                                 ZuEthernetProtocol protocol) override;
    void RemoveResultHandler(std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId> id) override;
    void ProcessResultSet(void* resultSet) override;
    void UpdateOutputMap(ZuEthernetProtocol protocol, std::vector<std::string> dataSourceIds) override;
    void UpdateClientCount(ZuEthernetProtocol protocol, uint64 count) override;

    // Counters. Any thread may call.
    uint64 SetCount() const;  ///< incoming sets that are not empty
    uint64 ItemCount() const; ///< items in them
    uint64 ItemsHandedOnCount() const;

    /// The counters of all dispatchers that the protocol has had; zeros before the first.
    std::shared_ptr<DispatchCounters const> CountersOf(ZuEthernetProtocol protocol);

private:
    friend class ControlScanResultsTest; // only the test removes a source from a map

    using Dispatchers = std::map<ZuEthernetProtocol, std::shared_ptr<IControlScanResultsDispatcher>>;

    std::shared_ptr<ScanOutputMap const>& FindMap(ZuEthernetProtocol protocol) ZU_REQUIRES(outputMapsLock);
    static void AddToMap(ScanOutputMap::Texts& map, std::string const& dataSourceId);
    static void RemoveFromMap(ScanOutputMap::Texts& map, std::string const& dataSourceId);
    std::shared_ptr<DispatchCounters> FindCounters(ZuEthernetProtocol protocol);

    /// Protocols that have a handler and want data sources, by ascending number, with the plan of their data sources.
    struct Group
    {
        std::vector<std::shared_ptr<IControlScanResultsDispatcher> const*> receivers; // of `dispatchers`
        ScanOutputPlan plan;
    };

    void RefreshGroups() ZU_REQUIRES(lock);
    std::map<ZuEthernetProtocol, std::shared_ptr<ScanOutputMap const>> CurrentMaps();
    static ScanOutputPlan::Receivers ListenersOf(Group const& group, ZuCore::ResultSet set);
    wStatus Distribute(Group const& group, ZuCore::ResultSet set) ZU_REQUIRES(lock);
    static void Dispatch(std::shared_ptr<IControlScanResultsDispatcher> const& dispatcher, void* resultSet);

    void* const allocator;
    ZuCore::ResultHub* const resultHub;
    Zu::Event<void*>::CallbackId hubCallbackId;

    // A leaf, held only to copy or change a pointer, so that a change of a map waits for no delivery. A map itself
    // never changes: a new map replaces the old one.
    Zu::Mutex outputMapsLock;
    std::map<ZuEthernetProtocol, std::shared_ptr<ScanOutputMap const>> outputMaps ZU_GUARDED_BY(outputMapsLock);
    std::atomic<uint64> outputMapsChangeCount{1}; // incremented after each change

    std::atomic<uint64> setCount{0};
    std::atomic<uint64> itemCount{0};
    std::atomic<uint64> itemsHandedOnCount{0};

    // A leaf. Entries are never removed.
    Zu::Mutex countersLock;
    std::map<ZuEthernetProtocol, std::shared_ptr<DispatchCounters>> dispatchCounters ZU_GUARDED_BY(countersLock);

    // Order: lock, then a dispatcher's own locks, outputMapsLock or countersLock. The thread of a dispatcher that is
    // removed is joined under it, so a result handler must not call an operation that takes it.
    wLock lock;
    Dispatchers dispatchers ZU_GUARDED_BY(lock);

    // Built from `dispatchers` and `outputMaps` when a set arrives after a change; one group for each 64 protocols.
    std::vector<Group> groups ZU_GUARDED_BY(lock);
    uint64 groupedChangeCount ZU_GUARDED_BY(lock) = 0; // of the output maps at that time; 0: rebuild
};

} // namespace ZuControl

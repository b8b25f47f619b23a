#pragma once

#include "ZuApi/CallbackGate.h"
#include "ZuApi/Event.h"
#include "ZuControl/Control/DispatchCounters.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/Control/ReducedSets.h"
#include "ZuControl/Control/ScanOutputMap.h"
#include "ZuControl/Control/ScanOutputPlan.h"
#include "ZuControl/Export.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wLock.h"
#include "wApi/wMutex.h"
#include "wApi/wThreadSafety.h"

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

/// Gives each protocol its own reduced copy of every result set: the items whose data source it wants, while it has a client.
///
/// No result data is copied and no handler is waited for: a dispatcher for each protocol hands the sets over on a thread of
/// its own. `ProcessResultSet` runs on the hub's publishing thread, or on the hub's own.
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

    // What has been counted so far. Any thread may ask.
    uint64 SetCount() const;  ///< sets that came and held anything
    uint64 ItemCount() const; ///< in them
    uint64 ItemsHandedOnCount() const;

    /// Those of the dispatchers that the protocol has had; zeros while it has had none.
    std::shared_ptr<DispatchCounters const> CountersOf(ZuEthernetProtocol protocol);

private:
    friend class ControlScanResultsTest; // a source is taken out of a map by nobody else

    using Dispatchers = std::map<ZuEthernetProtocol, std::shared_ptr<IControlScanResultsDispatcher>>;

    std::shared_ptr<ScanOutputMap const>& FindMap(ZuEthernetProtocol protocol) ZU_REQUIRES(outputMapsLock);
    static void AddToMap(ScanOutputMap::Texts& map, std::string const& dataSourceId);
    static void RemoveFromMap(ScanOutputMap::Texts& map, std::string const& dataSourceId);
    std::shared_ptr<DispatchCounters> FindCounters(ZuEthernetProtocol protocol);

    /// Protocols that have a handler and want something, by ascending number, and which of them wants what.
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
    Zu::CallbackGate hubGate; // the hub may have been asked for the other kind of handler when this one is removed

    // Leaf lock, held for the copy or the change of a pointer and nothing else: whoever changes a map waits for no delivery.
    // The maps themselves never change; a new one takes the place of the old one.
    Zu::Mutex outputMapsLock;
    std::map<ZuEthernetProtocol, std::shared_ptr<ScanOutputMap const>> outputMaps ZU_GUARDED_BY(outputMapsLock);
    std::atomic<uint64> outputMapsChangeCount{1}; // grows with each change, behind it

    std::atomic<uint64> setCount{0};
    std::atomic<uint64> itemCount{0};
    std::atomic<uint64> itemsHandedOnCount{0};

    // A leaf. What is once in the map stays there.
    Zu::Mutex countersLock;
    std::map<ZuEthernetProtocol, std::shared_ptr<DispatchCounters>> dispatchCounters ZU_GUARDED_BY(countersLock);

    // Order: lock, then a dispatcher's own locks, outputMapsLock or countersLock. A dispatcher that goes is joined under it, so that no
    // result handler may call what takes it.
    wLock lock;
    Dispatchers dispatchers ZU_GUARDED_BY(lock);

    // Made from the two tables above when a set comes and they have changed; more than one for a great many protocols.
    std::vector<Group> groups ZU_GUARDED_BY(lock);
    uint64 groupedChangeCount ZU_GUARDED_BY(lock) = 0;           // of the output maps when that was; 0: to be made anew
    std::vector<ReducedSets::Picked> picked ZU_GUARDED_BY(lock); // memory to work in
};

} // namespace ZuControl

#pragma once

#include "ZuControl/Control/IControlScanResultsDispatcher.h"
#include "ZuControl/Export.h"
#include "wApi/wArrayList.h"
#include "wApi/wLock.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"

#include <atomic>
#include <memory>

namespace ZuControl
{

/// A double buffer between the result fan-out and one protocol.
///
/// Sets gather in one list while the thread "CtrlScnRstDisp" hands the other list to the handlers; every 2,000
/// microseconds the lists are swapped. The thread polls and is not signalled: a set waits for two passes at most, and
/// the sets between two passes arrive as one batch. Sets are dropped only by `Stop`. A handler that throws ends the
/// thread for good; sets then gather until `Stop`.
class ZUCONTROL_API ControlScanResultsDispatcher final : public IControlScanResultsDispatcher
{
public:
    /// Starts at once, and counts batches and sets in `usedCounters`. Throws the platform's status when a lock, a list
    /// or the thread cannot be made.
    explicit ControlScanResultsDispatcher(
        void* usedAllocator, std::shared_ptr<DispatchCounters> usedCounters = std::make_shared<DispatchCounters>());
    ~ControlScanResultsDispatcher() override;

    ControlScanResultsDispatcher(ControlScanResultsDispatcher const&) = delete;
    ControlScanResultsDispatcher& operator=(ControlScanResultsDispatcher const&) = delete;

    Zu::Event<void*>::CallbackId AddResultHandler(std::function<void(void*)> handler) override;
    void RemoveResultHandler(Zu::Event<void*>::CallbackId id) override;
    void AddResult(void* resultSet) override;
    uint64 ResultHandlerCount() override;
    void Start() override;
    void Stop() override;
    void SetClientCount(uint64 count) override;
    uint64 GetClientCount() override;

private:
    static int RunThread(void* object);
    void ProcessingLoop();
    void Dispatch();

    uint64 const sleepTimeUsec = 2000;
    uint64 const initialCapacity = 100; // result sets a list
    void* const allocator;
    std::shared_ptr<DispatchCounters> const counters;

    wThread thread;

    // Handlers run under it. Never held together with listLock.
    wLock handlerLock;
    Zu::Event<void*> resultEvent ZU_GUARDED_BY(handlerLock);

    // A leaf, held only for an append or a swap.
    wLock listLock;
    wArrayList writeList ZU_GUARDED_BY(listLock);
    uint64 writeSinceUsec ZU_GUARDED_BY(listLock) = 0; // time of the first set in `writeList`; 0 while it is empty
    wArrayList readList; // used by the thread alone; swapped with `writeList` under listLock
    uint64 readSinceUsec = 0;

    std::atomic<bool> running{false}; // seen by the thread after one pause at the latest
    std::atomic<uint64> clientCount{0};
};

} // namespace ZuControl

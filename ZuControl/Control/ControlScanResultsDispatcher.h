#pragma once

#include "ZuControl/Control/DispatchCounters.h"
#include "ZuControl/Control/IControlScanResultsDispatcher.h"
#include "ZuControl/Export.h"
#include "wApi/wArrayList.h"
#include "wApi/wLock.h"
#include "wApi/wThread.h"
#include "wApi/wThreadSafety.h"

#include <atomic>
#include <memory>

namespace ZuControl
{

/// A double buffer between the result path and one protocol.
///
/// Sets gather in one list while the thread "CtrlScnRstDisp" hands the other one to the handlers; every 2,000 microseconds
/// the lists change places. Nobody signals: a set waits for two passes at most, and all that came between two passes
/// arrives as one batch. Nothing is dropped but at `Stop`. A handler that throws ends the thread for good; sets then gather
/// until `Stop`.
class ZUCONTROL_API ControlScanResultsDispatcher final : public IControlScanResultsDispatcher
{
public:
    /// Starts at once, and counts what it does in `usedCounters`. Throws the platform's status when lock, list or thread
    /// cannot be made.
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

    // Leaf lock, held for an append or a swap and nothing longer.
    wLock listLock;
    wArrayList writeList ZU_GUARDED_BY(listLock);
    uint64 writeSinceUsec ZU_GUARDED_BY(listLock) = 0; // when the list that is not empty got its first set
    wArrayList readList; // the thread's own; it changes places with the other one under listLock
    uint64 readSinceUsec = 0;

    std::atomic<bool> running{false}; // seen by the thread after one pause at the latest
    std::atomic<uint64> clientCount{0};
};

} // namespace ZuControl

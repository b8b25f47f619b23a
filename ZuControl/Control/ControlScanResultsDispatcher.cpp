#include "ZuControl/Control/ControlScanResultsDispatcher.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wObject.h"
#include "wApi/wTime.h"

#include <utility>

namespace ZuControl
{

ControlScanResultsDispatcher::ControlScanResultsDispatcher(void* usedAllocator,
                                                           std::shared_ptr<DispatchCounters> usedCounters)
    : allocator(usedAllocator), counters(std::move(usedCounters))
{
    ZU_CHECK(wLock_Construct(&handlerLock, nullptr));
    ZU_CHECK(wLock_Construct(&listLock, nullptr));
    {
        Zu::Locker const guard(listLock);
        ZU_CHECK(wArrayList_Construct(&writeList, &ZuCore::ResultSet_Class, initialCapacity, allocator));
    }
    ZU_CHECK(wArrayList_Construct(&readList, &ZuCore::ResultSet_Class, initialCapacity, allocator));
    Start();
}

ControlScanResultsDispatcher::~ControlScanResultsDispatcher()
{
    try
    {
        Stop();
    }
    catch (std::exception const& exception)
    {
        Zu::Exception::LogException(exception, 0);
    }
    wThread_Destroy(&thread); // ends a thread that `Stop` could not join, before the lists are destroyed
}

Zu::Event<void*>::CallbackId ControlScanResultsDispatcher::AddResultHandler(std::function<void(void*)> handler)
{
    Zu::Locker const guard(handlerLock);
    return resultEvent.Add(std::move(handler));
}

void ControlScanResultsDispatcher::RemoveResultHandler(Zu::Event<void*>::CallbackId id)
{
    Zu::Locker const guard(handlerLock);
    resultEvent.Remove(id);
}

void ControlScanResultsDispatcher::AddResult(void* resultSet)
{
    Zu::Locker const guard(listLock);
    ZU_CHECK(wArrayList_Add(writeList, resultSet));
    wObject_Share(resultSet); // the list's reference
    if (writeSinceUsec == 0)
    {
        writeSinceUsec = wTime_NowUsec();
    }
}

uint64 ControlScanResultsDispatcher::ResultHandlerCount()
{
    Zu::Locker const guard(handlerLock);
    return resultEvent.Count();
}

void ControlScanResultsDispatcher::Start()
{
    if (running.load(std::memory_order_relaxed))
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    running.store(true, std::memory_order_relaxed);
    try
    {
        ZU_CHECK(wThread_Construct(&thread));
        ZU_CHECK(wThread_SetName(thread, "CtrlScnRstDisp"));
        ZU_CHECK(wThread_Start(thread, RunThread, this));
    }
    catch (...)
    {
        wThread_Destroy(&thread);                        // so that a later start can construct it
        running.store(false, std::memory_order_relaxed); // there is no thread for `Stop` to join
        throw;
    }
}

void ControlScanResultsDispatcher::Stop()
{
    if (!running.load(std::memory_order_relaxed))
    {
        return;
    }
    running.store(false, std::memory_order_relaxed);
    int exitCode = 0;
    ZU_CHECK(wThread_Join(thread, wTIMEOUT_INFINITE, &exitCode));
    counters->hasDied.store(false, std::memory_order_relaxed); // a stopped dispatcher is not reported as dead
    if (exitCode != Zu::Status::SUCCESS)
    {
        ZU_LOG_INFO("ControlScanResultsDispatcher thread stopped with error:%d", exitCode);
    }
    ZU_CHECK(wThread_Destroy(&thread));
    {
        Zu::Locker const guard(listLock);
        ZU_CHECK(wArrayList_Purge(writeList)); // drops the sets that are not delivered
        writeSinceUsec = 0;
    }
    ZU_CHECK(wArrayList_Purge(readList));
}

void ControlScanResultsDispatcher::SetClientCount(uint64 count)
{
    clientCount.store(count, std::memory_order_relaxed);
}

uint64 ControlScanResultsDispatcher::GetClientCount()
{
    return clientCount.load(std::memory_order_relaxed);
}

int ControlScanResultsDispatcher::RunThread(void* object)
{
    auto& self = *static_cast<ControlScanResultsDispatcher*>(object);
    try
    {
        self.ProcessingLoop();
        return Zu::Status::SUCCESS;
    }
    catch (...)
    {
        int const status = Zu::CaughtStatus();
        ZU_LOG_CAUGHT("EXCEPTION THROWN: ");
        self.counters->busySinceUsec.store(0, std::memory_order_relaxed);
        self.counters->hasDied.store(true, std::memory_order_relaxed);
        return status;
    }
}

void ControlScanResultsDispatcher::ProcessingLoop()
{
    while (running.load(std::memory_order_relaxed))
    {
        Dispatch();
        wThread_Sleep(sleepTimeUsec);
    }
}

void ControlScanResultsDispatcher::Dispatch()
{
    if (uint64 const count = wArrayList_Count(readList); count > 0)
    {
        counters->batches.fetch_add(1, std::memory_order_relaxed);
        counters->resultSets.fetch_add(count, std::memory_order_relaxed);
        uint64 const now = wTime_NowUsec();
        counters->ageUsec.fetch_add(now - readSinceUsec, std::memory_order_relaxed);
        counters->busySinceUsec.store(now, std::memory_order_relaxed);
        {
            Zu::Locker const guard(handlerLock);
            resultEvent.Fire(&readList);
        }
        counters->busySinceUsec.store(0, std::memory_order_relaxed);
        auto const* const newest = static_cast<ZuCore::ResultSetObject const*>(wArrayList_At(readList, count - 1));
        counters->lastDelivery.Take(*newest, wTime_NowUsec());
        ZU_CHECK(wArrayList_Purge(readList));
    }
    Zu::Locker const guard(listLock);
    std::swap(readList, writeList);
    readSinceUsec = std::exchange(writeSinceUsec, 0);
}

} // namespace ZuControl

#include "wApi/wMsgQueue.h"

#include "wApi/wMutex.h"
#include "wApi/wObject.h"
#include "wApi/wTime.h"
#include "wApi/wTypes.h"

#include <new>
#include <utility>

wMsgQueue::~wMsgQueue()
{
    DropAll();
}

void wMsgQueue::DropAll()
{
    std::deque<void*> dropped;
    DropHandler handler = nullptr;
    void* context = nullptr;
    {
        Zu::MutexLock const guard(lock);
        dropped.swap(items);
        handler = dropHandler;
        context = dropContext;
    }
    notFull.NotifyAll();
    for (void* const item : dropped)
    {
        if (handler != nullptr)
        {
            handler(item, context);
        }
        wObject_Release(item);
    }
}

wStatus wMsgQueue_Construct(wMsgQueue* queue, wClass const* itemClass, uint64 /*capacity*/, void* /*allocator*/)
{
    if (queue == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (queue->constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    queue->itemClass = itemClass;
    queue->constructed = true;
    return Zu::Status::SUCCESS;
}

wStatus wMsgQueue_SetDropHandler(wMsgQueue& queue, wMsgQueue::DropHandler handler, void* context)
{
    if (!queue.constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    Zu::MutexLock const guard(queue.lock);
    queue.dropHandler = handler;
    queue.dropContext = context;
    return Zu::Status::SUCCESS;
}

wStatus wMsgQueue_SetMaxCount(wMsgQueue& queue, uint64 maxCount)
{
    if (!queue.constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    if (maxCount == 0)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    {
        Zu::MutexLock const guard(queue.lock);
        queue.maxCount = maxCount;
    }
    queue.notFull.NotifyAll();
    return Zu::Status::SUCCESS;
}

wStatus wMsgQueue_AddEx(wMsgQueue& queue, void* item, uint64 timeoutUsec)
{
    if (!queue.constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    if (item == nullptr || (queue.itemClass != nullptr && !wObject_Is(item, *queue.itemClass)))
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    try
    {
        Zu::MutexLock const guard(queue.lock);
        auto const hasRoom = [&queue]() ZU_REQUIRES(queue.lock) { return queue.items.size() < queue.maxCount; };
        if (!hasRoom() && !queue.notFull.WaitUntil(queue.lock, wTime_AfterUsec(timeoutUsec), hasRoom))
        {
            return Zu::Status::FULL;
        }
        queue.items.push_back(item);
    }
    catch (std::bad_alloc const&)
    {
        return Zu::Status::FAILURE;
    }
    queue.notEmpty.NotifyOne();
    return Zu::Status::SUCCESS;
}

wStatus wMsgQueue_Remove(wMsgQueue& queue, void** item, uint64 timeoutUsec)
{
    if (!queue.constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    if (item == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    {
        Zu::MutexLock const guard(queue.lock);
        auto const hasItem = [&queue]() ZU_REQUIRES(queue.lock) { return !queue.items.empty(); };
        if (!hasItem() && !queue.notEmpty.WaitUntil(queue.lock, wTime_AfterUsec(timeoutUsec), hasItem))
        {
            return Zu::Status::TIME_OUT;
        }
        *item = queue.items.front();
        queue.items.pop_front();
    }
    queue.notFull.NotifyOne();
    return Zu::Status::SUCCESS;
}

wStatus wMsgQueue_PurgeEx(wMsgQueue& queue, uint32 option)
{
    if (!queue.constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    if (option != wMsgQueue::PURGE_DROP)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    queue.DropAll();
    return Zu::Status::SUCCESS;
}

uint64 wMsgQueue_Count(wMsgQueue const& queue)
{
    Zu::MutexLock const guard(queue.lock);
    return queue.items.size();
}

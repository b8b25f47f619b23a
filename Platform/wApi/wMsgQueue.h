#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <deque>

struct wClass;

/// A queue of counted objects between threads, first in, first out.
///
/// It owns a reference to each item that it holds. Any thread may call the operations once it is made; whoever ends it sees
/// to it that nobody waits. The destructor drops what is left. The drop handler runs on the thread that drops, without a
/// lock of the queue.
class ZUAPI_API wMsgQueue
{
public:
    /// Told of an item that nobody will remove; the queue gives up its reference behind it.
    using DropHandler = void (*)(void* item, void* context);

    static constexpr uint64 UNBOUNDED = ~uint64{0};
    static constexpr uint32 PURGE_DROP = 2; ///< option of a purge: every item goes through the drop handler

    wMsgQueue() noexcept = default;
    ~wMsgQueue();

    wMsgQueue(wMsgQueue const&) = delete;
    wMsgQueue& operator=(wMsgQueue const&) = delete;

private:
    friend ZUAPI_API wStatus wMsgQueue_Construct(wMsgQueue* queue, wClass const* itemClass, uint64 capacity,
                                                 void* allocator);
    friend ZUAPI_API wStatus wMsgQueue_SetDropHandler(wMsgQueue& queue, DropHandler handler, void* context);
    friend ZUAPI_API wStatus wMsgQueue_SetMaxCount(wMsgQueue& queue, uint64 maxCount);
    friend ZUAPI_API wStatus wMsgQueue_AddEx(wMsgQueue& queue, void* item, uint64 timeoutUsec);
    friend ZUAPI_API wStatus wMsgQueue_Remove(wMsgQueue& queue, void** item, uint64 timeoutUsec);
    friend ZUAPI_API wStatus wMsgQueue_PurgeEx(wMsgQueue& queue, uint32 option);
    friend ZUAPI_API uint64 wMsgQueue_Count(wMsgQueue const& queue);

    void DropAll();

    wClass const* itemClass = nullptr;
    bool constructed = false;

    mutable Zu::Mutex lock; // a leaf: no handler runs under it
    Zu::CondVar notEmpty;
    Zu::CondVar notFull;
    std::deque<void*> items ZU_GUARDED_BY(lock);
    uint64 maxCount ZU_GUARDED_BY(lock) = UNBOUNDED;
    DropHandler dropHandler ZU_GUARDED_BY(lock) = nullptr;
    void* dropContext ZU_GUARDED_BY(lock) = nullptr;
};

/// Makes `queue` ready for items of `itemClass`, null for objects of any class. The capacity is a hint, the allocator is
/// passed through. The queue is unbounded until a maximum is set. -1000 for one that is made already.
ZUAPI_API wStatus wMsgQueue_Construct(wMsgQueue* queue, wClass const* itemClass, uint64 capacity, void* allocator);

/// Who is told of each item that is dropped; null for nobody.
ZUAPI_API wStatus wMsgQueue_SetDropHandler(wMsgQueue& queue, wMsgQueue::DropHandler handler, void* context);

/// How many items the queue takes from now on, at least 1 (else -997). What it holds beyond that stays until it is removed.
ZUAPI_API wStatus wMsgQueue_SetMaxCount(wMsgQueue& queue, uint64 maxCount);

/// Puts `item` at the end and takes over one reference from the caller. Waits for room until `timeoutUsec` microseconds have
/// passed: then -977, and the reference stays the caller's, as after any failure. -997 for null or an item of another class.
ZUAPI_API wStatus wMsgQueue_AddEx(wMsgQueue& queue, void* item, uint64 timeoutUsec);

/// Takes the first item and hands its reference to the caller. -993 when `timeoutUsec` microseconds have passed without
/// one; `*item` is then left alone.
ZUAPI_API wStatus wMsgQueue_Remove(wMsgQueue& queue, void** item, uint64 timeoutUsec);

/// Empties the queue through the drop handler: the option is PURGE_DROP (else -997).
ZUAPI_API wStatus wMsgQueue_PurgeEx(wMsgQueue& queue, uint32 option);

/// Items at this moment.
ZUAPI_API uint64 wMsgQueue_Count(wMsgQueue const& queue);

#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <deque>

struct wClass;

/// A queue of counted objects between threads, first in, first out.
///
/// The queue owns one reference to each item in it. Once it is constructed, any thread may call the operations. Its
/// owner must make sure that no thread uses the queue or waits on it when it is destroyed. The destructor drops the
/// remaining items. The drop handler runs on the thread that drops, and the queue holds no lock during the call.
class ZUAPI_API wMsgQueue
{
public:
    /// Called for each item that leaves the queue without being removed. The queue releases its reference after the
    /// call.
    using DropHandler = void (*)(void* item, void* context);

    static constexpr uint64 UNBOUNDED = ~uint64{0};
    static constexpr uint32 PURGE_DROP = 2; ///< option of a purge: the queue drops every item, through the drop handler

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

    mutable Zu::Mutex lock; // a leaf: the drop handler does not run under it
    Zu::CondVar notEmpty;
    Zu::CondVar notFull;
    std::deque<void*> items ZU_GUARDED_BY(lock);
    uint64 maxCount ZU_GUARDED_BY(lock) = UNBOUNDED;
    DropHandler dropHandler ZU_GUARDED_BY(lock) = nullptr;
    void* dropContext ZU_GUARDED_BY(lock) = nullptr;
};

/// Makes `queue` ready for items of `itemClass`, or of any class if `itemClass` is null. The capacity and the allocator
/// are ignored. The queue has no limit until `wMsgQueue_SetMaxCount` sets one. Returns `Zu::Status::WRONG_STATE` if the
/// queue is constructed already and `Zu::Status::BAD_ARGUMENT` for null.
ZUAPI_API wStatus wMsgQueue_Construct(wMsgQueue* queue, wClass const* itemClass, uint64 capacity, void* allocator);

/// Sets the handler that is called for each dropped item; null for none.
ZUAPI_API wStatus wMsgQueue_SetDropHandler(wMsgQueue& queue, wMsgQueue::DropHandler handler, void* context);

/// Sets how many items the queue accepts from now on. Items beyond a lower limit stay until they are removed. Returns
/// `Zu::Status::BAD_ARGUMENT` for 0.
ZUAPI_API wStatus wMsgQueue_SetMaxCount(wMsgQueue& queue, uint64 maxCount);

/// Appends `item` and takes over one reference from the caller. While the queue is full, waits for room for up to
/// `timeoutUsec` microseconds and then returns `Zu::Status::FULL`. Returns `Zu::Status::BAD_ARGUMENT` for null and for
/// an item of another class. After any failure the reference stays the caller's.
ZUAPI_API wStatus wMsgQueue_AddEx(wMsgQueue& queue, void* item, uint64 timeoutUsec);

/// Removes the first item and passes its reference to the caller. If no item comes within `timeoutUsec` microseconds,
/// returns `Zu::Status::TIME_OUT` and leaves `*item` unchanged.
ZUAPI_API wStatus wMsgQueue_Remove(wMsgQueue& queue, void** item, uint64 timeoutUsec);

/// Drops every item through the drop handler. Returns `Zu::Status::BAD_ARGUMENT` if `option` is not `PURGE_DROP`.
ZUAPI_API wStatus wMsgQueue_PurgeEx(wMsgQueue& queue, uint32 option);

/// The number of items at this moment.
ZUAPI_API uint64 wMsgQueue_Count(wMsgQueue const& queue);

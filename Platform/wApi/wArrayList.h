#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <vector>

struct wClass;

/// A growing list of counted objects. The list owns one reference to each item.
///
/// Threads: no lock; a list belongs to one thread at a time. Move and swap take constant time. A moved-from list is
/// empty and must be constructed again. The destructor releases the remaining items. An operation that passes a list as
/// `void*`, for instance to a result handler, passes the address of the `wArrayList`.
class ZUAPI_API wArrayList
{
public:
    wArrayList() noexcept = default;
    ~wArrayList();

    wArrayList(wArrayList&& other) noexcept;
    wArrayList& operator=(wArrayList&& other) noexcept; ///< releases the items that this list held

    wArrayList(wArrayList const&) = delete;
    wArrayList& operator=(wArrayList const&) = delete;

private:
    friend ZUAPI_API wStatus wArrayList_Construct(wArrayList* list, wClass const* itemClass, uint64 capacity,
                                                  void* allocator);
    friend ZUAPI_API wStatus wArrayList_Add(wArrayList& list, void* item);
    friend ZUAPI_API wStatus wArrayList_Purge(wArrayList& list);
    friend ZUAPI_API uint64 wArrayList_Count(wArrayList const& list);
    friend ZUAPI_API void* wArrayList_At(wArrayList const& list, uint64 index);
    friend ZUAPI_API uint64 wArrayList_Capacity(wArrayList const& list);

    wStatus AddBeyondCapacity(void* item) noexcept;
    void ReleaseAll() noexcept;

    wClass const* itemClass = nullptr;
    bool constructed = false;
    std::vector<void*> items;
};

/// Makes `list` ready for items of `itemClass`, or of any class if `itemClass` is null, and reserves room for
/// `capacity` items. The allocator is ignored. Returns `Zu::Status::WRONG_STATE` if the list is constructed already and
/// `Zu::Status::BAD_ARGUMENT` if `list` is null or the capacity exceeds the memory.
ZUAPI_API wStatus wArrayList_Construct(wArrayList* list, wClass const* itemClass, uint64 capacity, void* allocator);

/// Appends `item`; the list may grow beyond its capacity. The call does not add a reference: on success, one reference
/// of the caller becomes the list's. The caller takes that reference before the call or directly after it. Returns
/// `Zu::Status::BAD_ARGUMENT` for null and for an item of another class, `Zu::Status::WRONG_STATE` for a list that is
/// not constructed, and `Zu::Status::FAILURE` if memory runs out; the reference then stays the caller's.
ZUAPI_API wStatus wArrayList_Add(wArrayList& list, void* item);

/// Releases every item and keeps the capacity.
ZUAPI_API wStatus wArrayList_Purge(wArrayList& list);

ZUAPI_API uint64 wArrayList_Count(wArrayList const& list);

/// Returns the item, borrowed: a caller that keeps it adds a reference. Returns null beyond the end.
ZUAPI_API void* wArrayList_At(wArrayList const& list, uint64 index);

/// The number of items that the list holds without another allocation.
ZUAPI_API uint64 wArrayList_Capacity(wArrayList const& list);

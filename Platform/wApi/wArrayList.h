#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <vector>

struct wClass;

/// A growing list of counted objects, which owns a reference to each.
///
/// It has no lock. A move and a swap take constant time; what was moved from is empty and to be made anew. The destructor
/// releases what is left. Where a list is handed on as `void*`, to a handler of results, that is the address of the wArrayList.
class ZUAPI_API wArrayList
{
public:
    wArrayList() noexcept = default;
    ~wArrayList();

    wArrayList(wArrayList&& other) noexcept;
    wArrayList& operator=(wArrayList&& other) noexcept; ///< releases what was here

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

    void ReleaseAll() noexcept;

    wClass const* itemClass = nullptr;
    bool constructed = false;
    std::vector<void*> items;
};

/// Makes `list` ready for items of `itemClass`, null for objects of any class, with room for `capacity` of them. The
/// allocator is passed through. -1000 for one that is made already, -997 for a capacity beyond all memory.
ZUAPI_API wStatus wArrayList_Construct(wArrayList* list, wClass const* itemClass, uint64 capacity, void* allocator);

/// Puts `item` at the end, also beyond the capacity. It takes no reference: on success one of the caller's has become the
/// list's, whether the caller had it before or adds it right behind. -997 for null or an item of another class.
ZUAPI_API wStatus wArrayList_Add(wArrayList& list, void* item);

/// Releases every item; the room stays.
ZUAPI_API wStatus wArrayList_Purge(wArrayList& list);

ZUAPI_API uint64 wArrayList_Count(wArrayList const& list);

/// The item, borrowed: whoever keeps it takes a reference. Null beyond the end.
ZUAPI_API void* wArrayList_At(wArrayList const& list, uint64 index);

/// Items that fit without another allocation.
ZUAPI_API uint64 wArrayList_Capacity(wArrayList const& list);

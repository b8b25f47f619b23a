#include "wApi/wArrayList.h"

#include "wApi/wObject.h"
#include "wApi/wTypes.h"

#include <exception>
#include <utility>

wArrayList::~wArrayList()
{
    ReleaseAll();
}

wArrayList::wArrayList(wArrayList&& other) noexcept
    : itemClass(std::exchange(other.itemClass, nullptr)),
      constructed(std::exchange(other.constructed, false)),
      items(std::exchange(other.items, {}))
{
}

wArrayList& wArrayList::operator=(wArrayList&& other) noexcept
{
    wArrayList moved(std::move(other)); // empties `other`, also when `other` is this list
    std::swap(itemClass, moved.itemClass);
    std::swap(constructed, moved.constructed);
    items.swap(moved.items);
    return *this;
}

// Not inlined, so that the usual path of `wArrayList_Add` saves no registers.
[[gnu::noinline]] wStatus wArrayList::AddBeyondCapacity(void* item) noexcept
{
    try
    {
        items.push_back(item);
        return Zu::Status::SUCCESS;
    }
    catch (std::exception const&)
    {
        return Zu::Status::FAILURE;
    }
}

void wArrayList::ReleaseAll() noexcept
{
    for (void* const item : items)
    {
        wObject_Release(item);
    }
    items.clear();
}

wStatus wArrayList_Construct(wArrayList* list, wClass const* itemClass, uint64 capacity, void* /*allocator*/)
{
    if (list == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (list->constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    try
    {
        list->items.reserve(capacity);
    }
    catch (std::exception const&) // `capacity` exceeds the largest vector or the free memory
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    list->itemClass = itemClass;
    list->constructed = true;
    return Zu::Status::SUCCESS;
}

wStatus wArrayList_Add(wArrayList& list, void* item)
{
    if (!list.constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    if (item == nullptr || (list.itemClass != nullptr && !wObject_Is(item, *list.itemClass)))
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (list.items.size() == list.items.capacity())
    {
        return list.AddBeyondCapacity(item);
    }
    list.items.push_back(item);
    return Zu::Status::SUCCESS;
}

wStatus wArrayList_Purge(wArrayList& list)
{
    if (!list.constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    list.ReleaseAll();
    return Zu::Status::SUCCESS;
}

uint64 wArrayList_Count(wArrayList const& list)
{
    return list.items.size();
}

void* wArrayList_At(wArrayList const& list, uint64 index)
{
    return index < list.items.size() ? list.items[index] : nullptr;
}

uint64 wArrayList_Capacity(wArrayList const& list)
{
    return list.items.capacity();
}

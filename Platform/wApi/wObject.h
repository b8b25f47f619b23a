#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>

struct wObject;

/// Describes the objects of one class. There is one descriptor for each class in the process: an exported constant that
/// is defined in a source file. Code tells classes apart by the address of the descriptor.
struct wClass
{
    char const* name;
    wClass const* base; ///< null for a class without a base
    /// Destroys and frees the object, on the thread that releases the last reference.
    void (*destroy)(wObject* object);
};

/// Base of all reference-counted objects. It must be the first base of a struct without virtual operations: the address
/// of the object is then the address of its base, and a reference can be passed as `void*`.
///
/// A new object has one reference, which belongs to its maker. Any thread may share and release, and any thread may
/// release the last reference.
///
/// An object may be a part of another object, as an item in the memory block of its result set. Such a part has no
/// count of its own: a reference to the part is a reference to the whole.
struct wObject
{
public:
    wObject(wObject const&) = delete;
    wObject& operator=(wObject const&) = delete;

protected:
    explicit wObject(wClass const& objectClass) noexcept : type(&objectClass), counted(this)
    {
    }

    /// Makes a part of `whole`, which contains it and outlives it. `destroy` of the part's class is never called.
    wObject(wClass const& objectClass, wObject& whole) noexcept : type(&objectClass), counted(whole.counted)
    {
    }

    ~wObject() = default;

private:
    friend void wObject_ShareMany(void* object, uint64 count) noexcept;
    friend void wObject_Release(void* object) noexcept;
    friend void wObject_Revive(void* object) noexcept;
    friend uint64 wObject_RefCount(void const* object) noexcept;
    friend bool wObject_Is(void const* object, wClass const& objectClass) noexcept;

    wClass const* type;
    wObject* counted; // the object with the count: this object, or the whole that contains it
    std::atomic<uint64> references{1};
};

/// Adds `count` references in one step. Does nothing for null.
inline void wObject_ShareMany(void* object, uint64 count) noexcept
{
    if (object != nullptr)
    {
        // Relaxed: the caller has a reference already, so nothing is published here.
        static_cast<wObject*>(object)->counted->references.fetch_add(count, std::memory_order_relaxed);
    }
}

/// Adds one reference. Does nothing for null.
inline void wObject_Share(void* object) noexcept
{
    wObject_ShareMany(object, 1);
}

/// Releases one reference and destroys the object with the last one. Does nothing for null.
inline void wObject_Release(void* object) noexcept
{
    if (object == nullptr)
    {
        return;
    }
    wObject* const counted = static_cast<wObject*>(object)->counted;
    // Release and acquire: all uses of the object by other threads happen before its destruction.
    if (counted->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
    {
        counted->type->destroy(counted);
    }
}

/// Gives an object without references one reference again. For the `destroy` of a class that keeps its objects for
/// reuse.
inline void wObject_Revive(void* object) noexcept
{
    static_cast<wObject*>(object)->references.store(1, std::memory_order_relaxed);
}

/// The number of references at this moment; 0 for null. For tests: another thread may change it at any time.
inline uint64 wObject_RefCount(void const* object) noexcept
{
    return object == nullptr ? 0
                             : static_cast<wObject const*>(object)->counted->references.load(std::memory_order_relaxed);
}

/// Whether the object is of this class or of a class derived from it. False for null.
inline bool wObject_Is(void const* object, wClass const& objectClass) noexcept
{
    wClass const* present = object != nullptr ? static_cast<wObject const*>(object)->type : nullptr;
    while (present != nullptr && present != &objectClass)
    {
        present = present->base;
    }
    return present != nullptr;
}

/// The deleter of `wHandle`: releases one reference.
struct wReleaseReference
{
    void operator()(void* object) const noexcept
    {
        wObject_Release(object);
    }
};

/// Owns one reference to a counted object.
template <typename T>
using wHandle = std::unique_ptr<T, wReleaseReference>;

/// Returns a handle with a new reference to `object`, which may be null.
template <typename T>
wHandle<T> wHandle_Share(T* object) noexcept
{
    wObject_Share(object);
    return wHandle<T>(object);
}

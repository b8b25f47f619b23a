#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <atomic>

struct wObject;

/// What all objects of one class share. There is one for each class in the process, an exported constant that is defined in
/// a source file: classes are told apart by its address.
struct wClass
{
    char const* name;
    wClass const* base;               ///< null for a class that derives from none
    void (*destroy)(wObject* object); ///< ends and frees the object; called by whoever releases the last reference
};

/// Base of all objects that count their references. It is the first base of a struct without virtual operations, so that the
/// address of the object and that of its base are one, and a handle travels as `void*`.
///
/// A new object has one reference, its maker's. Any thread may share and release, and so release the last one.
///
/// An object may be a part of another, an item inside the block of its set: it then has no count of its own, a reference to
/// it is one to the whole.
struct wObject
{
public:
    wObject(wObject const&) = delete;
    wObject& operator=(wObject const&) = delete;

protected:
    explicit wObject(wClass const& objectClass) noexcept : type(&objectClass), counted(this)
    {
    }

    /// A part of `whole`, which holds it in place and outlives it. The class's `destroy` is never called for it.
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
    wObject* counted; // whose count it is: this object, or the whole that it is a part of
    std::atomic<uint64> references{1};
};

/// `count` more references, in one step. Null: nothing happens.
inline void wObject_ShareMany(void* object, uint64 count) noexcept
{
    if (object != nullptr)
    {
        // Relaxed: whoever shares has a reference already, so that nothing is published here.
        static_cast<wObject*>(object)->counted->references.fetch_add(count, std::memory_order_relaxed);
    }
}

/// One more reference. Null: nothing happens.
inline void wObject_Share(void* object) noexcept
{
    wObject_ShareMany(object, 1);
}

/// One reference less; with the last one the object ends. Null: nothing happens.
inline void wObject_Release(void* object) noexcept
{
    if (object == nullptr)
    {
        return;
    }
    wObject* const counted = static_cast<wObject*>(object)->counted;
    // Release and acquire: what other threads did to the object comes before its end.
    if (counted->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
    {
        counted->type->destroy(counted);
    }
}

/// For the `destroy` of a class that keeps its objects for reuse: the object has one reference again.
inline void wObject_Revive(void* object) noexcept
{
    static_cast<wObject*>(object)->references.store(1, std::memory_order_relaxed);
}

/// References at this moment, 0 for null. For tests: another thread may change it at any time.
inline uint64 wObject_RefCount(void const* object) noexcept
{
    return object == nullptr ? 0
                             : static_cast<wObject const*>(object)->counted->references.load(std::memory_order_relaxed);
}

/// Whether the object is of this class or of one derived from it. Null is of no class.
inline bool wObject_Is(void const* object, wClass const& objectClass) noexcept
{
    wClass const* present = object != nullptr ? static_cast<wObject const*>(object)->type : nullptr;
    while (present != nullptr && present != &objectClass)
    {
        present = present->base;
    }
    return present != nullptr;
}

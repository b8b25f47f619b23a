#pragma once

#include "wApi/wObject.h"

#include <memory>

/// Gives a reference back; see wHandle.
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

/// A handle with a reference of its own to `object`, which may be null.
template <typename T>
wHandle<T> wHandle_Share(T* object) noexcept
{
    wObject_Share(object);
    return wHandle<T>(object);
}

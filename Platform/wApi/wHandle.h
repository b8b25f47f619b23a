#pragma once

#include "wApi/wObject.h"

#include <memory>

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

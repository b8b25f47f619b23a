#pragma once

#include "wApi/wObject.h"

#include <atomic>

namespace ZuTest
{

/// A counted object that tells its maker of its end.
struct CountedObject : wObject
{
    static wClass const CLASS;

    /// `destroyedObjects` gains one when the object ends; it outlives the object.
    explicit CountedObject(std::atomic<int>& destroyedObjects, wClass const& objectClass = CLASS);

    static void Destroy(wObject* object);

    std::atomic<int>& destroyed;
};

} // namespace ZuTest

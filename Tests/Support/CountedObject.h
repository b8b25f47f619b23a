#pragma once

#include "wApi/wObject.h"

#include <atomic>

namespace ZuTest
{

/// A reference-counted object that counts destructions.
struct CountedObject : wObject
{
    static wClass const CLASS;

    /// The destructor increments `destroyedObjects`, which outlives the object.
    explicit CountedObject(std::atomic<int>& destroyedObjects, wClass const& objectClass = CLASS);

    static void Destroy(wObject* object);

    std::atomic<int>& destroyed;
};

} // namespace ZuTest

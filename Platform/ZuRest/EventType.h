#pragma once

#include "wApi/wTypes.h"

namespace ZuRest
{

/// The kind of change that a notification reports.
enum class EventType : uint32
{
    CHANGED = 2,     ///< the document of the resource has changed
    TREE_CHANGED = 4 ///< resources below it have changed too
};

} // namespace ZuRest

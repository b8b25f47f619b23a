#pragma once

#include "wApi/wTypes.h"

namespace ZuRest
{

/// What a notification tells about a resource.
enum class EventType : uint32
{
    CHANGED = 2,     ///< its document reads differently
    TREE_CHANGED = 4 ///< what is beneath it has changed too
};

} // namespace ZuRest

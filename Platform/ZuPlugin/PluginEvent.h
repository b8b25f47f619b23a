#pragma once

#include "wApi/wTypes.h"

namespace ZuPlugin
{

/// What happened to a plug-in library.
enum class PluginEvent : uint32
{
    LOAD = 0,
    UNLOAD = 1
};

} // namespace ZuPlugin

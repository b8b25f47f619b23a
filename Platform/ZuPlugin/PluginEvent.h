#pragma once

#include "wApi/wTypes.h"

namespace ZuPlugin
{

/// An event in the life of a plug-in library.
enum class PluginEvent : uint32
{
    LOAD = 0,
    UNLOAD = 1
};

} // namespace ZuPlugin

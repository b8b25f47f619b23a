#pragma once

#include "wApi/wTypes.h"

namespace ZuControl
{

/// Number of a protocol implementation: the key of the result fan-out and of the operations' events. Each plug-in chooses
/// its own; two protocols with one number would share dispatcher, client count and output map.
enum class ZuEthernetProtocol : int32
{
};

/// Cannot be stopped once it was started: a stop that fails is told to the user and is no problem.
inline constexpr ZuEthernetProtocol UNSTOPPABLE_PROTOCOL{5};

/// Has no persisted outputs and register assemblies.
inline constexpr ZuEthernetProtocol PARAMS_ONLY_PROTOCOL{6};

} // namespace ZuControl

#pragma once

#include "wApi/wTypes.h"

namespace ZuControl
{

/// Number of a protocol implementation: the key of the result fan-out and of the operations' events. Each plug-in
/// chooses its own; two protocols with one number would share dispatcher, client count and output map.
enum class ZuEthernetProtocol : int32
{
};

/// A protocol that cannot be stopped once it is started: when it reports a failed stop, the user gets a message and no
/// problem.
inline constexpr ZuEthernetProtocol UNSTOPPABLE_PROTOCOL{5};

/// A protocol without stored outputs and register assemblies.
inline constexpr ZuEthernetProtocol PARAMS_ONLY_PROTOCOL{6};

} // namespace ZuControl

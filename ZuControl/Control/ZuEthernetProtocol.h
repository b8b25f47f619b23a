#pragma once

#include "wApi/wTypes.h"

namespace ZuControl
{

/// Number of a protocol implementation: the key of the result fan-out and of the operations' events. Each plug-in
/// chooses its own; two protocols with one number would share dispatcher, client count and output map.
enum class ZuEthernetProtocol : int32
{
};

/// The host itself, as the one that begins an operation. A plug-in with this number is refused.
inline constexpr ZuEthernetProtocol HOST_PROTOCOL{-1};

/// A protocol that cannot be stopped once it is started: when it reports a failed stop, the user gets a message and no
/// problem.
inline constexpr ZuEthernetProtocol UNSTOPPABLE_PROTOCOL{5};

/// A protocol without stored outputs and register assemblies.
inline constexpr ZuEthernetProtocol PARAMS_ONLY_PROTOCOL{6};

/// The status of a protocol. The instance sets `Starting`, `Stopping` and the two failures of `Start` and `Stop`; the
/// protocol reports the others, and failures that it finds itself.
enum class ProtocolStatus : int32
{
    Running = 0,
    Stopped = 1,
    Starting = 2,
    Stopping = 3,
    FailedToStart = 4,
    FailedToStop = 5
};

} // namespace ZuControl

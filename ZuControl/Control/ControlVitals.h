#pragma once

#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuControl
{

/// How the services and the threads of the module fare at the moment of asking. Moments are those of `wTime_NowUsec`; 0 is
/// none.
struct ControlVitals
{
    /// The way of results to one protocol.
    struct Dispatcher
    {
        std::string typeName;
        bool hasDied = false;     ///< its thread ended by an exception: until it starts anew nothing is handed over
        uint64 busySinceUsec = 0; ///< when the batch that the protocol has in hand was handed over
    };

    /// The operation on the system that is in flight.
    struct Operation
    {
        std::string typeName;  ///< who asked for it; empty for a protocol that is none of the module's
        char const* name = ""; ///< "job load"; empty when none is in flight
        uint64 sinceUsec = 0;
    };

    /// The rounds in which the protocols bring their metrics up to date.
    struct Metrics
    {
        std::string typeName;       ///< the protocol to which the newest round has come
        uint64 roundSinceUsec = 0;  ///< when the round that runs began
        uint64 lastDoneUsec = 0;    ///< when a round was last done; before the first one: when they were to begin
        uint64 lastFailureUsec = 0; ///< when a protocol last threw, which ends its round
        std::string failedTypeName; ///< which one that was
    };

    /// The starts of one service that have failed since the module was built.
    struct FailedStarts
    {
        std::string typeName;
        uint64 count = 0;
        std::string lastReason; ///< the text of the last failure, or its status when it has no text
    };

    /// An operation of a protocol that failed when it was last called.
    struct Fault
    {
        std::string typeName;
        std::string operation; ///< as the interface of protocols names it: "OnStartScan"
    };

    std::vector<Dispatcher> dispatchers; ///< of all protocols, by name
    Operation operation;
    Metrics metrics;
    std::vector<FailedStarts> failedStarts; ///< of all services, by name
    std::vector<Fault> faults; ///< by protocol and operation
};

} // namespace ZuControl

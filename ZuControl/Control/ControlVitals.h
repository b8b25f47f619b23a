#pragma once

#include "ZuControl/Control/CommandOrigin.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuControl
{

/// Counters of the module since it was built. The numbers only grow; they are read one after the other, not at one
/// moment.
struct ControlStatistics
{
    /// The delivery of results to one protocol.
    struct Protocol
    {
        std::string typeName;
        uint64 batches = 0; ///< handed to the protocol
        uint64 resultSets = 0;
        uint64 ageUsec = 0; ///< sum over all batches of the time from the first set to the hand-over
    };

    uint64 resultSets = 0;    ///< that reached the fan-out and were not empty
    uint64 resultItems = 0;   ///< in these sets
    uint64 itemsHandedOn = 0; ///< to dispatchers, counted for each
    uint64 operationsSucceeded = 0;
    uint64 operationsFailed = 0;
    uint64 operationsRefused = 0;    ///< because another one was in progress
    std::vector<Protocol> protocols; ///< all of them, by name
};

/// An operation on the system that a protocol or the host has begun, and that has ended or was refused.
struct ControlOperationEnd
{
    std::string typeName;   ///< empty for the host, and for a number without a service
    char const* name = "";  ///< "job load"
    std::string argument{}; ///< the name of the job or the id of the scanner; empty for other operations
    int32 status = 0;       ///< `Zu::Status::BUSY` if it was refused because another one was in flight
    CommandOrigin origin{}; ///< the client that has asked for it, if the protocol tells
    bool isOfHost = false;  ///< the host has begun it, as `HOST_PROTOCOL`
    uint64 sinceUsec = 0;   ///< its begin, or the refusal; a moment of `wTime_NowUsec`
    int32 cause = 0;        ///< the status of the exception that has made it fail
    std::string reason{};   ///< the text of that exception
};

/// A client or a request that a service has refused.
struct ControlRefusal
{
    std::string typeName; ///< empty for a number without a service
    CommandOrigin client;
    std::string what;   ///< "connection", "function 6"
    std::string reason; ///< as a part of a sentence: "it may not connect"
};

/// The present state of the services and the threads of the module. Times are those of `wTime_NowUsec`; 0 is none.
struct ControlVitals
{
    /// The delivery of results to one protocol.
    struct Dispatcher
    {
        std::string typeName;
        bool hasDied = false;     ///< an exception has ended its thread: no results until it is started anew
        uint64 busySinceUsec = 0; ///< when the running batch was handed to the protocol
    };

    /// The operation on the system that is in flight.
    struct Operation
    {
        std::string typeName;  ///< the protocol that has begun it; empty for the host and a number without a service
        char const* name = ""; ///< "job load"; empty when none is in flight
        uint64 sinceUsec = 0;
        bool isOfHost = false; ///< the host has begun it
    };

    /// The rounds in which the protocols bring their metrics up to date.
    struct Metrics
    {
        std::string typeName;       ///< the protocol that the newest round has reached
        uint64 roundSinceUsec = 0;  ///< when the running round has begun
        uint64 lastDoneUsec = 0;    ///< when a round was last finished; before that, the start of the rounds
        uint64 lastFailureUsec = 0; ///< when a round was last ended by an exception
        std::string failedTypeName; ///< the protocol that has thrown then
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
    std::vector<Fault> faults;              ///< by protocol and operation
};

} // namespace ZuControl

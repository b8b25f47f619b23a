#pragma once

#include "ZuApi/CallbackGate.h"
#include "ZuApi/Event.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <functional>

namespace ZuControl
{
class ControlProtocolOperations;
}

namespace AsciiTcp
{

/// Knows which request the operation in flight belongs to, so that its end can be told to who asked for it.
///
/// Threads: `Begin` belongs to one at a time; ends come on "CtlProtoOp.Disp".
class OperationRunner final
{
public:
    /// `operations` outlives the object. `whenEnded` gets the ticket of the operation and whether it succeeded.
    OperationRunner(ZuControl::ControlProtocolOperations& usedOperations, ZuControl::ZuEthernetProtocol ownProtocol,
                    std::function<void(uint64 ticket, bool isDone)> whenEnded);
    ~OperationRunner(); ///< no end is told any more
    OperationRunner(OperationRunner const&) = delete;
    OperationRunner& operator=(OperationRunner const&) = delete;

    /// Runs `start`, which is to begin an operation, and gives the ticket under which its end will be told. -976 with a text
    /// while one that began here runs. What `start` throws goes on: nothing runs then.
    uint64 Begin(std::function<void()> const& start);

private:
    ZuControl::ControlProtocolOperations& operations;
    ZuControl::ZuEthernetProtocol const protocol;
    uint64 lastTicket = 0;                 // of who begins
    std::atomic<uint64> ticketInFlight{0}; // 0 when none is; whoever takes it out has the end to itself
    Zu::CallbackGate gate;
    Zu::Event<int>::CallbackId handlerId;
};

} // namespace AsciiTcp

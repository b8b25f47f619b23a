#pragma once

#include "ZuApi/Signal.h"
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

/// Remembers the request of the running operation, so that its end is reported to the client that began it.
///
/// Threads: one thread at a time calls `Begin`; ends arrive on "CtlProtoOp.Disp".
class OperationRunner final
{
public:
    /// `operations` outlives the object. `whenEnded` gets the ticket of the operation and whether it succeeded.
    OperationRunner(ZuControl::ControlProtocolOperations& usedOperations, ZuControl::ZuEthernetProtocol ownProtocol,
                    std::function<void(uint64 ticket, bool isDone)> whenEnded);
    ~OperationRunner() = default; ///< no end is reported any more
    OperationRunner(OperationRunner const&) = delete;
    OperationRunner& operator=(OperationRunner const&) = delete;

    /// Runs `start`, which begins an operation, and returns the ticket under which its end is reported. Throws
    /// `Zu::Status::BUSY` with a text while an operation begun here runs. If `start` throws, no operation counts as
    /// running and the exception reaches the caller.
    uint64 Begin(std::function<void()> const& start);

private:
    uint64 lastTicket = 0;                 // used by the thread that calls `Begin`
    std::atomic<uint64> ticketInFlight{0}; // 0 for none; the thread that exchanges it for 0 reports the end
    Zu::Subscription ends;                 // last, so that its destructor waits for a report first
};

} // namespace AsciiTcp

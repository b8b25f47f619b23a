#include "Plugins/AsciiTcp/OperationRunner.h"

#include "ZuApi/Exception.h"
#include "ZuControl/Control/ControlProtocolOperations.h"

namespace AsciiTcp
{

OperationRunner::OperationRunner(ZuControl::ControlProtocolOperations& usedOperations,
                                 ZuControl::ZuEthernetProtocol ownProtocol,
                                 std::function<void(uint64 ticket, bool isDone)> whenEnded)
{
    ends = usedOperations.SubscribeToOperationEnd(ownProtocol, [this, whenEnded = std::move(whenEnded)](int status) {
        uint64 const ticket = ticketInFlight.exchange(0);
        if (ticket != 0) // a scanner may report an alignment twice
        {
            whenEnded(ticket, status == Zu::Status::SUCCESS);
        }
    });
}

uint64 OperationRunner::Begin(std::function<void()> const& start)
{
    if (ticketInFlight.load() != 0)
    {
        ZU_THROW(Zu::Status::BUSY, "An operation that a client of this service began is still running");
    }
    uint64 const ticket = ++lastTicket;
    ticketInFlight.store(ticket); // first: the operation may end before `start` returns
    try
    {
        start();
    }
    catch (...)
    {
        ticketInFlight.store(0);
        throw;
    }
    return ticket;
}

} // namespace AsciiTcp

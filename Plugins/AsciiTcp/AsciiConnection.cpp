#include "Plugins/AsciiTcp/AsciiConnection.h"

#include "Plugins/AsciiTcp/AsciiCounters.h"
#include "ZuApi/Guard.h"

#include <boost/asio/buffer.hpp>

namespace AsciiTcp
{

using boost::asio::ip::tcp;
using boost::system::error_code;

namespace
{

constexpr int SENDS_IN_A_ROW = 16; // then other clients are served

bool WouldBlock(error_code const& error)
{
    return error == boost::asio::error::would_block || error == boost::asio::error::try_again ||
           error == boost::asio::error::interrupted;
}

} // namespace

AsciiConnection::AsciiConnection(tcp::socket acceptedSocket, IAsciiService& service, DataFeed& feed,
                                 AsciiCounters& usedCounters, Ended whenEnded)
    : socket(std::move(acceptedSocket)),
      conversation(service, feed, usedCounters),
      counters(usedCounters),
      ended(std::move(whenEnded)),
      lastRequest(Clock::now()),
      lastTaken(lastRequest)
{
}

AsciiConnection::~AsciiConnection() = default;

void AsciiConnection::Begin()
{
    error_code error;
    socket.non_blocking(true, error);
    if (error)
    {
        End(false);
        return;
    }
    error_code ignored; // all three options are optional
    socket.set_option(tcp::no_delay(true), ignored);
    socket.set_option(tcp::socket::send_buffer_size(SEND_BUFFER_BYTES), ignored);
    socket.set_option(tcp::socket::keep_alive(true), ignored);
    WaitReadable();
}

void AsciiConnection::CheckDeadlines(Clock::time_point now, Clock::duration idleTimeout)
{
    bool const mayBeSilent = conversation.IsSubscribed() || conversation.IsWaiting();
    bool const isIdle = !mayBeSilent && now - lastRequest > idleTimeout;
    bool const isStuck = isWriteAwaited && now - lastTaken > idleTimeout;
    if (isIdle || isStuck)
    {
        End(true);
    }
}

void AsciiConnection::Close()
{
    isOpen = false;
    error_code ignored; // a failed close leaves nothing to do
    socket.close(ignored);
}

void AsciiConnection::DataCame()
{
    if (isOpen && conversation.IsSubscribed())
    {
        Flush();
    }
}

void AsciiConnection::OperationEnded(uint64 ticket, bool isDone)
{
    if (isOpen && conversation.OperationEnded(ticket, isDone))
    {
        lastRequest = Clock::now();
        Flush();
    }
}

void AsciiConnection::Answered(uint64 ticket, std::string_view line)
{
    if (isOpen && conversation.Answered(ticket, line))
    {
        Flush();
    }
}

void AsciiConnection::Tell(std::string_view line)
{
    if (isOpen)
    {
        conversation.Tell(line);
        Flush();
    }
}

void AsciiConnection::Disconnect()
{
    End(true);
}

void AsciiConnection::WaitReadable()
{
    if (isReadAwaited || conversation.Room().empty())
    {
        return;
    }
    isReadAwaited = true;
    socket.async_wait(tcp::socket::wait_read, [self = shared_from_this()](error_code const&) {
        self->isReadAwaited = false;
        // The read reports an error of the wait. An exception of a handler closes this connection only.
        if (self->isOpen && !ZU_GUARD_BOUNDARY([&self] { self->Readable(); }))
        {
            self->End(false);
        }
    });
}

void AsciiConnection::WaitWritable()
{
    isWriteAwaited = true;
    socket.async_wait(tcp::socket::wait_write, [self = shared_from_this()](error_code const&) {
        self->isWriteAwaited = false;
        if (self->isOpen && !ZU_GUARD_BOUNDARY([&self] { self->Flush(); }))
        {
            self->End(false);
        }
    });
}

void AsciiConnection::Readable()
{
    std::span<char> const room = conversation.Room();
    error_code error;
    std::size_t const bytes = room.empty() ? 0 : socket.read_some(boost::asio::buffer(room.data(), room.size()), error);
    if (error == boost::asio::error::eof)
    {
        conversation.InputEnded();
    }
    else if (error && !WouldBlock(error))
    {
        End(false);
        return;
    }
    conversation.Received(bytes);
    Flush();
}

void AsciiConnection::Flush()
{
    conversation.TakeData(); // counts missed lines even while nothing can be sent
    for (int i = 0; !isWriteAwaited && !conversation.Pending().empty(); ++i)
    {
        if (i == SENDS_IN_A_ROW)
        {
            WaitWritable();
        }
        else if (!SendPending())
        {
            return;
        }
        conversation.TakeData();
    }
    NoteProgress();
    if (conversation.IsOver())
    {
        End(false);
        return;
    }
    WaitReadable();
}

/// Returns false when the connection has ended.
bool AsciiConnection::SendPending()
{
    std::string_view const pending = conversation.Pending();
    error_code error;
    std::size_t const bytes = socket.write_some(boost::asio::buffer(pending.data(), pending.size()), error);
    if (WouldBlock(error))
    {
        WaitWritable();
        return true;
    }
    if (error)
    {
        End(false);
        return false;
    }
    lastTaken = Clock::now();
    conversation.Sent(bytes);
    return true;
}

void AsciiConnection::NoteProgress()
{
    if (answeredCount != conversation.AnsweredCount())
    {
        answeredCount = conversation.AnsweredCount();
        lastRequest = Clock::now();
    }
}

void AsciiConnection::End(bool isDropped)
{
    if (!isOpen)
    {
        return;
    }
    Count(counters.droppedClients, isDropped ? 1 : 0);
    Close();
    ended(shared_from_this());
}

} // namespace AsciiTcp

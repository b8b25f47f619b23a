#include "Plugins/ModbusTcp/ModbusConnection.h"

#include "ZuApi/Guard.h"

#include <boost/asio/buffer.hpp>

namespace ModbusTcp
{

using boost::asio::ip::tcp;

namespace
{

bool WouldBlock(boost::system::error_code const& error)
{
    return error == boost::asio::error::would_block || error == boost::asio::error::try_again ||
           error == boost::asio::error::interrupted;
}

} // namespace

ModbusConnection::ModbusConnection(tcp::socket acceptedSocket, IRegisterModel& model, ServerCounters& serverCounters,
                                   Ended whenEnded)
    : socket(std::move(acceptedSocket)),
      conversation(model, serverCounters),
      counters(serverCounters),
      ended(std::move(whenEnded)),
      lastRequest(Clock::now())
{
}

ModbusConnection::~ModbusConnection() = default;

void ModbusConnection::Begin()
{
    boost::system::error_code error;
    socket.non_blocking(true, error);
    if (error)
    {
        End(false);
        return;
    }
    socket.set_option(tcp::no_delay(true), error); // optional: it only saves time
    WaitReadable();
}

void ModbusConnection::CheckDeadlines(Clock::time_point now, Clock::duration idleTimeout)
{
    bool const isIdle = now - lastRequest > idleTimeout;
    bool const isStuck = isStalled && now - stalledSince > WRITE_TIMEOUT;
    if (isOpen && (isIdle || isStuck))
    {
        End(true);
    }
}

void ModbusConnection::Close()
{
    isOpen = false;
    boost::system::error_code ignored; // a failed close leaves nothing to do
    socket.close(ignored);
}

void ModbusConnection::WaitReadable()
{
    socket.async_wait(tcp::socket::wait_read, [self = shared_from_this()](boost::system::error_code const&) {
        // The read reports an error of the wait. An exception of a handler closes this connection only.
        if (self->isOpen && !ZU_GUARD_BOUNDARY([&self] { self->Readable(); }))
        {
            self->End(false);
        }
    });
}

void ModbusConnection::WaitWritable()
{
    socket.async_wait(tcp::socket::wait_write, [self = shared_from_this()](boost::system::error_code const&) {
        if (self->isOpen && !ZU_GUARD_BOUNDARY([&self] { self->Flush(); }))
        {
            self->End(false);
        }
    });
}

void ModbusConnection::Readable()
{
    boost::system::error_code error;
    std::span<uint8> const room = conversation.Room();
    std::size_t const bytes = socket.read_some(boost::asio::buffer(room.data(), room.size()), error);
    if (WouldBlock(error))
    {
        WaitReadable();
        return;
    }
    if (error) // including the end of the stream
    {
        End(false);
        return;
    }
    conversation.Received(bytes);
    Flush();
}

void ModbusConnection::Flush()
{
    while (!conversation.Pending().empty())
    {
        std::span<uint8 const> const pending = conversation.Pending();
        boost::system::error_code error;
        std::size_t const bytes = socket.write_some(boost::asio::buffer(pending.data(), pending.size()), error);
        if (WouldBlock(error))
        {
            stalledSince = isStalled ? stalledSince : Clock::now();
            isStalled = true;
            WaitWritable();
            return;
        }
        if (error)
        {
            End(false);
            return;
        }
        conversation.Sent(bytes);
    }
    isStalled = false;
    NoteProgress();
    if (conversation.IsMalformed())
    {
        End(true);
        return;
    }
    WaitReadable();
}

void ModbusConnection::NoteProgress()
{
    if (answeredCount != conversation.AnsweredCount())
    {
        answeredCount = conversation.AnsweredCount();
        lastRequest = Clock::now();
    }
}

void ModbusConnection::End(bool isFaultOfClient)
{
    if (!isOpen)
    {
        return;
    }
    Count(counters.droppedClients, isFaultOfClient ? 1 : 0);
    Close();
    ended(shared_from_this());
}

} // namespace ModbusTcp

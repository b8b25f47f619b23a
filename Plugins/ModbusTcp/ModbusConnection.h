#pragma once

#include "Plugins/Common/ITcpConnection.h"
#include "Plugins/ModbusTcp/ModbusConversation.h"

#include <utility> // the networking headers need it and do not include it

#include <boost/asio/ip/tcp.hpp>

#include <chrono>
#include <functional>
#include <memory>

namespace ModbusTcp
{

/// One client: its socket, its buffers and its deadlines. Used on the I/O thread only. The server and the pending
/// operation of the socket share it.
///
/// Each time the socket is ready, it is read once, and all complete requests are answered with as few writes as the
/// output buffer allows. While the client does not take an answer, nothing more is read from it.
class ModbusConnection final : public PluginCommon::ITcpConnection,
                               public std::enable_shared_from_this<ModbusConnection>
{
public:
    using Ended = std::function<void(std::shared_ptr<ITcpConnection> const&)>;

    /// A client that has not taken an answer after this time is disconnected.
    static constexpr std::chrono::seconds WRITE_TIMEOUT{5};

    /// `whenEnded` is called once, on the I/O thread, when the connection has ended by itself. `Close` does not call
    /// it.
    ModbusConnection(boost::asio::ip::tcp::socket acceptedSocket, IRegisterModel& model, ServerCounters& serverCounters,
                     Ended whenEnded);
    ~ModbusConnection() override;
    ModbusConnection(ModbusConnection const&) = delete;
    ModbusConnection& operator=(ModbusConnection const&) = delete;

    void Begin() override;

    /// Ends the connection if the client has sent no complete request for `idleTimeout`, or has not taken an answer for
    /// WRITE_TIMEOUT.
    void CheckDeadlines(Clock::time_point now, Clock::duration idleTimeout) override;

    void Close() override;

private:
    void WaitReadable();
    void WaitWritable();
    void Readable();
    void Flush();
    void NoteProgress();
    void End(bool isFaultOfClient);

    boost::asio::ip::tcp::socket socket;
    ModbusConversation conversation;
    ServerCounters& counters;
    Ended ended;
    uint64 answeredCount = 0;
    Clock::time_point lastRequest; // last request, or the begin of the connection
    Clock::time_point stalledSince;
    bool isStalled = false; // an answer waits until the socket is writable
    bool isOpen = true;
};

} // namespace ModbusTcp

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

/// One client: its socket, its buffers and its deadlines. Lives on the I/O thread, shared between the server and the
/// operation that is outstanding on the socket.
///
/// At each readiness the socket is read once and every complete request is answered with as few writes as the output
/// buffer allows. While an answer waits for a client that does not read, nothing more is read from it.
class ModbusConnection final : public PluginCommon::ITcpConnection,
                               public std::enable_shared_from_this<ModbusConnection>
{
public:
    using Ended = std::function<void(std::shared_ptr<ITcpConnection> const&)>;

    /// An answer that the client has not taken after this time ends the connection.
    static constexpr std::chrono::seconds WRITE_TIMEOUT{5};

    /// `whenEnded` is called once, on the I/O thread, when the connection has ended by itself; not for `Close`.
    ModbusConnection(boost::asio::ip::tcp::socket acceptedSocket, IRegisterModel& model, ServerCounters& serverCounters,
                     Ended whenEnded);
    ~ModbusConnection() override;
    ModbusConnection(ModbusConnection const&) = delete;
    ModbusConnection& operator=(ModbusConnection const&) = delete;

    void Begin() override;

    /// Ends the connection when the client has sent no whole request for `idleTimeout`, or takes no answer.
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
    Clock::time_point lastRequest; // or when the connection began
    Clock::time_point stalledSince;
    bool isStalled = false; // an answer waits for the client
    bool isOpen = true;
};

} // namespace ModbusTcp

#pragma once

#include "Plugins/AsciiTcp/AsciiConversation.h"
#include "Plugins/Common/ITcpConnection.h"

#include <utility> // the networking headers need it and do not include it

#include <boost/asio/ip/tcp.hpp>

#include <functional>
#include <memory>
#include <string_view>

namespace AsciiTcp
{

/// One client: its socket and its deadlines. Lives on the I/O thread, shared between the server and the operations that are
/// outstanding on the socket.
///
/// A client that ends its side gets all answers, the end of its operation and, while subscribed, results for as long as it
/// takes them; then the connection is closed.
class AsciiConnection final : public PluginCommon::ITcpConnection, public std::enable_shared_from_this<AsciiConnection>
{
public:
    using Ended = std::function<void(std::shared_ptr<ITcpConnection> const&)>;

    /// What the system keeps of unsent bytes for one client, about: results that wait there are old when they arrive.
    static constexpr int SEND_BUFFER_BYTES = 64 * 1024;

    /// `whenEnded` is called once, on the I/O thread, when the connection has ended by itself; not for `Close`.
    AsciiConnection(boost::asio::ip::tcp::socket acceptedSocket, IAsciiService& service, DataFeed& feed,
                    AsciiCounters& usedCounters, Ended whenEnded);
    ~AsciiConnection() override;
    AsciiConnection(AsciiConnection const&) = delete;
    AsciiConnection& operator=(AsciiConnection const&) = delete;

    void Begin() override;

    /// Ends the connection of a client that for `idleTimeout` has sent no request, or has taken nothing of what waits for
    /// it. One that is subscribed, or waits for the end of its operation, need not send anything.
    void CheckDeadlines(Clock::time_point now, Clock::duration idleTimeout) override;

    void Close() override;

    /// The feed has something new.
    void DataCame();

    void OperationEnded(uint64 ticket, bool isDone);
    void Answered(uint64 ticket, std::string_view line);
    void Tell(std::string_view line);

    /// Ends the connection by command of the service's user.
    void Disconnect();

private:
    void WaitReadable();
    void WaitWritable();
    void Readable();
    void Flush();
    bool SendPending();
    void NoteProgress();
    void End(bool isDropped);

    boost::asio::ip::tcp::socket socket;
    AsciiConversation conversation;
    AsciiCounters& counters;
    Ended ended;
    uint64 answeredCount = 0;
    Clock::time_point lastRequest; // or when the connection, or an operation that it waited for, ended or began
    Clock::time_point lastTaken;   // when something was last sent, or when the connection began
    bool isReadAwaited = false;
    bool isWriteAwaited = false; // something waits for the client
    bool isOpen = true;
};

} // namespace AsciiTcp

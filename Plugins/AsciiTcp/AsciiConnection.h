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

/// One client: its socket and its deadlines. Used on the I/O thread only. The server and the pending operations of the
/// socket share it.
///
/// When a client closes its sending side, it still gets all answers, the end of its operation and, while subscribed,
/// results for as long as it takes them. Then the connection is closed.
class AsciiConnection final : public PluginCommon::ITcpConnection, public std::enable_shared_from_this<AsciiConnection>
{
public:
    using Ended = std::function<void(std::shared_ptr<ITcpConnection> const&)>;

    /// Approximate limit of the socket's send buffer. It is small because results that wait there are old when they
    /// arrive.
    static constexpr int SEND_BUFFER_BYTES = 64 * 1024;

    /// `whenEnded` is called once, on the I/O thread, when the connection has ended by itself. `Close` does not call
    /// it.
    AsciiConnection(boost::asio::ip::tcp::socket acceptedSocket, IAsciiService& service, DataFeed& feed,
                    AsciiCounters& usedCounters, Ended whenEnded);
    ~AsciiConnection() override;
    AsciiConnection(AsciiConnection const&) = delete;
    AsciiConnection& operator=(AsciiConnection const&) = delete;

    void Begin() override;

    /// Ends the connection if the client has sent no request for `idleTimeout`, or has taken no pending bytes for that
    /// time. A client that is subscribed, or waits for an operation or an answer, need not send requests.
    void CheckDeadlines(Clock::time_point now, Clock::duration idleTimeout) override;

    void Close() override;

    /// The feed has new lines.
    void DataCame();

    void OperationEnded(uint64 ticket, bool isDone);
    void Answered(uint64 ticket, std::string_view line);
    void Tell(std::string_view line);

    /// Ends the connection because the user of the service asked for it.
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
    Clock::time_point lastRequest; // last request, begin, or end of an operation that the client waited for
    Clock::time_point lastTaken;   // last time that bytes were sent, or the begin
    bool isReadAwaited = false;
    bool isWriteAwaited = false; // waits until the socket is writable
    bool isOpen = true;
};

} // namespace AsciiTcp

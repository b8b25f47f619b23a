#pragma once

#include "Plugins/Common/ITcpConversation.h"
#include "wApi/wTypes.h"

#include <utility> // the networking headers need it and do not include it

#include <boost/asio/ip/tcp.hpp>

#include <chrono>
#include <functional>
#include <memory>

namespace PluginCommon
{

class AccessRules;
class RefusalLog;
class TlsSession;
struct TcpCounters;

/// One client of a TcpServer: its socket, its conversation and its deadlines. Used on the I/O thread only. The server
/// and the pending operations of the socket share it.
///
/// Each time the socket is ready, it is read once, and all that the conversation has to send is written with as few
/// calls as possible.
class TcpConnection final : public std::enable_shared_from_this<TcpConnection>
{
public:
    using Clock = std::chrono::steady_clock;
    struct Deadlines
    {
        Clock::duration idle;      ///< without progress
        Clock::duration write;     ///< without taking pending bytes
        Clock::duration handshake; ///< until the end of the TLS handshake
    };

    using Ended = std::function<void(std::shared_ptr<TcpConnection> const&)>;

    /// Approximate limit of the socket's send buffer. It is small because results that wait there are old when they
    /// arrive.
    static constexpr int SEND_BUFFER_BYTES = 64 * 1024;

    // The kernel ends a connection to a vanished machine after KEEP_ALIVE_IDLE + KEEP_ALIVE_PROBES * KEEP_ALIVE_INTERVAL.
    static constexpr int KEEP_ALIVE_IDLE = 30; ///< seconds
    static constexpr int KEEP_ALIVE_INTERVAL = 10;
    static constexpr int KEEP_ALIVE_PROBES = 3;

    /// `whenEnded` is called once when the connection has ended by itself. `Close` does not call it.
    TcpConnection(boost::asio::ip::tcp::socket acceptedSocket, std::unique_ptr<ITcpConversation> ownConversation,
                  std::shared_ptr<AccessRules const> firstRules, TcpCounters& serverCounters,
                  RefusalLog& serverRefusals, Ended whenEnded);
    ~TcpConnection();
    TcpConnection(TcpConnection const&) = delete;
    TcpConnection& operator=(TcpConnection const&) = delete;

    /// Starts serving the client. Before this call the server has counted it.
    void Begin();

    /// Sets the client's role by `newRules`. Drops and counts the client if it may not connect any more, or has lost its
    /// role.
    void Judge(std::shared_ptr<AccessRules const> newRules);

    /// The client whose bytes this thread handles now. Null outside of a call to a conversation.
    static ClientInfo const* Served();

    /// Drops the client if it has missed a deadline.
    void CheckDeadlines(Clock::time_point now, Deadlines const& deadlines);

    /// Calls `visit` with the conversation, and sends if it returns true. Does nothing before the end of the TLS handshake.
    void Visit(std::function<bool(ITcpConversation&)> const& visit);

    /// Drops the client.
    void Drop();

    /// Whether the client has made no progress for `time` without a reason.
    bool IsUnused(Clock::time_point now, Clock::duration time) const;

    Clock::time_point LastProgress() const
    {
        return lastProgress;
    }

    /// The address of the client.
    boost::asio::ip::address const& RemoteAddress() const
    {
        return address;
    }

    /// Closes the socket. The server has removed the connection.
    void Close();

private:
    void SetOptions();
    bool IsReady() const;
    void Handshake();
    void WaitForTls();
    void FailHandshake(std::string const& reason);
    void Identify();
    std::size_t ReadSome(std::span<char> room, boost::system::error_code& error);
    std::size_t WriteSome(std::string_view bytes, boost::system::error_code& error);
    void WaitReadable();
    void WaitWritable();
    void Readable();
    void Writable();
    void Flush();
    bool SendPending();
    void NoteProgress();
    void End(bool isDropped);

    boost::asio::ip::tcp::socket socket;
    boost::asio::ip::address address;
    std::unique_ptr<ITcpConversation> const conversation;
    std::shared_ptr<AccessRules const> rules;
    std::unique_ptr<TlsSession> tls; // null for a plain connection
    std::string certifiedRole;       // as the client's certificate names it
    TcpCounters& counters;
    RefusalLog& refusals;
    Ended ended;
    uint64 progressCount = 0;
    Clock::time_point lastProgress; // of the conversation, or the begin of the connection
    Clock::time_point stalledSince; // the client has taken no bytes since then
    bool isTaking = true;           // the client has taken bytes since `stalledSince`
    bool isReadAwaited = false;
    bool isStalled = false; // bytes wait until the socket is writable
    bool isOpen = true;
};

} // namespace PluginCommon

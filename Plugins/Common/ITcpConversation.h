#pragma once

#include "ZuCommon/Role.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace PluginCommon
{

/// The client of a conversation, as the service judges it.
struct ClientInfo
{
    std::string address; ///< such as "192.168.0.7"; empty for a conversation without a connection

    /// What the client may do: VIEWER reads; OPERATOR also writes and runs commands.
    ZuCommon::Role role = ZuCommon::Role::OPERATOR;
};

/// The protocol with one client, without a socket: bytes in, bytes out. A TCP service implements it; the kit's
/// connection reads and writes the socket.
///
/// The connection puts the bytes of the client into `Room` and calls `Received`. It writes the bytes of `Pending` and
/// calls `Sent`. When nothing is pending, it asks for the `NextStep`. A conversation bounds its memory with `Room`:
/// while `Room` is empty, nothing is read from the client, and TCP holds the client back.
///
/// Threads: all operations run on the I/O thread of the service. None may block. An exception ends the connection.
class ITcpConversation
{
public:
    enum class Step : uint8
    {
        CONTINUE,
        CLOSE, ///< the client has got everything: the connection is closed
        DROP   ///< the client has broken the protocol: the connection is closed and counts as dropped
    };

    virtual ~ITcpConversation();

    /// The connection tells the client before the first bytes, and again when new parameters change the client's role.
    void SetClient(ClientInfo newClient);

    ClientInfo const& Client() const
    {
        return client;
    }

    /// The connection sets the handler of the requests that the client's role does not allow.
    void SetDenialHandler(std::function<void(std::string const& request)> newHandler);

    /// The place for the next bytes of the client. Empty: nothing is read until `Pending` has been sent or the service
    /// visits the conversation.
    virtual std::span<char> Room() = 0;

    /// `bytes` bytes were put into `Room`.
    virtual void Received(std::size_t bytes) = 0;

    /// The client sends nothing more. It may still take answers.
    virtual void InputEnded() = 0;

    /// The bytes to send next; valid until the next call.
    virtual std::string_view Pending() const = 0;

    /// `bytes` bytes of `Pending` were sent.
    virtual void Sent(std::size_t bytes) = 0;

    virtual Step NextStep() const = 0;

    /// Grows with each answered request, and with each other event that begins a new idle time of the client.
    virtual uint64 ProgressCount() const = 0;

    /// Adds data to `Pending` that waits elsewhere, as far as there is room. The connection calls it before each write.
    virtual void TakeData();

    /// Whether the client has a reason to send nothing, such as a subscription. The idle timeout then does not apply.
    virtual bool MayBeSilent() const;

protected:
    /// Tells that the client's role does not allow a request, such as "function 6".
    void TellDenied(std::string const& request) const;

private:
    ClientInfo client;
    std::function<void(std::string const&)> denialHandler;
};

} // namespace PluginCommon

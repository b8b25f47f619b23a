#pragma once

#include "wApi/wTypes.h"

#include <boost/system/error_code.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct ssl_st;

namespace ZuTls
{
class Context;
}

namespace PluginCommon
{

/// The server's end of TLS on a non-blocking socket.
///
/// The operations report what an operation of the socket would report: `would_block` when the socket has to become
/// readable or, if `WantsToWrite` returns true, writable first; `eof` when the client has ended its side; any other error
/// for a connection that is broken. They never block.
/// Ownership: the socket outlives the session. Threads: one thread at a time.
class TlsSession final
{
public:
    using Error = boost::system::error_code;

    TlsSession(ZuTls::Context const& context, int socketDescriptor);
    ~TlsSession();
    TlsSession(TlsSession const&) = delete;
    TlsSession& operator=(TlsSession const&) = delete;

    /// Goes on with the handshake. No error: it is complete.
    void Handshake(Error& error);

    bool IsEstablished() const
    {
        return isEstablished;
    }

    /// Call these two only when the handshake is complete. `room` and `bytes` are not empty.
    std::size_t Read(std::span<char> room, Error& error);
    std::size_t Write(std::string_view bytes, Error& error);

    /// Whether the last operation waits until the socket is writable.
    bool WantsToWrite() const;

    /// Whether there are decrypted bytes to read: the socket does not become readable for them.
    bool HasUnread() const;

    /// Tells the client that nothing more follows, if that is possible at once.
    void Close();

    /// The text of an extension of the client's certificate. Nothing without a certificate or without the extension.
    std::optional<std::string> PeerExtension(std::string const& oid) const;

    /// Why the handshake has failed, as a part of a sentence.
    std::string const& Fault() const
    {
        return fault;
    }

private:
    void Note(int result, Error& error);

    std::unique_ptr<ssl_st, void (*)(ssl_st*)> session;
    std::string fault;
    bool isEstablished = false;
    bool isBroken = false; // nothing may be sent any more
};

} // namespace PluginCommon

#include "Plugins/Common/TlsSession.h"

#include "ZuTls/Certificate.h"
#include "ZuTls/Context.h"

#include <boost/asio/error.hpp>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/ssl.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <new>
#include <sys/socket.h>

namespace PluginCommon
{

namespace
{

int ClampedSize(std::size_t bytes)
{
    return static_cast<int>(std::min<std::size_t>(bytes, std::numeric_limits<int>::max()));
}

// The socket as OpenSSL sees it. OpenSSL's own one lets a write to a closed connection raise SIGPIPE.

int DescriptorOf(BIO* bio)
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(BIO_get_data(bio)));
}

/// Notes whether OpenSSL has to repeat the operation.
int Noted(BIO* bio, ssize_t result, int flag)
{
    BIO_clear_retry_flags(bio);
    if (result < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR))
    {
        BIO_set_flags(bio, flag | BIO_FLAGS_SHOULD_RETRY);
    }
    return static_cast<int>(result);
}

int ReadSocket(BIO* bio, char* room, int bytes)
{
    return Noted(bio, recv(DescriptorOf(bio), room, static_cast<std::size_t>(bytes), 0), BIO_FLAGS_READ);
}

int WriteSocket(BIO* bio, char const* data, int bytes)
{
    return Noted(bio, send(DescriptorOf(bio), data, static_cast<std::size_t>(bytes), MSG_NOSIGNAL), BIO_FLAGS_WRITE);
}

long ControlSocket(BIO*, int command, long, void*)
{
    return command == BIO_CTRL_FLUSH ? 1 : 0; // nothing is buffered
}

BIO_METHOD* MakeSocketMethod()
{
    BIO_METHOD* const method = BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "socket without signals");
    if (method == nullptr)
    {
        throw std::bad_alloc();
    }
    BIO_meth_set_read(method, &ReadSocket);
    BIO_meth_set_write(method, &WriteSocket);
    BIO_meth_set_ctrl(method, &ControlSocket);
    return method;
}

BIO* MakeSocketBio(int descriptor)
{
    static std::unique_ptr<BIO_METHOD, void (*)(BIO_METHOD*)> const method(MakeSocketMethod(), &BIO_meth_free);
    BIO* const bio = BIO_new(method.get());
    if (bio == nullptr)
    {
        throw std::bad_alloc();
    }
    BIO_set_data(bio, reinterpret_cast<void*>(std::intptr_t{descriptor}));
    BIO_set_init(bio, 1);
    return bio;
}

} // namespace

TlsSession::TlsSession(ZuTls::Context const& context, int socketDescriptor)
    : session(SSL_new(context.Native()), &SSL_free)
{
    if (session == nullptr)
    {
        ERR_clear_error();
        throw std::bad_alloc();
    }
    BIO* const bio = MakeSocketBio(socketDescriptor);
    SSL_set_bio(session.get(), bio, bio); // takes it
    SSL_set_accept_state(session.get());
    SSL_set_mode(session.get(), SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    SSL_clear_mode(session.get(), SSL_MODE_AUTO_RETRY); // a client cannot keep one read busy
}

TlsSession::~TlsSession() = default;

void TlsSession::Handshake(Error& error)
{
    ERR_clear_error(); // an error that another operation has left would count as one of this operation
    int const result = SSL_do_handshake(session.get());
    if (result == 1)
    {
        error.clear();
        isEstablished = true;
        return;
    }
    unsigned long const reason = ERR_peek_error();
    Note(result, error);
    if (isBroken || error == boost::asio::error::eof)
    {
        fault = ZuTls::Explain(reason, *session);
    }
}

std::size_t TlsSession::Read(std::span<char> room, Error& error)
{
    ERR_clear_error();
    int const result = SSL_read(session.get(), room.data(), ClampedSize(room.size()));
    if (result > 0)
    {
        error.clear();
        return static_cast<std::size_t>(result);
    }
    Note(result, error);
    return 0;
}

std::size_t TlsSession::Write(std::string_view bytes, Error& error)
{
    ERR_clear_error();
    int const result = SSL_write(session.get(), bytes.data(), ClampedSize(bytes.size()));
    if (result > 0)
    {
        error.clear();
        return static_cast<std::size_t>(result);
    }
    Note(result, error);
    if (error == boost::asio::error::would_block && !WantsToWrite())
    {
        error =
            boost::asio::error::connection_aborted; // a write waits for the socket to be writable, and for nothing else
    }
    return 0;
}

bool TlsSession::WantsToWrite() const
{
    return SSL_want_write(session.get());
}

bool TlsSession::HasUnread() const
{
    return SSL_pending(session.get()) > 0;
}

void TlsSession::Close()
{
    if (!isBroken && isEstablished)
    {
        ERR_clear_error();
        SSL_shutdown(session.get());
        ERR_clear_error();
    }
}

std::optional<std::string> TlsSession::PeerExtension(std::string const& oid) const
{
    auto const certificate = ZuTls::Certificate::OfPeer(*session);
    return certificate ? certificate->TextExtension(oid) : std::nullopt;
}

/// Translates the failure of an operation.
void TlsSession::Note(int result, Error& error)
{
    switch (SSL_get_error(session.get(), result))
    {
    case SSL_ERROR_WANT_READ:
    case SSL_ERROR_WANT_WRITE:
        error = boost::asio::error::would_block;
        break;
    case SSL_ERROR_ZERO_RETURN:
        error = boost::asio::error::eof;
        break;
    default: // also the end of the socket without the end of TLS: bytes may have been cut off
        error = boost::asio::error::connection_reset;
        isBroken = true;
        break;
    }
    ERR_clear_error();
}

} // namespace PluginCommon

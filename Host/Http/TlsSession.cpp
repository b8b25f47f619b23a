#include "Host/Http/TlsSession.h"

#include "ZuRest/Problem.h"
#include "ZuTls/Context.h"

#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/asio/write.hpp>
#include <openssl/err.h>

namespace ZuHost
{

namespace asio = boost::asio;

namespace
{

constexpr std::size_t MAX_RECORD_BYTES = 16 * 1024;

/// The number of OpenSSL's error; 0 for an error of the socket.
uint64 OpensslErrorOf(boost::system::error_code const& error)
{
    bool const isOurs = error.category() == asio::error::get_ssl_category();
    return isOurs ? static_cast<uint32>(error.value()) : 0;
}

bool IsPlainHttp(uint64 opensslError)
{
    return ERR_GET_LIB(opensslError) == ERR_LIB_SSL && ERR_GET_REASON(opensslError) == SSL_R_HTTP_REQUEST;
}

} // namespace

TlsSession::TlsSession(IHttpService& owningService, TcpStream accepted, asio::ssl::context& tls, HttpClient newClient)
    : HttpConnection(owningService, accepted.get_executor(), std::move(newClient)), stream(std::move(accepted), tls)
{
}

TlsSession::~TlsSession() = default;

std::shared_ptr<TlsSession> TlsSession::Self()
{
    return std::static_pointer_cast<TlsSession>(shared_from_this());
}

void TlsSession::StartHandshake()
{
    stream.async_handshake(asio::ssl::stream_base::server,
                           [self = Self()](ErrorCode const& error) { self->FinishHandshake(error); });
}

void TlsSession::FinishHandshake(ErrorCode const& error)
{
    uint64 const opensslError = OpensslErrorOf(error);
    if (opensslError == 0)
    {
        OnHandshake(error);
        return;
    }
    ZU_GUARD_BOUNDARY(
        [&] { Service().NoteHandshakeFault(Source(), ZuTls::Explain(opensslError, *stream.native_handle())); });
    isPlain = IsPlainHttp(opensslError);
    isPlain
        ? OnRefusedHandshake("This port takes HTTPS only: send the request to an address that begins with https://.")
        : OnHandshake(error);
}

void TlsSession::StartRead(asio::mutable_buffer room)
{
    auto done = [self = Self(), room](ErrorCode const& error, std::size_t count) {
        self->FinishRead(room, error, count);
    };
    isPlain ? stream.next_layer().async_read_some(
                  room, [self = Self()](ErrorCode const& error, std::size_t count) { self->OnRead(error, count); })
            : stream.async_read_some(room, std::move(done));
}

/// A read that TLS has ended, because everything is sent, goes on without TLS.
void TlsSession::FinishRead(asio::mutable_buffer room, ErrorCode const& error, std::size_t count)
{
    bool const isToGoOn = isPlain && error && ZU_GUARD_BOUNDARY([&] { StartRead(room); });
    if (!isToGoOn)
    {
        OnRead(error, count);
    }
}

/// Puts a small answer into one record, which saves a system call.
void TlsSession::StartWrite(Buffers const& buffers)
{
    auto done = [self = Self()](ErrorCode const& error, std::size_t) { self->OnWritten(error); };
    if (isPlain)
    {
        asio::async_write(stream.next_layer(), buffers, std::move(done));
    }
    else if (asio::buffer_size(buffers) > MAX_RECORD_BYTES)
    {
        asio::async_write(stream, buffers, std::move(done));
    }
    else
    {
        record.resize(asio::buffer_size(buffers));
        asio::buffer_copy(asio::buffer(record), buffers);
        asio::async_write(stream, asio::buffer(record), std::move(done));
    }
}

/// Sends the end of TLS without waiting for that of the client. The rest that the client sends is not decrypted: TLS would
/// take data behind the end for a fault and break the connection, and the client would lose the last answer.
void TlsSession::EndSending() noexcept
{
    if (isPlain)
    {
        EndTcpSending();
        return;
    }
    isPlain = true;
    SSL* const native = stream.native_handle();
    SSL_set_shutdown(native, SSL_get_shutdown(native) | SSL_RECEIVED_SHUTDOWN);
    ZU_GUARD_DESTRUCTOR(
        [this] { stream.async_shutdown([self = Self()](ErrorCode const& /*error*/) { self->EndTcpSending(); }); });
}

void TlsSession::EndTcpSending() noexcept
{
    ErrorCode ignored; // the client may be gone
    boost::beast::get_lowest_layer(stream).socket().shutdown(asio::socket_base::shutdown_send, ignored);
}

void TlsSession::CloseStream() noexcept
{
    boost::beast::get_lowest_layer(stream).close();
}

} // namespace ZuHost

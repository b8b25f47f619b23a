#pragma once

#include "Host/Http/HttpConnection.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/basic_stream.hpp>

#include <memory>
#include <string>

namespace boost::asio::ssl
{
class context;
}

namespace ZuHost
{

/// A connection over TLS.
///
/// The handshake runs in the connection's phase HANDSHAKE, under its deadline. A client that sends plain HTTP to the TLS
/// port gets a plain answer that says so. After the last answer the client gets the end of TLS; bytes that it still sends are
/// then read past without being decrypted.
class TlsSession final : public HttpConnection
{
public:
    using TcpStream = boost::beast::basic_stream<boost::asio::ip::tcp, Strand>;

    /// `tls` is used within the call only.
    TlsSession(IHttpService& owningService, TcpStream accepted, boost::asio::ssl::context& tls, HttpClient newClient);
    ~TlsSession() override;

    TlsSession(TlsSession const&) = delete;
    TlsSession& operator=(TlsSession const&) = delete;

private:
    using ErrorCode = boost::system::error_code;

    std::shared_ptr<TlsSession> Self();
    void StartHandshake() override;
    void StartRead(boost::asio::mutable_buffer room) override;
    void StartWrite(Buffers const& buffers) override;
    void EndSending() noexcept override;
    void CloseStream() noexcept override;

    void FinishHandshake(ErrorCode const& error);
    void FinishRead(boost::asio::mutable_buffer room, ErrorCode const& error, std::size_t count);
    void EndTcpSending() noexcept;

    boost::asio::ssl::stream<TcpStream> stream;
    bool isPlain = false; // reads and writes bypass TLS: it has not begun or has ended
    std::string record;   // head and body of a small answer, for one write
};

} // namespace ZuHost

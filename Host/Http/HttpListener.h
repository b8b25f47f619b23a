#pragma once

#include "Host/Http/HttpConnection.h"
#include "wApi/wTypes.h"

#include <utility> // before Asio's headers, which use it without including it

#include <boost/asio/basic_socket_acceptor.hpp>
#include <boost/asio/basic_stream_socket.hpp>
#include <boost/asio/basic_waitable_timer.hpp>
#include <boost/asio/ip/tcp.hpp>

#include <chrono>
#include <functional>
#include <string>

namespace ZuHost
{

/// Accepts connections at one address.
///
/// Ownership: the owner destroys the listener after the threads of the context have ended.
/// Threads: after the constructor, `Accept` and `Close` belong to the strand.
class HttpListener final
{
public:
    using Strand = HttpConnection::Strand;
    using Socket = boost::asio::basic_stream_socket<boost::asio::ip::tcp, Strand>;
    /// Takes a new connection, on the strand of the listener. The socket has a strand of its own.
    using Welcome = std::function<void(Socket)>;

    /// Binds the address and listens: clients can connect, but are accepted only after `Accept`. Throws as
    /// `HttpServer::Listen` does.
    HttpListener(boost::asio::io_context& usedContext, Strand const& usedStrand,
                 boost::asio::ip::address const& address, uint16 port, Welcome newWelcome);
    ~HttpListener();

    HttpListener(HttpListener const&) = delete;
    HttpListener& operator=(HttpListener const&) = delete;

    void Accept(); ///< from now on
    void Close();  ///< accepts no more

    boost::asio::ip::tcp::endpoint const& Endpoint() const noexcept; ///< with the real port
    bool IsLocal() const;                                            ///< only clients of this machine reach it

    /// "127.0.0.1:8080", "[::1]:8080".
    static std::string TextOf(std::string const& address, uint16 port);

private:
    using Clock = std::chrono::steady_clock;

    boost::asio::ip::tcp::endpoint Listen(boost::asio::ip::tcp::endpoint const& wanted);
    void OnAccept(boost::system::error_code const& error, Socket socket);
    void Retry();

    boost::asio::io_context& context;
    boost::asio::basic_socket_acceptor<boost::asio::ip::tcp, Strand> acceptor;
    boost::asio::basic_waitable_timer<Clock, boost::asio::wait_traits<Clock>, Strand> retry;
    Welcome const welcome;
    boost::asio::ip::tcp::endpoint const endpoint;
};

} // namespace ZuHost

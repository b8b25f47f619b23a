#include "Host/Http/HttpListener.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"

#include <boost/asio/io_context.hpp>
#include <boost/system/system_error.hpp>

#include <utility>

namespace ZuHost
{

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

namespace
{

constexpr std::chrono::milliseconds ACCEPT_RETRY{100};

int32 StatusOf(error_code const& error)
{
    namespace errors = boost::system::errc;
    if (error == errors::address_in_use)
    {
        return Zu::Status::BUSY;
    }
    return error == errors::address_not_available ? Zu::Status::BAD_ARGUMENT : Zu::Status::FAILURE;
}

} // namespace

HttpListener::HttpListener(asio::io_context& usedContext, Strand const& usedStrand, asio::ip::address const& address,
                           uint16 port, Welcome newWelcome)
    : context(usedContext),
      acceptor(usedStrand),
      retry(usedStrand),
      welcome(std::move(newWelcome)),
      endpoint(Listen({address, port}))
{
}

HttpListener::~HttpListener() = default;

/// Returns the bound address.
tcp::endpoint HttpListener::Listen(tcp::endpoint const& wanted)
{
    try
    {
        acceptor.open(wanted.protocol());
        acceptor.set_option(tcp::acceptor::reuse_address(true)); // connections of the previous run may still be closing
        acceptor.bind(wanted);
        acceptor.listen();
        return acceptor.local_endpoint();
    }
    catch (boost::system::system_error const& error)
    {
        ZU_THROW(StatusOf(error.code()), "The REST service cannot listen on %s: %s",
                 TextOf(wanted.address().to_string(), wanted.port()).c_str(), error.code().message().c_str());
    }
}

void HttpListener::Accept()
{
    acceptor.async_accept(asio::make_strand(context),
                          [this](error_code const& error, Socket socket) { OnAccept(error, std::move(socket)); });
}

void HttpListener::OnAccept(error_code const& error, Socket socket)
{
    if (!acceptor.is_open())
    {
        return; // the server stops
    }
    bool const isDone = !error && ZU_GUARD_BOUNDARY([this, &socket] {
        welcome(std::move(socket));
        Accept();
    });
    if (!isDone)
    {
        Retry();
    }
}

/// Waits before the next attempt, which would fail at once too: the system has no descriptor or memory left.
void HttpListener::Retry()
{
    retry.expires_after(ACCEPT_RETRY);
    retry.async_wait([this](error_code const& error) {
        if (!error && acceptor.is_open())
        {
            Accept();
        }
    });
}

void HttpListener::Close()
{
    error_code ignored;
    acceptor.close(ignored);
    retry.cancel();
}

tcp::endpoint const& HttpListener::Endpoint() const noexcept
{
    return endpoint;
}

bool HttpListener::IsLocal() const
{
    return endpoint.address().is_loopback();
}

std::string HttpListener::TextOf(std::string const& address, uint16 port)
{
    bool const isVersion6 = address.find(':') != std::string::npos;
    return (isVersion6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

} // namespace ZuHost

#include "Plugins/Common/TcpListener.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"

#include <boost/asio/io_context.hpp>

#include <chrono>

namespace PluginCommon
{

using boost::asio::ip::tcp;

namespace
{

constexpr std::chrono::milliseconds ACCEPT_RETRY{100};

int32 StatusOf(boost::system::error_code const& error)
{
    namespace errors = boost::system::errc;
    if (error == errors::address_in_use)
    {
        return Zu::Status::BUSY;
    }
    return error == errors::address_not_available ? Zu::Status::BAD_ARGUMENT : Zu::Status::FAILURE;
}

} // namespace

std::string EndpointText(std::string const& address, uint16 port)
{
    bool const isVersion6 = address.find(':') != std::string::npos;
    return (isVersion6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

TcpListener::TcpListener(boost::asio::io_context& usedIo, std::string newDisplayName,
                         std::function<void(Socket)> whenAccepted)
    : io(usedIo),
      displayName(std::move(newDisplayName)),
      accepted(std::move(whenAccepted)),
      acceptor(std::make_shared<tcp::acceptor>(usedIo)),
      acceptRetry(usedIo)
{
}

TcpListener::~TcpListener() = default;

void TcpListener::Open(std::string const& address, uint16 port)
{
    Error error;
    Acceptor const opened = TryOpen(Parse(address, port), error);
    if (opened == nullptr)
    {
        Refuse(address, port, error);
    }
    ListenWith(opened);
}

void TcpListener::Move(std::string const& address, uint16 port)
{
    Endpoint const newPlace = Parse(address, port); // first: an invalid address changes nothing
    Error error;
    Acceptor opened = TryOpen(newPlace, error);
    bool const mayOverlap = error == boost::system::errc::address_in_use && newPlace.port() == place.port();
    if (mayOverlap) // the old socket itself may be in the way
    {
        Close();
        opened = TryOpen(newPlace, error);
    }
    if (opened != nullptr)
    {
        Close();
        ListenWith(opened);
        return;
    }
    if (mayOverlap)
    {
        GoBack(address, port, error);
    }
    Refuse(address, port, error);
}

void TcpListener::Close()
{
    Error ignored; // a failed close leaves nothing to do
    acceptor->close(ignored);
    acceptRetry.cancel();
}

/// Throws `Zu::Status::BAD_ARGUMENT` for an invalid address.
TcpListener::Endpoint TcpListener::Parse(std::string const& address, uint16 port) const
{
    Error error;
    auto const parsed = boost::asio::ip::make_address(address, error);
    if (error)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s cannot listen on %s: the address is not an IP address",
                 displayName.c_str(), EndpointText(address, port).c_str());
    }
    return {parsed, port};
}

void TcpListener::Refuse(std::string const& address, uint16 port, Error const& error) const
{
    ZU_THROW(StatusOf(error), "%s cannot listen on %s: %s", displayName.c_str(), EndpointText(address, port).c_str(),
             error.message().c_str());
}

/// Returns null and sets `error` if that fails.
TcpListener::Acceptor TcpListener::TryOpen(Endpoint const& wanted, Error& error)
{
    auto opened = std::make_shared<tcp::acceptor>(io);
    opened->open(wanted.protocol(), error);
    if (!error) // allows a port on which only connections are left; a port with a listener is still refused
    {
        opened->set_option(tcp::acceptor::reuse_address(true), error);
    }
    if (!error)
    {
        opened->bind(wanted, error);
    }
    if (!error)
    {
        opened->listen(tcp::acceptor::max_listen_connections, error);
    }
    return error ? nullptr : opened;
}

void TcpListener::ListenWith(Acceptor const& opened)
{
    acceptor = opened;
    place = opened->local_endpoint();
    Accept(opened);
}

/// Opens the old socket again. If that fails, throws a refusal that names both addresses.
void TcpListener::GoBack(std::string const& address, uint16 port, Error const& refusal)
{
    Error error;
    Acceptor const opened = TryOpen(place, error);
    if (opened == nullptr)
    {
        ZU_THROW(StatusOf(refusal), "%s cannot listen on %s: %s. It cannot go back to %s either: %s",
                 displayName.c_str(), EndpointText(address, port).c_str(), refusal.message().c_str(),
                 EndpointText(place.address().to_string(), place.port()).c_str(), error.message().c_str());
    }
    ListenWith(opened);
}

void TcpListener::Accept(Acceptor const& opened)
{
    opened->async_accept([this, opened](Error const& error, tcp::socket socket) {
        if (!opened->is_open())
        {
            return;
        }
        if (error)
        {
            RetryAccept(opened);
            return;
        }
        ZU_GUARD_BOUNDARY([&] { accepted(std::move(socket)); });
        Accept(opened);
    });
}

/// Waits before accepting again, for example when no descriptor is free. Retrying at once would take time from the
/// clients.
void TcpListener::RetryAccept(Acceptor const& opened)
{
    acceptRetry.expires_after(ACCEPT_RETRY);
    acceptRetry.async_wait([this, opened](Error const&) {
        if (opened->is_open())
        {
            Accept(opened);
        }
    });
}

} // namespace PluginCommon

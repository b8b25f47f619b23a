#pragma once

#include "wApi/wTypes.h"

#include <utility> // the networking headers need it and do not include it

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <functional>
#include <memory>
#include <string>

namespace PluginCommon
{

/// The listening socket of a TcpServer. Used before the I/O thread runs, and then on that thread only.
class TcpListener final
{
public:
    using Endpoint = boost::asio::ip::tcp::endpoint;
    using Socket = boost::asio::ip::tcp::socket;

    /// `newDisplayName` begins the texts of refusals. `whenAccepted` is called for each new connection.
    TcpListener(boost::asio::io_context& usedIo, std::string newDisplayName, std::function<void(Socket)> whenAccepted);
    ~TcpListener();
    TcpListener(TcpListener const&) = delete;
    TcpListener& operator=(TcpListener const&) = delete;

    /// Starts listening. Throws as `TcpServer::Start` does.
    void Open(std::string const& address, uint16 port);

    /// Replaces the listening socket. If the new address is refused, the old socket stays or is opened again, and the
    /// refusal is thrown.
    void Move(std::string const& address, uint16 port);

    void Close();

    /// False after a move that could not go back.
    bool IsOpen() const
    {
        return acceptor->is_open();
    }

    /// The address with the actual port, or the last one.
    Endpoint const& Place() const
    {
        return place;
    }

private:
    using Acceptor = std::shared_ptr<boost::asio::ip::tcp::acceptor>; // pending operations share it
    using Error = boost::system::error_code;

    Endpoint Parse(std::string const& address, uint16 port) const;
    [[noreturn]] void Refuse(std::string const& address, uint16 port, Error const& error) const;
    Acceptor TryOpen(Endpoint const& wanted, Error& error);
    void ListenWith(Acceptor const& opened);
    void GoBack(std::string const& address, uint16 port, Error const& refusal);
    void Accept(Acceptor const& opened);
    void RetryAccept(Acceptor const& opened);

    boost::asio::io_context& io;
    std::string const displayName;
    std::function<void(Socket)> const accepted;
    Acceptor acceptor;
    Endpoint place;
    boost::asio::steady_timer acceptRetry;
};

/// "127.0.0.1:1502", "[::1]:1502".
std::string EndpointText(std::string const& address, uint16 port);

} // namespace PluginCommon

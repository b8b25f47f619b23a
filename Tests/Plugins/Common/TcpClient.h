#pragma once

#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace PluginCommon
{

/// A client with a blocking socket to 127.0.0.1. Every wait is bounded. Every failure throws std::runtime_error.
class TcpClient
{
public:
    using Bytes = std::vector<uint8>;

    /// `receiveBufferBytes` is the size of the socket's receive buffer; 0 selects the default of the system.
    /// `ownAddress` is the loopback address of the client.
    explicit TcpClient(uint16 port, int receiveBufferBytes = 0, char const* ownAddress = "127.0.0.1");
    ~TcpClient();
    TcpClient(TcpClient&& other) noexcept;
    TcpClient& operator=(TcpClient&&) = delete;

    void Send(Bytes const& bytes);
    void SendText(std::string const& text);

    /// Closes the sending direction. The other direction stays open.
    void EndSending();

    /// Receives exactly this many bytes.
    Bytes Receive(std::size_t count);

    /// Receives a line. Returns it without the line feed and without a carriage return before it.
    std::string ReceiveLine();

    /// Whether the server has closed the connection without sending a byte before.
    bool IsClosedByServer();

    int Descriptor() const
    {
        return descriptor;
    }

private:
    int descriptor;
    std::string received; // bytes behind the last line
};

/// Binds a port of a loopback address and listens on it until destruction. Port 0 takes a free one.
class OccupiedPort final
{
public:
    explicit OccupiedPort(char const* address = "127.0.0.1", uint16 port = 0);
    ~OccupiedPort();
    OccupiedPort(OccupiedPort const&) = delete;
    OccupiedPort& operator=(OccupiedPort const&) = delete;

    uint16 Number() const
    {
        return number;
    }

private:
    int descriptor;
    uint16 number;
};

} // namespace PluginCommon

#pragma once

#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace PluginCommon
{

/// A client over a plain blocking socket to 127.0.0.1. Every wait is bounded; what goes wrong throws
/// std::runtime_error.
class TcpClient
{
public:
    using Bytes = std::vector<uint8>;

    /// `receiveBufferBytes` is what the system may keep unread for this client; 0 leaves that to the system.
    explicit TcpClient(uint16 port, int receiveBufferBytes = 0);
    ~TcpClient();
    TcpClient(TcpClient&& other) noexcept;
    TcpClient& operator=(TcpClient&&) = delete;

    void Send(Bytes const& bytes);
    void SendText(std::string const& text);

    /// Nothing more comes from here; the other direction stays open.
    void EndSending();

    /// Exactly this many bytes.
    Bytes Receive(std::size_t count);

    /// Up to the next line feed, without it and without a carriage return before it.
    std::string ReceiveLine();

    /// True when the server has closed the connection, with nothing sent before.
    bool IsClosedByServer();

private:
    int descriptor;
    std::string received; // bytes behind the last line
};

/// Binds a port of 127.0.0.1 and listens on it for as long as it lives.
class OccupiedPort final
{
public:
    OccupiedPort();
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

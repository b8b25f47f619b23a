#pragma once

#include "wApi/wTypes.h"

#include <netinet/in.h>
#include <string>

/// A UDP socket that sends to one receiver. One thread at a time.
class UdpSender final
{
public:
    UdpSender() = default;
    ~UdpSender(); ///< closes the socket

    UdpSender(UdpSender const&) = delete;
    UdpSender& operator=(UdpSender const&) = delete;

    /// Opens a socket for this receiver; an open socket is closed first, even if this throws. Throws
    /// `Zu::Status::BAD_ARGUMENT` for an invalid address and `Zu::Status::FAILURE` when there is no socket.
    void Open(std::string const& address, uint16 port);

    void Close() noexcept;

    /// Sends without blocking. Returns false if the datagram was not sent.
    bool Send(std::string const& text) noexcept;

private:
    int handle = -1; // of the socket; -1 while closed
    sockaddr_in receiver{};
};

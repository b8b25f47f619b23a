#pragma once

#include "wApi/wTypes.h"

#include <netinet/in.h>
#include <string>

/// A socket that sends to one receiver. One thread at a time uses it.
class UdpSender final
{
public:
    UdpSender() = default;
    ~UdpSender(); ///< closes

    UdpSender(UdpSender const&) = delete;
    UdpSender& operator=(UdpSender const&) = delete;

    /// From now on sends there. Throws -997 for an address that is none, 0 when there is no socket; what was open before is
    /// closed in any case.
    void Open(std::string const& address, uint16 port);

    void Close() noexcept;

    /// Sends without waiting; false when that was not possible.
    bool Send(std::string const& text) noexcept;

private:
    int handle = -1; // of the socket; -1 while closed
    sockaddr_in receiver{};
};

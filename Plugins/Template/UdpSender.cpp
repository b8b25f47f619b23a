#include "UdpSender.h"

#include "ZuApi/Exception.h"
#include "wApi/wTypes.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>

UdpSender::~UdpSender()
{
    Close();
}

void UdpSender::Open(std::string const& address, uint16 port)
{
    Close();
    receiver = {};
    receiver.sin_family = AF_INET;
    receiver.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &receiver.sin_addr) != 1)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "'%s' is not an IPv4 address", address.c_str());
    }
    handle = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (handle < 0)
    {
        ZU_THROW(Zu::Status::FAILURE, "There is no socket: %s", std::strerror(errno));
    }
}

void UdpSender::Close() noexcept
{
    if (handle >= 0)
    {
        close(handle);
        handle = -1;
    }
}

bool UdpSender::Send(std::string const& text) noexcept
{
    auto const* const address =
        reinterpret_cast<sockaddr const*>(&receiver); // the type that the socket interface takes
    return handle >= 0 && sendto(handle, text.data(), text.size(), MSG_DONTWAIT, address, sizeof receiver) >= 0;
}

#include "Tests/Plugins/Common/TcpClient.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace PluginCommon
{

namespace
{

constexpr time_t LONGEST_WAIT_SECONDS = 20;

sockaddr_in Loopback(uint16 port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

[[noreturn]] void Fail(std::string const& what)
{
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

int OpenSocket()
{
    int const descriptor = socket(AF_INET, SOCK_STREAM, 0);
    if (descriptor < 0)
    {
        Fail("socket");
    }
    return descriptor;
}

} // namespace

TcpClient::TcpClient(uint16 port, int receiveBufferBytes, char const* ownAddress) : descriptor(OpenSocket())
{
    if (receiveBufferBytes > 0)
    {
        setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &receiveBufferBytes, sizeof receiveBufferBytes);
    }
    timeval const limit{LONGEST_WAIT_SECONDS, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    int const noDelay = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
    sockaddr_in own = Loopback(0);
    inet_pton(AF_INET, ownAddress, &own.sin_addr);
    bind(descriptor, reinterpret_cast<sockaddr const*>(&own), sizeof own);
    sockaddr_in const address = Loopback(port);
    if (connect(descriptor, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0)
    {
        int const error = errno;
        close(descriptor);
        errno = error;
        Fail("connect");
    }
}

TcpClient::~TcpClient()
{
    if (descriptor >= 0)
    {
        close(descriptor);
    }
}

TcpClient::TcpClient(TcpClient&& other) noexcept : descriptor(other.descriptor), received(std::move(other.received))
{
    other.descriptor = -1;
}

void TcpClient::Send(Bytes const& bytes)
{
    for (std::size_t sent = 0; sent < bytes.size();)
    {
        ssize_t const count = send(descriptor, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0)
        {
            Fail("send");
        }
        sent += static_cast<std::size_t>(count);
    }
}

void TcpClient::SendText(std::string const& text)
{
    Send(Bytes(text.begin(), text.end()));
}

void TcpClient::EndSending()
{
    shutdown(descriptor, SHUT_WR);
}

TcpClient::Bytes TcpClient::Receive(std::size_t count)
{
    Bytes bytes(count);
    for (std::size_t got = 0; got < count;)
    {
        ssize_t const now = recv(descriptor, bytes.data() + got, count - got, 0);
        if (now <= 0)
        {
            Fail(now == 0 ? "closed after " + std::to_string(got) + " bytes" : "receive");
        }
        got += static_cast<std::size_t>(now);
    }
    return bytes;
}

std::string TcpClient::ReceiveLine()
{
    std::size_t end = received.find('\n');
    while (end == std::string::npos)
    {
        char bytes[4096];
        ssize_t const now = recv(descriptor, bytes, sizeof bytes, 0);
        if (now <= 0)
        {
            Fail(now == 0 ? "closed after '" + received + "'" : "receive a line");
        }
        received.append(bytes, static_cast<std::size_t>(now));
        end = received.find('\n');
    }
    std::string line = received.substr(0, end);
    received.erase(0, end + 1);
    if (line.ends_with('\r'))
    {
        line.pop_back();
    }
    return line;
}

bool TcpClient::IsClosedByServer()
{
    uint8 byte = 0;
    ssize_t const count = recv(descriptor, &byte, 1, 0);
    return count == 0 || (count < 0 && errno == ECONNRESET);
}

OccupiedPort::OccupiedPort(char const* where, uint16 port) : descriptor(OpenSocket()), number(0)
{
    sockaddr_in address = Loopback(port);
    inet_pton(AF_INET, where, &address.sin_addr);
    socklen_t size = sizeof address;
    if (bind(descriptor, reinterpret_cast<sockaddr const*>(&address), size) != 0 || listen(descriptor, 1) != 0 ||
        getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0)
    {
        Fail("listen");
    }
    number = ntohs(address.sin_port);
}

OccupiedPort::~OccupiedPort()
{
    close(descriptor);
}

} // namespace PluginCommon

#include "Tests/Plugins/ModbusTcp/TestClient.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace ModbusTcp
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

TestClient::TestClient(uint16 port) : descriptor(OpenSocket())
{
    timeval const limit{LONGEST_WAIT_SECONDS, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    int const noDelay = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
    sockaddr_in const address = Loopback(port);
    if (connect(descriptor, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0)
    {
        int const error = errno;
        close(descriptor);
        errno = error;
        Fail("connect");
    }
}

TestClient::~TestClient()
{
    if (descriptor >= 0)
    {
        close(descriptor);
    }
}

TestClient::TestClient(TestClient&& other) noexcept : descriptor(other.descriptor), transaction(other.transaction)
{
    other.descriptor = -1;
}

void TestClient::Send(Bytes const& bytes)
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

TestClient::Bytes TestClient::Receive(std::size_t count)
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

bool TestClient::IsClosedByServer()
{
    uint8 byte = 0;
    ssize_t const count = recv(descriptor, &byte, 1, 0);
    return count == 0 || (count < 0 && errno == ECONNRESET);
}

TestClient::Bytes TestClient::Ask(Bytes const& pdu)
{
    ++transaction;
    std::size_t const length = pdu.size() + 1;
    Bytes frame = {static_cast<uint8>(transaction >> 8), static_cast<uint8>(transaction & 0xFF), 0, 0,
                   static_cast<uint8>(length >> 8),      static_cast<uint8>(length & 0xFF),      1};
    frame.insert(frame.end(), pdu.begin(), pdu.end());
    Send(frame);
    Bytes const header = Receive(7);
    if (header[0] != frame[0] || header[1] != frame[1] || header[2] != 0 || header[3] != 0 || header[6] != frame[6])
    {
        throw std::runtime_error("the answer is to another request");
    }
    return Receive(static_cast<std::size_t>(header[4] << 8 | header[5]) - 1);
}

TestClient::Registers TestClient::Read(uint16 first, uint16 count)
{
    Bytes const answer = Ask({3, static_cast<uint8>(first >> 8), static_cast<uint8>(first & 0xFF),
                              static_cast<uint8>(count >> 8), static_cast<uint8>(count & 0xFF)});
    if (answer.size() != 2u + 2u * count || answer[0] != 3)
    {
        throw std::runtime_error("the read was refused");
    }
    Registers registers(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        registers[i] = static_cast<uint16>(answer[2 + 2 * i] << 8 | answer[3 + 2 * i]);
    }
    return registers;
}

uint8 TestClient::Write(uint16 first, Registers const& values)
{
    Bytes pdu = {16, static_cast<uint8>(first >> 8),    static_cast<uint8>(first & 0xFF),
                 0,  static_cast<uint8>(values.size()), static_cast<uint8>(2 * values.size())};
    for (uint16 const value : values)
    {
        pdu.push_back(static_cast<uint8>(value >> 8));
        pdu.push_back(static_cast<uint8>(value & 0xFF));
    }
    Bytes const answer = Ask(pdu);
    return answer[0] == 16 ? uint8{0} : answer[1];
}

OccupiedPort::OccupiedPort() : descriptor(OpenSocket()), number(0)
{
    sockaddr_in address = Loopback(0);
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

} // namespace ModbusTcp

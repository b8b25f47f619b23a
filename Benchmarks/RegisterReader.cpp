#include "RegisterReader.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace ZuBench
{

namespace
{

constexpr std::size_t HEADER_SIZE = 9; // up to the number of bytes
constexpr std::size_t MOST_REGISTERS = 125;

[[noreturn]] void Fail(char const* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

uint8 High(std::size_t value)
{
    return static_cast<uint8>(value >> 8);
}

uint8 Low(std::size_t value)
{
    return static_cast<uint8>(value & 0xFF);
}

} // namespace

RegisterReader::RegisterReader(uint16 port) : socket(::socket(AF_INET, SOCK_STREAM, 0))
{
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(port);
    server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (socket < 0 || connect(socket, reinterpret_cast<sockaddr const*>(&server), sizeof server) != 0)
    {
        Fail("connect");
    }
    int const enable = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &enable, sizeof enable);
}

RegisterReader::~RegisterReader()
{
    close(socket);
}

void RegisterReader::Read(uint16 first, std::span<uint16> registers)
{
    std::size_t const count = registers.size();
    std::array<uint8, 12> const request{0, 1, 0, 0, 0, 6, 1, 3, High(first), Low(first), High(count), Low(count)};
    if (send(socket, request.data(), request.size(), 0) != static_cast<ssize_t>(request.size()))
    {
        Fail("send");
    }
    std::array<uint8, HEADER_SIZE + 2 * MOST_REGISTERS> answer;
    Receive(std::span(answer).first(HEADER_SIZE));
    if (answer[7] != 3 || answer[8] != 2 * count)
    {
        throw std::runtime_error("the server refused a read");
    }
    Receive(std::span(answer).subspan(HEADER_SIZE, 2 * count));
    for (std::size_t i = 0; i < count; ++i)
    {
        registers[i] = static_cast<uint16>(answer[HEADER_SIZE + 2 * i] << 8 | answer[HEADER_SIZE + 2 * i + 1]);
    }
}

void RegisterReader::Receive(std::span<uint8> bytes)
{
    while (!bytes.empty())
    {
        ssize_t const received = recv(socket, bytes.data(), bytes.size(), 0);
        if (received <= 0)
        {
            Fail("recv");
        }
        bytes = bytes.subspan(static_cast<std::size_t>(received));
    }
}

} // namespace ZuBench

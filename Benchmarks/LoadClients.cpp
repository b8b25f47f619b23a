#include "LoadClients.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace ZuBench
{

namespace
{

[[noreturn]] void Fail(char const* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

int Connect(uint16 port)
{
    int const made = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(port);
    server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (made < 0 || connect(made, reinterpret_cast<sockaddr const*>(&server), sizeof server) != 0)
    {
        Fail("connect");
    }
    int const enable = 1;
    setsockopt(made, IPPROTO_TCP, TCP_NODELAY, &enable, sizeof enable);
    return made;
}

} // namespace

LoadClients::LoadClients(uint16 port, uint64 count, std::string newRequest, LengthOf newLengthOf, ssl_ctx_st* tls)
    : request(std::move(newRequest)), lengthOf(std::move(newLengthOf)), poll(epoll_create1(0)), clients(count)
{
    for (uint64 i = 0; i < count; ++i)
    {
        clients[i].socket = Connect(port);
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = i;
        if (epoll_ctl(poll, EPOLL_CTL_ADD, clients[i].socket, &event) != 0)
        {
            Fail("epoll_ctl");
        }
        if (tls != nullptr)
        {
            clients[i].tls.reset(SSL_new(tls), &SSL_free);
            SSL_set_fd(clients[i].tls.get(), clients[i].socket);
            if (SSL_connect(clients[i].tls.get()) != 1)
            {
                Fail("SSL_connect");
            }
        }
    }
}

LoadClients::~LoadClients()
{
    for (Client const& client : clients)
    {
        close(client.socket);
    }
    close(poll);
}

std::string LoadClients::Ask(uint64 answers)
{
    uint64 asked = 0;
    uint64 answered = 0;
    std::string last;
    for (Client const& client : clients)
    {
        Send(client);
        ++asked;
    }
    std::array<epoll_event, 64> events;
    while (answered < asked)
    {
        int const ready = epoll_wait(poll, events.data(), static_cast<int>(events.size()), -1);
        for (int i = 0; i < ready; ++i)
        {
            Client& client = clients[events[static_cast<std::size_t>(i)].data.u64];
            if (!Receive(client))
            {
                continue;
            }
            ++answered;
            last = std::exchange(client.received, {});
            if (asked < answers)
            {
                Send(client);
                ++asked;
            }
        }
    }
    return last;
}

void LoadClients::Send(Client const& client) const
{
    ssize_t const count = client.tls != nullptr
                              ? SSL_write(client.tls.get(), request.data(), static_cast<int>(request.size()))
                              : send(client.socket, request.data(), request.size(), MSG_NOSIGNAL);
    if (count != static_cast<ssize_t>(request.size()))
    {
        Fail("send");
    }
}

/// Returns true when the answer is complete.
bool LoadClients::Receive(Client& client) const
{
    std::array<char, 16384> part;
    ssize_t const count = client.tls != nullptr ? SSL_read(client.tls.get(), part.data(), static_cast<int>(part.size()))
                                                : recv(client.socket, part.data(), part.size(), 0);
    if (count <= 0)
    {
        Fail("recv");
    }
    client.received.append(part.data(), static_cast<std::size_t>(count));
    std::size_t const length = lengthOf(client.received);
    return length > 0 && client.received.size() >= length;
}

} // namespace ZuBench

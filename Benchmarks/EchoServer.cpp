#include "EchoServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <thread>

namespace ZuBench
{

namespace
{

int Listen(uint16& port)
{
    int const listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (listener < 0 || bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(listener, 64) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
    {
        throw std::runtime_error("the echo server does not listen");
    }
    port = ntohs(address.sin_port);
    return listener;
}

void Watch(int poll, int socket)
{
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = socket;
    epoll_ctl(poll, EPOLL_CTL_ADD, socket, &event);
}

void Answer(int socket, std::size_t requestBytes, std::string const& answer)
{
    std::array<char, 4096> received;
    ssize_t const count = recv(socket, received.data(), received.size(), 0);
    if (count <= 0)
    {
        close(socket);
        return;
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(count) / requestBytes; ++i)
    {
        if (send(socket, answer.data(), answer.size(), MSG_NOSIGNAL) < 0)
        {
            return;
        }
    }
}

void Serve(int listener, std::size_t requestBytes, std::string const& answer)
{
    int const poll = epoll_create1(0);
    Watch(poll, listener);
    std::array<epoll_event, 64> events;
    while (true)
    {
        int const ready = epoll_wait(poll, events.data(), static_cast<int>(events.size()), -1);
        for (int i = 0; i < ready; ++i)
        {
            int const socket = events[static_cast<std::size_t>(i)].data.fd;
            if (socket == listener)
            {
                Watch(poll, accept(listener, nullptr, nullptr));
            }
            else
            {
                Answer(socket, requestBytes, answer);
            }
        }
    }
}

} // namespace

std::shared_ptr<void> EchoServer::Start(std::size_t requestBytes, std::string const& answer, uint16& port)
{
    int const listener = Listen(port);
    std::thread([=] { Serve(listener, requestBytes, answer); }).detach();
    return nullptr;
}

} // namespace ZuBench

#include "Host/Http/TestConnection.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace ZuTest
{

bool TestConnection::Answer::Has(std::string const& line) const
{
    return head.find("\r\n" + line + "\r\n") != std::string::npos;
}

TestConnection::TestConnection(uint16 port, char const* source, ssl_ctx_st* context)
    : socket(::socket(AF_INET, SOCK_STREAM, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    EXPECT_EQ(::inet_pton(AF_INET, source, &address.sin_addr), 1);
    EXPECT_EQ(::bind(socket, reinterpret_cast<sockaddr const*>(&address), sizeof(address)), 0);
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    timeval const bound{30, 0};
    EXPECT_EQ(::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof(bound)), 0);
    EXPECT_EQ(::connect(socket, reinterpret_cast<sockaddr const*>(&address), sizeof(address)), 0);
    if (context != nullptr)
    {
        tls.reset(SSL_new(context), &SSL_free);
        SSL_set_fd(tls.get(), socket);
        SSL_connect(tls.get());
    }
}

bool TestConnection::HasTls() const
{
    return tls != nullptr && SSL_is_init_finished(tls.get()) == 1;
}

bool TestConnection::HasTlsEnded() const
{
    return tls != nullptr && (SSL_get_shutdown(tls.get()) & SSL_RECEIVED_SHUTDOWN) != 0;
}

ssl_st* TestConnection::Tls() const
{
    return tls.get();
}

TestConnection::~TestConnection()
{
    ::close(socket);
}

void TestConnection::Write(std::string const& bytes)
{
    std::size_t written = 0;
    while (written < bytes.size())
    {
        std::size_t const left = bytes.size() - written;
        ssize_t const some = tls != nullptr ? SSL_write(tls.get(), bytes.data() + written, static_cast<int>(left))
                                            : ::send(socket, bytes.data() + written, left, MSG_NOSIGNAL);
        if (some <= 0)
        {
            return; // the other side has closed the connection
        }
        written += static_cast<std::size_t>(some);
    }
}

void TestConnection::EndWriting()
{
    ::shutdown(socket, SHUT_WR);
}

bool TestConnection::ReadMore()
{
    std::array<char, 4096> bytes{};
    ssize_t const count = tls != nullptr ? SSL_read(tls.get(), bytes.data(), static_cast<int>(bytes.size()))
                                         : ::recv(socket, bytes.data(), bytes.size(), 0);
    received.append(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
}

std::string TestConnection::ReadUntil(std::string const& mark)
{
    std::size_t found = received.find(mark);
    while (found == std::string::npos && ReadMore())
    {
        found = received.find(mark);
    }
    std::size_t const end = found != std::string::npos ? found + mark.size() : received.size();
    std::string const text = received.substr(0, end);
    received.erase(0, end);
    return text;
}

std::optional<TestConnection::Answer> TestConnection::ReadAnswer(bool hasBody)
{
    Answer answer;
    answer.head = ReadUntil("\r\n\r\n");
    if (!answer.head.ends_with("\r\n\r\n"))
    {
        return std::nullopt;
    }
    answer.status = static_cast<uint32>(std::strtoul(answer.head.c_str() + sizeof("HTTP/1.1"), nullptr, 10));
    constexpr char const* LENGTH = "Content-Length: ";
    std::size_t const at = answer.head.find(LENGTH);
    std::size_t const length = hasBody && at != std::string::npos
                                   ? std::strtoul(answer.head.c_str() + at + std::string(LENGTH).size(), nullptr, 10)
                                   : 0;
    while (received.size() < length && ReadMore())
    {
    }
    answer.body = received.substr(0, length);
    received.erase(0, length);
    return answer;
}

std::optional<TestConnection::Answer> TestConnection::Send(std::string const& method, std::string const& target,
                                                           std::string const& body, std::string const& moreHeaders)
{
    std::string const length = body.empty() ? "" : "Content-Length: " + std::to_string(body.size()) + "\r\n";
    Write(method + " " + target + " HTTP/1.1\r\nHost: localhost\r\n" + length + moreHeaders + "\r\n" + body);
    return ReadAnswer(method != "HEAD");
}

bool TestConnection::IsClosed()
{
    return received.empty() && !ReadMore() && received.empty();
}

} // namespace ZuTest

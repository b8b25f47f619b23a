#include <utility> // before Asio's headers, which use it without including it

#include "BeastServer.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>

#include <thread>

namespace ZuBench
{

namespace
{

namespace beast = boost::beast;
namespace http = beast::http;
namespace asio = boost::asio;
using asio::ip::tcp;

class Session final : public std::enable_shared_from_this<Session>
{
public:
    Session(tcp::socket socket, std::string const& usedBody) : stream(std::move(socket)), body(usedBody)
    {
    }

    void Read()
    {
        request = {};
        http::async_read(stream, buffer, request, [self = shared_from_this()](beast::error_code error, std::size_t) {
            if (!error)
            {
                self->Write();
            }
        });
    }

private:
    void Write()
    {
        answer = {http::status::ok, request.version()};
        answer.set(http::field::content_type, "application/json");
        answer.keep_alive(request.keep_alive());
        answer.body() = body;
        answer.prepare_payload();
        http::async_write(stream, answer, [self = shared_from_this()](beast::error_code error, std::size_t) {
            if (!error)
            {
                self->Read();
            }
        });
    }

    beast::tcp_stream stream;
    std::string const& body;
    beast::flat_buffer buffer;
    http::request<http::string_body> request;
    http::response<http::string_body> answer;
};

class BeastServer final
{
public:
    explicit BeastServer(std::string newBody) : body(std::move(newBody))
    {
        Accept();
        thread = std::thread([this] { context.run(); });
    }

    ~BeastServer()
    {
        context.stop();
        thread.join();
    }

    BeastServer(BeastServer const&) = delete;
    BeastServer& operator=(BeastServer const&) = delete;

    uint16 Port() const
    {
        return acceptor.local_endpoint().port();
    }

private:
    void Accept()
    {
        acceptor.async_accept([this](beast::error_code error, tcp::socket socket) {
            if (!error)
            {
                socket.set_option(tcp::no_delay(true));
                std::make_shared<Session>(std::move(socket), body)->Read();
                Accept();
            }
        });
    }

    std::string const body;
    asio::io_context context{1};
    tcp::acceptor acceptor{context, tcp::endpoint(asio::ip::address_v4::loopback(), 0)};
    std::thread thread;
};

} // namespace

std::shared_ptr<void> StartBeastServer(std::string const& body, uint16& port)
{
    auto server = std::make_shared<BeastServer>(body);
    port = server->Port();
    return server;
}

} // namespace ZuBench

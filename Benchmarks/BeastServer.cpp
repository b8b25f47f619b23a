#include <utility> // before Asio's headers, which use it without including it

#include "BeastServer.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>
#include <openssl/ssl.h>

#include <optional>
#include <thread>
#include <type_traits>

namespace ZuBench
{

namespace
{

namespace beast = boost::beast;
namespace http = beast::http;
namespace asio = boost::asio;
using asio::ip::tcp;

using PlainStream = beast::tcp_stream;
using TlsStream = beast::ssl_stream<beast::tcp_stream>;

template <typename Stream>
class Session final : public std::enable_shared_from_this<Session<Stream>>
{
public:
    template <typename... Context>
    Session(std::string const& usedBody, tcp::socket socket, Context&... context)
        : stream(std::move(socket), context...), body(usedBody)
    {
    }

    void Begin()
    {
        if constexpr (std::is_same_v<Stream, TlsStream>)
        {
            stream.async_handshake(asio::ssl::stream_base::server,
                                   [self = this->shared_from_this()](beast::error_code error) {
                                       if (!error)
                                       {
                                           self->Read();
                                       }
                                   });
        }
        else
        {
            Read();
        }
    }

    void Read()
    {
        request = {};
        http::async_read(stream, buffer, request,
                         [self = this->shared_from_this()](beast::error_code error, std::size_t) {
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
        http::async_write(stream, answer, [self = this->shared_from_this()](beast::error_code error, std::size_t) {
            if (!error)
            {
                self->Read();
            }
        });
    }

    Stream stream;
    std::string const& body;
    beast::flat_buffer buffer;
    http::request<http::string_body> request;
    http::response<http::string_body> answer;
};

class BeastServer final
{
public:
    BeastServer(std::string newBody, ssl_ctx_st* newTls) : body(std::move(newBody))
    {
        if (newTls != nullptr)
        {
            SSL_CTX_up_ref(newTls);
            tls.emplace(newTls);
        }
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
                if (tls.has_value())
                {
                    std::make_shared<Session<TlsStream>>(body, std::move(socket), *tls)->Begin();
                }
                else
                {
                    std::make_shared<Session<PlainStream>>(body, std::move(socket))->Begin();
                }
                Accept();
            }
        });
    }

    std::string const body;
    std::optional<asio::ssl::context> tls;
    asio::io_context context{1};
    tcp::acceptor acceptor{context, tcp::endpoint(asio::ip::address_v4::loopback(), 0)};
    std::thread thread;
};

} // namespace

std::shared_ptr<void> StartBeastServer(std::string const& body, uint16& port)
{
    return StartBeastServer(body, port, nullptr);
}

std::shared_ptr<void> StartBeastServer(std::string const& body, uint16& port, ssl_ctx_st* tls)
{
    auto server = std::make_shared<BeastServer>(body, tls);
    port = server->Port();
    return server;
}

} // namespace ZuBench

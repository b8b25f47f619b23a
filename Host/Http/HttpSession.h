#pragma once

#include "Host/Http/HttpConnection.h"

#include <boost/asio/write.hpp>
#include <boost/beast/core/stream_traits.hpp>

#include <memory>
#include <utility>

namespace ZuHost
{

/// A connection without encryption, over a stream of Beast that has the strand as its executor.
///
/// It starts the operations of the stream and reports their results. `HttpConnection` decides the next step.
template <typename Stream>
class HttpSession final : public HttpConnection
{
public:
    HttpSession(IHttpService& owningService, Stream acceptedStream, HttpClient newClient)
        : HttpConnection(owningService, acceptedStream.get_executor(), std::move(newClient)),
          stream(std::move(acceptedStream))
    {
    }

    ~HttpSession() override = default;
    HttpSession(HttpSession const&) = delete;
    HttpSession& operator=(HttpSession const&) = delete;

private:
    using ErrorCode = boost::system::error_code;

    std::shared_ptr<HttpSession> Self()
    {
        return std::static_pointer_cast<HttpSession>(shared_from_this());
    }

    void StartHandshake() override
    {
        OnHandshake({}); // TCP is ready once it is accepted
    }

    void StartRead(boost::asio::mutable_buffer room) override
    {
        stream.async_read_some(
            room, [self = Self()](ErrorCode const& error, std::size_t count) { self->OnRead(error, count); });
    }

    void StartWrite(Buffers const& buffers) override
    {
        boost::asio::async_write(stream, buffers,
                                 [self = Self()](ErrorCode const& error, std::size_t) { self->OnWritten(error); });
    }

    void EndSending() noexcept override
    {
        ErrorCode ignored; // the client may be gone
        boost::beast::get_lowest_layer(stream).socket().shutdown(boost::asio::socket_base::shutdown_send, ignored);
    }

    void CloseStream() noexcept override
    {
        boost::beast::get_lowest_layer(stream).close();
    }

    Stream stream;
};

} // namespace ZuHost

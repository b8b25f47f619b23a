#pragma once

#include "Host/Http/HttpServer.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Request.h"

#include <utility> // before Asio's headers, which use it without including it

#include <boost/asio/buffer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <optional>
#include <string>

namespace ZuHost
{

/// Parses the requests of one connection. Refuses malformed and too long requests, requests from foreign pages and
/// requests without the token.
///
/// It has no socket and no clock. The caller receives bytes into `Room`, hands them over with `Commit` and calls
/// `Parse`. Bytes that follow a request stay in the buffer for the next one. One thread at a time.
class RequestReader final
{
public:
    /// The limit for bytes that wait for the parser. Above the limit of a header, so that the parser detects a too long
    /// header.
    static constexpr std::size_t MAX_BUFFERED_BYTES = 2 * HttpServer::MAX_HEADER_BYTES;

    enum class Result
    {
        NEEDS_BYTES,    ///< there is no whole request yet
        NEEDS_CONTINUE, ///< the client waits for "100 Continue" before it sends the body
        REQUEST,        ///< `TakeRequest` returns it
        REFUSAL         ///< `TakeRefusal` returns the answer; the connection closes behind it
    };

    /// `newToken` is required in requests unless it is empty; it outlives the reader. `newIsLocal`: the service is for
    /// clients of this machine only.
    RequestReader(std::string const& newToken, bool newIsLocal);
    ~RequestReader();

    RequestReader(RequestReader const&) = delete;
    RequestReader& operator=(RequestReader const&) = delete;

    /// Begins the next request.
    void Begin();

    /// The buffer for the next received bytes. Valid until the next call of an operation that is not const. Never empty
    /// after `Parse` has returned `NEEDS_BYTES`.
    boost::asio::mutable_buffer Room();

    /// Tells the reader that the first `count` bytes of `Room` were received.
    void Commit(std::size_t count);

    /// Drops the waiting bytes. No more requests are parsed.
    void Discard();

    /// Parses the received bytes.
    Result Parse();

    /// Tells the reader that the client has ended its side. Returns true if that was in the middle of a request:
    /// `TakeRefusal` then returns the answer.
    bool TakeEnd();

    ZuRest::Request TakeRequest();
    ZuRest::Answer TakeRefusal();

    bool HasBytes() const;   ///< bytes wait to be parsed
    bool HasHeader() const;  ///< the header of the present request is complete
    bool IsHead() const;     ///< the method is HEAD
    bool KeepsAlive() const; ///< the client wants to send more requests after the present one

private:
    using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;

    Result TakeHeader();
    bool IsOpenToAll() const;
    Result RefuseWithoutToken();
    Result RefuseMalformed(boost::system::error_code const& error);
    Result Refuse(uint32 status, int32 code, std::string detail);

    std::string const& token;
    bool const isLocal;
    boost::beast::flat_buffer buffer{MAX_BUFFERED_BYTES};
    std::optional<Parser> parser;
    bool hasHeader = false;
    ZuRest::Answer refusal;
};

} // namespace ZuHost

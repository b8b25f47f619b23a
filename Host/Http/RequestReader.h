#pragma once

#include "Host/Http/HttpServer.h"
#include "Host/Http/RequestParser.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Request.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/core/flat_buffer.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace ZuHost
{

class ByteBudget;
class CurrentToken;

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
        REFUSAL,        ///< `TakeRefusal` returns the answer; the connection closes behind it
        WRONG_TOKEN     ///< as `REFUSAL`, for a request that shows a wrong token
    };

    /// `newToken` is required in requests unless it is empty. `newIsLocal`: the service is for clients of this machine
    /// only. `newIsEncrypted`: the connection is, so that own pages are those of https. `sharedBudget` bounds the bytes behind the headers of all readers; they count from their arrival until
    /// the next `Begin` or the end of the reader. The token and the budget outlive the reader.
    RequestReader(CurrentToken const& newToken, bool newIsLocal, bool newIsEncrypted, ByteBudget& sharedBudget);
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
    bool HasBegun() const;   ///< a byte of the present request has been parsed
    bool HasHeader() const;  ///< the header of the present request is complete
    bool IsHead() const;     ///< the method is HEAD
    bool KeepsAlive() const; ///< the client wants to send more requests after the present one

private:
    void GiveBack() noexcept;
    void SkipEmptyLines();
    bool IsTooShort() const;
    std::string_view Buffered() const;
    Result Count(std::size_t bytes);
    Result TakeHeader();
    bool IsOpenToAll() const;
    Result AdmitStranger();
    Result AdmitClient();
    Result RefuseWithoutToken();
    Result RefuseMalformed(boost::system::error_code const& error);
    Result Refuse(uint32 status, int32 code, std::string detail);

    CurrentToken const& token;
    bool const isLocal;
    bool const isEncrypted;
    ByteBudget& budget;
    boost::beast::flat_buffer buffer{MAX_BUFFERED_BYTES};
    std::optional<RequestParser> parser;
    uint64 parsedBytes = 0;   // of the present request
    uint64 budgetedBytes = 0; // taken of the budget
    bool hasHeader = false;
    ZuRest::Answer refusal;
};

} // namespace ZuHost

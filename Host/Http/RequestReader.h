#pragma once

#include "Host/Http/HttpServer.h"
#include "Host/Http/RequestParser.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Request.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/beast/core/flat_buffer.hpp>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ZuHost
{

class ByteBudget;
class IGatekeeper;

/// The client of a connection, and the listener that it reached.
struct HttpClient
{
    boost::asio::ip::address source;  ///< its address, as limits count it: see `ClientSource`
    boost::asio::ip::address address; ///< its address
    bool isLocal = false;             ///< only clients of this machine reach the listener
    bool isEncrypted = false;         ///< the connection is
};

/// Parses the requests of one connection. Refuses malformed and too long requests, requests from foreign pages and
/// requests that the gatekeeper does not admit.
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
        WRONG_TOKEN     ///< as `REFUSAL`, for a request that shows a wrong secret
    };

    /// `sharedBudget` bounds the bytes behind the headers of all readers; they count from their arrival until the next
    /// `Begin` or the end of the reader. The gatekeeper and the budget outlive the reader.
    RequestReader(IGatekeeper& usedGatekeeper, HttpClient newClient, ByteBudget& sharedBudget);
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

    bool HasBytes() const;    ///< bytes wait to be parsed
    bool HasBegun() const;    ///< a byte of the present request has been parsed
    bool HasHeader() const;   ///< the header of the present request is complete
    bool IsHead() const;      ///< the method is HEAD
    bool IsVersion11() const; ///< the client knows HTTP/1.1, and so chunks
    bool KeepsAlive() const;  ///< the client wants to send more requests after the present one

private:
    std::string_view Path() const;
    void GiveBack() noexcept;
    void SkipEmptyLines();
    bool IsTooShort() const;
    std::string_view Buffered() const;
    Result Count(std::size_t bytes);
    Result TakeHeader();
    Result AskGatekeeper();
    Result RefuseBody(uint64 maxBytes);
    Result RefuseMalformed(boost::system::error_code const& error);
    Result Refuse(uint32 status, int32 code, std::string detail);

    IGatekeeper& gatekeeper;
    HttpClient const client;
    ByteBudget& budget;
    boost::beast::flat_buffer buffer{MAX_BUFFERED_BYTES};
    std::optional<RequestParser> parser;
    uint64 parsedBytes = 0;   // of the present request
    uint64 budgetedBytes = 0; // taken of the budget
    bool hasHeader = false;
    std::shared_ptr<ZuRest::Caller const> caller; // of the present request, once it is admitted
    ZuRest::Answer refusal;
};

} // namespace ZuHost

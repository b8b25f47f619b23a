#include "Host/Http/RequestReader.h"

#include "Host/Http/BearerToken.h"
#include "Host/Http/RequestOrigin.h"
#include "ZuRest/Problem.h"
#include "wApi/wTypes.h"

#include <algorithm>

namespace ZuHost
{

namespace http = boost::beast::http;
namespace HttpStatus = ZuRest::HttpStatus;
using boost::system::error_code;

namespace
{

constexpr std::size_t HEADER_READ_BYTES = 4 * 1024; // most requests are shorter
constexpr std::size_t BODY_READ_BYTES = 16 * 1024;

std::string_view TextOf(boost::beast::string_view text)
{
    return {text.data(), text.size()};
}

/// The target of a request, without an optional scheme and host before the path.
struct Target
{
    std::string_view host; // empty when the target has none
    std::string_view pathAndQuery;

    static Target Of(std::string_view text)
    {
        constexpr std::string_view SCHEME = "http://";
        if (!text.starts_with(SCHEME))
        {
            return {"", text};
        }
        std::size_t const path = std::min(text.find('/', SCHEME.size()), text.size());
        return {text.substr(SCHEME.size(), path - SCHEME.size()),
                path != text.size() ? text.substr(path) : std::string_view("/")};
    }
};

} // namespace

RequestReader::RequestReader(std::string const& newToken, bool newIsLocal) : token(newToken), isLocal(newIsLocal)
{
    Begin();
}

RequestReader::~RequestReader() = default;

void RequestReader::Begin()
{
    parser.emplace();
    parser->header_limit(HttpServer::MAX_HEADER_BYTES);
    parser->body_limit(HttpServer::MAX_BODY_BYTES);
    hasHeader = false;
}

boost::asio::mutable_buffer RequestReader::Room()
{
    std::size_t const wanted = hasHeader ? BODY_READ_BYTES : HEADER_READ_BYTES;
    return buffer.prepare(std::min(wanted, buffer.max_size() - buffer.size()));
}

void RequestReader::Commit(std::size_t count)
{
    buffer.commit(count);
}

void RequestReader::Discard()
{
    buffer.clear();
}

RequestReader::Result RequestReader::Parse()
{
    while (buffer.size() != 0)
    {
        error_code error;
        buffer.consume(parser->put(buffer.data(), error));
        if (error == http::error::need_more && buffer.size() < buffer.max_size())
        {
            return Result::NEEDS_BYTES;
        }
        if (error)
        {
            return RefuseMalformed(error == http::error::need_more ? http::error::buffer_overflow : error);
        }
        if (!hasHeader && parser->is_header_done())
        {
            hasHeader = true;
            if (Result const result = TakeHeader(); result != Result::NEEDS_BYTES)
            {
                return result;
            }
        }
        if (parser->is_done())
        {
            return Result::REQUEST;
        }
    }
    return Result::NEEDS_BYTES;
}

bool RequestReader::TakeEnd()
{
    if (!parser->got_some())
    {
        return false;
    }
    error_code error;
    parser->put_eof(error);
    RefuseMalformed(error ? error : http::error::partial_message); // the end of the connection cuts the request
    return true;
}

/// Checks the header. `NEEDS_BYTES` means that the body may follow; any other result needs an answer before the body.
RequestReader::Result RequestReader::TakeHeader()
{
    auto const& request = parser->get();
    Target const target = Target::Of(TextOf(request.target()));
    std::size_t const hosts = request.count(http::field::host);
    if (hosts > 1 || (hosts == 0 && request.version() > 10))
    {
        return Refuse(HttpStatus::BAD_REQUEST, Zu::Status::BAD_FORMAT, "The request needs one header Host.");
    }
    std::string_view const host = target.host.empty() ? TextOf(request[http::field::host]) : target.host;
    bool const namesUs = host.empty() ? hosts == 0 : RequestOrigin::IsThisMachine(host);
    if (isLocal && !namesUs)
    {
        return Refuse(HttpStatus::FORBIDDEN, Zu::Status::WRITE_ONLY_REFUSED,
                      "This service answers to localhost and the loopback addresses only, not to '" +
                          std::string(host) + "'.");
    }
    auto const origin = request.find(http::field::origin);
    if (origin != request.end() && !RequestOrigin::IsOwn(TextOf(origin->value()), host))
    {
        return Refuse(HttpStatus::FORBIDDEN, Zu::Status::WRITE_ONLY_REFUSED,
                      "This service takes no requests from pages of '" + std::string(TextOf(origin->value())) + "'.");
    }
    if (!IsOpenToAll() && !BearerToken::IsGiven(token, TextOf(request[http::field::authorization])))
    {
        return RefuseWithoutToken();
    }
    parser->eager(true); // accepts parts of the body as they arrive
    bool const needsContinue =
        !parser->is_done() && boost::beast::iequals(request[http::field::expect], "100-continue");
    return needsContinue ? Result::NEEDS_CONTINUE : Result::NEEDS_BYTES;
}

bool RequestReader::IsOpenToAll() const
{
    auto const& request = parser->get();
    return request.method() == http::verb::get && request.target() == "/health";
}

RequestReader::Result RequestReader::RefuseWithoutToken()
{
    Refuse(HttpStatus::UNAUTHORIZED, Zu::Status::WRITE_ONLY_REFUSED,
           "This service asks for a token: send the header Authorization: Bearer TOKEN.");
    refusal.headers.emplace_back("WWW-Authenticate", "Bearer");
    return Result::REFUSAL;
}

RequestReader::Result RequestReader::RefuseMalformed(error_code const& error)
{
    if (error == http::error::header_limit || error == http::error::buffer_overflow)
    {
        return Refuse(HttpStatus::HEADERS_TOO_LARGE, Zu::Status::BAD_FORMAT,
                      "The headers are longer than " + std::to_string(HttpServer::MAX_HEADER_BYTES) + " bytes.");
    }
    if (error == http::error::body_limit)
    {
        return Refuse(HttpStatus::CONTENT_TOO_LARGE, Zu::Status::BAD_FORMAT,
                      "The body is longer than " + std::to_string(HttpServer::MAX_BODY_BYTES) + " bytes.");
    }
    return Refuse(HttpStatus::BAD_REQUEST, Zu::Status::BAD_FORMAT,
                  "The request is not valid HTTP: " + error.message() + ".");
}

RequestReader::Result RequestReader::Refuse(uint32 status, int32 code, std::string detail)
{
    refusal = ZuRest::Problem{status, std::move(detail), code, {}}.ToAnswer();
    return Result::REFUSAL;
}

ZuRest::Request RequestReader::TakeRequest()
{
    auto& message = parser->get();
    std::string_view const target = Target::Of(TextOf(message.target())).pathAndQuery;
    std::size_t const mark = std::min(target.find('?'), target.size());
    ZuRest::Request request;
    request.method = TextOf(message.method_string());
    request.path = target.substr(0, mark);
    request.query = target.substr(std::min(mark + 1, target.size()));
    request.body = std::move(message.body());
    request.accept = TextOf(message[http::field::accept]);
    request.ifMatch = TextOf(message[http::field::if_match]);
    request.ifNoneMatch = TextOf(message[http::field::if_none_match]);
    return request;
}

ZuRest::Answer RequestReader::TakeRefusal()
{
    return std::move(refusal);
}

bool RequestReader::HasBytes() const
{
    return buffer.size() != 0;
}

bool RequestReader::HasHeader() const
{
    return hasHeader;
}

bool RequestReader::IsHead() const
{
    return parser->get().method() == http::verb::head;
}

bool RequestReader::KeepsAlive() const
{
    return parser->keep_alive();
}

} // namespace ZuHost

#include "Host/Http/RequestReader.h"

#include "Host/Http/ByteBudget.h"
#include "Host/Http/IGatekeeper.h"
#include "Host/Http/PagePath.h"
#include "Host/Http/RequestFraming.h"
#include "Host/Http/RequestOrigin.h"
#include "ZuRest/Problem.h"
#include "wApi/wTypes.h"

#include <boost/beast/http/error.hpp>

#include <algorithm>
#include <utility>

namespace ZuHost
{

namespace http = boost::beast::http;
namespace HttpStatus = ZuRest::HttpStatus;
using boost::system::error_code;

namespace
{

constexpr std::size_t HEADER_READ_BYTES = 4 * 1024; // most requests are shorter
constexpr std::size_t BODY_READ_BYTES = 16 * 1024;

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

    std::string_view Path() const
    {
        return pathAndQuery.substr(0, pathAndQuery.find('?'));
    }

    std::string_view Query() const
    {
        return pathAndQuery.substr(std::min(Path().size() + 1, pathAndQuery.size()));
    }
};

} // namespace

RequestReader::RequestReader(IGatekeeper& usedGatekeeper, HttpClient newClient, ByteBudget& sharedBudget)
    : gatekeeper(usedGatekeeper), client(std::move(newClient)), budget(sharedBudget)
{
    Begin();
}

RequestReader::~RequestReader()
{
    GiveBack();
}

void RequestReader::GiveBack() noexcept
{
    budget.GiveBack(std::exchange(budgetedBytes, 0));
}

void RequestReader::Begin()
{
    GiveBack();
    parser.emplace();
    parser->header_limit(HttpServer::MAX_HEADER_BYTES);
    parser->body_limit(HttpServer::MAX_BODY_BYTES);
    parsedBytes = 0;
    hasHeader = false;
    caller = nullptr;
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
    SkipEmptyLines();
    while (!IsTooShort() && buffer.size() != 0)
    {
        error_code error;
        std::size_t const count = parser->put(buffer.data(), error);
        buffer.consume(count);
        if (error && error != http::error::need_more)
        {
            return RefuseMalformed(error);
        }
        if (Result const result = Count(count); result != Result::NEEDS_BYTES)
        {
            return result;
        }
        if (error)
        {
            return buffer.size() < buffer.max_size() ? Result::NEEDS_BYTES
                                                     : RefuseMalformed(http::error::buffer_overflow);
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

/// Skips empty lines before a request, which old clients send behind a body.
void RequestReader::SkipEmptyLines()
{
    constexpr std::string_view EMPTY_LINE = "\r\n";
    while (!parser->got_some() && Buffered().starts_with(EMPTY_LINE))
    {
        buffer.consume(EMPTY_LINE.size());
    }
}

/// Whether the parser must not see the buffer before more bytes are there.
bool RequestReader::IsTooShort() const
{
    constexpr std::size_t LAST_CHUNK_BYTES = 5; // "0\r\n\r\n": a chunked body has no shorter end
    if (!parser->got_some())
    {
        return Buffered().empty() || Buffered() == "\r"; // perhaps the first half of an empty line
    }
    // Beast asserts that it sees the last chunk again only with all bytes.
    return hasHeader && parser->chunked() && buffer.size() < LAST_CHUNK_BYTES && Buffered().starts_with('0');
}

/// The path of the resource that the present request is for.
std::string_view RequestReader::Path() const
{
    return PagePath::Of(parser->method, Target::Of(parser->target).Path(), parser->At<http::field::accept>().text);
}

std::string_view RequestReader::Buffered() const
{
    return {static_cast<char const*>(buffer.data().data()), buffer.size()};
}

/// Counts parsed bytes of the present request, since Beast limits neither chunk extensions nor trailers.
RequestReader::Result RequestReader::Count(std::size_t bytes)
{
    parsedBytes += bytes;
    if (parsedBytes > HttpServer::MAX_REQUEST_BYTES)
    {
        return Refuse(HttpStatus::CONTENT_TOO_LARGE, Zu::Status::BAD_FORMAT,
                      "The request is longer than " + std::to_string(HttpServer::MAX_REQUEST_BYTES) + " bytes.");
    }
    if (hasHeader)
    {
        if (!budget.Take(bytes))
        {
            return Refuse(HttpStatus::SERVICE_UNAVAILABLE, Zu::Status::BUSY,
                          "The requests of all clients together are too long at present.");
        }
        budgetedBytes += bytes;
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
    if (uint32 const fault = RequestFraming::FaultOf(*parser); fault != 0)
    {
        return Refuse(
            fault, Zu::Status::BAD_FORMAT,
            "A body comes with one Content-Length, or in HTTP/1.1 with exactly 'Transfer-Encoding: chunked'.");
    }
    Target const target = Target::Of(parser->target);
    if (target.host.find('@') != std::string_view::npos)
    {
        return Refuse(HttpStatus::BAD_REQUEST, Zu::Status::BAD_ARGUMENT,
                      "A name or a password in an address can be read in logs: send the header Authorization.");
    }
    auto const& hosts = parser->At<http::field::host>();
    if (hosts.count > 1 || (hosts.count == 0 && parser->isVersion11))
    {
        return Refuse(HttpStatus::BAD_REQUEST, Zu::Status::BAD_FORMAT, "The request needs one header Host.");
    }
    std::string const host(target.host.empty() ? hosts.text : target.host);
    bool const namesUs = host.empty() ? hosts.count == 0 : RequestOrigin::IsThisMachine(host);
    if (client.isLocal && !namesUs)
    {
        return Refuse(HttpStatus::FORBIDDEN, Zu::Status::WRITE_ONLY_REFUSED,
                      "This service answers to localhost and the loopback addresses only, not to '" + host + "'.");
    }
    auto const& origin = parser->At<http::field::origin>();
    if (origin.count != 0 && !RequestOrigin::IsOwn(origin.text, host, client.isEncrypted))
    {
        return Refuse(HttpStatus::FORBIDDEN, Zu::Status::WRITE_ONLY_REFUSED,
                      "This service takes no requests from pages of '" + origin.text + "'.");
    }
    return AskGatekeeper();
}

RequestReader::Result RequestReader::AskGatekeeper()
{
    Target const target = Target::Of(parser->target);
    Admission admission = gatekeeper.Admit(
        {parser->method, Path(), target.Query(), parser->At<http::field::authorization>().text,
         parser->At<http::field::cookie>().text, parser->crossSiteToken, client.address, client.isEncrypted});
    if (admission.caller == nullptr)
    {
        refusal = std::move(admission.refusal);
        return admission.isWrongSecret ? Result::WRONG_TOKEN : Result::REFUSAL;
    }
    caller = std::move(admission.caller);
    if (parser->is_done())
    {
        return Result::NEEDS_BYTES;
    }
    if (admission.maxBodyBytes < HttpServer::MAX_BODY_BYTES &&
        (parser->chunked() || parser->content_length().value_or(0) > admission.maxBodyBytes))
    {
        return RefuseBody(admission.maxBodyBytes);
    }
    parser->eager(true); // accepts parts of the body as they arrive
    bool const needsContinue =
        parser->isVersion11 && boost::beast::iequals(parser->At<http::field::expect>().text, "100-continue");
    return needsContinue ? Result::NEEDS_CONTINUE : Result::NEEDS_BYTES;
}

/// A request that needs no caller has a short body of known length or none: a stranger cannot occupy memory.
RequestReader::Result RequestReader::RefuseBody(uint64 maxBytes)
{
    std::string const path(Target::Of(parser->target).Path());
    return Refuse(HttpStatus::CONTENT_TOO_LARGE, Zu::Status::BAD_FORMAT,
                  maxBytes == 0 ? "A request of " + path + " has no body."
                                : "The body of a request of " + path + " has a Content-Length of at most " +
                                      std::to_string(maxBytes) + " bytes.");
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
    if (error == http::error::bad_version && RequestFraming::IsOtherVersion(Buffered()))
    {
        return Refuse(HttpStatus::VERSION_NOT_SUPPORTED, Zu::Status::UNSUPPORTED_VERSION,
                      "This service speaks HTTP/1.1 and HTTP/1.0.");
    }
    return Refuse(HttpStatus::BAD_REQUEST, Zu::Status::BAD_FORMAT,
                  "The request is not valid HTTP: " + error.message() + ".");
}

RequestReader::Result RequestReader::Refuse(uint32 status, int32 code, std::string detail)
{
    parser->body = {}; // the answer may take its time
    refusal = ZuRest::Problem{status, std::move(detail), code, {}}.ToAnswer();
    return Result::REFUSAL;
}

ZuRest::Request RequestReader::TakeRequest()
{
    Target const target = Target::Of(parser->target);
    ZuRest::Request request;
    request.method = parser->method;
    request.path = Path();
    request.query = target.Query();
    request.body = std::move(parser->body);
    request.accept = parser->At<http::field::accept>().text;
    request.ifMatch = parser->At<http::field::if_match>().text;
    request.ifNoneMatch = parser->At<http::field::if_none_match>().text;
    request.prefer = parser->At<http::field::prefer>().text;
    request.caller = std::move(caller);
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

bool RequestReader::HasBegun() const
{
    return parser->got_some();
}

bool RequestReader::HasHeader() const
{
    return hasHeader;
}

bool RequestReader::IsHead() const
{
    return parser->method == "HEAD";
}

bool RequestReader::IsVersion11() const
{
    return parser->isVersion11;
}

bool RequestReader::KeepsAlive() const
{
    return parser->keepsAlive;
}

} // namespace ZuHost

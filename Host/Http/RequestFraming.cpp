#include "Host/Http/RequestFraming.h"

#include "Host/Http/RequestParser.h"
#include "ZuRest/HttpStatus.h"

#include <boost/beast/core/string.hpp>
#include <boost/beast/http/rfc7230.hpp>

#include <algorithm>

namespace ZuHost::RequestFraming
{

namespace http = boost::beast::http;
namespace HttpStatus = ZuRest::HttpStatus;

namespace
{

constexpr char const* CHUNKED = "chunked";

/// Whether the value of Transfer-Encoding is well formed and names a coding that this server does not know.
bool HasUnknownCoding(std::string const& value)
{
    http::opt_token_list const codings{value};
    return http::validate_list(codings) && std::any_of(codings.begin(), codings.end(), [](auto const& coding) {
               return !boost::beast::iequals(coding, CHUNKED);
           });
}

} // namespace

uint32 FaultOf(RequestParser const& request)
{
    auto const& encoding = request.At<http::field::transfer_encoding>();
    if (encoding.count == 0)
    {
        return 0;
    }
    if (!request.isVersion11 || request.At<http::field::content_length>().count != 0)
    {
        return HttpStatus::BAD_REQUEST;
    }
    if (boost::beast::iequals(encoding.text, CHUNKED))
    {
        return 0;
    }
    return HasUnknownCoding(encoding.text) ? HttpStatus::NOT_IMPLEMENTED : HttpStatus::BAD_REQUEST;
}

bool IsOtherVersion(std::string_view head)
{
    constexpr std::string_view NAME = "HTTP/";
    auto const isDigit = [](char one) { return one >= '0' && one <= '9'; };
    std::size_t const target = head.find(' ');
    std::size_t const space = target != std::string_view::npos ? head.find(' ', target + 1) : target;
    std::string_view const version = space != std::string_view::npos ? head.substr(space + 1) : std::string_view();
    return version.size() > NAME.size() + 2 && version.starts_with(NAME) && isDigit(version[NAME.size()]) &&
           version[NAME.size() + 1] == '.' && isDigit(version[NAME.size() + 2]) && !version.starts_with("HTTP/1.0") &&
           !version.starts_with("HTTP/1.1");
}

} // namespace ZuHost::RequestFraming

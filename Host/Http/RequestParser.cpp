#include "Host/Http/RequestParser.h"

namespace ZuHost
{

namespace http = boost::beast::http;

RequestParser::RequestParser() = default;
RequestParser::~RequestParser() = default;

void RequestParser::on_request_impl(http::verb /*verb*/, Text name, Text path, int version, ErrorCode& /*error*/)
{
    method.assign(name.data(), name.size());
    target.assign(path.data(), path.size());
    isVersion11 = version == 11;
}

void RequestParser::on_response_impl(int /*code*/, Text /*reason*/, int /*version*/, ErrorCode& /*error*/)
{
    // Beast never calls it for requests.
}

void RequestParser::on_field_impl(Field field, Text name, Text value, ErrorCode& /*error*/)
{
    if (is_header_done()) // a trailer
    {
        return;
    }
    if (field == Field::unknown && boost::beast::iequals(name, "X-CSRF-Token"))
    {
        crossSiteToken.append(value.data(), value.size());
    }
    std::size_t const place = PlaceOf(field);
    if (place == KEPT.size())
    {
        return;
    }
    Lines& lines = kept[place];
    lines.text.append(lines.count++ == 0 ? "" : ", ").append(value.data(), value.size());
}

void RequestParser::on_header_impl(ErrorCode& /*error*/)
{
    keepsAlive = keep_alive(); // now: Beast reads a trailer Connection too
}

void RequestParser::on_body_init_impl(boost::optional<std::uint64_t> const& length, ErrorCode& /*error*/)
{
    body.reserve(length.value_or(0)); // Beast has compared the length with the limit for bodies
}

std::size_t RequestParser::on_body_impl(Text part, ErrorCode& /*error*/)
{
    body.append(part.data(), part.size());
    return part.size();
}

void RequestParser::on_chunk_header_impl(std::uint64_t /*size*/, Text /*extensions*/, ErrorCode& /*error*/)
{
    // Extensions are dropped. Beast limits the sum of the sizes.
}

std::size_t RequestParser::on_chunk_body_impl(std::uint64_t /*remaining*/, Text part, ErrorCode& error)
{
    return on_body_impl(part, error);
}

void RequestParser::on_finish_impl(ErrorCode& /*error*/)
{
}

} // namespace ZuHost

#pragma once

#include "wApi/wTypes.h"

#include <utility> // before Asio's headers, which use it without including it

#include <boost/beast/http/basic_parser.hpp>
#include <boost/beast/http/field.hpp>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace ZuHost
{

/// Beast's parser for one request. Keeps the fields that the server reads, and the body.
///
/// All other fields are dropped, and so are chunk extensions and trailers: the memory of a request does not exceed its
/// bytes by much, and a trailer changes no field of the header.
class RequestParser final : public boost::beast::http::basic_parser<true>
{
public:
    using Field = boost::beast::http::field;

    /// The values of all lines of one field, joined by commas.
    struct Lines
    {
        uint64 count = 0;
        std::string text;
    };

    RequestParser();
    ~RequestParser() override;

    RequestParser(RequestParser const&) = delete;
    RequestParser& operator=(RequestParser const&) = delete;

    // The results, complete once `is_header_done()`.
    std::string method;
    std::string target;
    bool isVersion11 = false;
    bool keepsAlive = false;    ///< the client wants to send more requests after this one
    std::string crossSiteToken; ///< the value of X-CSRF-Token
    std::string body;           ///< grows until `is_done()`

    /// Returns the lines of `FIELD`, one of `KEPT`.
    template <Field FIELD>
    Lines const& At() const
    {
        constexpr std::size_t PLACE = PlaceOf(FIELD);
        static_assert(PLACE < KEPT.size());
        return kept[PLACE];
    }

private:
    using ErrorCode = boost::system::error_code;
    using Text = boost::beast::string_view;

    static constexpr std::array KEPT{
        Field::accept, Field::authorization, Field::content_length,    Field::cookie,
        Field::expect, Field::host,          Field::if_match,          Field::if_none_match,
        Field::origin, Field::prefer,        Field::transfer_encoding,
    };

    static constexpr std::size_t PlaceOf(Field field)
    {
        return static_cast<std::size_t>(std::ranges::find(KEPT, field) - KEPT.begin());
    }

    void on_request_impl(boost::beast::http::verb verb, Text name, Text path, int version, ErrorCode& error) override;
    void on_response_impl(int code, Text reason, int version, ErrorCode& error) override;
    void on_field_impl(Field field, Text name, Text value, ErrorCode& error) override;
    void on_header_impl(ErrorCode& error) override;
    void on_body_init_impl(boost::optional<std::uint64_t> const& length, ErrorCode& error) override;
    std::size_t on_body_impl(Text part, ErrorCode& error) override;
    void on_chunk_header_impl(std::uint64_t size, Text extensions, ErrorCode& error) override;
    std::size_t on_chunk_body_impl(std::uint64_t remaining, Text part, ErrorCode& error) override;
    void on_finish_impl(ErrorCode& error) override;

    std::array<Lines, KEPT.size()> kept;
};

} // namespace ZuHost

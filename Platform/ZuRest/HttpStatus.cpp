#include "ZuRest/HttpStatus.h"

#include "wApi/wTypes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ZuRest::HttpStatus
{

namespace
{

template <typename Key, typename Found, std::size_t COUNT>
Found Look(std::array<std::pair<Key, Found>, COUNT> const& table, Key key, Found other) noexcept
{
    auto const row = std::find_if(table.begin(), table.end(), [key](auto const& one) { return one.first == key; });
    return row != table.end() ? row->second : other;
}

} // namespace

char const* Title(uint32 status) noexcept
{
    static constexpr std::array<std::pair<uint32, char const*>, 24> TITLES{{
        {OK, "OK"},
        {CREATED, "Created"},
        {ACCEPTED, "Accepted"},
        {NO_CONTENT, "No Content"},
        {SEE_OTHER, "See Other"},
        {NOT_MODIFIED, "Not Modified"},
        {BAD_REQUEST, "Bad Request"},
        {UNAUTHORIZED, "Unauthorized"},
        {FORBIDDEN, "Forbidden"},
        {NOT_FOUND, "Not Found"},
        {METHOD_NOT_ALLOWED, "Method Not Allowed"},
        {NOT_ACCEPTABLE, "Not Acceptable"},
        {REQUEST_TIMEOUT, "Request Timeout"},
        {CONFLICT, "Conflict"},
        {PRECONDITION_FAILED, "Precondition Failed"},
        {CONTENT_TOO_LARGE, "Content Too Large"},
        {UNPROCESSABLE_CONTENT, "Unprocessable Content"},
        {TOO_MANY_REQUESTS, "Too Many Requests"},
        {HEADERS_TOO_LARGE, "Request Header Fields Too Large"},
        {INTERNAL_ERROR, "Internal Server Error"},
        {NOT_IMPLEMENTED, "Not Implemented"},
        {SERVICE_UNAVAILABLE, "Service Unavailable"},
        {GATEWAY_TIMEOUT, "Gateway Timeout"},
        {VERSION_NOT_SUPPORTED, "HTTP Version Not Supported"},
    }};
    return Look(TITLES, status, "Error");
}

uint32 Of(int32 status) noexcept
{
    namespace Status = Zu::Status;
    static constexpr std::array<std::pair<int32, uint32>, 15> TABLE{{
        {Status::NOT_FOUND, NOT_FOUND},
        {Status::NOT_SUPPORTED, NOT_FOUND}, // the protocol does not have such a resource
        {Status::BAD_FORMAT, BAD_REQUEST},
        {Status::UNSUPPORTED_VERSION, BAD_REQUEST},
        {Status::BAD_ARGUMENT, UNPROCESSABLE_CONTENT},
        {Status::WRONG_BUFFER_SIZE, UNPROCESSABLE_CONTENT},
        {Status::ALREADY_EXISTS, CONFLICT},
        {Status::ID_CONFLICT, CONFLICT},
        {Status::FULL, CONFLICT},
        {Status::NOT_OFFERED, CONFLICT},
        {Status::WRONG_STATE, CONFLICT},
        {Status::NOT_UPDATABLE, METHOD_NOT_ALLOWED},
        {Status::WRITE_ONLY_REFUSED, FORBIDDEN},
        {Status::BUSY, SERVICE_UNAVAILABLE},
        {Status::TIME_OUT, GATEWAY_TIMEOUT},
    }};
    return Look(TABLE, status, INTERNAL_ERROR);
}

} // namespace ZuRest::HttpStatus

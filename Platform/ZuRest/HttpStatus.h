#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

/// The HTTP status numbers that the resource layer answers with.
namespace ZuRest::HttpStatus
{

inline constexpr uint32 OK = 200;
inline constexpr uint32 CREATED = 201;
inline constexpr uint32 ACCEPTED = 202;
inline constexpr uint32 NO_CONTENT = 204;
inline constexpr uint32 SEE_OTHER = 303;
inline constexpr uint32 NOT_MODIFIED = 304;
inline constexpr uint32 BAD_REQUEST = 400;
inline constexpr uint32 UNAUTHORIZED = 401;
inline constexpr uint32 FORBIDDEN = 403;
inline constexpr uint32 NOT_FOUND = 404;
inline constexpr uint32 METHOD_NOT_ALLOWED = 405;
inline constexpr uint32 NOT_ACCEPTABLE = 406;
inline constexpr uint32 REQUEST_TIMEOUT = 408;
inline constexpr uint32 CONFLICT = 409;
inline constexpr uint32 PRECONDITION_FAILED = 412;
inline constexpr uint32 CONTENT_TOO_LARGE = 413;
inline constexpr uint32 UNPROCESSABLE_CONTENT = 422;
inline constexpr uint32 TOO_MANY_REQUESTS = 429;
inline constexpr uint32 HEADERS_TOO_LARGE = 431;
inline constexpr uint32 INTERNAL_ERROR = 500;
inline constexpr uint32 NOT_IMPLEMENTED = 501;
inline constexpr uint32 SERVICE_UNAVAILABLE = 503;
inline constexpr uint32 GATEWAY_TIMEOUT = 504;
inline constexpr uint32 VERSION_NOT_SUPPORTED = 505;

/// Returns the name of a status, for example "Not Found"; "Error" for a status that is not listed above.
ZUPLATFORM_API char const* Title(uint32 status) noexcept;

/// Returns the HTTP status for the status of an exception; `INTERNAL_ERROR` for a status without a mapping.
ZUPLATFORM_API uint32 Of(int32 status) noexcept;

} // namespace ZuRest::HttpStatus

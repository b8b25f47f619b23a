#pragma once

#include "wApi/wTypes.h"

#include <string_view>

namespace ZuHost
{

class RequestParser;

/// Finds requests with a version or an end that another server on the way may read differently (RFC 9112, 2.3 and 6.1
/// to 6.3).
///
/// Beast's parser takes such requests: it reads an unknown transfer coding as a request without a body. Behind a proxy
/// that reads them differently, one request would become two.
namespace RequestFraming
{

/// Returns the status that refuses a request with a complete header, or 0. A body needs either one Content-Length or,
/// in HTTP/1.1, exactly "Transfer-Encoding: chunked".
uint32 FaultOf(RequestParser const& request);

/// Whether a request that Beast refuses for its version has the form of a request in another version of HTTP. `head`
/// begins with the first line.
bool IsOtherVersion(std::string_view head);

} // namespace RequestFraming

} // namespace ZuHost

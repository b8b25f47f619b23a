#pragma once

#include "ZuRest/HttpStatus.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ZuRest
{

class IBodySink;

/// The answer to a request.
struct Answer
{
    uint32 status = HttpStatus::OK;
    std::string contentType; ///< empty if there is no body
    std::string body;        ///< set for HEAD too, which sends only its length
    std::vector<std::pair<std::string, std::string>> headers;

    /// If set, the body comes in parts, in place of `body`. The server calls the function once when it has begun to send
    /// the head, and not at all if the client does not get this answer. The function must not block.
    std::function<void(std::shared_ptr<IBodySink> const&)> openBody{};
};

} // namespace ZuRest

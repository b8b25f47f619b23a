#pragma once

#include "ZuRest/HttpStatus.h"

#include <string>
#include <utility>
#include <vector>

namespace ZuRest
{

/// What a request is answered with.
struct Answer
{
    uint32 status = HttpStatus::OK;
    std::string contentType; ///< empty when there is no body
    std::string body;        ///< also for HEAD, which sends only its length
    std::vector<std::pair<std::string, std::string>> headers;
};

} // namespace ZuRest

#pragma once

#include "ZuRest/HttpStatus.h"

#include <string>
#include <utility>
#include <vector>

namespace ZuRest
{

/// The answer to a request.
struct Answer
{
    uint32 status = HttpStatus::OK;
    std::string contentType; ///< empty if there is no body
    std::string body;        ///< set for HEAD too, which sends only its length
    std::vector<std::pair<std::string, std::string>> headers;
};

} // namespace ZuRest

#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ZuRest
{

/// Reads resources from inside the process. The host implements it. Any thread may call, several at once.
class ZUPLATFORM_API RequestProcessor
{
public:
    virtual ~RequestProcessor();

    /// The document of the resource at `path`, as a client would see it. `request` is the body, null for none; `query` is what
    /// would stand behind the question mark. Throws what the resource throws, and -999 when there is none.
    virtual nlohmann::json Read(std::string const& path, nlohmann::json const& request, std::string const& query) = 0;
};

} // namespace ZuRest

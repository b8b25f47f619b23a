#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ZuRest
{

/// Reads resources from inside the process. The host implements it. Any thread may call; several threads may call at
/// the same time.
class ZUPLATFORM_API RequestProcessor
{
public:
    virtual ~RequestProcessor();

    /// Returns the document of the resource at `path` as a client sees it. `request` is the body, null for none;
    /// `query` is the text after the question mark. Throws `Zu::Status::NOT_FOUND` if there is no resource. Exceptions
    /// of the resource go to the caller.
    virtual nlohmann::json Read(std::string const& path, nlohmann::json const& request, std::string const& query) = 0;
};

} // namespace ZuRest

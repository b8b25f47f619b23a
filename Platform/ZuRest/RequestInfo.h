#pragma once

#include "wApi/wExport.h"

#include <string>
#include <utility>
#include <vector>

namespace ZuRest
{

/// What a resource is told of the request that it answers.
struct ZUPLATFORM_API RequestInfo
{
    using Keys = std::vector<std::pair<std::string, std::string>>; ///< name and value, few

    RequestInfo();
    RequestInfo(std::string requestPath, Keys routeKeys, bool schemaAskedFor);
    RequestInfo(RequestInfo const&);
    RequestInfo& operator=(RequestInfo const&);
    ~RequestInfo();

    /// The value of a key of the route, decoded; null when the path stops short of it or the route has none of that name.
    std::string const* FindKey(std::string const& name) const;

    std::string path; ///< as the client wrote it, percent-encoded, without the query
    Keys keys;
    bool wantsSchema = false;
    bool isForText = false; ///< the document is only made to be written: it, or parts of it, may be text already
};

} // namespace ZuRest

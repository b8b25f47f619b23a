#pragma once

#include "wApi/wExport.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ZuRest
{

struct Caller;

/// The information that a resource gets about a request.
struct ZUPLATFORM_API RequestInfo
{
    using Keys = std::vector<std::pair<std::string, std::string>>; ///< name and value; few, so searched in order

    RequestInfo();
    RequestInfo(std::string requestPath, Keys routeKeys, bool schemaAskedFor);
    RequestInfo(RequestInfo const&);
    RequestInfo& operator=(RequestInfo const&);
    ~RequestInfo();

    /// Returns the decoded value of a route key. Returns null if the route has no key of that name or the path ends
    /// before it.
    std::string const* FindKey(std::string const& name) const;

    std::string path; ///< as sent by the client: percent-encoded, without the query
    Keys keys;
    bool wantsSchema = false;
    std::string query{}; ///< the text after the question mark; empty for a document that another one embeds
    /// The document is only written as text: it and its parts may be values of `JsonText::PartOf`.
    bool isForText = false;
    std::shared_ptr<Caller const> caller; ///< the sender of the request; null: the process itself reads
};

} // namespace ZuRest

#pragma once

#include "ZuRest/RequestInfo.h"
#include "wApi/wExport.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZuRest
{

class IResource;

/// Finds the resource for a path.
///
/// A route is a path with optional keys: a key segment such as ":protocol" matches any segment. At each segment a
/// literal takes precedence over a key, independent of the order of registration. A route that ends in a key also
/// matches without its last segment. "/" is the root. Any thread may call.
class ZUPLATFORM_API ResourceRouter
{
public:
    /// The result of `Find`. The resource lives as long as the match: `Deregister` waits for it.
    struct Match
    {
        IResource* resource = nullptr;
        RequestInfo::Keys keys;      ///< the values of the route's keys, decoded, in the order of the route
        std::shared_ptr<void> lease; ///< `Deregister` waits until it is released
        bool isComplete = false;     ///< the path has all segments of the route
    };

    ResourceRouter();
    ~ResourceRouter();

    ResourceRouter(ResourceRouter const&) = delete;
    ResourceRouter& operator=(ResourceRouter const&) = delete;

    /// Lets `resource` answer the paths of `route`, for example "/a/:key". Throws `Zu::Status::BAD_ARGUMENT` if the
    /// route does not begin with a slash or has an empty segment, and `Zu::Status::ALREADY_EXISTS` if it differs from
    /// an existing route at most in the names of its keys.
    void Register(std::string const& route, IResource& resource);

    /// Removes the route and, with `subtree`, all routes below it. Waits until no match of them is left, so a caller
    /// that holds such a match would wait forever. Does nothing if there is no such route.
    void Deregister(std::string const& route, bool subtree);

    /// Returns the resource of a percent-encoded request path, or nothing if no route matches.
    std::optional<Match> Find(std::string const& path) const;

    /// Returns every registered route, sorted. Each key appears as ":key".
    std::vector<std::string> Routes() const;

    /// Returns every registered resource once, in no particular order. Each lives until its routes are deregistered.
    std::vector<IResource*> Resources() const;

private:
    struct Entry;
    struct Node;
    struct State;

    std::shared_ptr<State> const state; // shared with the leases of matches
};

} // namespace ZuRest

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

/// Says which resource a path belongs to.
///
/// A route is a path whose segments may be keys, ":protocol" for one, which match any segment. At each segment a literal wins
/// over a key, in whatever order the routes came; a route that ends in a key also matches without it. "/" is the root. Any
/// thread may call.
class ZUPLATFORM_API ResourceRouter
{
public:
    /// The answer to `Find`. While it lives, its resource does: whoever deregisters the route waits for it.
    struct Match
    {
        IResource* resource = nullptr;
        RequestInfo::Keys keys;      ///< the values of the route's keys, decoded, in the order of the route
        std::shared_ptr<void> lease; ///< what the other side waits for
    };

    ResourceRouter();
    ~ResourceRouter();

    ResourceRouter(ResourceRouter const&) = delete;
    ResourceRouter& operator=(ResourceRouter const&) = delete;

    /// From now on `resource` answers the paths of `route`. Throws -997 for what is no route ("/a/:key") and -987 for one
    /// that is there, whatever the names of its keys.
    void Register(std::string const& route, IResource& resource);

    /// Takes the route away, and with `subtree` all that lie beneath it. No path finds them any more and no match is left
    /// when this returns: it must not be called by one who holds a match of them. Does nothing where there is no route.
    void Deregister(std::string const& route, bool subtree);

    /// The resource of a path as it stands in a request, percent-encoded; nothing when no route matches.
    std::optional<Match> Find(std::string const& path) const;

    /// Every resource that has a route, once, in no order. They live until their routes are deregistered.
    std::vector<IResource*> Resources() const;

private:
    struct Entry;
    struct Node;
    struct State;

    std::shared_ptr<State> const state; // shared with leases
};

} // namespace ZuRest

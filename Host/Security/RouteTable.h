#pragma once

#include "ZuCommon/Role.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ZuHost
{

/// The table of all routes of the REST service: the methods of each resource, the role that each needs, and a
/// description.
///
/// A request that has no entry in the table is refused. HEAD counts as GET. Any caller may send OPTIONS to any path, so
/// OPTIONS has no entries. Any thread may call.
class RouteTable final
{
public:
    struct Route
    {
        char const* method;
        char const* path;        ///< a route as of `ZuRest::ResourceRouter`: "/controls/:protocol"
        ZuCommon::Role role;     ///< `NONE`: open to everybody
        char const* description; ///< one line
    };

    RouteTable() = delete;

    /// All entries, in the order in which a person reads them.
    static std::span<Route const> All() noexcept;

    /// Returns the entry of a request, or null. Chooses the most specific route for the percent-encoded `path`, as
    /// `ZuRest::ResourceRouter` does, and then the method.
    static Route const* Find(std::string_view method, std::string_view path);

    /// Returns the requests, such as "GET /a/:key", that the resources of `routes` take and that the table does not
    /// name. `findMethods` returns the methods of a resource, as `ZuRest::ResourceRequestProcessor::MethodsAt`.
    static std::vector<std::string> Missing(std::vector<std::string> const& routes,
                                            std::function<std::string(std::string const& route)> const& findMethods);

    /// Whether the table has a route for the percent-encoded `path`, with any method.
    static bool HasPath(std::string_view path);
};

} // namespace ZuHost

#include "Host/Security/RouteTable.h"

#include "ZuRest/Path.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <array>
#include <forward_list>
#include <vector>

namespace ZuHost
{

namespace
{

using Route = RouteTable::Route;
using Segments = boost::container::small_vector<std::string_view, 8>;

constexpr auto NONE = ZuCommon::Role::NONE;
constexpr auto VIEWER = ZuCommon::Role::VIEWER;
constexpr auto OPERATOR = ZuCommon::Role::OPERATOR;
constexpr auto ENGINEER = ZuCommon::Role::ENGINEER;
constexpr auto ADMINISTRATOR = ZuCommon::Role::ADMINISTRATOR;

constexpr Route ROUTES[] = {
    {"GET", "/", VIEWER, "the links to all resources"},
    {"GET", "/ui/:file", NONE, "the files of the console"},
    {"GET", "/health", NONE, "whether all parts of the host work"},
    {"GET", "/authority", NONE, "the certificate of the host's own authority"},
    {"GET", "/session", VIEWER, "the caller: its role, and the ends of its session"},
    {"POST", "/session", NONE, "logs a user in by name and password"},
    {"DELETE", "/session", VIEWER, "logs the user out"},
    {"GET", "/sessions", VIEWER, "the sessions of the caller, for administrators all"},
    {"GET", "/sessions/:id", VIEWER, "one of these sessions"},
    {"DELETE", "/sessions/:id", VIEWER, "ends one of these sessions"},
    {"GET", "/users", ADMINISTRATOR, "the users"},
    {"POST", "/users", ADMINISTRATOR, "adds a user"},
    {"GET", "/users/:name", VIEWER, "a user; only administrators see others"},
    {"PATCH", "/users/:name", VIEWER, "changes the own password, for administrators any user"},
    {"DELETE", "/users/:name", ADMINISTRATOR, "removes a user"},
    {"POST", "/setup", NONE, "makes the first administrator with the one-time code"},
    {"GET", "/problems", VIEWER, "the open problems"},
    {"GET", "/log", ENGINEER, "the newest warnings and errors of the log"},
    {"GET", "/audit", ENGINEER, "the trail: what was done, by whom and from where"},
    {"GET", "/events", VIEWER, "the stream of changes"},
    {"GET", "/metrics", VIEWER, "all counters, as text for Prometheus"},
    {"GET", "/openapi.json", VIEWER, "the description of the service for programs (OpenAPI 3.1)"},
    {"GET", "/relations/:rel", VIEWER, "a page that explains a relation"},
    {"GET", "/routes", VIEWER, "the requests of the service, each with the role that it needs"},
    {"GET", "/tokens", ADMINISTRATOR, "the tokens of programs"},
    {"POST", "/tokens", ADMINISTRATOR, "makes a token; the answer shows it once"},
    {"GET", "/tokens/:name", ADMINISTRATOR, "a token: its role, its end and its last use"},
    {"DELETE", "/tokens/:name", ADMINISTRATOR, "revokes a token at once"},
    {"GET", "/sensor", VIEWER, "the state of the sensor"},
    {"GET", "/sensor/commands/:command", VIEWER, "a command of the sensor, with its parameters"},
    {"POST", "/sensor/commands/:command", OPERATOR, "runs a command of the sensor"},
    {"GET", "/sensor/authority", VIEWER, "whether REST may run the sensor"},
    {"PUT", "/sensor/authority", ENGINEER, "sets whether REST may run the sensor"},
    {"PATCH", "/sensor/authority", ENGINEER, "as PUT"},
    {"GET", "/sensor/limits", VIEWER, "the limits of the measurements"},
    {"PUT", "/sensor/limits", ENGINEER, "changes the limits of the measurements"},
    {"PATCH", "/sensor/limits", ENGINEER, "as PUT"},
    {"GET", "/operations/:number", VIEWER, "the last operations on the sensor"},
    {"GET", "/datasources/:source", VIEWER, "a data source: its last value and where it goes; also as a stream"},
    {"GET", "/profile", VIEWER, "the newest profile; also as a stream"},
    {"GET", "/rangeimage", VIEWER, "the last profiles as a grid; also as a stream"},
    {"GET", "/scanners/:id", VIEWER, "the state of a scanner"},
    {"GET", "/jobs", VIEWER, "the list of jobs"},
    {"GET", "/jobs/:name", VIEWER, "the file of a job"},
    {"PUT", "/jobs/:name", ENGINEER, "adds or replaces a job by a file"},
    {"DELETE", "/jobs/:name", ENGINEER, "deletes a job"},
    {"POST", "/jobs/:name/load", OPERATOR, "loads a job"},
    {"POST", "/jobs/:name/save", ENGINEER, "saves the loaded job, or copies it to another name"},
    {"GET", "/jobs/:name/report", VIEWER, "what the last load took over"},
    {"GET", "/controls/:protocol", VIEWER, "the state and the parameters of a protocol"},
    {"PUT", "/controls/:protocol", ENGINEER, "enables or disables a protocol, changes its parameters"},
    {"PATCH", "/controls/:protocol", ENGINEER, "as PUT"},
    {"GET", "/controls/:protocol/commands/:command", VIEWER, "a command of a protocol, with its arguments"},
    {"POST", "/controls/:protocol/commands/:command", OPERATOR, "runs a command of a protocol"},
    {"GET", "/controls/:protocol/metrics", VIEWER, "the counters of a protocol"},
    {"GET", "/controls/:protocol/outputs", VIEWER, "the output map of a protocol"},
    {"GET", "/controls/:protocol/outputs/commands/:command", VIEWER,
     "a command for the output map, with its arguments"},
    {"POST", "/controls/:protocol/outputs/commands/:command", ENGINEER, "changes the output map by a command"},
    {"POST", "/controls/:protocol/outputs/preview", VIEWER,
     "what commands would do to the output map; changes nothing"},
    {"GET", "/controls/:protocol/plc", VIEWER, "the layouts that a PLC depends on, and files for its program"},
    {"GET", "/controls/:protocol/registerAssemblies/:registerAssembly", VIEWER, "the blocks of a register assembly"},
    {"GET", "/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command", VIEWER,
     "a command for a register assembly, with its arguments"},
    {"POST", "/controls/:protocol/registerAssemblies/:registerAssembly/commands/:command", ENGINEER,
     "changes a register assembly by a command"},
    {"POST", "/controls/:protocol/registerAssemblies/:registerAssembly/preview", VIEWER,
     "what commands would do to a register assembly; changes nothing"},
    {"GET", "/controls/hardware/:device", VIEWER, "the outputs of a device"},
    {"GET", "/controls/hardware/metrics", VIEWER, "the counters of the inputs and outputs"},
    {"GET", "/controls/hardware/:device/digital/:port", VIEWER, "the configuration of the digital outputs"},
    {"PUT", "/controls/hardware/:device/digital/:port", ENGINEER, "changes the configuration of the digital outputs"},
    {"PATCH", "/controls/hardware/:device/digital/:port", ENGINEER, "as PUT"},
    {"GET", "/controls/hardware/:device/analog/:port", VIEWER, "the configuration of the analog outputs"},
    {"PUT", "/controls/hardware/:device/analog/:port", ENGINEER, "changes the configuration of the analog outputs"},
    {"PATCH", "/controls/hardware/:device/analog/:port", ENGINEER, "as PUT"},
    {"GET", "/controls/hardware/:device/marlet/:port", VIEWER, "the configuration of the serial output of the link"},
    {"PUT", "/controls/hardware/:device/marlet/:port", ENGINEER,
     "changes the configuration of the serial output of the link"},
    {"PATCH", "/controls/hardware/:device/marlet/:port", ENGINEER, "as PUT"},
    {"GET", "/controls/hardware/:device/serial/:port", VIEWER, "the configuration of the serial outputs"},
    {"PUT", "/controls/hardware/:device/serial/:port", ENGINEER, "changes the configuration of the serial outputs"},
    {"PATCH", "/controls/hardware/:device/serial/:port", ENGINEER, "as PUT"},
};

constexpr std::array METHODS{"GET", "PUT", "PATCH", "POST", "DELETE"};

bool IsKey(std::string_view segment)
{
    return segment.starts_with(':');
}

/// The segments of a path. A path that is no route, such as "*", has one empty segment, which matches nothing.
Segments SegmentsOf(std::string_view path)
{
    Segments segments;
    if (path == "/")
    {
        return segments;
    }
    if (!path.starts_with('/'))
    {
        segments.emplace_back();
        return segments;
    }
    while (!path.empty())
    {
        path.remove_prefix(1);
        segments.push_back(path.substr(0, path.find('/')));
        path.remove_prefix(segments.back().size());
    }
    return segments;
}

/// The entries with one path.
struct Resource
{
    std::vector<std::string_view> segments;
    std::array<Route const*, METHODS.size()> routes{}; // in the order of `METHODS`

    bool Matches(Segments const& path) const
    {
        bool const lacksKey = path.size() + 1 == segments.size() && IsKey(segments.back());
        auto const fits = [](std::string_view one, std::string_view own) {
            return !one.empty() && (IsKey(own) || one == own);
        };
        return (path.size() == segments.size() || lacksKey) &&
               std::equal(path.begin(), path.end(), segments.begin(), fits);
    }
};

/// A path that ends comes before one that goes on, and a literal before a key: the first match is the most specific.
bool IsBefore(Resource const& left, Resource const& right)
{
    return std::ranges::lexicographical_compare(left.segments, right.segments,
                                                [](std::string_view one, std::string_view other) {
                                                    return IsKey(one) != IsKey(other) ? IsKey(other) : one < other;
                                                });
}

std::vector<Resource> MakeResources()
{
    std::vector<Resource> resources;
    for (Route const& route : ROUTES)
    {
        Segments const parts = SegmentsOf(route.path);
        std::vector<std::string_view> segments(parts.begin(), parts.end());
        auto found = std::ranges::find(resources, segments, &Resource::segments);
        if (found == resources.end())
        {
            found = resources.insert(resources.end(), Resource{std::move(segments)});
        }
        auto const method = std::ranges::find(METHODS, std::string_view(route.method));
        found->routes.at(static_cast<std::size_t>(method - METHODS.begin())) = &route;
    }
    std::ranges::stable_sort(resources, IsBefore);
    return resources;
}

Resource const* ResourceOf(std::string_view path)
{
    static std::vector<Resource> const RESOURCES = MakeResources();
    Segments segments = SegmentsOf(path);
    std::forward_list<std::string> decoded; // the decoded text of segments with escapes
    for (std::string_view& segment : segments)
    {
        if (segment.find('%') != std::string_view::npos)
        {
            segment = decoded.emplace_front(ZuRest::Path::Decoded(segment));
        }
    }
    auto const found = std::ranges::find_if(RESOURCES, [&](Resource const& one) { return one.Matches(segments); });
    return found != RESOURCES.end() ? &*found : nullptr;
}

} // namespace

std::span<Route const> RouteTable::All() noexcept
{
    return ROUTES;
}

Route const* RouteTable::Find(std::string_view method, std::string_view path)
{
    Resource const* const resource = ResourceOf(path);
    auto const known = std::ranges::find(METHODS, method == "HEAD" ? std::string_view("GET") : method);
    return resource != nullptr && known != METHODS.end()
               ? resource->routes.at(static_cast<std::size_t>(known - METHODS.begin()))
               : nullptr;
}

bool RouteTable::HasPath(std::string_view path)
{
    return ResourceOf(path) != nullptr;
}

std::vector<std::string> RouteTable::Missing(std::vector<std::string> const& routes,
                                             std::function<std::string(std::string const& route)> const& findMethods)
{
    std::vector<std::string> missing;
    for (std::string const& route : routes)
    {
        std::string const methods = findMethods(route);
        for (char const* const method : METHODS)
        {
            if ((", " + methods).find(", " + std::string(method) + ", ") != std::string::npos &&
                Find(method, route) == nullptr)
            {
                missing.push_back(std::string(method) + ' ' + route);
            }
        }
    }
    return missing;
}

} // namespace ZuHost

#include "Host/Resources/RootResource.h"

#include "ZuRest/ResourceRouter.h"
#include "ZuRest/ResponseInfo.h"

#include <nlohmann/json.hpp>

#include <array>

namespace ZuHost
{

namespace
{

/// A link. A template follows RFC 6570; `example` is a path that it could expand to, for looking up the route.
struct Entry
{
    char const* relation;
    char const* href;
    char const* example;
    bool asList;
};

constexpr char const* PATH = nullptr; // marks an entry that is a path and no template

constexpr std::array ENTRIES{
    Entry{"zu:controls", "/controls", PATH, false},
    Entry{"zu:hardware", "/controls/hardware", PATH, false},
    Entry{"zu:jobs", "/jobs", PATH, false},
    Entry{"zu:sensor", "/sensor", PATH, false},
    Entry{"zu:operations", "/operations", PATH, false},
    Entry{"zu:sources", "/datasources", PATH, false},
    Entry{"zu:profile", "/profile", PATH, false},
    Entry{"zu:rangeImage", "/rangeimage", PATH, false},
    Entry{"zu:scanners", "/scanners", PATH, false},
    Entry{"zu:health", "/health", PATH, false},
    Entry{"zu:authority", "/authority", PATH, false},
    Entry{"zu:problems", "/problems", PATH, false},
    Entry{"zu:log", "/log", PATH, false},
    Entry{"zu:audit", "/audit", PATH, false},
    Entry{"zu:routes", "/routes", PATH, false},
    Entry{"zu:description", "/openapi.json", PATH, false},
    Entry{"zu:tokens", "/tokens", PATH, false},
    Entry{"zu:session", "/session", PATH, false},
    Entry{"zu:sessions", "/sessions", PATH, false},
    Entry{"zu:users", "/users", PATH, false},
    Entry{"zu:events", "/events", PATH, false},
    Entry{"zu:relations", "/relations", PATH, false},
    Entry{"zu:monitoring", "/metrics", PATH, false},
    Entry{"zu:metrics", "/controls/{protocol}/metrics", "/controls/x/metrics", false},
    Entry{"zu:commands", "/controls/{protocol}/commands", "/controls/x/commands", true},
    Entry{"zu:commands", "/controls/{protocol}/outputs/commands", "/controls/x/outputs/commands", true},
    Entry{"zu:commands", "/controls/{protocol}/registerAssemblies/{registerAssembly}/commands",
          "/controls/x/registerAssemblies/x/commands", true},
    Entry{"zu:registerAssemblies", "/controls/{protocol}/registerAssemblies", "/controls/x/registerAssemblies", false},
    Entry{"zu:schema", "{+path}?schema=true", "/", false},
};

} // namespace

RootResource::RootResource(ZuRest::ResourceRouter const& usedRouter) : router(usedRouter)
{
}

RootResource::~RootResource() = default;

nlohmann::json RootResource::Document(ZuRest::RequestInfo const& /*request*/, ZuRest::ResponseInfo& response)
{
    for (Entry const& entry : ENTRIES)
    {
        bool const isTemplate = entry.example != PATH;
        if (router.Find(isTemplate ? entry.example : entry.href).has_value())
        {
            nlohmann::json const extra = isTemplate ? nlohmann::json{{"templated", true}} : nlohmann::json();
            response.Link(entry.relation, entry.href, entry.asList, extra);
        }
    }
    return {{"product", "ZuControl"}, {"version", ZU_VERSION}};
}

} // namespace ZuHost

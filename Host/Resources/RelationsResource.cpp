#include "Host/Resources/RelationsResource.h"

#include "Host/Security/RouteTable.h"
#include "ZuApi/Exception.h"
#include "ZuRest/Answer.h"
#include "ZuRest/RequestInfo.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ZuHost
{

namespace
{

/// All texts are inserted into pages without escaping.
struct Relation
{
    char const* name;  // without the prefix "zu:"
    char const* route; // of the resource, as the route table names it; empty for a relation to any resource
    char const* meaning;
};

constexpr std::array RELATIONS{
    Relation{"controls", "/controls/:protocol",
             "The control protocols of this system, with all that can be configured of them."},
    Relation{"control", "/controls/:protocol",
             "A control protocol: whether it is enabled, its state and its parameters. PUT changes them."},
    Relation{"datasources", "/controls/:protocol/outputs",
             "The output map of a protocol: which result goes out under which id."},
    Relation{"registerAssembly", "/controls/:protocol/registerAssemblies/:registerAssembly",
             "A register assembly of a protocol: its blocks, what each holds and where it stands."},
    Relation{"registerAssemblies", "/controls/:protocol/registerAssemblies/:registerAssembly",
             "The list of a protocol's register assemblies."},
    Relation{"command", "/controls/:protocol/commands/:command",
             "A command: GET shows its arguments, POST carries it out with those of the body."},
    Relation{"commands", "/controls/:protocol/commands/:command",
             "The list of the commands of a protocol, an output map or a register assembly."},
    Relation{"metrics", "/controls/:protocol/metrics",
             "The counters of a protocol. With the header Accept: text/event-stream they come as a stream."},
    Relation{"monitoring", "/metrics", "The counters of the whole system as text for a monitoring system to collect."},
    Relation{"hardware", "/controls/hardware/:device",
             "The devices with inputs and outputs, and how these are configured."},
    Relation{"digitalOutput", "/controls/hardware/:device/digital/:port",
             "The configuration of a device's digital outputs."},
    Relation{"analogOutput", "/controls/hardware/:device/analog/:port",
             "The configuration of a device's analog outputs."},
    Relation{"serialOutput", "/controls/hardware/:device/serial/:port",
             "The configuration of a device's serial outputs."},
    Relation{"marletOutput", "/controls/hardware/:device/marlet/:port",
             "The configuration of a device's serial outputs to the sensor link."},
    Relation{"sensor", "/sensor",
             "The sensor: its state, what it takes and misses, what its outputs drive. Its commands run it."},
    Relation{"operations", "/operations/:number",
             "The last operations on the sensor: what was asked for, by which caller, with what result."},
    Relation{"controlAuthority", "/sensor/authority",
             "Whether REST may run the sensor beside the protocols. PUT changes it."},
    Relation{"limits", "/sensor/limits", "The limits that make the decision of each measurement. PUT changes them."},
    Relation{"sources", "/datasources/:source",
             "The data sources: what the sensor measures, its last values, and where the protocols send them."},
    Relation{"source", "/datasources/:source",
             "A data source. With the header Accept: text/event-stream its values come as a stream."},
    Relation{"profile", "/profile",
             "The newest profile. With the header Accept: application/octet-stream the profiles come as a stream."},
    Relation{"rangeImage", "/rangeimage",
             "The last profiles as a grid of heights. With the header Accept: application/octet-stream its "
             "rows come as a stream."},
    Relation{"scanners", "/scanners/:id", "The list of the scanners."},
    Relation{":scanner", "/scanners/:id",
             "The scanner that a device belongs to: its sensors, its alignment, its laser and encoder."},
    Relation{"jobs", "/jobs", "The jobs: the stored configurations, of which one is loaded."},
    Relation{"job", "/jobs/:name",
             "A stored configuration as a file: GET downloads it, PUT replaces it, DELETE removes it."},
    Relation{"jobLoad", "/jobs/:name/load", "POST loads a job and tells what was taken over of it."},
    Relation{"jobSave", "/jobs/:name/save",
             "POST saves the loaded job, also as a copy under another name; it is on the disk when it answers."},
    Relation{"jobReport", "/jobs/:name/report",
             "What was taken over of the job that was loaded last, protocol by protocol."},
    Relation{"health", "/health", "Whether the service is there, and for how long. It asks for no token."},
    Relation{"authority", "/authority",
             "The authority that has signed the certificate for HTTPS, as a PEM file. It asks for no token."},
    Relation{"session", "/session", "The caller with its role. POST logs a user in, DELETE logs the user out."},
    Relation{"sessions", "/sessions", "The sessions of the caller, for administrators all. DELETE ends one of them."},
    Relation{"users", "/users", "The users, for administrators. POST adds one, PATCH changes one, DELETE removes one."},
    Relation{"problems", "/problems", "The problems that stand now, the oldest first."},
    Relation{"log", "/log", "The newest warnings and errors of the log, the oldest first."},
    Relation{"audit", "/audit",
             "The trail: what was done, by whom, from where and with what result. Accept: text/csv and "
             "application/x-ndjson give it as a table and as lines."},
    Relation{"events", "/events",
             "A stream of server-sent events: one for each change, with the path of what has changed. Type 2: "
             "this document reads differently. Type 4: so may all beneath it."},
    Relation{"routes", "/routes", "The requests of this service, each with the role that it needs."},
    Relation{
        "description", "/openapi.json",
        "The description of this service for programs (OpenAPI 3.1): tools make clients, forms and tests from it."},
    Relation{"tokens", "/tokens",
             "The tokens of programs. POST makes one and shows it, once; DELETE of one of them revokes it."},
    Relation{"relations", "/relations/:rel", "These pages."},
    Relation{"schema", "", "Any document with the schema of its values under _schema: titles, types, bounds, units."},
};

std::string Paragraph(Relation const& relation)
{
    std::string const name(relation.name);
    return "<dt id=\"" + name + "\"><code>zu:" + name + "</code></dt><dd>" + relation.meaning + "</dd>\n";
}

/// The requests of the resource with their roles, as a list; empty without any.
std::string RequestsOf(Relation const& relation)
{
    std::string lines;
    for (RouteTable::Route const& route : RouteTable::All())
    {
        if (relation.route == std::string_view(route.path))
        {
            lines.append("<li><code>").append(route.method).append(" ").append(route.path).append("</code>: ");
            lines.append(route.description).append(" (").append(ZuCommon::RoleName(route.role)).append(")</li>\n");
        }
    }
    if (lines.empty())
    {
        return "";
    }
    return "<dd>Its requests, each with the role that it needs; <a href=\"/openapi.json\">the description for "
           "programs</a> has their parameters and answers:\n<ul>\n" +
           lines + "</ul></dd>\n";
}

std::string PageOf(std::string_view title, std::string const& paragraphs)
{
    std::string page = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>";
    page.append(title).append("</title></head>\n<body><h1>").append(title).append("</h1>\n<dl>\n");
    return page.append(paragraphs).append("</dl>\n</body></html>\n");
}

} // namespace

RelationsResource::RelationsResource() = default;

RelationsResource::~RelationsResource() = default;

std::vector<std::string> RelationsResource::ContentMethods() const
{
    return {"GET"};
}

ZuRest::Answer RelationsResource::AnswerContent(ZuRest::Request const& /*request*/, ZuRest::RequestInfo const& info)
{
    ZuRest::Answer answer;
    answer.contentType = "text/html; charset=utf-8";
    std::string const* const name = info.FindKey("rel");
    if (name == nullptr)
    {
        std::string all;
        for (Relation const& relation : RELATIONS)
        {
            all += Paragraph(relation);
        }
        answer.body = PageOf("Relations of ZuControl", all);
        return answer;
    }
    auto const* const found = std::find_if(RELATIONS.begin(), RELATIONS.end(),
                                           [name](Relation const& relation) { return *name == relation.name; });
    if (found == RELATIONS.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no relation 'zu:%s'.", name->c_str());
    }
    answer.body = PageOf("zu:" + *name, Paragraph(*found) + RequestsOf(*found));
    return answer;
}

} // namespace ZuHost

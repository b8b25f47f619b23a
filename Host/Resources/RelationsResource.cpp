#include "Host/Resources/RelationsResource.h"

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

/// Both texts are inserted into pages without escaping.
struct Relation
{
    char const* name; // without the prefix "zu:"
    char const* meaning;
};

constexpr std::array RELATIONS{
    Relation{"controls", "The control protocols of this system, with all that can be configured of them."},
    Relation{"control", "A control protocol: whether it is enabled, its state and its parameters. PUT changes them."},
    Relation{"datasources", "The output map of a protocol: which result goes out under which id."},
    Relation{"registerAssembly", "A register assembly of a protocol: its blocks, what each holds and where it stands."},
    Relation{"registerAssemblies", "The list of a protocol's register assemblies."},
    Relation{"command", "A command: GET shows its arguments, POST carries it out with those of the body."},
    Relation{"commands", "The list of the commands of a protocol, an output map or a register assembly."},
    Relation{"metrics", "The counters of a protocol. With the header Accept: text/event-stream they come as a stream."},
    Relation{"monitoring", "The counters of the whole system as text for a monitoring system to collect."},
    Relation{"hardware", "The devices with inputs and outputs, and how these are configured."},
    Relation{"digitalOutput", "The configuration of a device's digital outputs."},
    Relation{"analogOutput", "The configuration of a device's analog outputs."},
    Relation{"serialOutput", "The configuration of a device's serial outputs."},
    Relation{"marletOutput", "The configuration of a device's serial outputs to the sensor link."},
    Relation{"sensor", "The sensor: its state, what it takes and misses, what its outputs drive. Its commands run it."},
    Relation{"operations", "The last operations on the sensor: what was asked for, by which caller, with what result."},
    Relation{"controlAuthority", "Whether REST may run the sensor beside the protocols. PUT changes it."},
    Relation{"limits", "The limits that make the decision of each measurement. PUT changes them."},
    Relation{"sources",
             "The data sources: what the sensor measures, its last values, and where the protocols send them."},
    Relation{"source", "A data source. With the header Accept: text/event-stream its values come as a stream."},
    Relation{"profile",
             "The newest profile. With the header Accept: application/octet-stream the profiles come as a stream."},
    Relation{"rangeImage",
             "The last profiles as a grid of heights. With the header Accept: application/octet-stream its "
             "rows come as a stream."},
    Relation{"scanners", "The list of the scanners."},
    Relation{":scanner", "The scanner that a device belongs to: its sensors, its alignment, its laser and encoder."},
    Relation{"jobs", "The jobs: the stored configurations, of which one is loaded."},
    Relation{"job", "A stored configuration as a file: GET downloads it, PUT replaces it, DELETE removes it."},
    Relation{"jobLoad", "POST loads a job and tells what was taken over of it."},
    Relation{"jobSave",
             "POST saves the loaded job, also as a copy under another name; it is on the disk when it answers."},
    Relation{"jobReport", "What was taken over of the job that was loaded last, protocol by protocol."},
    Relation{"health", "Whether the service is there, and for how long. It asks for no token."},
    Relation{"authority",
             "The authority that has signed the certificate for HTTPS, as a PEM file. It asks for no token."},
    Relation{"session", "The caller with its role. POST logs a user in, DELETE logs the user out."},
    Relation{"sessions", "The sessions of the caller, for administrators all. DELETE ends one of them."},
    Relation{"users", "The users, for administrators. POST adds one, PATCH changes one, DELETE removes one."},
    Relation{"problems", "The problems that stand now, the oldest first."},
    Relation{"log", "The newest warnings and errors of the log, the oldest first."},
    Relation{"audit", "The trail: what was done, by whom, from where and with what result. Accept: text/csv and "
                      "application/x-ndjson give it as a table and as lines."},
    Relation{"events",
             "A stream of server-sent events: one for each change, with the path of what has changed. Type 2: "
             "this document reads differently. Type 4: so may all beneath it."},
    Relation{"routes", "The requests of this service, each with the role that it needs."},
    Relation{
        "description",
        "The description of this service for programs (OpenAPI 3.1): tools make clients, forms and tests from it."},
    Relation{"tokens", "The tokens of programs. POST makes one and shows it, once; DELETE of one of them revokes it."},
    Relation{"relations", "These pages."},
    Relation{"schema", "Any document with the schema of its values under _schema: titles, types, bounds, units."},
};

std::string Paragraph(Relation const& relation)
{
    std::string const name(relation.name);
    return "<dt id=\"" + name + "\"><code>zu:" + name + "</code></dt><dd>" + relation.meaning + "</dd>\n";
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
    answer.body = PageOf("zu:" + *name, Paragraph(*found));
    return answer;
}

} // namespace ZuHost

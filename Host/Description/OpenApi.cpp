#include "Host/Description/OpenApi.h"

#include "Host/Description/DescribedRecords.h"
#include "Host/Description/DescriptionTexts.h"
#include "Host/Security/Sessions.h"
#include "ZuRest/HttpStatus.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <string_view>

namespace ZuHost
{

using Json = nlohmann::json;
using Route = RouteTable::Route;

namespace
{

constexpr char const* HAL = "application/hal+json";
constexpr char const* JSON = "application/json";
constexpr char const* PROBLEM = "application/problem+json";
constexpr char const* EVENT_STREAM = "text/event-stream";
constexpr char const* INTRODUCTION =
    "The REST service of the host, as it runs now: its parameters and commands are those of the protocols that are "
    "loaded. HEAD counts as GET. Every caller may send OPTIONS to any path; the answer is 204 with the header Allow. "
    "The role that a request needs is under x-role; none means that it needs no caller. On a loopback address, and "
    "as long as there is no user and no token, every request is an administrator's. In a session each change has "
    "the header X-CSRF-Token.";

/// "/controls/:protocol" without the key; empty if the route does not end in a key.
std::string ListPathOf(std::string_view path)
{
    std::size_t const slash = path.rfind('/');
    bool const endsInKey = slash != 0 && path.substr(slash).starts_with("/:");
    return std::string(endsInKey ? path.substr(0, slash) : "");
}

/// The path of the list that the resource of the route shows; empty if it shows none.
std::string ListPathOf(Route const& route)
{
    std::string path = route.method == std::string_view("GET") ? ListPathOf(route.path) : "";
    return RouteTable::Find("GET", path) == &route ? path : "";
}

std::string RequestOf(Route const& route, std::string const& path)
{
    return std::string(route.method) + ' ' + path;
}

/// The keys of a route, without the colon.
std::vector<std::string> KeysIn(std::string_view path)
{
    std::vector<std::string> keys;
    for (std::size_t colon = path.find("/:"); colon != std::string_view::npos; colon = path.find("/:", colon + 1))
    {
        std::string_view const rest = path.substr(colon + 2);
        keys.emplace_back(rest.substr(0, rest.find('/')));
    }
    return keys;
}

/// "/controls/:protocol" as "/controls/{protocol}".
std::string TemplateOf(std::string path)
{
    for (std::string const& key : KeysIn(path))
    {
        path.replace(path.find("/:" + key), key.size() + 2, "/{" + key + '}');
    }
    return path;
}

std::string InLowerCase(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return text;
}

/// "GET" and "/controls/:protocol" as "getControlsProtocol".
std::string OperationIdOf(std::string const& method, std::string const& path)
{
    std::string id = InLowerCase(method);
    bool beginsWord = true;
    for (char const character : path == "/" ? "/root" : path)
    {
        auto const byte = static_cast<unsigned char>(character);
        bool const isPart = std::isalnum(byte) != 0;
        if (isPart)
        {
            id.push_back(static_cast<char>(beginsWord ? std::toupper(byte) : byte));
        }
        beginsWord = !isPart;
    }
    return id;
}

/// The description of PATCH is "as PUT" where the two do the same.
char const* SummaryOf(Route const& route)
{
    Route const* const put = RouteTable::Find("PUT", route.path);
    return put != nullptr && route.description == std::string_view("as PUT") ? put->description : route.description;
}

Json Reference(char const* kind, std::string const& name)
{
    return {{"$ref", std::string("#/components/") + kind + '/' + name}};
}

Json Header(char const* description, bool isRequired)
{
    return {{"description", description}, {"required", isRequired}, {"schema", {{"type", "string"}}}};
}

std::string TitleOf(std::string const& status)
{
    return ZuRest::HttpStatus::Title(static_cast<uint32>(std::stoul(status)));
}

/// The answer to a request that is refused with this status.
Json Refusal(std::string const& status)
{
    Json response{{"description", TitleOf(status)},
                  {"content", {{PROBLEM, {{"schema", DescribedRecords::ReferenceTo("Problem")}}}}}};
    if (status == "401")
    {
        response["headers"]["WWW-Authenticate"] = Header("how to log in", true);
    }
    if (status == "405")
    {
        response["headers"]["Allow"] = Header("the methods of the resource", true);
    }
    if (status == "429" || status == "503")
    {
        response["headers"]["Retry-After"] = Header("try again after so many seconds", false);
    }
    return response;
}

Json HeaderParameter(char const* name, char const* description)
{
    return {{"name", name}, {"in", "header"}, {"description", description}, {"schema", {{"type", "string"}}}};
}

/// Collects the parts of the description while it goes through the routes.
class Writer
{
public:
    explicit Writer(OpenApi::Service const& usedService)
        : service(usedService),
          texts(Json::parse(DescriptionTexts::Description())),
          examples(Json::parse(DescriptionTexts::Examples())),
          records(texts.at("records"), service.readDocument)
    {
    }

    Json Write()
    {
        for (Route const& route : RouteTable::All())
        {
            AddRoute(route);
        }
        Json tags = Json::array();
        for (auto const& [name, description] : texts.at("tags").items())
        {
            tags.push_back({{"name", name}, {"description", description}});
        }
        Json const license{{"name", "Apache-2.0"}, {"identifier", "Apache-2.0"}};
        return {{"openapi", "3.1.0"},
                {"jsonSchemaDialect", "https://json-schema.org/draft/2020-12/schema"},
                {"info",
                 {{"title", "ZuControl"},
                  {"version", service.version},
                  {"description", INTRODUCTION},
                  {"license", license}}},
                {"servers", Json::array({Json::object({{"url", "/"}})})},
                {"tags", std::move(tags)},
                {"paths", std::move(paths)},
                {"components", Components()}};
    }

private:
    void AddRoute(Route const& route)
    {
        std::string const methods = ", " + service.findMethods(route.path) + ", ";
        if (methods.find(", " + std::string(route.method) + ", ") == std::string::npos)
        {
            return;
        }
        AddOperation(route, route.path);
        std::string const list = ListPathOf(route);
        if (!list.empty() && texts.at("operations").contains(RequestOf(route, list)))
        {
            AddOperation(route, list);
        }
    }

    void AddOperation(Route const& route, std::string const& path)
    {
        std::string const request = RequestOf(route, path);
        Json const described = texts.at("operations").value(request, Json::object());
        Json operation{{"operationId", OperationIdOf(route.method, path)},
                       {"summary", described.value("summary", SummaryOf(route))},
                       {"tags", Json::array({described.value("tag", "service")})},
                       {"x-role", ZuCommon::RoleName(route.role)},
                       {"security", Security(route.role)},
                       {"responses", Responses(route, path, described)}};
        if (Json parameters = Parameters(route, path, described); !parameters.empty())
        {
            operation["parameters"] = std::move(parameters);
        }
        if (described.contains("body"))
        {
            bool const isNeeded = route.method != std::string_view("POST");
            operation["requestBody"] = {{"required", isNeeded}, {"content", Content(described.at("body"), JSON)}};
        }
        paths[TemplateOf(path)][InLowerCase(route.method)] = std::move(operation);
    }

    static Json Security(ZuCommon::Role role)
    {
        if (role == ZuCommon::Role::NONE)
        {
            return Json::array();
        }
        Json const roles = Json::array({ZuCommon::RoleName(role)});
        return Json::array({Json::object({{"token", roles}}), Json::object({{"session", roles}})});
    }

    Json Parameters(Route const& route, std::string const& path, Json const& described)
    {
        Json parameters = Json::array();
        for (std::string const& key : KeysIn(path))
        {
            parameters.push_back(Reference("parameters", key));
        }
        bool const hasDocument = ShowsDocument(described);
        std::string_view const method = route.method;
        for (Json const& name : described.value("query", Json::array()))
        {
            parameters.push_back(Reference("parameters", "query." + name.get<std::string>()));
        }
        if (method == "GET" && hasDocument)
        {
            parameters.push_back(Reference("parameters", "query.schema"));
            parameters.push_back(Reference("parameters", "If-None-Match"));
        }
        if (method != "GET")
        {
            parameters.push_back(Reference("parameters", "If-Match"));
        }
        if ((method == "PUT" || method == "PATCH") && hasDocument)
        {
            parameters.push_back(Reference("parameters", "Prefer"));
        }
        return parameters;
    }

    /// Whether the answer is a HAL document.
    static bool ShowsDocument(Json const& described)
    {
        Json const answer = described.value("/answers/200"_json_pointer, Json());
        return answer.is_string() || answer.contains(HAL);
    }

    Json Responses(Route const& route, std::string const& path, Json const& described)
    {
        Json const given = examples.value(RequestOf(route, path), Json::object());
        Json responses = Json::object();
        Json const answers = described.value("answers", Json::object());
        for (auto const& [status, answer] : answers.items())
        {
            responses[status] = Answer(status, answer, given.value(status, Json()));
        }
        if (route.method == std::string_view("GET") && ShowsDocument(described))
        {
            responses["304"] = {{"description", TitleOf("304")}};
        }
        for (std::string const& status : Refusals(route, path, described))
        {
            refused.insert(status);
            responses[status] = Reference("responses", status);
            if (given.contains(status))
            {
                responses[status] = Refusal(status);
                responses[status]["content"][PROBLEM]["example"] = given.at(status);
            }
        }
        return responses;
    }

    Json Answer(std::string const& status, Json const& answer, Json const& example)
    {
        Json response{{"description", TitleOf(status)}};
        if (!answer.is_null())
        {
            response["content"] = Content(answer, HAL);
            if (!example.is_null())
            {
                std::string const type = response["content"].contains(HAL) ? HAL : JSON;
                response["content"][type]["example"] = example;
            }
        }
        if (status == "201" || status == "303")
        {
            response["headers"]["Location"] = Header("the path of the resource", true);
        }
        if (status == "200" && (answer.is_string() || answer.contains(HAL)))
        {
            response["headers"]["ETag"] = Header("the tag of the document", false);
        }
        return response;
    }

    /// The contents by media type. A record without a type has the type `type`.
    Json Content(Json const& described, char const* type)
    {
        Json content = Json::object();
        Json const byMedia = described.is_string() ? Json::object({{type, described}}) : described;
        for (auto const& [media, name] : byMedia.items())
        {
            Json const reference = DescribedRecords::ReferenceTo(name);
            content[media]["schema"] = media == EVENT_STREAM ? DescribedRecords::ReferenceTo("Text") : reference;
            if (media == EVENT_STREAM)
            {
                content[media]["x-report"] = reference;
            }
            if (media == HAL)
            {
                records.MarkAsHal(name);
            }
        }
        return content;
    }

    std::set<std::string> Refusals(Route const& route, std::string const& path, Json const& described) const
    {
        std::set<std::string> all;
        auto const add = [&all](Json const& statuses) {
            for (Json const& status : statuses)
            {
                all.insert(status.dump());
            }
        };
        Json const& rules = texts.at("refusals");
        add(rules.at("any"));
        add(rules.value(route.method, Json::array()));
        add(KeysIn(path).empty() ? Json::array() : rules.at("key"));
        add(described.value("refusals", Json::array()));
        return all;
    }

    Json Components()
    {
        Json parameters{{"If-Match", HeaderParameter("If-Match", "the tag of the state that the change is made for")},
                        {"If-None-Match", HeaderParameter("If-None-Match", "the tag of the state that is known")},
                        {"Prefer", HeaderParameter("Prefer", "handling=strict refuses unknown members")}};
        for (auto const& [key, description] : texts.at("keys").items())
        {
            parameters[key] = {{"name", key},
                               {"in", "path"},
                               {"required", true},
                               {"description", description},
                               {"schema", {{"type", "string"}}}};
        }
        for (auto const& [name, described] : texts.at("query").items())
        {
            Json& parameter = parameters["query." + name] = described;
            parameter.update({{"name", name}, {"in", "query"}});
        }
        Json responses = Json::object();
        for (std::string const& status : refused)
        {
            responses[status] = Refusal(status);
        }
        Json const schemes{{"token", {{"type", "http"}, {"scheme", "bearer"}}},
                           {"session", {{"type", "apiKey"}, {"in", "cookie"}, {"name", Sessions::COOKIE}}}};
        return {{"parameters", std::move(parameters)},
                {"responses", std::move(responses)},
                {"schemas", records.Make()},
                {"securitySchemes", schemes}};
    }

    OpenApi::Service const& service;
    Json const texts;
    Json const examples;
    DescribedRecords records;
    Json paths = Json::object();
    std::set<std::string> refused;
};

} // namespace

Json OpenApi::Describe(Service const& service)
{
    return Writer(service).Write();
}

std::vector<std::string> OpenApi::DescribedRequests()
{
    std::vector<std::string> requests;
    Json const texts = Json::parse(DescriptionTexts::Description());
    for (auto const& [request, described] : texts.at("operations").items())
    {
        requests.push_back(request);
    }
    return requests;
}

std::vector<std::string> OpenApi::RequestsToDescribe()
{
    std::vector<std::string> requests;
    for (Route const& route : RouteTable::All())
    {
        requests.push_back(RequestOf(route, route.path));
        if (std::string const list = ListPathOf(route); !list.empty())
        {
            requests.push_back(RequestOf(route, list));
        }
    }
    return requests;
}

} // namespace ZuHost

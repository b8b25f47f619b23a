#include "Ctl/Connection/Sensor.h"

#include "Ctl/Connection/EventReader.h"
#include "Ctl/Outcome/Failure.h"

#include <utility>

namespace ZuCtl
{

using nlohmann::json;

namespace
{

constexpr int BAD_REQUEST = 400;
constexpr int UNAUTHORIZED = 401;
constexpr int FORBIDDEN = 403;
constexpr int REQUEST_TIMEOUT = 408;
constexpr int TOO_MANY_REQUESTS = 429;
constexpr int SERVICE_UNAVAILABLE = 503;
constexpr int GATEWAY_TIMEOUT = 504;
constexpr char const* JSON_TYPE = "Content-Type: application/json";

ExitStatus StatusOf(int http)
{
    switch (http)
    {
    case UNAUTHORIZED:
    case FORBIDDEN:
        return ExitStatus::NOT_AUTHORISED;
    case REQUEST_TIMEOUT:
    case TOO_MANY_REQUESTS:
    case SERVICE_UNAVAILABLE:
    case GATEWAY_TIMEOUT:
        return ExitStatus::BUSY;
    default:
        return ExitStatus::REFUSED;
    }
}

/// The text of a document for the sensor. An argument of the command line may have bytes that JSON cannot have.
std::string TextOf(json const& document)
{
    try
    {
        return document.dump();
    }
    catch (json::exception const&)
    {
        throw Failure(ExitStatus::USAGE, "The request has bytes that are no UTF-8");
    }
}

} // namespace

Sensor::Sensor(HttpSettings settings, Credentials newCredentials)
    : client(std::move(settings)), credentials(std::move(newCredentials))
{
}

Sensor::~Sensor()
{
    if (cookie.empty())
    {
        return;
    }
    credentials.token.clear(); // the session is that of the user
    try
    {
        Delete("/session");
    }
    catch (std::exception const&)
    {
        return; // the session ends by itself after half an hour
    }
}

HttpClient& Sensor::Client() noexcept
{
    return client;
}

void Sensor::UseToken(std::string const& token)
{
    credentials.token = token;
}

void Sensor::RefuseServer() const
{
    throw Failure(ExitStatus::NOT_A_SENSOR, client.ServerAddress().Url() + " is another server than a ZuControl host");
}

json Sensor::Parse(std::string const& text) const
{
    auto const checkDepth = [this](int depth, json::parse_event_t, json&) {
        if (depth > MAX_DOCUMENT_LEVELS)
        {
            RefuseServer();
        }
        return true;
    };
    try
    {
        return json::parse(text, checkDepth);
    }
    catch (json::exception const&)
    {
        RefuseServer();
    }
}

void Sensor::Refuse(HttpAnswer const& answer) const
{
    if (answer.Header("content-type") != "application/problem+json")
    {
        RefuseServer();
    }
    json const problem = Parse(answer.body);
    std::string text = problem.value("detail", problem.value("title", ""));
    if (std::string const notice = problem.value("notice", ""); !notice.empty())
    {
        text += '\n' + notice;
    }
    if (answer.status == UNAUTHORIZED && credentials.token.empty() && credentials.user.empty())
    {
        text += "\nGive --token-file or --user, or name the sensor in the file of sensors";
    }
    throw Failure(StatusOf(answer.status), text, problem.dump());
}

json Sensor::Health()
{
    HttpRequest request;
    request.path = "/health";
    HttpAnswer const answer = client.Send(request);
    if (answer.Header("content-type") == "application/problem+json")
    {
        Refuse(answer);
    }
    json document = answer.status == 200 ? Parse(answer.body) : json();
    if (!document.is_object() || !document.contains("faults") || !document.contains("upTimeSec"))
    {
        RefuseServer();
    }
    isKnown = true;
    return document;
}

void Sensor::LogIn()
{
    HttpRequest request;
    request.method = "POST";
    request.path = "/session";
    request.headers = {JSON_TYPE};
    request.body = TextOf({{"name", credentials.user}, {"password", credentials.password}});
    HttpAnswer const answer = client.Send(request);
    if (answer.status != 200)
    {
        Refuse(answer);
    }
    std::string const setCookie = answer.Header("set-cookie");
    cookie = setCookie.substr(0, setCookie.find(';'));
    crossSiteToken = Parse(answer.body).at("crossSiteToken");
}

HttpAnswer Sensor::Send(HttpRequest request)
{
    if (!isKnown)
    {
        Health();
    }
    if (!credentials.token.empty())
    {
        request.headers.push_back("Authorization: Bearer " + credentials.token);
    }
    else if (!credentials.user.empty())
    {
        if (cookie.empty())
        {
            LogIn();
        }
        request.headers.push_back("Cookie: " + cookie);
        request.headers.push_back("X-CSRF-Token: " + crossSiteToken);
    }
    HttpAnswer answer = client.Send(request);
    if (answer.status >= BAD_REQUEST)
    {
        Refuse(answer);
    }
    if (answer.status >= 300)
    {
        RefuseServer(); // the host redirects browsers alone
    }
    return answer;
}

HttpAnswer Sensor::GetText(std::string const& path, bool isTransfer)
{
    HttpRequest request;
    request.path = path;
    request.isTransfer = isTransfer;
    return Send(std::move(request));
}

json Sensor::Get(std::string const& path)
{
    return Parse(GetText(path).body);
}

json Sensor::Change(std::string const& method, std::string const& path, json const& document)
{
    HttpRequest request;
    request.method = method;
    request.path = path;
    request.headers = {JSON_TYPE, "Prefer: handling=strict"};
    request.body = TextOf(document);
    HttpAnswer const answer = Send(std::move(request));
    return answer.body.empty() ? json() : Parse(answer.body);
}

void Sensor::Delete(std::string const& path)
{
    HttpRequest request;
    request.method = "DELETE";
    request.path = path;
    Send(std::move(request));
}

void Sensor::Upload(std::string const& path, std::string bytes, ShowProgress showProgress)
{
    HttpRequest request;
    request.method = "PUT";
    request.path = path;
    request.headers = {"Content-Type: application/vnd.sqlite3"};
    request.body = std::move(bytes);
    request.isTransfer = true;
    request.showProgress = std::move(showProgress);
    Send(std::move(request));
}

void Sensor::Stream(std::string const& path, std::function<bool(json const&)> const& take)
{
    EventReader reader;
    HttpRequest request;
    request.path = path;
    request.headers = {"Accept: text/event-stream"};
    request.isTransfer = true;
    request.takePart = [&](std::string_view part) {
        return reader.Read(part, [&](EventReader::Event const& event) { return take(Parse(event.data)); });
    };
    Send(std::move(request));
}

} // namespace ZuCtl

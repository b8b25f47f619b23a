#include "Host/Audit/TrailNotes.h"

#include "Host/Audit/Sha256.h"
#include "Host/Audit/TrailText.h"
#include "ZuApi/Exception.h"
#include "ZuControl/Control/ControlVitals.h"
#include "ZuRest/Caller.h"
#include "ZuRest/HttpStatus.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

namespace ZuHost::TrailNotes
{

namespace
{

using Json = nlohmann::json;

constexpr std::size_t MAX_COMPARED_BYTES = 256 * 1024; // larger documents are not compared: it would take too long

/// Logins and changes of users come as entries of their own, with the name of the user.
constexpr std::array<std::string_view, 4> THAT_NOTE_THEMSELVES{"/session", "/sessions", "/setup", "/users"};

bool IsBelow(std::string_view path, std::string_view head)
{
    return path.starts_with(head) && (path.size() == head.size() || path[head.size()] == '/');
}

bool NotesItself(std::string_view path)
{
    return std::ranges::any_of(THAT_NOTE_THEMSELVES, [path](std::string_view head) { return IsBelow(path, head); });
}

bool HasSucceeded(ZuRest::Answer const& answer)
{
    return answer.status < ZuRest::HttpStatus::BAD_REQUEST;
}

/// "200", or "422 Parameter port ..."
std::string ResultOf(ZuRest::Answer const& answer)
{
    std::string result = std::to_string(answer.status);
    if (HasSucceeded(answer))
    {
        return result;
    }
    Json const problem = Json::parse(answer.body, nullptr, false);
    if (problem.is_object() && problem.contains("detail") && problem["detail"].is_string())
    {
        result += " " + problem["detail"].get<std::string>();
    }
    return result;
}

void SetParameters(ZuRest::ResourceRequestProcessor::Change const& change, TrailEntry& entry)
{
    std::string const& after = change.answer.body;
    bool const isUpdate = HasSucceeded(change.answer) && !change.before.empty();
    if (isUpdate && change.before.size() + after.size() <= MAX_COMPARED_BYTES)
    {
        auto difference = TrailText::DifferenceOf(change.before, after);
        entry.before = std::move(difference.before);
        entry.after = std::move(difference.after);
        return;
    }
    entry.after = TrailText::Parameters(change.request.body);
}

std::string WhoOf(std::string const& typeName)
{
    return typeName.empty() ? "unknown protocol" : typeName;
}

/// "ModbusTcp 192.0.2.9 as operator"; empty for a protocol that does not tell its client.
std::string FromOf(std::string const& typeName, ZuControl::CommandOrigin const& origin)
{
    if (origin.address.empty())
    {
        return {};
    }
    std::string from = WhoOf(typeName) + " " + origin.address;
    if (origin.role != ZuCommon::Role::NONE)
    {
        from.append(" as ").append(ZuCommon::RoleName(origin.role));
    }
    return from;
}

/// "--param" keeps the name of a secret parameter and loses its value.
std::string WithoutSecret(std::string const& word)
{
    std::size_t const equals = word.find('=');
    bool const isSecret =
        equals != std::string::npos && TrailText::IsSecretName(word.substr(0, equals)) && word.find('.') < equals;
    return isSecret ? word.substr(0, equals + 1) + TrailText::MASK : word;
}

} // namespace

std::optional<TrailEntry> OfChange(ZuRest::ResourceRequestProcessor::Change const& change)
{
    ZuRest::Request const& request = change.request;
    if (NotesItself(request.path))
    {
        return std::nullopt;
    }
    TrailEntry entry;
    entry.who = request.caller == nullptr ? "unknown" : request.caller->name;
    entry.from = request.caller == nullptr ? "http" : request.caller->source;
    entry.what = request.method + " " + request.path;
    entry.result = ResultOf(change.answer);
    SetParameters(change, entry);
    entry.comesInBursts = !change.before.empty() || !HasSucceeded(change.answer);
    return entry;
}

std::optional<TrailEntry> OfOperation(ZuControl::ControlOperationEnd const& end)
{
    if (end.isOfHost || end.name == std::string_view("software trigger"))
    {
        return std::nullopt;
    }
    TrailEntry entry;
    entry.who = WhoOf(end.typeName);
    entry.from = FromOf(end.typeName, end.origin);
    entry.what = end.name;
    if (!end.argument.empty())
    {
        entry.what += " " + end.argument;
    }
    entry.result = end.status == Zu::Status::SUCCESS ? "done"
                   : end.status == Zu::Status::BUSY  ? "refused: another operation was in progress"
                                                     : "failed";
    entry.comesInBursts = true;
    return entry;
}

TrailEntry OfRefusal(ZuControl::ControlRefusal const& refusal)
{
    return {WhoOf(refusal.typeName),     FromOf(refusal.typeName, refusal.client), refusal.what, "", "",
            "refused: " + refusal.reason};
}

TrailEntry OfStart(std::vector<std::string> const& words)
{
    Json options = Json::array();
    for (std::size_t i = 1; i < words.size(); ++i)
    {
        options.push_back(WithoutSecret(words[i]));
    }
    std::string const after = Json{{"version", ZU_VERSION}, {"options", std::move(options)}}.dump(
        -1, ' ', false, Json::error_handler_t::replace);
    return {"host", "", "start", "", after, "done"};
}

TrailEntry OfPlugin(std::filesystem::path const& file, std::filesystem::path const& loadPath)
{
    std::error_code error;
    std::string bytes(std::filesystem::file_size(loadPath, error), '\0');
    std::ifstream(loadPath, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    Json const after{{"file", file.string()}, {"bytes", bytes.size()}, {"sha256", Sha256Hex(bytes)}};
    std::string const text = after.dump(-1, ' ', false, Json::error_handler_t::replace);
    return {"host", "", "plug-in " + file.filename().string(), "", text, "loaded"};
}

TrailEntry OfRefusedPlugin(std::filesystem::path const& file, std::string const& reason)
{
    return {"host", "", "plug-in " + file.filename().string(), "", "", "refused: " + reason};
}

Run::Run(ITrail& usedTrail, std::vector<std::string> const& words) : trail(usedTrail)
{
    trail.Note(OfStart(words));
}

Run::~Run()
{
    if (!hasStopped)
    {
        trail.Note({"host", "", "stop", "", "", "failed"});
    }
}

void Run::Stopped()
{
    hasStopped = true;
    trail.Note({"host", "", "stop", "", "", "done"});
}

} // namespace ZuHost::TrailNotes

#include "Host/Audit/AuditResource.h"

#include "Host/Audit/AuditTrail.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Path.h"
#include "ZuRest/Request.h"
#include "ZuRest/RequestPreferences.h"
#include "ZuRest/ResourceRouter.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <set>

namespace ZuHost
{

namespace
{

using OrderedJson = nlohmann::ordered_json;

constexpr char const* ROUTE = "/audit";
constexpr char const* HAL = "application/hal+json";
constexpr char const* CSV = "text/csv";
constexpr char const* LINES = "application/x-ndjson";

template <typename Number>
Number NumberOf(std::string const& name, std::string const& text, Number least, Number most)
{
    Number number{};
    char const* const end = text.data() + text.size();
    auto const result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc{} || result.ptr != end || number < least || number > most)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The parameter %s is no number from %s to %s: %s", name.c_str(),
                 std::to_string(least).c_str(), std::to_string(most).c_str(), text.c_str());
    }
    return number;
}

/// Accepts the beginning of a time as the trail writes it: "2026", "2026-01-31T12:30".
std::string TimeOf(std::string const& name, std::string const& text)
{
    constexpr std::string_view FORM = "0000-00-00T00:00:00.000000Z";
    bool fits = text.size() >= 4 && text.size() <= FORM.size();
    for (std::size_t i = 0; fits && i < text.size(); ++i)
    {
        bool const isDigit = text[i] >= '0' && text[i] <= '9';
        fits = FORM[i] == '0' ? isDigit : text[i] == FORM[i] || (text[i] == 'Z' && i + 1 == text.size());
    }
    if (!fits)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The parameter %s is no time in UTC such as 2026-01-31T12:30:00: %s",
                 name.c_str(), text.c_str());
    }
    return text.ends_with('Z') && text.size() < FORM.size() ? text.substr(0, text.size() - 1) : text;
}

void SetMember(TrailFilter& filter, std::string const& name, std::string const& value)
{
    if (name == "who")
    {
        filter.who = value;
    }
    else if (name == "from")
    {
        filter.from = value;
    }
    else if (name == "what")
    {
        filter.what = value;
    }
    else if (name == "since" || name == "until")
    {
        (name == "since" ? filter.since : filter.until) = TimeOf(name, value);
    }
    else if (name == "after")
    {
        filter.after = NumberOf<int64>(name, value, 0, INT64_MAX);
    }
    else if (name == "limit")
    {
        filter.limit = NumberOf<uint64>(name, value, 1, AuditResource::MAX_PAGE);
    }
    else
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "There is no parameter %s: the trail knows who, from, what, since, until, after and limit",
                 name.c_str());
    }
}

/// The query of the page that begins after `lastId`.
std::string QueryAfter(std::string_view query, int64 lastId)
{
    std::string next;
    while (!query.empty())
    {
        std::string_view const parameter = query.substr(0, query.find('&'));
        if (!parameter.empty() && !parameter.starts_with("after="))
        {
            next.append(parameter).append("&");
        }
        query.remove_prefix(std::min(parameter.size() + 1, query.size()));
    }
    return next + "after=" + std::to_string(lastId);
}

OrderedJson JsonOf(TrailRecord const& record)
{
    TrailEntry const& entry = record.entry;
    return {{"id", record.id},        {"time", record.time},  {"monotonicUsec", record.monotonicUsec},
            {"who", entry.who},       {"from", entry.from},   {"what", entry.what},
            {"before", entry.before}, {"after", entry.after}, {"result", entry.result},
            {"count", record.count},  {"hash", record.hash}};
}

std::string Written(OrderedJson const& document)
{
    return document.dump(-1, ' ', false, OrderedJson::error_handler_t::replace);
}

/// A field of CSV (RFC 4180). A table program would take a text that begins like a formula for one.
std::string Quoted(std::string const& text)
{
    std::string quoted = "\"";
    if (!text.empty() && std::string_view("=+-@\t\r").find(text.front()) != std::string_view::npos)
    {
        quoted += '\'';
    }
    for (char const character : text)
    {
        quoted += character;
        if (character == '"')
        {
            quoted += '"';
        }
    }
    return quoted + '"';
}

std::string AsCsv(std::vector<TrailRecord> const& records)
{
    std::string text = "id,time,monotonicUsec,who,from,what,before,after,result,count,hash\r\n";
    for (TrailRecord const& record : records)
    {
        TrailEntry const& entry = record.entry;
        text += std::to_string(record.id) + "," + record.time + "," + std::to_string(record.monotonicUsec);
        for (std::string const* const field :
             {&entry.who, &entry.from, &entry.what, &entry.before, &entry.after, &entry.result})
        {
            text += "," + Quoted(*field);
        }
        text += "," + std::to_string(record.count) + "," + record.hash + "\r\n";
    }
    return text;
}

std::string AsLines(std::vector<TrailRecord> const& records)
{
    std::string text;
    for (TrailRecord const& record : records)
    {
        text += Written(JsonOf(record)) + "\n";
    }
    return text;
}

std::string AsHal(std::vector<TrailRecord> const& records, std::string const& query, uint64 limit, int64 lastId)
{
    OrderedJson links{{"self", {{"href", ROUTE + (query.empty() ? "" : "?" + query)}}}};
    if (records.size() == limit)
    {
        links["next"] = {{"href", ROUTE + ("?" + QueryAfter(query, records.back().id))}};
    }
    int64 const beforeLast = std::max<int64>(lastId - static_cast<int64>(limit), 0);
    links["last"] = {{"href", ROUTE + ("?" + QueryAfter(query, beforeLast))}};
    OrderedJson entries = OrderedJson::array();
    for (TrailRecord const& record : records)
    {
        entries.push_back(JsonOf(record));
    }
    return Written({{"_links", std::move(links)}, {"lastId", lastId}, {"entries", std::move(entries)}});
}

/// The first of the media types that the header Accept admits; a type that it names comes before "*/*".
char const* TypeFor(std::string const& accept)
{
    constexpr std::array TYPES{HAL, CSV, LINES};
    for (char const* const type : TYPES)
    {
        if (accept.find(type) != std::string::npos && ZuRest::RequestPreferences::Admits(accept, type))
        {
            return type;
        }
    }
    for (char const* const type : TYPES)
    {
        if (ZuRest::RequestPreferences::Admits(accept, type))
        {
            return type;
        }
    }
    return accept.find("application/json") != std::string::npos ? HAL : nullptr;
}

} // namespace

AuditResource::AuditResource(ZuRest::ResourceRouter& usedRouter, AuditTrail const& shownTrail)
    : router(usedRouter), trail(shownTrail)
{
    router.Register(ROUTE, *this);
}

AuditResource::~AuditResource()
{
    ZU_GUARD_DESTRUCTOR([this] { router.Deregister(ROUTE, false); });
}

std::vector<std::string> AuditResource::ContentMethods() const
{
    return {"GET"};
}

ZuRest::Answer AuditResource::AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& /*info*/)
{
    TrailFilter const filter = FilterOf(request.query);
    char const* const type = TypeFor(request.accept);
    if (type == nullptr)
    {
        return {ZuRest::HttpStatus::NOT_ACCEPTABLE, "", "", {}};
    }
    std::vector<TrailRecord> const records = trail.Read(filter);
    ZuRest::Answer answer;
    answer.contentType = type == CSV ? "text/csv; charset=utf-8; header=present" : type;
    answer.headers = {{"Cache-Control", "no-store"}};
    bool const hasNext = records.size() == filter.limit;
    if (type != HAL && hasNext) // the other types have no place for a link
    {
        std::string const next = ROUTE + ("?" + QueryAfter(request.query, records.back().id));
        answer.headers.emplace_back("Link", "<" + next + ">; rel=\"next\"");
    }
    answer.body = type == CSV     ? AsCsv(records)
                  : type == LINES ? AsLines(records)
                                  : AsHal(records, request.query, filter.limit, trail.LastId());
    return answer;
}

TrailFilter AuditResource::FilterOf(std::string_view query)
{
    TrailFilter filter;
    std::set<std::string> seen;
    while (!query.empty())
    {
        std::string_view const parameter = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(parameter.size() + 1, query.size()));
        if (parameter.empty())
        {
            continue;
        }
        std::size_t const equals = std::min(parameter.find('='), parameter.size());
        std::string const name = ZuRest::Path::Decoded(parameter.substr(0, equals));
        std::string value(parameter.substr(std::min(equals + 1, parameter.size())));
        std::ranges::replace(value, '+', ' '); // as forms of pages send a blank
        if (!seen.insert(name).second)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "The parameter %s comes twice", name.c_str());
        }
        SetMember(filter, name, ZuRest::Path::Decoded(value));
    }
    return filter;
}

} // namespace ZuHost

#include "Host/Console/ConsolePages.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuRest/Answer.h"
#include "ZuRest/EntityTag.h"
#include "ZuRest/Request.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResourceRouter.h"

#include <algorithm>

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;

namespace
{

constexpr char const* ROUTE = "/ui/:file";
constexpr char const* PAGE = "/ui/";

// The page has no inline code, and its scripts cannot turn a text into HTML or code. It talks to this host alone.
constexpr char const* POLICY = "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
                               "img-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
                               "require-trusted-types-for 'script'; trusted-types 'none'";

std::vector<std::pair<std::string, std::string>> SafetyHeaders()
{
    return {{"Content-Security-Policy", POLICY},
            {"Referrer-Policy", "no-referrer"},
            {"X-Frame-Options", "DENY"},
            {"Cross-Origin-Opener-Policy", "same-origin"},
            {"Cross-Origin-Resource-Policy", "same-origin"}};
}

} // namespace

ConsolePages::ConsolePages(ZuRest::ResourceRouter& usedRouter, std::span<ConsoleFiles::File const> newFiles)
    : router(usedRouter)
{
    for (ConsoleFiles::File const& file : newFiles)
    {
        entries.push_back({file, ZuRest::EntityTag::Of(file.content)});
    }
    router.Register(ROUTE, *this);
}

ConsolePages::~ConsolePages()
{
    ZU_GUARD_DESTRUCTOR([this] { router.Deregister(ROUTE, false); });
}

std::vector<std::string> ConsolePages::ContentMethods() const
{
    return {"GET"};
}

ZuRest::Answer ConsolePages::AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info)
{
    if (entries.empty())
    {
        ZU_THROW(Zu::Status::NOT_FOUND,
                 "This host was built without the console, because Node.js and npm or its packages were missing. "
                 "Programs find the service at / (Accept: application/hal+json).");
    }
    std::string const* const name = info.FindKey("file");
    if (name == nullptr)
    {
        return {HttpStatus::SEE_OTHER, "", "", {{"Location", PAGE}, {"Cache-Control", "no-cache"}}};
    }
    auto const entry = std::ranges::find(entries, *name, [](Entry const& one) { return one.file.name; });
    if (entry == entries.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "The console has no file '%s'.", name->c_str());
    }
    ZuRest::Answer answer{HttpStatus::OK, std::string(entry->file.contentType), "", SafetyHeaders()};
    answer.headers.emplace_back("ETag", entry->tag);
    answer.headers.emplace_back("Cache-Control",
                                entry->file.isImmutable ? "public, max-age=31536000, immutable" : "no-cache");
    if (ZuRest::EntityTag::IsNamed(request.ifNoneMatch, entry->tag))
    {
        answer.status = HttpStatus::NOT_MODIFIED;
        answer.contentType.clear();
        return answer;
    }
    answer.headers.emplace_back("Content-Encoding", "gzip"); // every browser takes it
    answer.body = entry->file.content;
    return answer;
}

} // namespace ZuHost

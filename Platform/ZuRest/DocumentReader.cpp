#include "ZuRest/DocumentReader.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonTextWriter.h"
#include "ZuRest/IDocumentResource.h"
#include "ZuRest/IResource.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/Problem.h"
#include "ZuRest/Reference.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <algorithm>

namespace ZuRest
{

namespace
{

using Json = nlohmann::json;

constexpr char const* RELATION_PREFIX = "zu:";
constexpr std::size_t DEEPEST = 16; // of what is embedded in one another

/// Puts `shown` under its key, which is a list when it was asked for or when a second one comes.
void Put(Json& relations, Reference const& reference, Json shown)
{
    auto const present = relations.find(reference.key);
    if (present == relations.end())
    {
        relations[reference.key] = reference.asList ? Json::array({std::move(shown)}) : std::move(shown);
        return;
    }
    if (!present->is_array())
    {
        *present = Json::array({std::move(*present)});
    }
    present->push_back(std::move(shown));
}

Json LinkTo(std::string const& path, Json const& extra)
{
    Json link = extra.is_object() ? extra : Json::object();
    link["href"] = path;
    return link;
}

/// What most documents have for links, made for nothing but to be written.
Json SelfAsText(std::string const& path)
{
    std::string text(R"({"self":{"href":)");
    Zu::Properties::JsonTextWriter(text).WriteString(path);
    return JsonText::PartOfText(text.append("}}"));
}

} // namespace

/// Where a walk through what is embedded stands.
struct DocumentReader::Walk
{
    Place place;                    // of the pass that is held
    std::vector<std::string> paths; // from the document that was asked for down to this one
    bool isForText = false;         // the document is only made to be written
};

DocumentReader::DocumentReader(ResourceRouter const& usedRouter, ResourceLocks& usedLocks,
                               std::string newRelationTemplate)
    : router(usedRouter), locks(usedLocks), relationTemplate(std::move(newRelationTemplate))
{
}

DocumentReader::~DocumentReader() = default;

Json DocumentReader::Read(std::string const& path, bool wantsSchema) const
{
    Walk walk{Place::Of(path), {}, false};
    return Show(path, wantsSchema, walk);
}

std::string DocumentReader::ReadText(std::string const& path, bool wantsSchema) const
{
    Walk walk{Place::Of(path), {}, true};
    return JsonText::Write(Show(path, wantsSchema, walk));
}

std::string DocumentReader::ReadText(ResourceRouter::Match const& match, std::string const& path,
                                     bool wantsSchema) const
{
    Walk walk{Place::Of(path), {}, true};
    return JsonText::Write(ShowMatch(match, path, wantsSchema, walk));
}

Json DocumentReader::ReadFromInside(std::string const& path, bool wantsSchema) const
{
    Walk walk;
    return ShowUnderOwnPass(path, wantsSchema, walk);
}

Json DocumentReader::Show(std::string const& path, bool wantsSchema, Walk& walk) const
{
    auto const match = router.Find(path);
    if (!match.has_value())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no resource at %s.", path.c_str());
    }
    return ShowMatch(*match, path, wantsSchema, walk);
}

Json DocumentReader::ShowMatch(ResourceRouter::Match const& match, std::string const& path, bool wantsSchema,
                               Walk& walk) const
{
    IDocumentResource* const face = match.resource->DocumentProvider();
    if (face == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_UPDATABLE, "The resource at %s has no document.", path.c_str());
    }
    ResponseInfo response;
    RequestInfo request(path, match.keys, wantsSchema);
    request.isForText = walk.isForText;
    Json document = face->Document(request, response);
    if (document.is_null())
    {
        document = Json::object(); // what it belongs to is worth a document of its own
    }
    if (document.is_object())
    {
        walk.paths.push_back(path);
        AddReferences(document, response.References(), walk);
        walk.paths.pop_back();
    }
    return document;
}

void DocumentReader::AddReferences(Json& document, std::vector<Reference> const& references, Walk& walk) const
{
    if (walk.isForText && references.empty())
    {
        document["_links"] = SelfAsText(walk.paths.back());
        return;
    }
    Json links{{"self", LinkTo(walk.paths.back(), nullptr)}};
    Json embedded = Json::object();
    bool isNamed = false;
    for (Reference const& reference : references)
    {
        isNamed = isNamed || reference.key.starts_with(RELATION_PREFIX);
        if (reference.isEmbedded)
        {
            Put(embedded, reference, ShowEmbedded(reference, walk));
        }
        else
        {
            Put(links, reference, LinkTo(reference.path, reference.extra));
        }
    }
    if (isNamed && !relationTemplate.empty())
    {
        links["curies"] = Json::array({{{"name", "zu"}, {"href", relationTemplate}, {"templated", true}}});
    }
    document["_links"] = std::move(links);
    if (!embedded.empty())
    {
        document["_embedded"] = std::move(embedded);
    }
}

Json DocumentReader::ShowEmbedded(Reference const& reference, Walk& walk) const
{
    auto const addressAlone = [&reference] {
        return Json{{"_links", {{"self", LinkTo(reference.path, reference.extra)}}}};
    };
    bool const isAroundUs = std::find(walk.paths.begin(), walk.paths.end(), reference.path) != walk.paths.end();
    if (isAroundUs || walk.paths.size() == DEEPEST)
    {
        return addressAlone();
    }
    try
    {
        Json shown = Place::Of(reference.path) == walk.place ? Show(reference.path, false, walk)
                                                             : ShowUnderOwnPass(reference.path, false, walk);
        if (shown.is_object() && reference.extra.is_object())
        {
            shown["_links"]["self"] = LinkTo(reference.path, reference.extra);
        }
        return shown;
    }
    catch (std::exception const& exception)
    {
        Json shown = addressAlone();
        shown["problem"] = Problem::Of(exception, "GET", reference.path).ToJson();
        return shown;
    }
}

Json DocumentReader::ShowUnderOwnPass(std::string const& path, bool wantsSchema, Walk& walk) const
{
    Place const place = Place::Of(path);
    bool const takesBefore = Place::IsHead(path);
    ResourceLocks::InnerPass const inner = locks.EnterInner(place, takesBefore, PATIENCE_USEC);
    if (inner.before != nullptr)
    {
        return *inner.before;
    }
    if (inner.pass == nullptr)
    {
        ZU_THROW(Zu::Status::BUSY, "The resource at %s is being changed.", path.c_str());
    }
    Walk beneath{place, walk.paths, walk.isForText};
    return Show(path, wantsSchema, beneath);
}

} // namespace ZuRest

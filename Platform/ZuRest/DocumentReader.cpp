#include "ZuRest/DocumentReader.h"

#include "ZuApi/Exception.h"
#include "ZuRest/DocumentSinks.h"
#include "ZuRest/IDocumentResource.h"
#include "ZuRest/IResource.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/Problem.h"
#include "ZuRest/Reference.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace ZuRest
{

namespace
{

using Json = nlohmann::json;
using References = std::vector<Reference const*>;

constexpr char const* RELATION_PREFIX = "zu:";
constexpr char const* EMBEDDED = "_embedded";
constexpr char const* LINKS = "_links";
constexpr std::size_t DEEPEST = 16; // limit for the nesting of embedded documents

Json LinkTo(Reference const& reference)
{
    Json link = reference.extra.is_object() ? reference.extra : Json::object();
    link["href"] = reference.path;
    return link;
}

/// Returns a document with only the address of a resource.
Json AddressOf(Reference const& reference)
{
    return {{LINKS, {{"self", LinkTo(reference)}}}};
}

/// Writes an object of references, sorted by key, then in their given order. The value of a key is a list if the
/// reference asks for one or if several references have that key.
template <typename Sink, typename WriteOne>
void WriteByKey(References references, Sink& sink, WriteOne const& writeOne)
{
    std::ranges::stable_sort(references, {}, &Reference::key);
    sink.BeginObject();
    for (auto at = references.begin(); at != references.end();)
    {
        std::string const& key = (*at)->key;
        auto const end = std::find_if(at, references.end(), [&key](auto const* other) { return other->key != key; });
        bool const isList = (*at)->asList || end - at > 1;
        sink.NextMember(key);
        if (isList)
        {
            sink.BeginArray();
        }
        for (; at != end; ++at)
        {
            if (isList)
            {
                sink.NextElement();
            }
            writeOne(**at);
        }
        if (isList)
        {
            sink.EndArray();
        }
    }
    sink.EndObject();
}

/// The reference of a document to itself.
Reference SelfAt(std::string const& path, Json const& extra = nullptr)
{
    return {false, "self", path, false, extra};
}

Reference CurieOf(std::string const& relationTemplate)
{
    return {false, "curies", relationTemplate, true, {{"name", "zu"}, {"templated", true}}};
}

/// Whether `text` is an object with members that all sort after `_links`. Its members are sorted by key.
bool MayFollowLinks(std::string_view text)
{
    return text == "{}" || (text.starts_with("{\"") && text[2] > LINKS[0]);
}

/// The members of a resource's document, in order: from a tree, or from a text that `JsonText::PartOf` made.
template <typename Sink>
class Members final
{
public:
    /// Both arguments must outlive this object. Null counts as an object without members.
    Members(Json const& usedDocument, Sink& usedSink) : document(usedDocument), sink(usedSink)
    {
        auto const* const members = document.get_ptr<Json::object_t const*>();
        next = members != nullptr ? members->begin() : Iterator();
        end = members != nullptr ? members->end() : Iterator();
    }

    /// Writes the members that sort before `key`, then `key` itself. A member with this key is left out.
    void Begin(char const* key)
    {
        while (next != end && next->first < key)
        {
            WriteNext();
        }
        if (next != end && next->first == key)
        {
            ++next;
        }
        sink.NextMember(key);
    }

    /// Writes the remaining members. `Begin` comes first: the members of a text are separated by a leading comma.
    void WriteRest()
    {
        while (next != end)
        {
            WriteNext();
        }
        if constexpr (Sink::IS_TEXT)
        {
            if (auto const text = JsonText::TextOfPart(document); text.has_value() && *text != "{}")
            {
                sink.PutText(",");
                sink.PutText(text->substr(1, text->size() - 2));
            }
        }
    }

private:
    using Iterator = Json::object_t::const_iterator;

    void WriteNext()
    {
        sink.NextMember(next->first);
        sink.Put(next->second);
        ++next;
    }

    Json const& document;
    Sink& sink;
    Iterator next;
    Iterator end;
};

/// Keeps `path` in a list during the lifetime of this object.
class Around final
{
public:
    Around(std::vector<std::string const*>& usedPaths, std::string const& path) : paths(usedPaths)
    {
        paths.push_back(&path);
    }

    ~Around()
    {
        paths.pop_back();
    }

    Around(Around const&) = delete;
    Around& operator=(Around const&) = delete;

private:
    std::vector<std::string const*>& paths;
};

} // namespace

/// Writes one document, with its embedded documents, to a sink. If an embedded document fails, its output is removed.
template <typename Sink>
class DocumentReader::Walk final
{
public:
    Walk(DocumentReader const& usedReader, Place heldPlace, Sink& usedSink, std::string newQuery = {})
        : reader(usedReader), place(std::move(heldPlace)), query(std::move(newQuery)), sink(usedSink)
    {
    }

    /// `self` is the reference of the document to itself.
    void Show(Reference const& self, bool wantsSchema);
    void ShowMatch(ResourceRouter::Match const& match, Reference const& self, bool wantsSchema);
    void ShowUnderOwnPass(Reference const& self, bool wantsSchema);

private:
    void ShowObject(Json const& document, std::vector<Reference> const& references, Reference const& self);
    void ShowLink(Reference const& reference);
    void ShowEmbedded(Reference const& reference);
    void ShowBefore(Json const& document, Reference const& self);

    DocumentReader const& reader;
    Place const place;       // the place of the caller's pass
    std::string const query; // of the requested document
    Sink& sink;
    std::vector<std::string const*> paths; // the documents from the requested one down to the current one
};

DocumentReader::DocumentReader(ResourceRouter const& usedRouter, ResourceLocks& usedLocks,
                               std::string const& relationTemplate)
    : router(usedRouter),
      locks(usedLocks),
      curie(relationTemplate.empty() ? nullptr : std::make_unique<Reference const>(CurieOf(relationTemplate))),
      curieText(curie == nullptr ? "" : LinkTo(*curie).dump())
{
}

DocumentReader::~DocumentReader() = default;

std::string DocumentReader::Read(std::string const& path, bool wantsSchema) const
{
    TextSink text;
    Walk(*this, Place::Of(path), text).Show(SelfAt(path), wantsSchema);
    return text.Take();
}

std::string DocumentReader::Read(ResourceRouter::Match const& match, std::string const& path, bool wantsSchema,
                                 std::string const& query) const
{
    TextSink text;
    Walk(*this, Place::Of(path), text, query).ShowMatch(match, SelfAt(path), wantsSchema);
    return text.Take();
}

Json DocumentReader::ReadTree(std::string const& path) const
{
    TreeSink tree;
    Walk(*this, Place::Of(path), tree).Show(SelfAt(path), false);
    return tree.Take();
}

Json DocumentReader::ReadFromInside(std::string const& path, bool wantsSchema) const
{
    TreeSink tree;
    Walk(*this, {}, tree).ShowUnderOwnPass(SelfAt(path), wantsSchema);
    return tree.Take();
}

template <typename Sink>
void DocumentReader::Walk<Sink>::Show(Reference const& self, bool wantsSchema)
{
    auto const match = reader.router.Find(self.path);
    if (!match.has_value())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no resource at %s.", self.path.c_str());
    }
    ShowMatch(*match, self, wantsSchema);
}

template <typename Sink>
void DocumentReader::Walk<Sink>::ShowMatch(ResourceRouter::Match const& match, Reference const& self, bool wantsSchema)
{
    IDocumentResource* const face = match.resource->DocumentProvider();
    if (face == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_UPDATABLE, "The resource at %s has no document.", self.path.c_str());
    }
    ResponseInfo response;
    RequestInfo request(self.path, match.keys, wantsSchema);
    request.query = paths.empty() ? query : "";
    request.isForText = Sink::IS_TEXT;
    Json document = face->Document(request, response);
    auto text = JsonText::TextOfPart(document);
    if (text.has_value() && !MayFollowLinks(*text))
    {
        document = Json::parse(*text);
        text.reset();
    }
    if (document.is_null() || document.is_object() || text.has_value())
    {
        Around const around(paths, self.path);
        ShowObject(document, response.References(), self);
    }
    else
    {
        sink.Put(document);
    }
}

template <typename Sink>
void DocumentReader::Walk<Sink>::ShowObject(Json const& document, std::vector<Reference> const& references,
                                            Reference const& self)
{
    References links{&self};
    References embedded;
    bool isNamed = false;
    for (Reference const& reference : references)
    {
        isNamed = isNamed || reference.key.starts_with(RELATION_PREFIX);
        (reference.isEmbedded ? embedded : links).push_back(&reference);
    }
    if (isNamed && reader.curie != nullptr)
    {
        links.push_back(reader.curie.get());
    }
    Members members(document, sink);
    sink.BeginObject();
    if (!embedded.empty())
    {
        members.Begin(EMBEDDED);
        WriteByKey(std::move(embedded), sink, [this](Reference const& reference) { ShowEmbedded(reference); });
    }
    members.Begin(LINKS);
    WriteByKey(std::move(links), sink, [this](Reference const& reference) { ShowLink(reference); });
    members.WriteRest();
    sink.EndObject();
}

template <typename Sink>
void DocumentReader::Walk<Sink>::ShowLink(Reference const& reference)
{
    if constexpr (Sink::IS_TEXT)
    {
        if (&reference == reader.curie.get())
        {
            sink.PutText(reader.curieText);
            return;
        }
    }
    if (reference.extra.is_object())
    {
        sink.Put(LinkTo(reference));
        return;
    }
    sink.BeginObject();
    sink.NextMember("href");
    sink.PutString(reference.path);
    sink.EndObject();
}

template <typename Sink>
void DocumentReader::Walk<Sink>::ShowEmbedded(Reference const& reference)
{
    bool const isAroundUs = std::ranges::any_of(paths, [&](auto const* path) { return *path == reference.path; });
    if (isAroundUs || paths.size() == DEEPEST)
    {
        sink.Put(AddressOf(reference));
        return;
    }
    auto const begin = sink.Here();
    try
    {
        Reference const self = SelfAt(reference.path, reference.extra);
        if (Place::Of(reference.path) == place)
        {
            Show(self, false);
        }
        else
        {
            ShowUnderOwnPass(self, false);
        }
    }
    catch (...)
    {
        sink.GoBack(begin);
        Json shown = AddressOf(reference);
        shown["problem"] = Problem::OfCaught("GET", reference.path).ToJson();
        sink.Put(shown);
    }
}

template <typename Sink>
void DocumentReader::Walk<Sink>::ShowUnderOwnPass(Reference const& self, bool wantsSchema)
{
    Place const ownPlace = Place::Of(self.path);
    bool const takesBefore = Place::IsHead(self.path);
    ResourceLocks::InnerPass const inner = reader.locks.EnterInner(ownPlace, takesBefore, PATIENCE_USEC);
    if (inner.before != nullptr)
    {
        ShowBefore(*inner.before, self);
        return;
    }
    if (inner.pass == nullptr)
    {
        ZU_THROW(Zu::Status::BUSY, "The resource at %s is being changed.", self.path.c_str());
    }
    Walk beneath(reader, ownPlace, sink);
    beneath.paths = paths;
    beneath.Show(self, wantsSchema);
}

template <typename Sink>
void DocumentReader::Walk<Sink>::ShowBefore(Json const& document, Reference const& self)
{
    if (!document.is_object() || !self.extra.is_object())
    {
        sink.Put(document);
        return;
    }
    Json shown = document;
    shown[LINKS]["self"] = LinkTo(self);
    sink.Put(shown);
}

} // namespace ZuRest

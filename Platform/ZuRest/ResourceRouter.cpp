#include "ZuRest/ResourceRouter.h"

#include "ZuApi/Exception.h"
#include "ZuRest/Path.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <forward_list>
#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace ZuRest
{

namespace
{

using Segments = boost::container::small_vector<std::string_view, 8>;

/// Returns the segments of a path, or nothing if the path does not begin with a slash or has an empty segment.
std::optional<Segments> SegmentsOf(std::string_view path)
{
    Segments segments;
    if (!path.starts_with('/'))
    {
        return std::nullopt;
    }
    if (path == "/")
    {
        return segments; // the root
    }
    while (!path.empty())
    {
        path.remove_prefix(1);
        std::string_view const segment = path.substr(0, path.find('/'));
        if (segment.empty())
        {
            return std::nullopt;
        }
        segments.push_back(segment);
        path.remove_prefix(segment.size());
    }
    return segments;
}

bool IsKey(std::string_view segment)
{
    return segment.starts_with(':');
}

} // namespace

/// A registered route. Matches share it; `Deregister` waits until `matches` is 0.
struct ResourceRouter::Entry
{
    IResource& resource;
    std::vector<std::string> keyNames; // without the colon
    uint64 matches = 0;                // guarded by State::lock
};

/// A node in the tree of segments.
struct ResourceRouter::Node
{
    /// Returns the entry for the rest of a path and appends the values of the keys to `values`. Tries a literal before
    /// a key.
    std::shared_ptr<Entry> Find(Segments const& segments, std::size_t position, Segments& values) const
    {
        if (position == segments.size())
        {
            return entry == nullptr && key != nullptr ? key->entry : entry;
        }
        if (auto const literal = literals.find(segments[position]); literal != literals.end())
        {
            if (auto found = literal->second->Find(segments, position + 1, values))
            {
                return found;
            }
        }
        if (key == nullptr)
        {
            return nullptr;
        }
        values.push_back(segments[position]);
        auto found = key->Find(segments, position + 1, values);
        if (found == nullptr)
        {
            values.pop_back();
        }
        return found;
    }

    /// Moves the entry of this node, or all entries from this node down, to `taken`.
    void TakeEntries(bool subtree, std::vector<std::shared_ptr<Entry>>& taken)
    {
        if (entry != nullptr)
        {
            taken.push_back(std::exchange(entry, nullptr));
        }
        if (!subtree)
        {
            return;
        }
        for (auto const& [segment, child] : literals)
        {
            child->TakeEntries(true, taken);
        }
        if (key != nullptr)
        {
            key->TakeEntries(true, taken);
        }
        literals.clear();
        key.reset();
    }

    void Collect(std::set<IResource*>& resources) const
    {
        if (entry != nullptr)
        {
            resources.insert(&entry->resource);
        }
        for (auto const& [segment, child] : literals)
        {
            child->Collect(resources);
        }
        if (key != nullptr)
        {
            key->Collect(resources);
        }
    }

    /// `path` is the route of this node.
    void CollectRoutes(std::string const& path, std::vector<std::string>& routes) const
    {
        if (entry != nullptr)
        {
            routes.push_back(path.empty() ? "/" : path);
        }
        for (auto const& [segment, child] : literals)
        {
            child->CollectRoutes(path + '/' + segment, routes);
        }
        if (key != nullptr)
        {
            key->CollectRoutes(path + "/:key", routes);
        }
    }

    std::shared_ptr<Entry> entry; // null if no route ends here
    std::map<std::string, std::unique_ptr<Node>, std::less<>> literals;
    std::unique_ptr<Node> key;
};

struct ResourceRouter::State
{
    Zu::Mutex lock; // a leaf: no other lock is taken under it
    Zu::CondVar matchEnded;
    Node root ZU_GUARDED_BY(lock);
};

ResourceRouter::ResourceRouter() : state(std::make_shared<State>())
{
}

ResourceRouter::~ResourceRouter() = default;

void ResourceRouter::Register(std::string const& route, IResource& resource)
{
    auto const segments = SegmentsOf(route);
    if (!segments.has_value())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "'%s' is no route", route.c_str());
    }
    auto entry = std::make_shared<Entry>(Entry{resource, {}});
    Zu::MutexLock const guard(state->lock);
    Node* node = &state->root;
    for (std::string_view const segment : *segments)
    {
        if (IsKey(segment))
        {
            entry->keyNames.emplace_back(segment.substr(1));
        }
        std::unique_ptr<Node>& child = IsKey(segment) ? node->key : node->literals[std::string(segment)];
        if (child == nullptr)
        {
            child = std::make_unique<Node>();
        }
        node = child.get();
    }
    if (node->entry != nullptr)
    {
        ZU_THROW(Zu::Status::ALREADY_EXISTS, "The route '%s' is there already", route.c_str());
    }
    node->entry = std::move(entry);
}

void ResourceRouter::Deregister(std::string const& route, bool subtree)
{
    auto const segments = SegmentsOf(route);
    Zu::MutexLock guard(state->lock);
    Node* node = segments.has_value() ? &state->root : nullptr;
    for (std::size_t i = 0; node != nullptr && i < segments->size(); ++i)
    {
        std::string_view const segment = (*segments)[i];
        auto const literal = node->literals.find(segment);
        Node* const named = literal != node->literals.end() ? literal->second.get() : nullptr;
        node = IsKey(segment) ? node->key.get() : named;
    }
    if (node == nullptr)
    {
        return;
    }
    std::vector<std::shared_ptr<Entry>> taken;
    node->TakeEntries(subtree, taken);
    for (auto const& entry : taken)
    {
        state->matchEnded.Wait(state->lock, [&entry]() ZU_REQUIRES(state->lock) { return entry->matches == 0; });
    }
}

std::optional<ResourceRouter::Match> ResourceRouter::Find(std::string const& path) const
{
    auto segments = SegmentsOf(path);
    if (!segments.has_value())
    {
        return std::nullopt;
    }
    std::forward_list<std::string> decoded; // the decoded text of segments with escapes
    for (std::string_view& segment : *segments)
    {
        if (segment.find('%') != std::string_view::npos)
        {
            segment = decoded.emplace_front(Path::Decoded(segment));
        }
    }

    Segments values;
    Zu::MutexLock guard(state->lock);
    std::shared_ptr<Entry> const entry = state->root.Find(*segments, 0, values);
    if (entry == nullptr)
    {
        return std::nullopt;
    }
    ++entry->matches;
    guard.Unlock();

    Match match{&entry->resource, {}, nullptr, values.size() == entry->keyNames.size()};
    match.lease = std::shared_ptr<void>(entry.get(), [entry, shared = state](void*) {
        {
            Zu::MutexLock const ending(shared->lock);
            --entry->matches;
        }
        shared->matchEnded.NotifyAll();
    });
    match.keys.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        match.keys.emplace_back(entry->keyNames[i], values[i]);
    }
    return match;
}

std::vector<std::string> ResourceRouter::Routes() const
{
    std::vector<std::string> routes;
    {
        Zu::MutexLock const guard(state->lock);
        state->root.CollectRoutes("", routes);
    }
    std::ranges::sort(routes);
    return routes;
}

std::vector<IResource*> ResourceRouter::Resources() const
{
    std::set<IResource*> resources;
    {
        Zu::MutexLock const guard(state->lock);
        state->root.Collect(resources);
    }
    return {resources.begin(), resources.end()};
}

} // namespace ZuRest

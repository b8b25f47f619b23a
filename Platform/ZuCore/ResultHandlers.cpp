#include "ZuCore/ResultHandlers.h"

#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"

#include <algorithm>

namespace ZuCore
{

namespace
{

bool NamesTheSame(ResultHandlers::CallbackId const& left, ResultHandlers::CallbackId const& right)
{
    return !left.first.owner_before(right.first) && !right.first.owner_before(left.first);
}

} // namespace

ResultHandlers::ResultHandlers() : entries(std::make_shared<Entries const>())
{
}

ResultHandlers::~ResultHandlers() = default;

ResultHandlers::CallbackId ResultHandlers::Add(Handler handler)
{
    if (!handler)
    {
        return {};
    }
    auto const entry = std::make_shared<Entry>();
    entry->call = entry->gate.Bind(
        Handler([inner = std::move(handler)](void* resultSet) { ZU_GUARD_BOUNDARY([&] { inner(resultSet); }); }));
    Zu::MutexLock const guard(lock);
    auto changed = std::make_shared<Entries>(*entries);
    changed->push_back(entry);
    entry->id = ids.Add([](void*) {});
    entries = std::move(changed);
    return entry->id;
}

void ResultHandlers::Remove(CallbackId const& id)
{
    if (!id.second)
    {
        return;
    }
    std::shared_ptr<Entry> removed;
    {
        Zu::MutexLock const guard(lock);
        auto changed = std::make_shared<Entries>(*entries);
        auto const found =
            std::ranges::find_if(*changed, [&id](auto const& entry) { return NamesTheSame(entry->id, id); });
        if (found == changed->end())
        {
            return;
        }
        removed = *found;
        changed->erase(found);
        ids.Remove(id);
        entries = std::move(changed);
    }
    removed->gate.Close(); // may wait, so it comes after the lock is released
}

void ResultHandlers::Fire(void* resultSet) const
{
    for (std::shared_ptr<Entries const> const present = Present(); auto const& entry : *present)
    {
        entry->call(resultSet);
    }
}

bool ResultHandlers::Empty() const
{
    return Present()->empty();
}

std::shared_ptr<ResultHandlers::Entries const> ResultHandlers::Present() const
{
    Zu::MutexLock const guard(lock);
    return entries;
}

} // namespace ZuCore

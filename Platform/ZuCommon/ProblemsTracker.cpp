#include "ZuCommon/ProblemsTracker.h"

#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"

#include <algorithm>

namespace ZuCommon
{

ProblemsTracker::ProblemsTracker(ProblemsManager* problemsManager) : manager(problemsManager)
{
}

ProblemsTracker::~ProblemsTracker()
{
    RemoveAll(settled);
    for (Bracket const& bracket : brackets)
    {
        RemoveAll(bracket.registered);
    }
}

void ProblemsTracker::Begin()
{
    Zu::MutexLock const guard(lock);
    brackets.push_back({std::this_thread::get_id(), {}, false});
}

void ProblemsTracker::End()
{
    Problems gone;
    {
        Zu::MutexLock const guard(lock);
        auto const bracket = InnermostOfThisThread();
        if (bracket == brackets.end())
        {
            return;
        }
        bool const hasOwn = !bracket->registered.empty();
        bool const keepsOthers = !hasOwn && bracket->settledMeanwhile;
        if (!keepsOthers)
        {
            gone = std::exchange(settled, std::move(bracket->registered));
        }
        brackets.erase(bracket);
        for (Bracket& open : brackets)
        {
            open.settledMeanwhile = hasOwn || keepsOthers;
        }
    }
    RemoveAll(gone);
}

void ProblemsTracker::Register(ProblemsManager::Iterator problem)
{
    Zu::MutexLock const guard(lock);
    auto const bracket = InnermostOfThisThread();
    (bracket != brackets.end() ? bracket->registered : settled).push_back(problem);
}

uint64 ProblemsTracker::Count() const
{
    Zu::MutexLock const guard(lock);
    uint64 count = settled.size();
    for (Bracket const& bracket : brackets)
    {
        count += bracket.registered.size();
    }
    return count;
}

std::vector<ProblemsTracker::Bracket>::iterator ProblemsTracker::InnermostOfThisThread()
{
    auto const found = std::find_if(brackets.rbegin(), brackets.rend(), [](Bracket const& bracket) {
        return bracket.thread == std::this_thread::get_id();
    });
    return found != brackets.rend() ? std::prev(found.base()) : brackets.end();
}

void ProblemsTracker::RemoveAll(Problems const& gone) noexcept
{
    if (manager == nullptr)
    {
        return;
    }
    for (ProblemsManager::Iterator const problem : gone)
    {
        ZU_GUARD_BOUNDARY([&] { manager->Remove(problem); });
    }
}

} // namespace ZuCommon

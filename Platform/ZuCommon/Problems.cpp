#include "ZuCommon/Problems.h"

#include "ZuApi/FormatText.h"
#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"

#include <algorithm>
#include <chrono>
#include <cstdarg>

namespace ZuCommon
{

namespace
{

uint64 UsecSince1970()
{
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<uint64>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

} // namespace

ProblemsManager::ProblemsManager() = default;

ProblemsManager::~ProblemsManager() = default;

ProblemsManager::Iterator ProblemsManager::Add(int32 severity, char const* source, char const* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = Zu::FormatText(format, arguments);
    va_end(arguments);
    Problem problem{severity, source != nullptr ? source : "", std::move(text), UsecSince1970()};

    Zu::MutexLock const guard(lock);
    problems.emplace(++lastNumber, std::move(problem));
    return {lastNumber};
}

void ProblemsManager::Remove(Iterator problem)
{
    Zu::MutexLock const guard(lock);
    problems.erase(problem.number);
}

std::vector<ProblemsManager::Problem> ProblemsManager::List() const
{
    Zu::MutexLock const guard(lock);
    std::vector<Problem> list;
    list.reserve(problems.size());
    for (auto const& [number, problem] : problems)
    {
        list.push_back(problem);
    }
    return list;
}

uint64 ProblemsManager::Count() const
{
    Zu::MutexLock const guard(lock);
    return problems.size();
}

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

#include "Host/Retry/StartRetry.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuRest/Place.h"
#include "wApi/wMutex.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace ZuHost
{

namespace
{

using FailedStarts = ZuControl::ControlVitals::FailedStarts;

constexpr char const* PROBLEM_SOURCE = "Services";

uint64 Doubled(uint64 waitUsec)
{
    return std::min(2 * waitUsec, StartRetry::LONGEST_WAIT_USEC);
}

/// The sentence is true at each moment before the attempt, so it need not change meanwhile.
std::string SentenceFor(std::string const& typeName, std::string const& reason, uint64 waitUsec)
{
    uint64 const seconds = waitUsec / 1'000'000;
    return "Service " + typeName + " could not be started (" + reason + "). The host tries again within " +
           std::to_string(seconds) + (seconds == 1 ? " second." : " seconds.");
}

/// The service that `path` addresses if it leads to the document of a service; else empty.
std::string ServiceAt(std::string const& path)
{
    ZuRest::Place const place = ZuRest::Place::Of(path);
    return place.tree == "controls" && ZuRest::Place::IsHead(path) ? place.subtree : "";
}

} // namespace

StartRetry::Load::Load(StartRetry& usedRetry) : retry(usedRetry), countsBefore(retry.FailureCounts())
{
    retry.ForgetAll();
}

StartRetry::Load::~Load()
{
    ZU_GUARD_DESTRUCTOR([this] {
        for (FailedStarts const& failed : retry.services.failedStarts())
        {
            auto const before = countsBefore.find(failed.typeName);
            if (failed.count > (before != countsBefore.end() ? before->second : 0))
            {
                retry.Want(failed.typeName, failed.lastReason);
            }
        }
    });
}

StartRetry::StartRetry(ZuCommon::ProblemsManager& problemsManager, Services newServices, Clock newClock)
    : problems(problemsManager), services(std::move(newServices)), clock(std::move(newClock))
{
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "StartRetry"));
}

StartRetry::~StartRetry()
{
    ZU_GUARD_DESTRUCTOR([this] { Stop(); });
    ZU_GUARD_DESTRUCTOR([this] { ForgetAll(); });
}

void StartRetry::Run()
{
    ZU_CHECK(wThread_Start(thread, &StartRetry::Main, this));
}

void StartRetry::Stop()
{
    {
        Zu::MutexLock const guard(lock);
        isEnding = true;
    }
    changed.NotifyAll();
    wThread_Join(thread, wTIMEOUT_INFINITE, nullptr); // does nothing if the thread was never started
}

void StartRetry::Start(std::string const& typeName)
{
    if (!IsWanted(typeName))
    {
        Try(typeName);
    }
}

void StartRetry::RunUpdate(std::string const& path, nlohmann::json const& body, std::function<void()> const& update)
{
    std::string const typeName = ServiceAt(path);
    if (!IsWanted(typeName))
    {
        update();
        return;
    }
    if (!body.is_object() || !body.contains("enabled"))
    {
        update();
        BeginAnew(typeName);
        return;
    }
    auto const end = [&] {
        Forget(typeName);
        services.noteChange(); // last: the next save must find the new state
    };
    uint64 const countBefore = FailureCounts()[typeName];
    try
    {
        update();
    }
    catch (...)
    {
        if (FailureCounts()[typeName] != countBefore)
        {
            end();
        }
        throw;
    }
    end();
}

std::map<std::string, std::string> StartRetry::Wanted() const
{
    Zu::MutexLock const guard(lock);
    std::map<std::string, std::string> wanted;
    for (auto const& [typeName, wish] : wishes)
    {
        wanted.emplace(typeName, wish.sentence);
    }
    return wanted;
}

void StartRetry::TryDue()
{
    for (std::string const& typeName : TakeDue())
    {
        if (IsEnding())
        {
            return;
        }
        ZU_GUARD_BOUNDARY([&] {
            services.runAsChange(typeName, [&] {
                if (IsWanted(typeName)) // a request or a load may have ended the wish
                {
                    Try(typeName);
                }
            });
        });
    }
}

uint64 StartRetry::NextUsec() const
{
    Zu::MutexLock const guard(lock);
    return NextUsecLocked();
}

int StartRetry::Main(void* argument)
{
    auto& retry = *static_cast<StartRetry*>(argument);
    while (retry.WaitUntilDue())
    {
        ZU_GUARD_BOUNDARY([&retry] { retry.TryDue(); });
    }
    return 1;
}

/// Returns false when the retries end.
bool StartRetry::WaitUntilDue()
{
    Zu::MutexLock const guard(lock);
    auto const isOver = [this]() ZU_REQUIRES(lock) { return isEnding || clock() >= NextUsecLocked(); };
    while (!isOver())
    {
        uint64 const nextUsec = NextUsecLocked();
        changed.WaitUntil(lock, wTime_AfterUsec(nextUsec - clock()),
                          [&]() ZU_REQUIRES(lock) { return isOver() || NextUsecLocked() < nextUsec; });
    }
    return !isEnding;
}

std::vector<std::string> StartRetry::TakeDue()
{
    Zu::MutexLock const guard(lock);
    uint64 const nowUsec = clock();
    std::vector<std::string> due;
    for (auto& [typeName, wish] : wishes)
    {
        if (wish.dueUsec <= nowUsec)
        {
            wish.dueUsec = nowUsec + Doubled(wish.waitUsec); // applies if the attempt cannot even begin
            due.push_back(typeName);
        }
    }
    return due;
}

void StartRetry::Try(std::string const& typeName)
{
    try
    {
        services.start(typeName);
    }
    catch (...) // the module has noted the reason
    {
        Want(typeName, ReasonFor(typeName));
        return;
    }
    if (Forget(typeName))
    {
        ZU_LOG_USER_INFO("Service %1$s is running now", typeName.c_str());
    }
}

void StartRetry::Want(std::string const& typeName, std::string const& reason)
{
    Zu::MutexLock guard(lock);
    Wish& wish = wishes[typeName];
    bool const isNew = wish.waitUsec == 0;
    bool const isKnown = !isNew && wish.reason == reason;
    wish.reason = reason;
    Schedule(typeName, wish, isNew ? FIRST_WAIT_USEC : Doubled(wish.waitUsec));
    guard.Unlock();
    changed.NotifyAll();
    if (isKnown)
    {
        ZU_LOG_INFO("Service %s cannot be started: %s", typeName.c_str(), reason.c_str());
        return;
    }
    ZU_LOG_USER_ERROR("Service %1$s cannot be started: %2$s", typeName.c_str(), reason.c_str());
}

/// A client has changed the service's settings, so the service may start now.
void StartRetry::BeginAnew(std::string const& typeName)
{
    {
        Zu::MutexLock const guard(lock);
        if (auto const wish = wishes.find(typeName); wish != wishes.end())
        {
            Schedule(typeName, wish->second, FIRST_WAIT_USEC);
        }
    }
    changed.NotifyAll();
}

/// The caller holds the lock.
void StartRetry::Schedule(std::string const& typeName, Wish& wish, uint64 waitUsec)
{
    wish.waitUsec = waitUsec;
    wish.dueUsec = clock() + waitUsec;
    std::string sentence = SentenceFor(typeName, wish.reason, waitUsec);
    if (sentence == wish.sentence)
    {
        return; // keeps the time at which the problem began
    }
    problems.Remove(wish.problem);
    wish.problem = problems.Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, PROBLEM_SOURCE, "%1$s", sentence.c_str());
    wish.sentence = std::move(sentence);
}

/// Whether the service was wanted.
bool StartRetry::Forget(std::string const& typeName)
{
    Zu::MutexLock const guard(lock);
    auto const wish = wishes.find(typeName);
    if (wish == wishes.end())
    {
        return false;
    }
    problems.Remove(wish->second.problem);
    wishes.erase(wish);
    return true;
}

void StartRetry::ForgetAll()
{
    Zu::MutexLock const guard(lock);
    for (auto const& [typeName, wish] : wishes)
    {
        problems.Remove(wish.problem);
    }
    wishes.clear();
}

bool StartRetry::IsWanted(std::string const& typeName) const
{
    Zu::MutexLock const guard(lock);
    return wishes.contains(typeName);
}

bool StartRetry::IsEnding() const
{
    Zu::MutexLock const guard(lock);
    return isEnding;
}

/// The caller holds the lock.
uint64 StartRetry::NextUsecLocked() const
{
    uint64 nextUsec = wTIMEOUT_INFINITE;
    for (auto const& [typeName, wish] : wishes)
    {
        nextUsec = std::min(nextUsec, wish.dueUsec);
    }
    return nextUsec;
}

std::map<std::string, uint64> StartRetry::FailureCounts() const
{
    std::map<std::string, uint64> counts;
    for (FailedStarts const& failed : services.failedStarts())
    {
        counts.emplace(failed.typeName, failed.count);
    }
    return counts;
}

std::string StartRetry::ReasonFor(std::string const& typeName) const
{
    for (FailedStarts const& failed : services.failedStarts())
    {
        if (failed.typeName == typeName)
        {
            return failed.lastReason;
        }
    }
    return {};
}

} // namespace ZuHost

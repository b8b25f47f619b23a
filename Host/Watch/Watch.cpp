#include "Host/Watch/Watch.h"

#include "ZuApi/Logging.h"
#include "ZuControl/Control/ControlVitals.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <utility>

namespace ZuHost
{

namespace
{

constexpr char const* PROBLEM_SOURCE = "Watch";

} // namespace

Watch::Watch(ZuCommon::ProblemsManager& usedProblems, std::function<ZuControl::ControlVitals()> newVitals,
             WatchLimits const& newLimits, FindFaults newOtherFaults)
    : problems(usedProblems),
      vitals(std::move(newVitals)),
      limits(newLimits),
      otherFaults(std::move(newOtherFaults)),
      timer([this](Zu::AsyncTimer&) { Look(wTime_NowUsec()); })
{
}

Watch::~Watch()
{
    timer.Stop();
    for (auto const& [sentence, problem] : faults)
    {
        problems.Remove(problem);
    }
}

void Watch::SetListener(Listener newListener)
{
    listener = std::move(newListener);
}

void Watch::Start()
{
    timer.Start(PERIOD_USEC, false);
}

void Watch::Look(uint64 nowUsec)
{
    WatchLimits const limitsNow = LimitsAt(nowUsec);
    std::set<std::string> sentences = Diagnose(vitals(), limitsNow, nowUsec);
    if (listener)
    {
        listener(sentences, nowUsec);
    }
    if (otherFaults)
    {
        sentences.merge(otherFaults());
    }
    Tell(sentences);
}

std::vector<std::string> Watch::Faults() const
{
    Zu::MutexLock const guard(lock);
    std::vector<std::string> sentences;
    sentences.reserve(faults.size());
    for (auto const& fault : faults)
    {
        sentences.push_back(fault.first);
    }
    return sentences;
}

void Watch::Tell(std::set<std::string> const& sentences)
{
    for (std::string const& sentence : sentences)
    {
        if (!faults.contains(sentence))
        {
            Problems told{{sentence, {}}}; // made first: lack of memory must not lose a reported problem
            told.begin()->second = TellNew(sentence);
            Zu::MutexLock const guard(lock);
            faults.merge(told);
        }
    }
    for (auto fault = faults.begin(); fault != faults.end();)
    {
        if (sentences.contains(fault->first))
        {
            ++fault;
            continue;
        }
        problems.Remove(fault->second);
        ZU_LOG_INFO("This is over: %s", fault->first.c_str());
        Zu::MutexLock const guard(lock);
        fault = faults.erase(fault);
    }
}

ZuCommon::ProblemsManager::Iterator Watch::TellNew(std::string const& sentence)
{
    ZU_LOG_USER_ERROR("%1$s", sentence.c_str());
    ZU_LOG_ERROR("%s", sentence.c_str());
    return problems.Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, PROBLEM_SOURCE, "%1$s", sentence.c_str());
}

/// A late look extends the limits by its delay: the machine was busy or asleep, and the threads were delayed as well.
WatchLimits Watch::LimitsAt(uint64 nowUsec)
{
    WatchLimits limitsNow = limits;
    if (lastLookUsec != 0 && nowUsec - lastLookUsec > PERIOD_USEC)
    {
        limitsNow.standstillUsec += nowUsec - lastLookUsec - PERIOD_USEC;
    }
    lastLookUsec = nowUsec;
    return limitsNow;
}

} // namespace ZuHost

#pragma once

#include "Host/Watch/Diagnosis.h"
#include "ZuApi/AsyncTimer.h"
#include "ZuCommon/Problems.h"
#include "wApi/wMutex.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ZuControl
{
struct ControlVitals;
}

namespace ZuHost
{

/// Detects threads of the module that have died or hang, and faults that other parts of the host find. Reports each fault
/// as a problem for as long as it lasts, and logs its begin and end.
///
/// The watch looks four times a second on its own thread, "AsyncTimer", and never waits for the module. It can
/// therefore be stopped even if the module hangs. One thread starts and destroys it; any thread may call `Faults`.
class Watch final
{
public:
    static constexpr uint64 PERIOD_USEC = 250'000;

    /// Returns a sentence for each present fault. It must not wait and must not throw.
    using FindFaults = std::function<std::set<std::string>()>;

    /// `usedProblems` and the objects that the functions use outlive the watch. It does nothing until `Start`.
    /// `newOtherFaults` may be empty.
    Watch(ZuCommon::ProblemsManager& usedProblems, std::function<ZuControl::ControlVitals()> newVitals,
          WatchLimits const& newLimits, FindFaults newOtherFaults = nullptr);
    ~Watch(); ///< stops, and removes its problems

    Watch(Watch const&) = delete;
    Watch& operator=(Watch const&) = delete;

    /// Receives the faults of the module after each look, without those of `FindFaults`. It must not wait and must not
    /// throw.
    using Listener = std::function<void(std::set<std::string> const& moduleFaults, uint64 nowUsec)>;

    /// Call it before `Start`.
    void SetListener(Listener newListener);

    void Start();

    /// Looks once, at `nowUsec` (a time of `wTime_NowUsec`). The timer calls it; other threads may call it only while
    /// the timer does not run.
    void Look(uint64 nowUsec);

    /// A sentence for each fault that the last look found.
    std::vector<std::string> Faults() const;

private:
    using Problems = std::map<std::string, ZuCommon::ProblemsManager::Iterator>;

    void Tell(std::set<std::string> const& sentences);
    ZuCommon::ProblemsManager::Iterator TellNew(std::string const& sentence);
    WatchLimits LimitsAt(uint64 nowUsec);

    ZuCommon::ProblemsManager& problems;
    std::function<ZuControl::ControlVitals()> const vitals;
    WatchLimits const limits;
    FindFaults const otherFaults;
    Listener listener;       // may be empty
    uint64 lastLookUsec = 0; // used by the looking thread only; 0 before the first look

    // By sentence. Only the looking thread changes them, so it needs the lock only for changes. The lock is a leaf.
    Problems faults;
    mutable Zu::Mutex lock;

    Zu::AsyncTimer timer; // last: it uses all members above
};

} // namespace ZuHost

#pragma once

#include "Host/Watch/Diagnosis.h"
#include "ZuApi/AsyncTimer.h"
#include "ZuCommon/ProblemsManager.h"
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

/// Sees what has died or stands still in the module, and tells: a problem for as long as the fault lasts, and a line in the
/// log when it comes and when it goes.
///
/// It looks four times a second on a thread of its own, "AsyncTimer", and waits for nobody: whatever stands still, the
/// watch can be stopped. One thread starts and destroys it; any may ask for the faults.
class Watch final
{
public:
    static constexpr uint64 PERIOD_USEC = 250'000;

    /// The problems outlive this, and so does what `newVitals` needs. It stands still until it is started.
    Watch(ZuCommon::ProblemsManager& usedProblems, std::function<ZuControl::ControlVitals()> newVitals,
          WatchLimits const& newLimits);
    ~Watch(); ///< stops, and takes its problems away

    Watch(Watch const&) = delete;
    Watch& operator=(Watch const&) = delete;

    void Start();

    /// Looks once, at `nowUsec`, a moment of `wTime_NowUsec`. Called by the timer; by others only while that stands still.
    void Look(uint64 nowUsec);

    /// What was wrong when it last looked, a sentence each.
    std::vector<std::string> Faults() const;

private:
    using Problems = std::map<std::string, ZuCommon::ProblemsManager::Iterator>;

    void Tell(std::set<std::string> const& sentences);
    ZuCommon::ProblemsManager::Iterator TellNew(std::string const& sentence);
    WatchLimits LimitsAt(uint64 nowUsec);

    ZuCommon::ProblemsManager& problems;
    std::function<ZuControl::ControlVitals()> const vitals;
    WatchLimits const limits;
    uint64 lastLookUsec = 0; // of the one that looks; 0 before the first look

    // By their sentences. The one that looks is the only one that changes them, and needs the lock for that alone: a leaf.
    Problems faults;
    mutable Zu::Mutex lock;

    Zu::AsyncTimer timer; // last: it uses all of the above
};

} // namespace ZuHost

#pragma once

#include "ZuCommon/ProblemsManager.h"
#include "wApi/wMutex.h"

#include <thread>
#include <vector>

namespace ZuCommon
{

/// Holds the problems of one activity, and removes them when the activity has been repeated.
///
/// An activity runs between `Begin` and `End`. The problems registered in this bracket replace the problems held
/// before, so an activity without problems clears them. Brackets nest, and each thread has its own. A bracket that
/// registered no problem does not clear the problems of another bracket that ended while it was open. A bracket that is
/// never closed does no harm.
///
/// Any thread may call. The destructor removes the held problems from the manager, which must outlive the tracker.
class ZUPLATFORM_API ProblemsTracker
{
public:
    explicit ProblemsTracker(ProblemsManager* problemsManager);
    ~ProblemsTracker();

    ProblemsTracker(ProblemsTracker const&) = delete;
    ProblemsTracker& operator=(ProblemsTracker const&) = delete;

    void Begin();

    /// Closes the innermost bracket of this thread; does nothing if there is none.
    void End();

    /// Adds `problem` to the innermost bracket of this thread. Outside of a bracket the problem is held at once.
    void Register(ProblemsManager::Iterator problem);

    /// The number of held problems, including those of open brackets.
    uint64 Count() const;

private:
    using Problems = std::vector<ProblemsManager::Iterator>;

    struct Bracket
    {
        std::thread::id thread;
        Problems registered;
        /// Whether the last other bracket that ended while this one was open left problems in `settled`.
        bool settledMeanwhile = false;
    };

    std::vector<Bracket>::iterator InnermostOfThisThread() ZU_REQUIRES(lock);
    void RemoveAll(Problems const& gone) noexcept;

    ProblemsManager* const manager;

    mutable Zu::Mutex lock; // the manager's lock is never taken under it
    Problems settled ZU_GUARDED_BY(lock);
    std::vector<Bracket> brackets ZU_GUARDED_BY(lock); // of all threads, in order of `Begin`
};

} // namespace ZuCommon

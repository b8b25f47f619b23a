#pragma once

#include "ZuCommon/ProblemsManager.h"
#include "wApi/wMutex.h"

#include <thread>
#include <vector>

namespace ZuCommon
{

/// Holds the problems of one activity, and lets go of them when the activity has been done anew.
///
/// An activity stands between `Begin` and `End`: the problems registered there replace those that were held before, so that
/// one without problems clears them. Brackets nest, and a thread sees only its own; a bracket that registered nothing
/// keeps what others settled while it was open. One that is never closed does no harm.
/// Any thread may call. What is held goes with the tracker; the manager must outlive it.
class ZUPLATFORM_API ProblemsTracker
{
public:
    explicit ProblemsTracker(ProblemsManager* problemsManager);
    ~ProblemsTracker();

    ProblemsTracker(ProblemsTracker const&) = delete;
    ProblemsTracker& operator=(ProblemsTracker const&) = delete;

    void Begin();

    /// Closes the bracket that this thread opened last; without one it does nothing.
    void End();

    /// Takes charge of `problem`, in the innermost bracket of this thread; without one it is held at once.
    void Register(ProblemsManager::Iterator problem);

    /// How many problems are held, those of open brackets included.
    uint64 Count() const;

private:
    using Problems = std::vector<ProblemsManager::Iterator>;

    struct Bracket
    {
        std::thread::id thread;
        Problems registered;
        bool settledMeanwhile =
            false; ///< another bracket that ended with problems was the last to end while this was open
    };

    std::vector<Bracket>::iterator InnermostOfThisThread() ZU_REQUIRES(lock);
    void RemoveAll(Problems const& gone) noexcept;

    ProblemsManager* const manager;

    mutable Zu::Mutex lock; // the manager's lock is not taken under it
    Problems settled ZU_GUARDED_BY(lock);
    std::vector<Bracket> brackets ZU_GUARDED_BY(lock); // of all threads, in order of opening
};

} // namespace ZuCommon

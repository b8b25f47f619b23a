#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <map>
#include <string>
#include <thread>
#include <vector>

namespace ZuCommon
{

/// The present problems of the system, for display to the user. Any thread may call.
class ZUPLATFORM_API ProblemsManager
{
public:
    static constexpr int32 SEVERITY_WARNING = 0;
    static constexpr int32 SEVERITY_ERROR = 1;

    struct Problem
    {
        int32 severity;
        std::string source; ///< the part of the system that has the problem
        std::string text;
        uint64 sinceUsec; ///< time of `Add`, microseconds since 1970
    };

    /// Identifies one problem. Numbers are not reused: a stale iterator identifies no problem. It may be copied freely.
    struct Iterator
    {
        uint64 number = 0; ///< 0 identifies no problem
    };

    ProblemsManager();
    ~ProblemsManager();

    ProblemsManager(ProblemsManager const&) = delete;
    ProblemsManager& operator=(ProblemsManager const&) = delete;

    /// Adds a problem. `format` is a printf format with positional placeholders ("%1$s"); null gives the empty text.
    Iterator Add(int32 severity, char const* source, char const* format, ...) ZU_PRINTF_FORMAT(4, 5);

    /// Removes a problem. Does nothing if it has been removed already.
    void Remove(Iterator problem);

    /// Returns a copy of the present problems, the oldest first.
    std::vector<Problem> List() const;

    uint64 Count() const;

private:
    mutable Zu::Mutex lock; // a leaf: no other lock is taken under it
    uint64 lastNumber ZU_GUARDED_BY(lock) = 0;
    std::map<uint64, Problem> problems ZU_GUARDED_BY(lock); // by number, which is also the order of age
};

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

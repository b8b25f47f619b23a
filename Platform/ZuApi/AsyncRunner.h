#pragma once

#include "wApi/wExport.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>

namespace Zu
{

/// Runs tasks one after the other, in order, on a thread of its own.
///
/// Any thread may give it tasks, a task too. What a task throws is logged as "EXCEPTION THROWN: ", with log entry and back
/// trace, and the next task runs.
class ZUAPI_API AsyncRunner
{
public:
    /// The thread's name has at most 15 bytes. Throws what the thread cannot be made or started with.
    explicit AsyncRunner(char const* threadName = "AsyncRunner");

    /// Waits for the task that runs, unless it is called from it, and drops those that have not begun.
    ~AsyncRunner();

    AsyncRunner(AsyncRunner const&) = delete;
    AsyncRunner& operator=(AsyncRunner const&) = delete;

    /// Returns at once. Throws -997 for an empty function.
    void Run(std::function<void()> task);

    /// Waits until the task has run and passes on what it throws. Throws -993 when `timeoutUsec` microseconds have passed:
    /// the task is not taken back, it runs to its end all the same, so that what it uses must not live on the caller's stack
    /// alone. Throws -997 for an empty function, -1000 from a task of this runner, which would wait for itself, and when the
    /// runner ends before the task has begun.
    void RunAndWait(std::function<void()> task, uint64 timeoutUsec);

private:
    struct State; // shared with the thread, which may outlive this object when a task ends it

    static int ThreadFunction(void* argument);

    std::shared_ptr<State> const state;
    wThread thread;
};

} // namespace Zu

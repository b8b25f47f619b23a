#pragma once

#include "wApi/wExport.h"
#include "wApi/wThread.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>

namespace Zu
{

/// Runs tasks one after the other, in order, on its own thread.
///
/// Any thread may add tasks, also from within a task. An exception of a task is logged as "EXCEPTION THROWN: ", with
/// its log entry and back trace; then the next task runs.
class ZUAPI_API AsyncRunner
{
public:
    /// `threadName` has at most 15 bytes. Throws the failing status if the thread cannot be named or started.
    explicit AsyncRunner(char const* threadName = "AsyncRunner");

    /// Waits for the running task and drops the tasks that have not begun. Called from a task of this runner, it does
    /// not wait for that task.
    ~AsyncRunner();

    AsyncRunner(AsyncRunner const&) = delete;
    AsyncRunner& operator=(AsyncRunner const&) = delete;

    /// Queues `task` and returns at once. Throws `Zu::Status::BAD_ARGUMENT` for an empty function.
    void Run(std::function<void()> task);

    /// Waits until the task has run and rethrows its exception.
    ///
    /// Throws `Zu::Status::TIME_OUT` after `timeoutUsec` microseconds. The task then stays queued or goes on running,
    /// so it must not refer to objects on the caller's stack. Throws `Zu::Status::BAD_ARGUMENT` for an empty function,
    /// and `Zu::Status::WRONG_STATE` when called from a task of this runner, which would wait for itself, or when the
    /// runner is destroyed before the task has begun.
    void RunAndWait(std::function<void()> task, uint64 timeoutUsec);

private:
    struct State; // shared with the thread, which outlives this object if a task destroys the runner

    static int ThreadFunction(void* argument);

    std::shared_ptr<State> const state;
    wThread thread;
};

} // namespace Zu

#include "ZuApi/AsyncRunner.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <deque>
#include <exception>
#include <utility>

namespace Zu
{

namespace
{

/// The state of the runner whose thread this is.
thread_local void const* thisRunner = nullptr;

/// A task with somebody who waits for it; shared by both, since either may be gone before the other.
class WaitedTask
{
public:
    enum class Outcome
    {
        NONE,
        RAN,
        DROPPED
    };

    explicit WaitedTask(std::function<void()> waitedTask) : task(std::move(waitedTask))
    {
    }

    /// On the worker. What the task throws is the waiting one's, or leaves here when nobody waits any more.
    void Run();

    /// On whatever thread sees that it will not run; nothing happens when it has.
    void Drop() noexcept;

    /// On the waiting thread.
    Outcome Wait(uint64 timeoutUsec);

    /// What the task has thrown, null when it has not.
    std::exception_ptr TakeError();

private:
    std::function<void()> task; // of the thread that runs or drops it

    Zu::Mutex lock;
    Zu::CondVar changed;
    Outcome outcome ZU_GUARDED_BY(lock) = Outcome::NONE;
    bool isAwaited ZU_GUARDED_BY(lock) = true;
    std::exception_ptr error ZU_GUARDED_BY(lock);
};

void WaitedTask::Run()
{
    std::exception_ptr thrown;
    try
    {
        std::exchange(task, nullptr)(); // what the task holds ends here, before its caller goes on
    }
    catch (...)
    {
        thrown = std::current_exception(); // handed over behind this block: by then the worker is done with it
    }
    {
        Zu::MutexLock const guard(lock);
        outcome = Outcome::RAN;
        if (isAwaited)
        {
            error = std::move(thrown);
            changed.NotifyAll();
            return;
        }
    }
    if (thrown != nullptr)
    {
        std::rethrow_exception(thrown);
    }
}

void WaitedTask::Drop() noexcept
{
    task = nullptr; // as after a run: what the task holds ends before its caller goes on
    Zu::MutexLock const guard(lock);
    if (outcome == Outcome::NONE)
    {
        outcome = Outcome::DROPPED;
        changed.NotifyAll();
    }
}

WaitedTask::Outcome WaitedTask::Wait(uint64 timeoutUsec)
{
    Zu::MutexLock const guard(lock);
    changed.WaitUntil(lock, wTime_AfterUsec(timeoutUsec),
                      [this]() ZU_REQUIRES(lock) { return outcome != Outcome::NONE; });
    isAwaited = outcome != Outcome::NONE;
    return outcome;
}

std::exception_ptr WaitedTask::TakeError()
{
    Zu::MutexLock const guard(lock);
    return std::exchange(error, nullptr);
}

} // namespace

struct AsyncRunner::State
{
    using Task = std::function<void()>;

    void Add(Task task);
    void End();
    void Work();
    Task Next();

    Zu::Mutex lock; // no task runs or ends under it
    Zu::CondVar changed;
    std::deque<Task> tasks ZU_GUARDED_BY(lock);
    bool ending ZU_GUARDED_BY(lock) = false;
};

void AsyncRunner::State::Add(Task task)
{
    {
        Zu::MutexLock const guard(lock);
        if (ending)
        {
            return;
        }
        tasks.push_back(std::move(task));
    }
    changed.NotifyOne(); // behind the lock, which the worker would only run into
}

void AsyncRunner::State::End()
{
    std::deque<Task> dropped;
    Zu::MutexLock const guard(lock);
    ending = true;
    dropped.swap(tasks);
    changed.NotifyOne();
}

AsyncRunner::State::Task AsyncRunner::State::Next()
{
    Zu::MutexLock const guard(lock);
    changed.WaitUntil(lock, wTIMEOUT_INFINITE, [this]() ZU_REQUIRES(lock) { return ending || !tasks.empty(); });
    if (ending)
    {
        return {};
    }
    Task next = std::move(tasks.front());
    tasks.pop_front();
    return next;
}

void AsyncRunner::State::Work()
{
    thisRunner = this;
    while (Task const task = Next())
    {
        ZU_GUARD_BOUNDARY(task);
    }
}

AsyncRunner::AsyncRunner(char const* threadName) : state(std::make_shared<State>())
{
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, threadName));
    auto shared = std::make_unique<std::shared_ptr<State>>(state);
    ZU_CHECK(wThread_Start(thread, &ThreadFunction, shared.get()));
    static_cast<void>(shared.release()); // the thread's by now
}

AsyncRunner::~AsyncRunner()
{
    state->End(); // the thread is the first member to go: it joins, or goes its own way when a task is calling here
}

void AsyncRunner::Run(std::function<void()> task)
{
    if (!task)
    {
        ZU_THROW(Status::BAD_ARGUMENT);
    }
    std::shared_ptr<State> const held = state; // the task may end this runner before its thread has been woken
    held->Add(std::move(task));
}

void AsyncRunner::RunAndWait(std::function<void()> task, uint64 timeoutUsec)
{
    if (!task)
    {
        ZU_THROW(Status::BAD_ARGUMENT);
    }
    if (thisRunner == state.get())
    {
        ZU_THROW(Status::WRONG_STATE, "A task cannot wait for another task of its own runner");
    }
    auto const waited = std::make_shared<WaitedTask>(std::move(task));
    {
        std::shared_ptr<State> const held = state;
        // Its end is that of the last copy in the runner's hands: the task has run by then, or never will.
        std::shared_ptr<WaitedTask> queued(waited.get(), [waited](WaitedTask* ended) { ended->Drop(); });
        held->Add([queued = std::move(queued)] { queued->Run(); });
    }
    switch (waited->Wait(timeoutUsec))
    {
    case WaitedTask::Outcome::NONE:
        ZU_THROW(Status::TIME_OUT, "The task has not ended in time");
    case WaitedTask::Outcome::DROPPED:
        ZU_THROW(Status::WRONG_STATE, "The runner ended before the task began");
    case WaitedTask::Outcome::RAN:
        break;
    }
    if (std::exception_ptr const error = waited->TakeError())
    {
        std::rethrow_exception(error);
    }
}

int AsyncRunner::ThreadFunction(void* argument)
{
    std::unique_ptr<std::shared_ptr<State>> const shared(static_cast<std::shared_ptr<State>*>(argument));
    (*shared)->Work();
    return 1;
}

} // namespace Zu

#include "ZuApi/AsyncRunner.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "wApi/wCondition.h"
#include "wApi/wTime.h"

#include <deque>
#include <exception>
#include <mutex>
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

    std::mutex lock; // guards what follows
    wCondition changed;
    Outcome outcome = Outcome::NONE;
    bool isAwaited = true;
    std::exception_ptr error;
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
        std::scoped_lock const guard(lock);
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
    std::scoped_lock const guard(lock);
    if (outcome == Outcome::NONE)
    {
        outcome = Outcome::DROPPED;
        changed.NotifyAll();
    }
}

WaitedTask::Outcome WaitedTask::Wait(uint64 timeoutUsec)
{
    std::unique_lock guard(lock);
    changed.WaitUntil(guard, wTime_AfterUsec(timeoutUsec), [this] { return outcome != Outcome::NONE; });
    isAwaited = outcome != Outcome::NONE;
    return outcome;
}

std::exception_ptr WaitedTask::TakeError()
{
    std::scoped_lock const guard(lock);
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

    std::mutex lock; // guards what follows; no task runs or ends under it
    wCondition changed;
    std::deque<Task> tasks;
    bool ending = false;
};

void AsyncRunner::State::Add(Task task)
{
    {
        std::scoped_lock const guard(lock);
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
    std::scoped_lock const guard(lock);
    ending = true;
    dropped.swap(tasks);
    changed.NotifyOne();
}

AsyncRunner::State::Task AsyncRunner::State::Next()
{
    std::unique_lock guard(lock);
    changed.WaitUntil(guard, wTIMEOUT_INFINITE, [this] { return ending || !tasks.empty(); });
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

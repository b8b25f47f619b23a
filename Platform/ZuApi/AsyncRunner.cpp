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

/// The state of the runner that owns the calling thread, else null. Only compared.
thread_local void const* thisRunner = nullptr;

/// A task that a caller waits for. The runner and the caller share it, because either may be gone before the other.
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

    /// Runs the task on the runner's thread. Passes an exception to the caller, or lets it out if the caller has given
    /// up.
    void Run();

    /// Tells the caller that the task will not run; does nothing after `Run`. Called on the thread that drops the last
    /// copy.
    void Drop() noexcept;

    /// Waits on the caller's thread. After `Outcome::NONE`, the time-out, the caller has given up.
    Outcome Wait(uint64 timeoutUsec);

    /// Returns the exception of the task, or null.
    std::exception_ptr TakeError();

private:
    std::function<void()> task; // touched only by the thread that runs or drops the task

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
        std::exchange(task, nullptr)(); // destroys the captures of the task before the caller goes on
    }
    catch (...)
    {
        // Passed on after this block, so that the runner's thread no longer refers to the exception.
        thrown = std::current_exception();
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
    task = nullptr; // as after a run: destroys the captures before the caller goes on
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

    Zu::Mutex lock; // no task runs or is destroyed under it
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
    changed.NotifyOne(); // without the lock, for which the woken thread would only have to wait
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
    static_cast<void>(shared.release()); // the new thread owns it now
}

AsyncRunner::~AsyncRunner()
{
    state->End(); // then `~wThread` joins the thread, or detaches it when a task calls this destructor
}

void AsyncRunner::Run(std::function<void()> task)
{
    if (!task)
    {
        ZU_THROW(Status::BAD_ARGUMENT);
    }
    std::shared_ptr<State> const held = state; // the task may destroy this runner before `Add` returns
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
        // The deleter runs when the runner holds no copy any more: the task has run by then, or it never will.
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

#include "wApi/wThread.h"

#include "wApi/wMutex.h"
#include "wApi/wTime.h"
#include "wApi/wTypes.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <new>
#include <pthread.h>

struct wThread::Run
{
    /// Runs the thread function. It is noexcept: an exception that leaves the function ends the process here.
    static void* Entry(void* argument) noexcept;
    static bool IsThisThread(wThread const& thread) noexcept;

    std::string name;
    wThread const* owner = nullptr; // only compared, never dereferenced
    Function function = nullptr;
    void* argument = nullptr;
    pthread_t handle{};

    Zu::Mutex lock;
    Zu::CondVar ended;
    bool hasEnded ZU_GUARDED_BY(lock) = false;
    int exitCode ZU_GUARDED_BY(lock) = 0;
};

namespace
{

/// The `wThread` that owns the calling thread, else null. The native handle would not do: the new thread may run before
/// `pthread_create` has stored it.
thread_local wThread const* thisThread = nullptr;

} // namespace

void* wThread::Run::Entry(void* argument) noexcept
{
    std::unique_ptr<std::shared_ptr<Run>> const held(static_cast<std::shared_ptr<Run>*>(argument));
    Run& run = **held;
    thisThread = run.owner;
    if (!run.name.empty())
    {
        pthread_setname_np(pthread_self(), run.name.c_str());
    }
    int const exitCode = run.function(run.argument);
    Zu::MutexLock const guard(run.lock);
    run.exitCode = exitCode;
    run.hasEnded = true;
    run.ended.NotifyAll();
    return nullptr;
}

bool wThread::Run::IsThisThread(wThread const& thread) noexcept
{
    return thisThread == &thread;
}

wThread::wThread() noexcept = default;

wThread::~wThread()
{
    if (Run::IsThisThread(*this) && run != nullptr)
    {
        thisThread = nullptr; // another `wThread` may get the same address
        pthread_detach(run->handle);
        return;
    }
    wThread_Destroy(this);
}

wStatus wThread_Construct(wThread* thread)
{
    if (thread == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (thread->constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    thread->constructed = true;
    return Zu::Status::SUCCESS;
}

wStatus wThread_SetName(wThread& thread, char const* name)
{
    if (name == nullptr || std::strlen(name) > wThread::LONGEST_NAME)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (!thread.constructed)
    {
        return Zu::Status::WRONG_STATE;
    }
    thread.name = name;
    if (thread.run != nullptr)
    {
        pthread_setname_np(thread.run->handle, name); // fails harmlessly if the thread has just ended
    }
    return Zu::Status::SUCCESS;
}

wStatus wThread_Start(wThread& thread, int (*function)(void*), void* argument)
{
    if (function == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (wThread::Run::IsThisThread(thread) || !thread.constructed || thread.run != nullptr)
    {
        return Zu::Status::WRONG_STATE;
    }
    try
    {
        auto run = std::make_shared<wThread::Run>();
        run->name = thread.name;
        run->owner = &thread;
        run->function = function;
        run->argument = argument;
        auto handedOver = std::make_unique<std::shared_ptr<wThread::Run>>(run);
        if (pthread_create(&run->handle, nullptr, &wThread::Run::Entry, handedOver.get()) != 0)
        {
            return Zu::Status::FAILURE;
        }
        static_cast<void>(handedOver.release()); // the new thread owns it now
        thread.run = std::move(run);
        return Zu::Status::SUCCESS;
    }
    catch (std::bad_alloc const&)
    {
        return Zu::Status::FAILURE;
    }
}

wStatus wThread_Join(wThread& thread, uint64 timeoutUsec, int* exitCode)
{
    if (wThread::Run::IsThisThread(thread) || thread.run == nullptr)
    {
        return Zu::Status::WRONG_STATE;
    }
    wThread::Run& run = *thread.run;
    int result = 0;
    {
        Zu::MutexLock const guard(run.lock);
        if (!run.ended.WaitUntil(run.lock, wTime_AfterUsec(timeoutUsec),
                                 [&run]() ZU_REQUIRES(run.lock) { return run.hasEnded; }))
        {
            return Zu::Status::TIME_OUT;
        }
        result = run.exitCode;
    }
    if (pthread_join(run.handle, nullptr) != 0) // returns soon: the thread has set `hasEnded`
    {
        return Zu::Status::FAILURE;
    }
    if (exitCode != nullptr)
    {
        *exitCode = result;
    }
    thread.run = nullptr;
    return Zu::Status::SUCCESS;
}

wStatus wThread_Destroy(wThread* thread)
{
    if (thread == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    if (wThread::Run::IsThisThread(*thread)) // first: the owner may be writing the other members
    {
        return Zu::Status::WRONG_STATE;
    }
    if (thread->run != nullptr)
    {
        if (wStatus const status = wThread_Join(*thread, wTIMEOUT_INFINITE, nullptr); status != Zu::Status::SUCCESS)
        {
            return status;
        }
    }
    thread->name.clear();
    thread->constructed = false;
    return Zu::Status::SUCCESS;
}

wStatus wThread_Sleep(uint64 usec)
{
    uint64 const end = wTime_AfterUsec(usec);
    timespec moment{};
    moment.tv_sec = static_cast<time_t>(end / 1'000'000);
    moment.tv_nsec = static_cast<long>(end % 1'000'000) * 1000;
    int result = EINTR;
    while (result == EINTR)
    {
        result = clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &moment, nullptr);
    }
    return result == 0 ? Zu::Status::SUCCESS : Zu::Status::FAILURE;
}

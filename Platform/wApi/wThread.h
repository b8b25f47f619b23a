#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>

/// A thread: constructed with `wThread_Construct`, named, started, joined.
///
/// A thread object has one owner: only one thread at a time may call the operations. The started thread itself may call
/// `wThread_Start`, `wThread_Join` and `wThread_Destroy`, which refuse the call. The destructor joins a thread that is
/// not joined; on the thread itself it detaches instead.
class ZUAPI_API wThread
{
public:
    /// The body of the thread. Its result is the exit code. An exception that leaves it ends the process.
    using Function = int (*)(void* argument);

    static constexpr uint64 LONGEST_NAME = 15; ///< bytes, without the NUL; the limit of the operating system

    wThread() noexcept;
    ~wThread();

    wThread(wThread const&) = delete;
    wThread& operator=(wThread const&) = delete;

private:
    friend ZUAPI_API wStatus wThread_Construct(wThread* thread);
    friend ZUAPI_API wStatus wThread_SetName(wThread& thread, char const* name);
    friend ZUAPI_API wStatus wThread_Start(wThread& thread, int (*function)(void*), void* argument);
    friend ZUAPI_API wStatus wThread_Join(wThread& thread, uint64 timeoutUsec, int* exitCode);
    friend ZUAPI_API wStatus wThread_Destroy(wThread* thread);

    struct Run; // shared with the running thread, which may outlive this object

    std::string name;
    std::shared_ptr<Run> run; // null when there is no thread to join
    bool constructed = false;
};

/// Makes `thread` ready to be started. Returns `Zu::Status::WRONG_STATE` if it is constructed already and
/// `Zu::Status::BAD_ARGUMENT` for null.
ZUAPI_API wStatus wThread_Construct(wThread* thread);

/// Sets the name that the operating system shows for the thread. Returns `Zu::Status::BAD_ARGUMENT` if the name is null
/// or longer than `LONGEST_NAME`.
ZUAPI_API wStatus wThread_SetName(wThread& thread, char const* name);

/// Runs `function` with `argument` on a new thread. Returns `Zu::Status::WRONG_STATE` while there is a thread to join,
/// `Zu::Status::BAD_ARGUMENT` for a null function, and `Zu::Status::FAILURE` if the system cannot create a thread.
ZUAPI_API wStatus wThread_Start(wThread& thread, int (*function)(void*), void* argument);

/// Waits until the thread has ended and stores the result of its function in `*exitCode`; `exitCode` may be null.
/// Afterwards the thread can be started again. Returns `Zu::Status::TIME_OUT` after `timeoutUsec` microseconds: the
/// thread still runs and must be joined later. Returns `Zu::Status::WRONG_STATE` at once on the thread itself and if
/// there is no thread to join.
ZUAPI_API wStatus wThread_Join(wThread& thread, uint64 timeoutUsec, int* exitCode);

/// Joins a running thread and makes the object empty again, ready for `wThread_Construct`. Returns
/// `Zu::Status::WRONG_STATE` on the thread itself.
ZUAPI_API wStatus wThread_Destroy(wThread* thread);

/// Suspends the calling thread for at least `usec` microseconds.
ZUAPI_API wStatus wThread_Sleep(uint64 usec);

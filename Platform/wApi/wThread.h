#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>

/// A thread: made with `wThread_Construct`, given a name, started, joined.
///
/// It has one owner: the operations belong to one thread at a time, but for a join by the thread itself, which is refused.
/// The destructor joins what was started and not joined.
class ZUAPI_API wThread
{
public:
    /// What the thread does; its result is the exit code. No exception may leave it.
    using Function = int (*)(void* argument);

    static constexpr uint64 LONGEST_NAME = 15; ///< bytes that the system shows of a name

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

    struct Run; // shared with the thread itself, which may outlive this object

    std::string name;
    std::shared_ptr<Run> run; // null when there is nothing to join
    bool constructed = false;
};

/// Makes `thread` ready to be started. -1000 for one that is made already.
ZUAPI_API wStatus wThread_Construct(wThread* thread);

/// The name under which the system shows the thread. -997 for a name that is null or longer than 15 bytes.
ZUAPI_API wStatus wThread_SetName(wThread& thread, char const* name);

/// Runs `function` with `argument` on a new thread. -1000 while there is one to join.
ZUAPI_API wStatus wThread_Start(wThread& thread, int (*function)(void*), void* argument);

/// Waits for the end of the thread and gives what its function gave; `exitCode` may be null. -993 when `timeoutUsec`
/// microseconds have passed: the thread still runs and is to be joined again. -1000, at once, on the thread itself and
/// where nothing was started or all is joined. After it the thread can be started anew.
ZUAPI_API wStatus wThread_Join(wThread& thread, uint64 timeoutUsec, int* exitCode);

/// Joins what runs and makes the object empty again, ready for `wThread_Construct`. -1000 on the thread itself.
ZUAPI_API wStatus wThread_Destroy(wThread* thread);

/// Lets the calling thread rest for this many microseconds.
ZUAPI_API wStatus wThread_Sleep(uint64 usec);

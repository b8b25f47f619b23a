#include "SystemCalls.h"

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ZuBench
{

namespace
{

constexpr uint64 MARKER = SYS_getppid; // not called by the measured work

[[noreturn]] void RunTraced(std::function<void()> const& prepare, std::function<void()> const& work)
{
    int status = 1;
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0)
    {
        raise(SIGSTOP);
        prepare();
        syscall(MARKER);
        work();
        syscall(MARKER);
        status = 0;
    }
    _exit(status);
}

/// Lets the child run to its next stop. Returns false if the child has ended.
bool GoOn(pid_t child)
{
    int status = 0;
    return ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) == 0 && waitpid(child, &status, __WALL) == child &&
           WIFSTOPPED(status);
}

/// The number of the system call that the child is about to make; the highest number if it is stopped elsewhere.
uint64 CallOf(pid_t child)
{
    __ptrace_syscall_info info{};
    auto const size = reinterpret_cast<void*>(sizeof info);
    bool const isTold = ptrace(PTRACE_GET_SYSCALL_INFO, child, size, &info) > 0;
    return isTold && info.op == PTRACE_SYSCALL_INFO_ENTRY ? info.entry.nr : ~uint64{0};
}

} // namespace

uint64 SystemCallsOf(std::function<void()> const& prepare, std::function<void()> const& work)
{
    pid_t const child = fork();
    if (child == 0)
    {
        RunTraced(prepare, work);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, __WALL) != child || !WIFSTOPPED(status))
    {
        throw std::runtime_error("the system lets nobody trace a process");
    }
    ptrace(PTRACE_SETOPTIONS, child, nullptr,
           PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL); // distinguishes the stops of system calls
    uint64 markers = 0;
    uint64 counted = 0;
    while (GoOn(child))
    {
        uint64 const call = CallOf(child);
        markers += call == MARKER ? 1 : 0;
        counted += call != ~uint64{0} && call != MARKER && markers == 1 ? 1 : 0;
    }
    if (markers != 2)
    {
        throw std::runtime_error("the traced process did not get to its end");
    }
    return counted;
}

} // namespace ZuBench

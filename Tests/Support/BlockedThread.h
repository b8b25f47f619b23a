#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace ZuTest
{

/// The system's id of the calling thread, for `WaitUntilBlockedIn`.
inline long ThisThreadId()
{
    return syscall(SYS_gettid);
}

/// Waits until the thread sleeps on a lock inside `object`. Returns false after a timeout.
template <typename Object>
bool WaitUntilBlockedIn(long threadId, Object const& object)
{
    auto const begin = reinterpret_cast<std::uintptr_t>(&object);
    auto const bound = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < bound)
    {
        // The number of the system call and its arguments; the first argument of a futex call is its address.
        std::ifstream file("/proc/self/task/" + std::to_string(threadId) + "/syscall");
        long number = -1;
        std::uintptr_t address = 0;
        if (file >> number >> std::hex >> address && number == SYS_futex && address >= begin &&
            address < begin + sizeof(Object))
        {
            return true;
        }
        std::this_thread::yield();
    }
    return false;
}

} // namespace ZuTest

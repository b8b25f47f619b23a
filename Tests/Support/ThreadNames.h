#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace ZuTest
{

/// The number of threads of this process with exactly this name.
inline std::size_t CountOfThreads(std::string const& name)
{
    std::size_t count = 0;
    for (auto const& task : std::filesystem::directory_iterator("/proc/self/task"))
    {
        std::ifstream file(task.path() / "comm"); // fails to open if the thread has just ended
        std::string found;
        count += std::getline(file, found) && found == name ? 1u : 0u;
    }
    return count;
}

/// Waits until `count` threads have this name: a thread takes its name a moment after its start. Returns false after a
/// timeout.
inline bool WaitForThreads(std::string const& name, std::size_t count)
{
    auto const bound = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (CountOfThreads(name) != count)
    {
        if (std::chrono::steady_clock::now() > bound)
        {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

} // namespace ZuTest

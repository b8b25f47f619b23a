#include "ThreadWakes.h"

#include "Stopwatch.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace ZuBench
{

namespace
{

/// The folder of the thread in /proc; empty if there is no such thread.
std::filesystem::path FolderOf(std::string const& threadName)
{
    for (auto const& thread : std::filesystem::directory_iterator("/proc/self/task"))
    {
        std::ifstream comm(thread.path() / "comm");
        std::string name;
        if (std::getline(comm, name) && name == threadName)
        {
            return thread.path();
        }
    }
    return {};
}

double SleepsOf(std::filesystem::path const& folder)
{
    std::ifstream status(folder / "status");
    std::string word;
    double count = 0;
    while (status >> word)
    {
        if (word == "voluntary_ctxt_switches:")
        {
            status >> count;
            return count;
        }
    }
    throw std::runtime_error("the system does not count sleeps");
}

} // namespace

double WakesPerSecond(std::string const& threadName)
{
    std::filesystem::path folder = FolderOf(threadName);
    for (int i = 0; folder.empty() && i < 1000; ++i) // a new thread may not have set its name yet
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        folder = FolderOf(threadName);
    }
    if (folder.empty())
    {
        throw std::runtime_error("there is no thread " + threadName);
    }
    Stopwatch const watch(CLOCK_MONOTONIC);
    double const before = SleepsOf(folder);
    std::this_thread::sleep_for(std::chrono::seconds(1));
    return (SleepsOf(folder) - before) * 1e9 / static_cast<double>(watch.Nanoseconds());
}

} // namespace ZuBench

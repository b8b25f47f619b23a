/// The fan-out of result sets to protocols, compared with a plain implementation, with the minimum of work, and with
/// ZeroMQ sockets within the process.
///
/// usage: FanOutBenchmark [ROUNDS]      200 unless told otherwise
/// Figures are CPU nanoseconds per published set: of the publishing thread, or of the whole process where sets are
/// released while others are published.

#include "Contest.h"
#include "ModuleFanOut.h"
#include "PlainFanOut.h"
#include "ResultFrame.h"
#include "Stopwatch.h"
#include "ZeroMqFanOut.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

using namespace ZuBench;

constexpr uint64 ITEMS = 100;
constexpr uint64 SETS_ALIVE = 64; // reduced sets, before they are released

struct Scene
{
    std::string Name() const
    {
        return "FanOut/" + std::to_string(receivers) + "x" + std::to_string(100 / stride) + "%";
    }

    uint64 receivers;
    uint64 stride; // every `stride`-th item is wanted
};

/// The minimum of work: the references of sets without duplicates, stored in preallocated memory.
class LeastFanOut final
{
public:
    explicit LeastFanOut(uint64 receivers) : kept(receivers)
    {
        for (auto& parts : kept)
        {
            parts.reserve(2 * ITEMS * SETS_ALIVE);
        }
    }

    void Process(ZuCore::ResultSet set)
    {
        uint64 const count = ZuCore::ResultSet_Count(set);
        for (auto& parts : kept)
        {
            for (uint64 i = 0; i < count; ++i)
            {
                ZuCore::ResultItem const item = ZuCore::ResultSet_At(set, i);
                Keep(parts, ZuCore::ResultItem_MsgInfo(item));
                Keep(parts, ZuCore::ResultItem_ResultInfo(item));
            }
        }
    }

    void Release()
    {
        for (auto& parts : kept)
        {
            std::ranges::for_each(parts, wObject_Release);
            parts.clear();
        }
    }

private:
    static void Keep(std::vector<void*>& parts, void* part)
    {
        wObject_Share(part);
        parts.push_back(part);
    }

    std::vector<std::vector<void*>> kept;
};

/// CPU time of the publishing thread for one set. No set is released meanwhile.
template <typename FanOut>
double Publish(FanOut& fanOut, ResultFrame const& frame, uint64 sets)
{
    Stopwatch const watch = Stopwatch::OfThread();
    for (uint64 i = 0; i < sets; ++i)
    {
        fanOut.Process(frame.Set());
    }
    return static_cast<double>(watch.Nanoseconds()) / static_cast<double>(sets);
}

void Run(Scene const& scene, uint64 rounds)
{
    ResultFrame const frame(ITEMS);
    auto const sources = frame.Sources(scene.stride);
    ModuleFanOut module(scene.receivers, sources);
    PlainFanOut plain(scene.receivers, sources);
    LeastFanOut least(scene.receivers);
    uint64 const sets = SETS_ALIVE / scene.receivers;

    Contest contest(scene.Name());
    contest.Enter("Module", [&] {
        double const taken = Publish(module, frame, sets);
        frame.WaitUntilReleased(scene.stride);
        return taken;
    });
    contest.Enter("Plain", [&] {
        double const taken = Publish(plain, frame, sets);
        plain.Release();
        return taken;
    });
    if (scene.stride == 1)
    {
        contest.Enter("Least", [&] {
            double const taken = Publish(least, frame, sets);
            least.Release();
            return taken;
        });
    }
    contest.Run(rounds);
}

constexpr uint64 BURST = 100;

/// CPU time of the publishing thread for one set, while the receivers' threads release other sets.
template <typename FanOut>
double PublishBesideReleases(FanOut& fanOut, ResultFrame const& frame, Scene const& scene)
{
    double const taken = Publish(fanOut, frame, BURST);
    frame.WaitUntilReleased(scene.stride);
    return taken;
}

/// CPU time of the process for one set, from its publication to its release by the receivers' threads.
template <typename FanOut>
double PublishAndRelease(FanOut& fanOut, ResultFrame const& frame, Scene const& scene)
{
    Stopwatch const watch = Stopwatch::OfProcess();
    Publish(fanOut, frame, BURST);
    frame.WaitUntilReleased(scene.stride);
    return static_cast<double>(watch.Nanoseconds()) / static_cast<double>(BURST);
}

void RunBesideReleases(Scene const& scene, uint64 rounds)
{
    ResultFrame const frame(ITEMS);
    auto const sources = frame.Sources(scene.stride);
    ModuleFanOut module(scene.receivers, sources);
    PlainFanOut plain(scene.receivers, sources);
    plain.StartThreads();
    Contest contest(scene.Name() + "/BesideReleases");
    contest.Enter("Module", [&] { return PublishBesideReleases(module, frame, scene); });
    contest.Enter("Plain", [&] { return PublishBesideReleases(plain, frame, scene); });
    contest.Run(rounds);
}

/// Runs one fan-out at a time, so that the threads of the others do not exist.
void RunWholeWay(Scene const& scene, uint64 rounds)
{
    ResultFrame const frame(ITEMS);
    auto const sources = frame.Sources(scene.stride);
    Contest contest(scene.Name() + "/WholeWay");
    contest.Enter("Module", [&] {
        ModuleFanOut module(scene.receivers, sources);
        return PublishAndRelease(module, frame, scene);
    });
    contest.Enter("ZeroMq", [&] {
        ZeroMqFanOut sockets(scene.receivers, sources);
        return PublishAndRelease(sockets, frame, scene);
    });
    contest.Run(rounds);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    uint64 const rounds = argumentCount > 1 ? std::strtoull(arguments[1], nullptr, 10) : 200;
    for (Scene const& scene : {Scene{16, 10}, Scene{1, 1}, Scene{16, 1}})
    {
        Run(scene, rounds);
    }
    RunBesideReleases({16, 10}, rounds / 2);
    RunWholeWay({16, 10}, rounds / 4);
}

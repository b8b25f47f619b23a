/// The fan-out of result sets to protocols, compared with a plain implementation, with the reference counts alone, and
/// with ZeroMQ sockets within the process.
///
/// usage: FanOutBenchmark [ROUNDS]      200 unless told otherwise
/// Figures are CPU nanoseconds per published set: of the publishing thread, or of the whole process where sets are
/// released while others are published. Where the receivers want all items, the module's figure is the share of one
/// receiver.

#include "Contest.h"
#include "ModuleFanOut.h"
#include "PlainFanOut.h"
#include "ResultFrame.h"
#include "Stopwatch.h"
#include "ZeroMqFanOut.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace
{

using namespace ZuBench;

constexpr uint64 SETS_ALIVE = 64; // reduced sets, before they are released

struct Scene
{
    std::string Name() const
    {
        return "FanOut/" + std::to_string(receivers) + "x" + std::to_string(100 / stride) + "%of" +
               std::to_string(items);
    }

    uint64 receivers;
    uint64 stride; // every `stride`-th item is wanted
    uint64 items;
};

/// Only the reference counts of a fan-out without duplicates: one addition to each part of an item, however many
/// receivers want it. No look-up, no lock, no set, no hand-over.
class CountsOnly final
{
public:
    explicit CountsOnly(uint64 usedReceivers) : receivers(usedReceivers)
    {
    }

    void Process(ZuCore::ResultSet set)
    {
        set->ForEachParts([this](ZuCore::ResultItemParts const& parts) {
            wObject_ShareMany(parts.msgInfo, receivers);
            wObject_ShareMany(parts.info, receivers);
        });
    }

    /// Releases the references of `sets` calls of `Process`.
    void Release(ZuCore::ResultSet set, uint64 sets)
    {
        for (uint64 i = 0; i < sets * receivers; ++i)
        {
            set->ForEachParts([](ZuCore::ResultItemParts const& parts) {
                wObject_Release(parts.msgInfo);
                wObject_Release(parts.info);
            });
        }
    }

private:
    uint64 const receivers;
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
    ResultFrame const frame(scene.items);
    auto const sources = frame.Sources(scene.stride);
    ModuleFanOut module(scene.receivers, sources);
    PlainFanOut plain(scene.receivers, sources);
    CountsOnly counts(scene.receivers);
    uint64 const sets = SETS_ALIVE / scene.receivers;

    Contest contest(scene.Name());
    contest.Enter("Module", [&] {
        double const taken = Publish(module, frame, sets);
        frame.WaitUntilReleased(scene.stride);
        return scene.stride == 1 ? taken / static_cast<double>(scene.receivers) : taken;
    });
    if (scene.stride == 1)
    {
        contest.Enter("CountsOnly", [&] {
            double const taken = Publish(counts, frame, sets);
            counts.Release(frame.Set(), sets);
            return taken;
        });
    }
    else
    {
        contest.Enter("Plain", [&] {
            double const taken = Publish(plain, frame, sets);
            plain.Release();
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
    ResultFrame const frame(scene.items);
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
    ResultFrame const frame(scene.items);
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
    for (Scene const& scene :
         {Scene{16, 10, 100}, Scene{1, 1, 100}, Scene{1, 1, 1000}, Scene{16, 1, 100}, Scene{16, 1, 1000}})
    {
        Run(scene, rounds);
    }
    RunBesideReleases({16, 10, 100}, rounds / 2);
    RunWholeWay({16, 10, 100}, rounds / 4);
}

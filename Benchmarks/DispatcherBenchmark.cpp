/// The hand-over of result sets to a protocol's thread, compared with a plain double buffer.
///
/// usage: DispatcherBenchmark [ROUNDS]      200 unless told otherwise
/// "AddInBursts": CPU nanoseconds of the adding thread for one set. "Latency": nanoseconds from a set that is added at
/// a random moment to its handler. "IdleWakes": how often a dispatcher's thread wakes in a second with nothing to do.

#include "Contest.h"
#include "PlainDoubleBuffer.h"
#include "ResultFrame.h"
#include "Stopwatch.h"
#include "ThreadWakes.h"
#include "ZuControl/Control/ControlScanResultsDispatcher.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>

namespace
{

using namespace ZuBench;
using ZuControl::ControlScanResultsDispatcher;

using OwnedSet = wHandle<ZuCore::ResultSetObject>;

template <typename Add>
double AddBurst(Add const& add)
{
    constexpr uint64 BURST = 100;
    Stopwatch const watch = Stopwatch::OfThread();
    for (uint64 i = 0; i < BURST; ++i)
    {
        add();
    }
    return static_cast<double>(watch.Nanoseconds()) / BURST;
}

void RunBursts(uint64 rounds)
{
    ResultFrame const frame(1);
    ControlScanResultsDispatcher dispatcher(nullptr);
    dispatcher.AddResultHandler([](void*) {});
    PlainDoubleBuffer<OwnedSet> plain([](std::vector<OwnedSet>&) {});

    Contest contest("AddInBursts");
    contest.Enter("Dispatcher", [&] { return AddBurst([&] { dispatcher.AddResult(frame.Set()); }); });
    contest.Enter("DoubleBuffer", [&] { return AddBurst([&] { plain.Add(wHandle_Share(frame.Set())); }); });
    contest.Run(5 * rounds);
}

/// Waits for the moment at which the handler was called.
double WaitForCall(std::atomic<uint64>& called, uint64 added)
{
    called.wait(0);
    return static_cast<double>(called.exchange(0) - added);
}

void NoteCall(std::atomic<uint64>& called)
{
    called = Stopwatch::Now();
    called.notify_one();
}

void RunLatency(uint64 rounds)
{
    ResultFrame const frame(1);
    std::atomic<uint64> called{0};
    ControlScanResultsDispatcher dispatcher(nullptr);
    dispatcher.AddResultHandler([&called](void*) { NoteCall(called); });
    PlainDoubleBuffer<OwnedSet> plain([&called](std::vector<OwnedSet>&) { NoteCall(called); });
    std::mt19937_64 random(1);
    std::uniform_int_distribution<int> pauseUsec(0, 2000);
    auto const rest = [&] { std::this_thread::sleep_for(std::chrono::microseconds(pauseUsec(random))); };

    Contest contest("Latency");
    contest.Enter("Dispatcher", [&] {
        rest();
        uint64 const added = Stopwatch::Now();
        dispatcher.AddResult(frame.Set());
        return WaitForCall(called, added);
    });
    contest.Enter("DoubleBuffer", [&] {
        rest();
        uint64 const added = Stopwatch::Now();
        plain.Add(wHandle_Share(frame.Set()));
        return WaitForCall(called, added);
    });
    contest.Run(2 * rounds);
}

void RunIdle()
{
    ControlScanResultsDispatcher const dispatcher(nullptr);
    PrintFigure("IdleWakes/Dispatcher", WakesPerSecond("CtrlScnRstDisp"));
}

} // namespace

int main(int argumentCount, char** arguments)
{
    uint64 const rounds = argumentCount > 1 ? std::strtoull(arguments[1], nullptr, 10) : 200;
    RunBursts(rounds);
    RunLatency(rounds);
    RunIdle();
}

/// The fan-out of a set, and the hand-over of a set to a dispatcher, in a function of its own each, so that callgrind can
/// count the instructions and the locked instructions ("Ge") of the publishing thread:
///   valgrind --tool=callgrind --collect-bus=yes --toggle-collect=MeasuredFanOut FanOutInstructions 16 100
///   valgrind --tool=callgrind --collect-bus=yes --toggle-collect=MeasuredAdd FanOutInstructions 16 100
///
/// usage: FanOutInstructions RECEIVERS ITEMS
/// Each function runs a hundred times. All receivers want all items. The reduced sets are released before the next set,
/// so that each set is the first one in the list of its dispatcher and its memory is reused.

#include "ModuleFanOut.h"
#include "ResultFrame.h"
#include "ZuApi/Exception.h"
#include "ZuControl/Control/ControlScanResultsDispatcher.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace
{

using namespace ZuBench;

constexpr int TIMES = 100;

} // namespace

extern "C" [[gnu::noipa]] void MeasuredFanOut(ModuleFanOut& fanOut, ZuCore::ResultSet set)
{
    fanOut.Process(set);
}

extern "C" [[gnu::noipa]] void MeasuredAdd(ZuControl::ControlScanResultsDispatcher& dispatcher, ZuCore::ResultSet set)
{
    dispatcher.AddResult(set);
}

namespace
{

/// Makes so many sets with room for so many items, which wait for reuse then.
void MakeIdleSets(uint64 sets, uint64 items)
{
    std::vector<wHandle<ZuCore::ResultSetObject>> made;
    for (uint64 i = 0; i < sets; ++i)
    {
        ZuCore::ResultSet set = nullptr;
        ZU_CHECK(ZuCore::ResultSet_Construct(&set, nullptr));
        made.emplace_back(set);
        ZU_CHECK(ZuCore::ResultSet_Reserve(set, items));
    }
}

void Run(uint64 receivers, uint64 items)
{
    MakeIdleSets(2 * receivers, items); // twice, as the last sets may not be back when the next fan-out begins
    ResultFrame const frame(items);
    ModuleFanOut fanOut(receivers, frame.Sources(1));
    fanOut.Process(frame.Set()); // binds the symbols of the first call
    frame.WaitUntilReleased(1);
    for (int i = 0; i < TIMES; ++i)
    {
        MeasuredFanOut(fanOut, frame.Set());
        frame.WaitUntilReleased(1);
    }
    ZuControl::ControlScanResultsDispatcher dispatcher(nullptr);
    for (int i = 0; i < TIMES; ++i)
    {
        MeasuredAdd(dispatcher, frame.Set());
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3)
    {
        std::fputs("usage: FanOutInstructions RECEIVERS ITEMS\n", stderr);
        return 2;
    }
    Run(std::strtoull(arguments[1], nullptr, 10), std::strtoull(arguments[2], nullptr, 10));
}

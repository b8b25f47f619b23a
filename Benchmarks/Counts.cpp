/// Figures that are counted, not measured: allocations, bytes, system calls. They are the same on every machine.
///
/// usage: Counts

#include "Contest.h"
#include "ModuleFanOut.h"
#include "PlainFanOut.h"
#include "PlainRecord.h"
#include "RecordBenchmark.h"
#include "ResultFrame.h"
#include "StampFrame.h"
#include "SystemCalls.h"

#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Plugins/ModbusTcp/RegisterLayout.h"
#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "Support/AllocationCounter.h"
#include "ZuControl/Control/ControlScanResultsDispatcher.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "wApi/wArrayList.h"

#include <algorithm>
#include <memory>
#include <string>

namespace
{

using namespace ZuBench;
using ZuTest::AllocationCounter;

/// Allocations of the publishing thread per set and receiver in the steady state: the highest count of all set sizes.
void CountFanOut()
{
    constexpr uint64 RECEIVERS = 16;
    double most = 0;
    double mostPlain = 0;
    for (uint64 const items : {10, 100, 1000})
    {
        ResultFrame const frame(items);
        ModuleFanOut module(RECEIVERS, frame.Sources(1));
        PlainFanOut plain(RECEIVERS, frame.Sources(1));
        auto const perSet = [&](auto& fanOut) {
            AllocationCounter const counter;
            fanOut.Process(frame.Set());
            return static_cast<double>(counter.Count()) / RECEIVERS;
        };
        perSet(module); // fills the pool of sets; the next pass reuses them
        frame.WaitUntilReleased(1);
        most = std::max(most, perSet(module));
        mostPlain = std::max(mostPlain, perSet(plain));
        plain.Release();
        frame.WaitUntilReleased(1);
    }
    PrintFigure("Count/FanOut/Allocations", most);
    PrintFigure("Count/FanOut/PlainAllocations", mostPlain);
}

void CountAdd()
{
    constexpr uint64 ADDS = 100; // a list's first capacity
    std::unique_ptr<ResultFrame> frame;
    std::unique_ptr<ZuControl::ControlScanResultsDispatcher> dispatcher;
    auto const prepare = [&] {
        frame = std::make_unique<ResultFrame>(1);
        dispatcher = std::make_unique<ZuControl::ControlScanResultsDispatcher>(nullptr);
    };
    auto const work = [&] {
        for (uint64 i = 0; i < ADDS; ++i)
        {
            dispatcher->AddResult(frame->Set());
        }
    };
    PrintFigure("Count/Add/SystemCalls", static_cast<double>(SystemCallsOf(prepare, work)) / ADDS);
    prepare();
    AllocationCounter const counter;
    work();
    PrintFigure("Count/Add/Allocations", static_cast<double>(counter.Count()) / ADDS);
}

/// An assembly of the Modbus plug-in with a stamp block and a measurement block for each source of the frame.
void FillAssembly(ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase& assembly, ResultFrame const& frame)
{
    ModbusTcp::AddModbusBlockTypes(assembly);
    ZuControl::ControlProtocol::AddBlockParams params;
    uint16 next = 100;
    for (std::string const& source : frame.Sources(1))
    {
        auto& block = params.blocks.Add();
        block.type = ModbusTcp::TYPE_MEASUREMENT;
        block.dataSource = source;
        block.outputId = next;
        next = static_cast<uint16>(next + 3);
    }
    assembly.Add(params);
}

void CountBatch()
{
    constexpr uint64 SETS = 10;
    ResultFrame const frame(100);
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase assembly(true, 0, ModbusTcp::LAST_REGISTER);
    FillAssembly(assembly, frame);
    auto const image = std::make_unique<ModbusTcp::RegisterImage>();
    ModbusTcp::ModbusCounters counters;
    ModbusTcp::ResultEncoder encoder(*image, counters);
    encoder.Install(ModbusTcp::RegisterLayout::Take(assembly));
    wArrayList batch;
    ZU_CHECK(wArrayList_Construct(&batch, nullptr, SETS, nullptr));
    for (uint64 i = 0; i < SETS; ++i)
    {
        wObject_Share(frame.Set());
        ZU_CHECK(wArrayList_Add(batch, frame.Set()));
    }
    AllocationCounter const counter;
    encoder.Process(batch);
    PrintFigure("Count/Batch/Allocations", static_cast<double>(counter.Count()));
    if (counters.resultSets != SETS || counters.controlDrops != 0)
    {
        throw std::runtime_error("the batch was not encoded");
    }
}

void CountEncoder()
{
    StampFrame frame(2, true);
    AllocationCounter const counter;
    frame.EncodeStamp();
    frame.EncodeMeasurement();
    PrintFigure("Count/Encoder/Allocations", static_cast<double>(counter.Count()));
}

template <typename Record>
void CountRecord(std::string const& name)
{
    Record const first; // texts are kept once for all records
    AllocationCounter const counter;
    auto const record = std::make_unique<Record>();
    PrintFigure("Count/" + name + "/Allocations", static_cast<double>(counter.Count()));
    PrintFigure("Count/" + name + "/Bytes", static_cast<double>(counter.Bytes()));
}

} // namespace

int main()
{
    CountAdd(); // first: its child process must not have threads of others
    CountFanOut();
    CountEncoder();
    CountBatch();
    CountRecord<Record>("Record");
    CountRecord<PlainRecord>("PlainRecord");
}

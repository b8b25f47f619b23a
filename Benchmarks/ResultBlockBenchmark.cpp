/// Finding the blocks for the data source of a result: the layout of the Modbus plug-in compared with a tree that is
/// searched by text, and with a list in the order of the results, which needs no search.

#include "ResultFrame.h"

#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "Plugins/ModbusTcp/RegisterLayout.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace
{

using ModbusTcp::RegisterLayout;
using ZuBench::ResultFrame;
using ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase;

constexpr uint16 REGISTERS = 3; // of a measurement block

/// A measurement block for each item of the frame.
struct Placed
{
    explicit Placed(benchmark::State const& state) : frame(static_cast<uint64>(state.range(0)))
    {
        ModbusTcp::AddModbusBlockTypes(assembly);
        ZuControl::ControlProtocol::AddBlockParams params;
        for (std::string const& source : frame.Sources(1))
        {
            auto& block = params.blocks.Add();
            block.type = ModbusTcp::TYPE_MEASUREMENT;
            block.dataSource = source;
            block.outputId = static_cast<uint16>(REGISTERS * params.blocks.Count());
        }
        assembly.Add(params);
        layout = RegisterLayout::Take(assembly);
    }

    ZuCore::ResultInfo InfoAt(uint64 index) const
    {
        return ZuCore::ResultItem_ResultInfo(ZuCore::ResultSet_At(frame.Set(), index));
    }

    ResultFrame frame;
    ProtocolRegisterAssemblyBase assembly{true, 0, ModbusTcp::LAST_REGISTER};
    std::shared_ptr<RegisterLayout const> layout;
};

/// One turn is one whole frame.
template <typename Find>
void FindEach(benchmark::State& state, Placed const& placed, Find const& find)
{
    uint64 const count = placed.frame.Count();
    for (auto _ : state)
    {
        for (uint64 i = 0; i < count; ++i)
        {
            RegisterLayout::Place const* const place = find(i, placed.InfoAt(i));
            benchmark::DoNotOptimize(place->first);
        }
    }
    state.SetItemsProcessed(static_cast<int64>(state.iterations() * count));
}

void FindInLayout(benchmark::State& state)
{
    Placed const placed(state);
    FindEach(state, placed, [&placed](uint64, ZuCore::ResultInfo info) {
        return &placed.layout->Find(ZuCore::ResultInfo_NumericId(info)).front();
    });
}

void FindInTree(benchmark::State& state)
{
    Placed const placed(state);
    std::map<std::string, RegisterLayout::Place const*> tree;
    for (uint64 i = 0; i < placed.frame.Count(); ++i)
    {
        ZuCore::ResultInfo const info = placed.InfoAt(i);
        tree.emplace(ZuCore::ResultInfo_DataSourceId(info),
                     &placed.layout->Find(ZuCore::ResultInfo_NumericId(info)).front());
    }
    FindEach(state, placed, [&tree](uint64, ZuCore::ResultInfo info) {
        return tree.find(ZuCore::ResultInfo_DataSourceId(info))->second;
    });
}

void TakeInOrder(benchmark::State& state)
{
    Placed const placed(state);
    std::vector<RegisterLayout::Place const*> places;
    for (uint64 i = 0; i < placed.frame.Count(); ++i)
    {
        places.push_back(&placed.layout->Find(ZuCore::ResultInfo_NumericId(placed.InfoAt(i))).front());
    }
    FindEach(state, placed, [&places](uint64 index, ZuCore::ResultInfo info) {
        benchmark::DoNotOptimize(ZuCore::ResultInfo_NumericId(info));
        return places[index];
    });
}

BENCHMARK(FindInLayout)->Name("FindBlocks/Layout")->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(FindInTree)->Name("FindBlocks/TreeByText")->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(TakeInOrder)->Name("FindBlocks/InOrder")->Arg(10)->Arg(100)->Arg(1000);

} // namespace

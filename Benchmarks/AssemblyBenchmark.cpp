/// Placing, finding and replacing blocks: the assembly compared with a search along a list.

#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <benchmark/benchmark.h>

#include <list>
#include <memory>

namespace
{

using namespace ZuControl::ControlProtocol;

constexpr uint16 REGISTERS = 4;

RegisterBlockInfoParams TypeParams()
{
    RegisterBlockInfoParams params;
    params.type = "Four";
    params.displayName = "Four registers";
    params.registerCount = REGISTERS;
    params.bytesPerRegister = 2;
    params.maxInstanceCount = 65534;
    params.factory = std::make_shared<ProtocolRegisterBlockFactory<ProtocolRegisterBlock>>();
    return params;
}

/// A list of the same blocks, which is searched from the start for the place of a block.
class WalkedList final
{
public:
    WalkedList()
    {
        info.SetIsGlobalAddressSpaceUsed(true);
    }

    void Add(RegisterBlockParams const& params)
    {
        uint16 const start = params.outputId.Get();
        auto const end = static_cast<uint16>(start + REGISTERS - 1);
        auto place = blocks.begin();
        while (place != blocks.end() && end >= (*place)->OutputId())
        {
            if (start <= (*place)->EndAddress())
            {
                return; // taken
            }
            ++place;
        }
        blocks.insert(place, info.ConstructBlock(params));
    }

    void Remove(uint16 id)
    {
        blocks.remove_if([id](auto const& block) { return block->OutputId() == id; });
    }

    ProtocolRegisterBlock* Find(uint16 id) const
    {
        for (auto const& block : blocks)
        {
            if (block->OutputId() == id)
            {
                return block.get();
            }
        }
        return nullptr;
    }

private:
    ProtocolRegisterBlockInfo info{TypeParams()};
    std::list<std::shared_ptr<ProtocolRegisterBlock>> blocks; // gone before their type
};

/// Ids from the first one on in scattered order, because a list is seldom filled at its end only.
uint16 IdAt(int64 index, int64 count)
{
    constexpr int64 STRIDE = 7919; // prime, so that each id comes once
    return static_cast<uint16>(REGISTERS * (index * STRIDE % count));
}

void Fill(ProtocolRegisterAssemblyBase& assembly, int64 count)
{
    AddBlockParams params;
    params.blocks.Resize(static_cast<uint64>(count));
    for (int64 i = 0; i < count; ++i)
    {
        RegisterBlockParams& block = params.blocks.At(static_cast<uint64>(i));
        block.type = "Four";
        block.outputId = IdAt(i, count);
    }
    assembly.Add(params);
}

void Fill(WalkedList& list, int64 count)
{
    RegisterBlockParams params;
    for (int64 i = 0; i < count; ++i)
    {
        params.outputId = IdAt(i, count);
        list.Add(params);
    }
}

std::unique_ptr<ProtocolRegisterAssemblyBase> MakeAssembly()
{
    auto assembly = std::make_unique<ProtocolRegisterAssemblyBase>(true);
    assembly->AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(TypeParams()));
    return assembly;
}

void AddToAssembly(benchmark::State& state)
{
    for (auto _ : state)
    {
        auto const assembly = MakeAssembly();
        Fill(*assembly, state.range(0));
        benchmark::DoNotOptimize(assembly.get());
    }
}

void AddToWalkedList(benchmark::State& state)
{
    for (auto _ : state)
    {
        WalkedList list;
        Fill(list, state.range(0));
        benchmark::DoNotOptimize(&list);
    }
}

/// An update that moves no block: it finds the block and sets the name.
void FindInAssembly(benchmark::State& state)
{
    auto const assembly = MakeAssembly();
    Fill(*assembly, state.range(0));
    UpdateBlockParams params;
    params.newParams.displayName = "found";
    int64 index = 0;
    for (auto _ : state)
    {
        params.outputId = IdAt(++index, state.range(0));
        assembly->Update(params);
    }
}

void FindInWalkedList(benchmark::State& state)
{
    WalkedList list;
    Fill(list, state.range(0));
    int64 index = 0;
    for (auto _ : state)
    {
        list.Find(IdAt(++index, state.range(0)))->SetDisplayName("found");
    }
}

/// Removes a block in the middle and adds it again.
void ReplaceInAssembly(benchmark::State& state)
{
    auto const assembly = MakeAssembly();
    Fill(*assembly, state.range(0));
    uint16 const middle = static_cast<uint16>(REGISTERS * (state.range(0) / 2));
    AddBlockParams added;
    RegisterBlockParams& block = added.blocks.Add();
    block.type = "Four";
    block.outputId = middle;
    RemoveBlockParams removed;
    removed.outputIdList.Add().outputId = middle;
    for (auto _ : state)
    {
        assembly->Remove(removed);
        assembly->Add(added);
    }
}

void ReplaceInWalkedList(benchmark::State& state)
{
    WalkedList list;
    Fill(list, state.range(0));
    RegisterBlockParams block;
    block.outputId = static_cast<uint16>(REGISTERS * (state.range(0) / 2));
    for (auto _ : state)
    {
        list.Remove(block.outputId.Get());
        list.Add(block);
    }
}

void EverySize(benchmark::internal::Benchmark* measured)
{
    measured->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(AddToAssembly)->Name("Add/Assembly")->Apply(EverySize);
BENCHMARK(AddToWalkedList)->Name("Add/PlainWalk")->Apply(EverySize);
BENCHMARK(FindInAssembly)->Name("Find/Assembly")->Apply(EverySize);
BENCHMARK(FindInWalkedList)->Name("Find/PlainWalk")->Apply(EverySize);
BENCHMARK(ReplaceInAssembly)->Name("Replace/Assembly")->Apply(EverySize);
BENCHMARK(ReplaceInWalkedList)->Name("Replace/PlainWalk")->Apply(EverySize);

} // namespace

/// Large configurations: loading compared with parsing alone, saving compared with building and dumping the same
/// document from plain records, and the memory of the configured module.

#include "ConfiguredInstance.h"

#include "ZuControl/Persistence/PersistControl.h"

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <nlohmann/json.hpp>

#include <utility>

namespace
{

using ZuBench::ConfiguredInstance;
using ZuBench::EntryKind;
using ZuBench::MemoryStore;
using ZuBench::PlainEntries;
using Json = nlohmann::json;

constexpr unsigned ENTRIES = 10000;
constexpr auto JOB = ZuCommon::PersistDomain::JOB;

MemoryStore StoredConfiguration(EntryKind kind)
{
    MemoryStore store;
    store.bytes = PlainEntries(kind, ENTRIES).Document().dump();
    return store;
}

/// A load at the start, into a module without entries.
void Load(benchmark::State& state, EntryKind kind)
{
    MemoryStore const store = StoredConfiguration(kind);
    ConfiguredInstance configured(kind);
    for (auto _ : state)
    {
        ZuControl::PersistControl().Load(configured.Instance(), JOB, store);
        state.PauseTiming();
        if (configured.Count() != ENTRIES)
        {
            state.SkipWithError("the configuration was not taken over");
        }
        configured.Clear();
        state.ResumeTiming();
    }
}

/// A load of another job of the same size, which also removes all entries of the previous job.
void Reload(benchmark::State& state, EntryKind kind)
{
    MemoryStore const store = StoredConfiguration(kind);
    ConfiguredInstance configured(kind);
    for (auto _ : state)
    {
        ZuControl::PersistControl().Load(configured.Instance(), JOB, store);
    }
}

void Parse(benchmark::State& state, EntryKind kind)
{
    MemoryStore const store = StoredConfiguration(kind);
    for (auto _ : state)
    {
        Json const document = Json::parse(store.Read(""));
        benchmark::DoNotOptimize(&document);
    }
}

void Save(benchmark::State& state, EntryKind kind)
{
    MemoryStore store = StoredConfiguration(kind);
    std::string const given = store.bytes;
    ConfiguredInstance configured(kind);
    ZuControl::PersistControl().Load(configured.Instance(), JOB, store);
    for (auto _ : state)
    {
        ZuControl::PersistControl().Save(configured.Instance(), JOB, store);
    }
    if (store.bytes != given)
    {
        state.SkipWithError("another configuration was saved");
    }
}

void BuildAndDump(benchmark::State& state, EntryKind kind)
{
    PlainEntries const entries(kind, ENTRIES);
    MemoryStore store;
    for (auto _ : state)
    {
        std::string const bytes = entries.Document().dump();
        store.Write("", bytes.data(), bytes.size());
    }
}

double UsedMebibytes()
{
    struct mallinfo2 const info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd) / (1024.0 * 1024.0);
}

void Memory(benchmark::State& state, EntryKind kind)
{
    MemoryStore const store = StoredConfiguration(kind);
    ConfiguredInstance configured(kind);
    double const before = UsedMebibytes();
    for (auto _ : state)
    {
        ZuControl::PersistControl().Load(configured.Instance(), JOB, store);
    }
    state.counters["MiB"] = UsedMebibytes() - before;
}

int RegisterAll()
{
    constexpr std::pair<char const*, EntryKind> KINDS[] = {{"RegisterMap", EntryKind::REGISTER_MAP},
                                                           {"StandardMap", EntryKind::STANDARD_MAP},
                                                           {"TextIdMap", EntryKind::TEXT_ID_MAP},
                                                           {"Blocks", EntryKind::BLOCKS}};
    constexpr std::pair<char const*, void (*)(benchmark::State&, EntryKind)> STEPS[] = {
        {"Load", &Load}, {"Reload", &Reload}, {"Parse", &Parse}, {"Save", &Save}, {"BuildAndDump", &BuildAndDump}};
    for (auto const& [name, kind] : KINDS)
    {
        std::string const prefix = std::string("Configuration/") + name + "/";
        for (auto const& [step, run] : STEPS)
        {
            benchmark::RegisterBenchmark((prefix + step).c_str(), run, kind)->Unit(benchmark::kMillisecond);
        }
        benchmark::RegisterBenchmark((prefix + "Memory").c_str(), &Memory, kind)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1);
    }
    return 0;
}

[[maybe_unused]] int const registered = RegisterAll();

} // namespace

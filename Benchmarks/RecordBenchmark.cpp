/// A parameter record compared with a JSON object of the same members, and with a record that builds its schema in the
/// constructor.

#include "RecordBenchmark.h"
#include "PlainRecord.h"

#include "ZuApi/JsonSerializer.h"

#include <benchmark/benchmark.h>

namespace
{

using ZuBench::Record;
using Json = nlohmann::json;
using Zu::Properties::JsonSerializer;

void BuildRecord(benchmark::State& state)
{
    Record const first; // all records share one copy of each text
    for (auto _ : state)
    {
        Record record;
        benchmark::DoNotOptimize(&record);
    }
}

void BuildPlain(benchmark::State& state)
{
    for (auto _ : state)
    {
        ZuBench::PlainRecord record;
        benchmark::DoNotOptimize(&record);
    }
}

void BuildObject(benchmark::State& state)
{
    for (auto _ : state)
    {
        Json object = ZuBench::MakeObject();
        benchmark::DoNotOptimize(&object);
    }
}

void SetRecord(benchmark::State& state)
{
    Record record;
    uint16 number = 0;
    for (auto _ : state)
    {
        record.id = ++number;
        record.size = number;
        record.source = (number & 1) != 0 ? "profile/a" : "profile/b";
        record.offset = number;
        record.length = number;
        benchmark::DoNotOptimize(&record);
        benchmark::ClobberMemory();
    }
}

void SetObject(benchmark::State& state)
{
    Json object = ZuBench::MakeObject();
    uint16 number = 0;
    for (auto _ : state)
    {
        object["id"] = ++number;
        object["size"] = number;
        object["source"] = (number & 1) != 0 ? "profile/a" : "profile/b";
        object["offset"] = number;
        object["length"] = number;
        benchmark::DoNotOptimize(&object);
        benchmark::ClobberMemory();
    }
}

/// The result is a JSON object, so the JSON contender copies its object.
void SerializeRecord(benchmark::State& state)
{
    Record const record;
    for (auto _ : state)
    {
        Json document = JsonSerializer::Serialize(record);
        benchmark::DoNotOptimize(&document);
    }
}

void SerializeObject(benchmark::State& state)
{
    Json const object = ZuBench::MakeObject();
    for (auto _ : state)
    {
        Json document = object;
        benchmark::DoNotOptimize(&document);
    }
}

BENCHMARK(BuildRecord)->Name("Build/Record");
BENCHMARK(BuildPlain)->Name("Build/Plain");
BENCHMARK(BuildObject)->Name("Build/JsonObject");
BENCHMARK(SetRecord)->Name("Set/Record");
BENCHMARK(SetObject)->Name("Set/JsonObject");
BENCHMARK(SerializeRecord)->Name("Serialize/Record");
BENCHMARK(SerializeObject)->Name("Serialize/JsonObject");

} // namespace

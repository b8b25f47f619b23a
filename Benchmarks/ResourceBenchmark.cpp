/// Reading a resource: from nodes to the text of a document, compared with a JSON tree built from plain structs and
/// dumped.

#include "RecordBenchmark.h"

#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Array.h"
#include "ZuRest/JsonText.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace
{

using ZuBench::Record;
using Json = nlohmann::json;

/// A document like that of a protocol: a list of records and a few values beside it.
struct Document : Zu::Params::Group
{
    explicit Document(uint64 records)
    {
        Register("name", "Name", name);
        Register("enabled", "Enabled", isEnabled);
        Register("map", "Map", map);
        map.Resize(records);
        name = "ModbusTcp";
        for (uint64 i = 0; i < records; ++i)
        {
            map.At(i).id = static_cast<uint16>(i);
            map.At(i).source = "profile/measurement" + std::to_string(i);
        }
    }

    Zu::Params::Value<std::string> name;
    Zu::Params::Value<bool> isEnabled;
    Zu::Params::Array<Record> map;
};

struct PlainRecord
{
    uint16 id = 0;
    uint16 size = 0;
    std::string source;
    uint16 offset = 0;
    uint16 length = 0;
};

struct PlainDocument
{
    std::string name = "ModbusTcp";
    bool isEnabled = false;
    std::vector<PlainRecord> map;
};

PlainDocument MakePlain(uint64 records)
{
    PlainDocument document;
    for (uint64 i = 0; i < records; ++i)
    {
        document.map.push_back({static_cast<uint16>(i), 0, "profile/measurement" + std::to_string(i), 0, 0});
    }
    return document;
}

Json TreeOf(PlainDocument const& document)
{
    Json map = Json::array();
    for (PlainRecord const& record : document.map)
    {
        map.push_back({{"id", record.id},
                       {"size", record.size},
                       {"source", record.source},
                       {"offset", record.offset},
                       {"length", record.length}});
    }
    Json tree = {{"name", document.name}, {"enabled", document.isEnabled}};
    tree["map"] = std::move(map);
    return tree;
}

void ReadNodes(benchmark::State& state)
{
    Document const document(static_cast<uint64>(state.range(0)));
    for (auto _ : state)
    {
        std::string text = ZuRest::JsonText::Write(Zu::Properties::JsonSerializer::Serialize(document));
        benchmark::DoNotOptimize(text.data());
    }
}

void DumpTree(benchmark::State& state)
{
    PlainDocument const document = MakePlain(static_cast<uint64>(state.range(0)));
    for (auto _ : state)
    {
        std::string text = TreeOf(document).dump();
        benchmark::DoNotOptimize(text.data());
    }
}

BENCHMARK(ReadNodes)->Name("ReadResource/Nodes")->Arg(0)->Arg(10)->Arg(1000);
BENCHMARK(DumpTree)->Name("ReadResource/TreeAndDump")->Arg(0)->Arg(10)->Arg(1000);

} // namespace

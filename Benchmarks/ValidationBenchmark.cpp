/// The validation of a record, compared with a general validator of JSON Schema.

#include "RecordBenchmark.h"

#include "ZuApi/JsonSerializer.h"

#include <benchmark/benchmark.h>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

namespace
{

using Json = nlohmann::json;
using valijson::adapters::NlohmannJsonAdapter;

/// Every member differs from what the record holds, so that each is tested.
Json const DOCUMENT = {{"id", 1}, {"size", 2}, {"source", "profile/a"}, {"offset", 3}, {"length", 4}};

void ValidateWithRecord(benchmark::State& state)
{
    ZuBench::BoundedRecord record;
    for (auto _ : state)
    {
        Zu::Properties::JsonSerializer::Validate(record, DOCUMENT);
    }
}

void ValidateWithSchema(benchmark::State& state)
{
    Json const schemaDocument = Zu::Properties::JsonSerializer::SerializeSchema(ZuBench::BoundedRecord());
    valijson::Schema schema;
    valijson::SchemaParser parser;
    parser.populateSchema(NlohmannJsonAdapter(schemaDocument), schema);
    valijson::Validator validator;
    for (auto _ : state)
    {
        if (!validator.validate(schema, NlohmannJsonAdapter(DOCUMENT), nullptr))
        {
            state.SkipWithError("the document was refused");
        }
    }
}

BENCHMARK(ValidateWithRecord)->Name("Validate/Record");
BENCHMARK(ValidateWithSchema)->Name("Validate/JsonSchema");

} // namespace

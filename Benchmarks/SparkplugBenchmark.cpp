/// A frame of 20 metrics on its way into the queue of the network thread, compared with encoding the same metrics by
/// nanopb into a buffer by hand.

#include "Plugins/SparkplugMqtt/OutputMetrics.h"
#include "Plugins/SparkplugMqtt/SampleQueue.h"
#include "Plugins/SparkplugMqtt/SparkplugOutputMap.h"
#include "Tests/Support/TestFrames.h"

#include <benchmark/benchmark.h>

#include <pb_encode.h>
#include <sparkplug_b.pb.h>

#include <array>
#include <string>

namespace
{

using namespace SparkplugMqtt;
using ZuTest::TestBatch;
using ZuTest::TestFrame;

constexpr int METRICS = 20;

/// A service with an output for each metric, and two frames in which all values differ.
struct Service
{
    Service()
    {
        map.RemoveAll();
        for (int i = 0; i < METRICS; ++i)
        {
            std::string const name = "output" + std::to_string(100 + i);
            ZuControl::ControlProtocol::TextIdStandardOutputItemArgs item;
            item.outputId.Set(name);
            item.source.Set("profile/" + name);
            map.Add(item);
            frames[0].Measurement("profile/" + name, i);
            frames[1].Measurement("profile/" + name, i + 0.5);
        }
        for (std::size_t i = 0; i < frames.size(); ++i)
        {
            frames[i].Stamp("profile/stamp", {0, i, 1'000'000 + i, 0, 0});
            batches[i].Add(frames[i]);
        }
        outputs.Install(map);
    }

    SparkplugOutputMap map;
    SampleQueue queue{[] {}};
    OutputMetrics outputs{queue};
    std::array<TestFrame, 2> frames;
    std::array<TestBatch, 2> batches;
};

void Handler(benchmark::State& state)
{
    Service service;
    Sample sample;
    std::size_t next = 0;
    for (auto _ : state)
    {
        service.outputs.Process(service.batches[next].List(), 1'700'000'000'000);
        next = 1 - next;
    }
    state.counters["bytes"] =
        service.queue.Take(sample) ? static_cast<double>(sample.metrics.size()) / METRICS : 0.0; // of a metric
}
BENCHMARK(Handler)->Name("Sparkplug/Frame/Handler");

bool EncodeMetrics(pb_ostream_t* stream, pb_field_t const* field, void* const* argument)
{
    double const base = *static_cast<double const*>(*argument);
    for (int i = 0; i < METRICS; ++i)
    {
        sparkplug_b_Metric metric = sparkplug_b_Metric_init_zero;
        metric.has_alias = true;
        metric.alias = OutputMetrics::FIRST_HASHED_ALIAS + static_cast<uint64>(i);
        metric.has_timestamp = true;
        metric.timestamp = 1'700'000'000'000;
        metric.which_value = sparkplug_b_Metric_double_value_tag;
        metric.value.double_value = base + i;
        if (!pb_encode_tag_for_field(stream, field) ||
            !pb_encode_submessage(stream, sparkplug_b_Metric_fields, &metric))
        {
            return false;
        }
    }
    return true;
}

void ByHand(benchmark::State& state)
{
    std::array<pb_byte_t, 4096> buffer;
    double base = 0;
    for (auto _ : state)
    {
        base = 0.5 - base;
        sparkplug_b_Payload payload = sparkplug_b_Payload_init_zero;
        payload.has_timestamp = true;
        payload.timestamp = 1'700'000'000'000;
        payload.metrics.funcs.encode = EncodeMetrics;
        payload.metrics.arg = &base;
        payload.has_seq = true;
        payload.seq = 5;
        pb_ostream_t stream = pb_ostream_from_buffer(buffer.data(), buffer.size());
        bool const isDone = pb_encode(&stream, sparkplug_b_Payload_fields, &payload);
        benchmark::DoNotOptimize(isDone);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(ByHand)->Name("Sparkplug/Frame/ByHand");

} // namespace

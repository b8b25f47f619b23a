#include "Plugins/SparkplugMqtt/CommandPayload.h"

#include <pb_decode.h>
#include <sparkplug_b.pb.h>

#include <string_view>

namespace SparkplugMqtt
{

namespace
{

bool DecodeName(pb_istream_t* stream, pb_field_t const* /*field*/, void** argument)
{
    auto& name = *static_cast<std::string*>(*argument);
    if (stream->bytes_left > CommandLimits::LONGEST_NAME)
    {
        return false;
    }
    name.resize(stream->bytes_left);
    return pb_read(stream, reinterpret_cast<pb_byte_t*>(name.data()), name.size());
}

void TakeValue(CommandMetric& metric, sparkplug_b_Metric const& message)
{
    if (message.has_is_null && message.is_null)
    {
        return;
    }
    switch (message.which_value)
    {
    case sparkplug_b_Metric_int_value_tag:
        metric.value = static_cast<uint64>(message.value.int_value);
        break;
    case sparkplug_b_Metric_long_value_tag:
        metric.value = static_cast<uint64>(message.value.long_value);
        break;
    case sparkplug_b_Metric_float_value_tag:
        metric.value = static_cast<double>(message.value.float_value);
        break;
    case sparkplug_b_Metric_double_value_tag:
        metric.value = message.value.double_value;
        break;
    case sparkplug_b_Metric_boolean_value_tag:
        metric.value = message.value.boolean_value;
        break;
    case sparkplug_b_Metric_string_value_tag:
        metric.value = std::string(message.value.string_value);
        break;
    default:
        break;
    }
}

bool DecodeMetric(pb_istream_t* stream, pb_field_t const* /*field*/, void** argument)
{
    auto& metrics = *static_cast<std::vector<CommandMetric>*>(*argument);
    if (metrics.size() == CommandLimits::MOST_METRICS)
    {
        return false;
    }
    CommandMetric metric;
    sparkplug_b_Metric message = sparkplug_b_Metric_init_zero;
    static_assert(sizeof(message.value.string_value) == CommandLimits::LONGEST_TEXT + 1);
    message.name.funcs.decode = DecodeName;
    message.name.arg = &metric.name;
    if (!pb_decode(stream, sparkplug_b_Metric_fields, &message))
    {
        return false;
    }
    if (message.has_alias)
    {
        metric.alias = message.alias;
    }
    TakeValue(metric, message);
    metrics.push_back(std::move(metric));
    return true;
}

} // namespace

bool DecodeCommand(std::span<uint8 const> payload, std::vector<CommandMetric>& metrics)
{
    metrics.clear();
    sparkplug_b_Payload message = sparkplug_b_Payload_init_zero;
    message.metrics.funcs.decode = DecodeMetric;
    message.metrics.arg = &metrics;
    pb_istream_t stream = pb_istream_from_buffer(payload.data(), payload.size());
    bool const isDecoded =
        payload.size() <= CommandLimits::MOST_BYTES && pb_decode(&stream, sparkplug_b_Payload_fields, &message);
    if (!isDecoded)
    {
        metrics.clear();
    }
    return isDecoded;
}

} // namespace SparkplugMqtt

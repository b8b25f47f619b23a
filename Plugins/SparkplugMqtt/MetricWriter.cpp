#include "Plugins/SparkplugMqtt/MetricWriter.h"

#include <pb_encode.h>
#include <sparkplug_b.pb.h>

#include <algorithm>

namespace SparkplugMqtt
{

namespace
{

constexpr std::string_view QUALITY_KEY = "Quality"; // the standard's; the others are those that hosts commonly know
constexpr std::string_view UNIT_KEY = "engUnit";
constexpr std::string_view LOW_KEY = "engLow";
constexpr std::string_view HIGH_KEY = "engHigh";
constexpr uint8 METRICS_TAG = sparkplug_b_Payload_metrics_tag << 3 | PB_WT_STRING;
constexpr uint8 TIMESTAMP_TAG = sparkplug_b_Payload_timestamp_tag << 3 | PB_WT_VARINT;
constexpr uint8 SEQ_TAG = sparkplug_b_Payload_seq_tag << 3 | PB_WT_VARINT;
constexpr uint8 ALIAS_TAG = sparkplug_b_Metric_alias_tag << 3 | PB_WT_VARINT;
constexpr uint8 HISTORICAL_TAG = sparkplug_b_Metric_is_historical_tag << 3 | PB_WT_VARINT;

bool EncodeText(pb_ostream_t* stream, pb_field_t const* field, std::string_view text)
{
    return pb_encode_tag_for_field(stream, field) &&
           pb_encode_string(stream, reinterpret_cast<pb_byte_t const*>(text.data()), text.size());
}

bool EncodeName(pb_ostream_t* stream, pb_field_t const* field, void* const* argument)
{
    return EncodeText(stream, field, *static_cast<std::string_view const*>(*argument));
}

/// The text, cut off between two characters of UTF-8 if it is too long.
std::string_view WithinLimit(std::string_view text, std::size_t most)
{
    std::size_t length = std::min(text.size(), most);
    while (length > 0 && length < text.size() && (static_cast<uint8>(text[length]) & 0xC0) == 0x80)
    {
        --length;
    }
    return text.substr(0, length);
}

bool EncodeKeys(pb_ostream_t* stream, pb_field_t const* field, void* const* argument)
{
    auto const& metric = *static_cast<Metric const*>(*argument);
    return (!metric.quality.has_value() || EncodeText(stream, field, QUALITY_KEY)) &&
           (metric.unit.empty() || EncodeText(stream, field, UNIT_KEY)) &&
           (!metric.limits.has_value() || (EncodeText(stream, field, LOW_KEY) && EncodeText(stream, field, HIGH_KEY)));
}

bool EncodeProperty(pb_ostream_t* stream, pb_field_t const* field, DataType type, sparkplug_b_PropertyValue& value)
{
    value.has_type = true;
    value.type = static_cast<uint32>(type);
    return pb_encode_tag_for_field(stream, field) &&
           pb_encode_submessage(stream, sparkplug_b_PropertyValue_fields, &value);
}

bool EncodeNumber(pb_ostream_t* stream, pb_field_t const* field, double number)
{
    sparkplug_b_PropertyValue value = sparkplug_b_PropertyValue_init_zero;
    value.which_value = sparkplug_b_PropertyValue_double_value_tag;
    value.value.double_value = number;
    return EncodeProperty(stream, field, DataType::DOUBLE, value);
}

bool EncodeQuality(pb_ostream_t* stream, pb_field_t const* field, Quality quality)
{
    sparkplug_b_PropertyValue value = sparkplug_b_PropertyValue_init_zero;
    value.which_value = sparkplug_b_PropertyValue_int_value_tag;
    value.value.int_value = static_cast<uint32>(quality);
    return EncodeProperty(stream, field, DataType::INT32, value);
}

bool EncodeUnit(pb_ostream_t* stream, pb_field_t const* field, std::string_view unit)
{
    sparkplug_b_PropertyValue value = sparkplug_b_PropertyValue_init_zero;
    static_assert(sizeof(value.value.string_value) == MetricWriter::LONGEST_UNIT + 1);
    value.which_value = sparkplug_b_PropertyValue_string_value_tag;
    *std::ranges::copy(WithinLimit(unit, MetricWriter::LONGEST_UNIT), value.value.string_value).out = '\0';
    return EncodeProperty(stream, field, DataType::STRING, value);
}

/// The values, in the order of the keys.
bool EncodeValues(pb_ostream_t* stream, pb_field_t const* field, void* const* argument)
{
    auto const& metric = *static_cast<Metric const*>(*argument);
    return (!metric.quality.has_value() || EncodeQuality(stream, field, *metric.quality)) &&
           (metric.unit.empty() || EncodeUnit(stream, field, metric.unit)) &&
           (!metric.limits.has_value() ||
            (EncodeNumber(stream, field, metric.limits->low) && EncodeNumber(stream, field, metric.limits->high)));
}

void SetProperties(sparkplug_b_Metric& message, Metric const& metric)
{
    message.has_properties = true;
    message.properties.keys.funcs.encode = EncodeKeys;
    message.properties.keys.arg = const_cast<Metric*>(&metric); // the encoder only reads it
    message.properties.values.funcs.encode = EncodeValues;
    message.properties.values.arg = const_cast<Metric*>(&metric);
}

/// Sets the value of a message from the alternative of a variant.
class ValueSetter final
{
public:
    explicit ValueSetter(sparkplug_b_Metric& setMessage) : message(setMessage)
    {
    }

    void operator()(std::monostate) const
    {
        message.has_is_null = true;
        message.is_null = true;
    }

    void operator()(bool value) const
    {
        message.which_value = sparkplug_b_Metric_boolean_value_tag;
        message.value.boolean_value = value;
    }

    void operator()(uint32 value) const
    {
        message.which_value = sparkplug_b_Metric_int_value_tag;
        message.value.int_value = value;
    }

    void operator()(uint64 value) const
    {
        message.which_value = sparkplug_b_Metric_long_value_tag;
        message.value.long_value = value;
    }

    void operator()(double value) const
    {
        message.which_value = sparkplug_b_Metric_double_value_tag;
        message.value.double_value = value;
    }

    void operator()(std::string_view value) const
    {
        static_assert(sizeof(message.value.string_value) == MetricWriter::LONGEST_TEXT + 1);
        message.which_value = sparkplug_b_Metric_string_value_tag;
        *std::ranges::copy(WithinLimit(value, MetricWriter::LONGEST_TEXT), message.value.string_value).out = '\0';
    }

private:
    sparkplug_b_Metric& message;
};

/// Sets all fields that the encoder reads. The rest of the record stays as it is: its long text would cost more to set
/// than the metric to encode.
void Fill(sparkplug_b_Metric& message, Metric const& metric)
{
    message.name.funcs.encode = metric.name.empty() ? nullptr : EncodeName;
    message.name.arg = const_cast<std::string_view*>(&metric.name);
    message.has_alias = metric.alias.has_value();
    message.alias = metric.alias.value_or(0);
    message.has_timestamp = true;
    message.timestamp = metric.timestampMsec;
    message.has_datatype = metric.type.has_value();
    message.datatype = static_cast<uint32>(metric.type.value_or(DataType{}));
    message.has_is_historical = false;
    message.has_is_transient = false;
    message.has_is_null = false;
    message.has_properties = false;
    message.which_value = 0;
    if (metric.quality.has_value() || !metric.unit.empty() || metric.limits.has_value())
    {
        SetProperties(message, metric);
    }
    std::visit(ValueSetter(message), metric.value);
}

void AppendVarint(std::vector<uint8>& bytes, uint64 number)
{
    for (; number >= 0x80; number >>= 7)
    {
        bytes.push_back(static_cast<uint8>(number | 0x80));
    }
    bytes.push_back(static_cast<uint8>(number));
}

/// Takes a varint off the begin of `bytes`. Returns false if there is none.
bool TakeVarint(std::span<uint8 const>& bytes, uint64& number)
{
    number = 0;
    for (unsigned shift = 0; shift < 64 && !bytes.empty(); shift += 7)
    {
        uint8 const byte = bytes.front();
        bytes = bytes.subspan(1);
        number |= static_cast<uint64>(byte & 0x7F) << shift;
        if ((byte & 0x80) == 0)
        {
            return true;
        }
    }
    return false;
}

} // namespace

MetricWriter::MetricWriter(std::size_t mostBytes) : buffer(mostBytes)
{
}

void MetricWriter::Clear()
{
    size = 0;
    count = 0;
}

bool MetricWriter::Add(Metric const& metric)
{
    sparkplug_b_Metric message; // `Fill` sets all that is read
    Fill(message, metric);
    pb_ostream_t stream = pb_ostream_from_buffer(buffer.data() + size, buffer.size() - size);
    if (!pb_encode_tag(&stream, PB_WT_STRING, sparkplug_b_Payload_metrics_tag) ||
        !pb_encode_submessage(&stream, sparkplug_b_Metric_fields, &message))
    {
        return false;
    }
    size += stream.bytes_written;
    ++count;
    return true;
}

void FramePayload(std::vector<uint8>& payload, uint64 timestampMsec, std::span<uint8 const> metrics,
                  std::optional<uint8> seq)
{
    payload.clear();
    payload.push_back(TIMESTAMP_TAG);
    AppendVarint(payload, timestampMsec);
    payload.insert(payload.end(), metrics.begin(), metrics.end());
    if (seq.has_value())
    {
        payload.push_back(SEQ_TAG);
        AppendVarint(payload, *seq);
    }
}

std::optional<std::size_t> MarkHistorical(std::vector<uint8>& marked, std::span<uint8 const> metrics,
                                          std::span<uint64 const> aliases)
{
    static constexpr uint8 MARK[] = {HISTORICAL_TAG, 1};
    std::size_t leftOut = 0;
    marked.clear();
    while (!metrics.empty())
    {
        bool const isMetric = metrics.front() == METRICS_TAG;
        metrics = metrics.subspan(1);
        uint64 length = 0;
        if (!isMetric || !TakeVarint(metrics, length) || length > metrics.size() || length == 0)
        {
            return std::nullopt;
        }
        std::span<uint8 const> const metric = metrics.first(length);
        metrics = metrics.subspan(length);
        std::span<uint8 const> behindTag = metric.subspan(1);
        uint64 alias = 0;
        if (metric.front() != ALIAS_TAG || !TakeVarint(behindTag, alias))
        {
            return std::nullopt;
        }
        if (!std::ranges::binary_search(aliases, alias))
        {
            ++leftOut;
            continue;
        }
        marked.push_back(METRICS_TAG);
        AppendVarint(marked, length + std::size(MARK));
        marked.insert(marked.end(), metric.begin(), metric.end());
        marked.insert(marked.end(), std::begin(MARK), std::end(MARK));
    }
    return leftOut;
}

} // namespace SparkplugMqtt

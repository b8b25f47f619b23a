#pragma once

#include "Plugins/SparkplugMqtt/Metric.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace SparkplugMqtt
{

/// Encodes metrics into a buffer of fixed size. The bytes are the field "metrics" of a payload: timestamp and sequence
/// number are added when the message is sent, by `FramePayload`.
///
/// Only the constructor allocates.
class MetricWriter final
{
public:
    static constexpr std::size_t LONGEST_TEXT = 255; ///< bytes of a text value; the rest is cut off
    static constexpr std::size_t LONGEST_UNIT = 31;  ///< the same for a unit

    explicit MetricWriter(std::size_t mostBytes);

    /// Removes all metrics.
    void Clear();

    /// Appends a metric. Returns false and appends nothing if it does not fit.
    bool Add(Metric const& metric);

    std::span<uint8 const> Bytes() const
    {
        return std::span(buffer).first(size);
    }

    std::size_t Count() const
    {
        return count;
    }

private:
    std::vector<uint8> buffer;
    std::size_t size = 0;
    std::size_t count = 0;
};

/// Sets `payload` to a message with these metrics, the bytes of a MetricWriter. A death certificate of a node has no
/// sequence number. Allocates only if the capacity of `payload` does not suffice.
void FramePayload(std::vector<uint8>& payload, uint64 timestampMsec, std::span<uint8 const> metrics,
                  std::optional<uint8> seq);

/// Sets `marked` to the same metrics with the mark "is_historical". `metrics` are the bytes of a MetricWriter, of metrics
/// with an alias and without a name. Metrics with an alias that is not in `aliases`, a sorted list, are left out. Returns
/// their number; absent, with `marked` in an undefined state, if the bytes are no such metrics.
std::optional<std::size_t> MarkHistorical(std::vector<uint8>& marked, std::span<uint8 const> metrics,
                                          std::span<uint64 const> aliases);

} // namespace SparkplugMqtt

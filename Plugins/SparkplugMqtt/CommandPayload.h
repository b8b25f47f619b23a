#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace SparkplugMqtt
{

/// One metric of a received command: what it names and the value to write.
struct CommandMetric
{
    std::string name; ///< empty if the metric has an alias only
    std::optional<uint64> alias;
    /// `std::monostate` for null and for values of other kinds than these. Integers of all sizes are one kind.
    std::variant<std::monostate, bool, uint64, double, std::string> value;

    bool operator==(CommandMetric const&) const = default;
};

/// The limits of a received payload. A payload beyond one of them is refused as a whole.
struct CommandLimits
{
    static constexpr std::size_t MOST_BYTES = 64 * 1024;
    static constexpr std::size_t MOST_METRICS = 64;
    static constexpr std::size_t LONGEST_NAME = 255;
    static constexpr std::size_t LONGEST_TEXT = 255;
};

/// Decodes the payload of a command message (NCMD or DCMD). Returns false, and leaves `metrics` empty, if the bytes are
/// no such payload or exceed `CommandLimits`. Memory beyond the limits is never allocated.
bool DecodeCommand(std::span<uint8 const> payload, std::vector<CommandMetric>& metrics);

} // namespace SparkplugMqtt

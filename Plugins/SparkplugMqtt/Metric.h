#pragma once

#include "Plugins/SparkplugMqtt/SourceLimits.h"
#include "wApi/wTypes.h"

#include <optional>
#include <string_view>
#include <variant>

namespace SparkplugMqtt
{

/// The data types that this node sends or takes, with their numbers in payloads. The numbers of the node are UINT64:
/// host applications disagree on the field of a payload that has an UINT32.
enum class DataType : uint32
{
    INT32 = 3,
    INT64 = 4,
    UINT32 = 7,
    UINT64 = 8,
    DOUBLE = 10,
    BOOLEAN = 11,
    STRING = 12
};

/// The value of a metric in memory; no alternative but `std::monostate` is the value null. Signed numbers are kept as
/// the unsigned number of the same bits, which is also their form in payloads.
using MetricValue = std::variant<std::monostate, bool, uint32, uint64, double, std::string_view>;

/// The codes of the property "Quality".
enum class Quality : uint32
{
    BAD = 0,
    GOOD = 192
};

/// One metric of a message. It refers to its texts and does not own them.
struct Metric
{
    std::string_view name;        ///< not written if empty
    std::optional<uint64> alias;  ///< not written if absent
    uint64 timestampMsec = 0;     ///< UTC
    std::optional<DataType> type; ///< written in births only
    MetricValue value;            ///< null: written as "is_null", without a value

    // The properties. Each is not written if it is absent or empty.

    std::optional<Quality> quality = {};
    std::string_view unit = {};
    std::optional<ValueLimits> limits = {};
};

} // namespace SparkplugMqtt

#pragma once

#include "wApi/wTypes.h"

#include <optional>
#include <string_view>

namespace SparkplugMqtt
{

/// The content of a STATE message of a host application.
struct HostState
{
    bool isOnline = false;
    uint64 timestampMsec = 0; ///< UTC, of the host's connection

    bool operator==(HostState const&) const = default;
};

/// Reads the JSON object of a STATE message. Absent if the text is no such object, if "online" is no boolean, if
/// "timestamp" is no number from 0, or beyond 1 KiB.
std::optional<HostState> ReadHostState(std::string_view payload);

} // namespace SparkplugMqtt

#include "Plugins/SparkplugMqtt/HostState.h"

#include <nlohmann/json.hpp>

#include <cstddef>

namespace SparkplugMqtt
{

std::optional<HostState> ReadHostState(std::string_view payload)
{
    constexpr std::size_t MOST_BYTES = 1024; // also bounds the depth that the parser has to follow
    if (payload.size() > MOST_BYTES)
    {
        return std::nullopt;
    }
    nlohmann::json const document = nlohmann::json::parse(payload, nullptr, false);
    if (!document.is_object())
    {
        return std::nullopt;
    }
    auto const online = document.find("online");
    auto const timestamp = document.find("timestamp");
    bool const isComplete = online != document.end() && online->is_boolean() && timestamp != document.end() &&
                            timestamp->is_number_unsigned();
    return isComplete ? std::optional(HostState{online->get<bool>(), timestamp->get<uint64>()}) : std::nullopt;
}

} // namespace SparkplugMqtt

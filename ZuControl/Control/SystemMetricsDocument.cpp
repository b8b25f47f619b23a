#include "ZuControl/Control/SystemMetricsDocument.h"

#include "ZuControl/Control/JsonNumber.h"

#include <nlohmann/json.hpp>

namespace ZuControl::SystemMetricsDocument
{

namespace
{

constexpr uint64 NOT_TOLD = ~uint64{0};

uint64 TimeIn(nlohmann::json const& document, char const* key)
{
    nlohmann::json const* const value = JsonNumber::FindPresent(document, key);
    return value != nullptr ? JsonNumber::ToUint64(*value) : NOT_TOLD;
}

} // namespace

void Read(nlohmann::json const& document, IControlSystemInterface::SystemStats& stats)
{
    stats.upTime = TimeIn(document, "upTime");
    stats.appUpTime = TimeIn(document, "appUpTime");
    stats.linkStatus.clear();
    stats.linkCapacity.clear();
    nlohmann::json const* const interfaces = JsonNumber::FindPresent(document, "networkIfs");
    if (interfaces == nullptr)
    {
        return;
    }
    nlohmann::json const* const linkStatus = JsonNumber::FindPresent(*interfaces, "linkStatus");
    nlohmann::json const* const linkCapacity = JsonNumber::FindPresent(*interfaces, "linkCapacity");
    std::size_t const count = linkStatus != nullptr ? linkStatus->size() : 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        stats.linkStatus.push_back(JsonNumber::ToUint32(linkStatus->at(i)));
    }
    // As many capacities as there are states: an entry without a state is no interface.
    for (std::size_t i = 0; linkCapacity != nullptr && i < count; ++i)
    {
        stats.linkCapacity.push_back(JsonNumber::ToUint64(linkCapacity->at(i)));
    }
}

} // namespace ZuControl::SystemMetricsDocument

#include "ZuControl/Control/StateDocuments.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

namespace ZuControl::JsonNumber
{

namespace
{

constexpr double TWO_TO_63 = 9223372036854775808.0;

int64 SignedOf(double number)
{
    if (std::isnan(number))
    {
        return 0;
    }
    if (number >= TWO_TO_63)
    {
        return std::numeric_limits<int64>::max();
    }
    return number < -TWO_TO_63 ? std::numeric_limits<int64>::min() : static_cast<int64>(number);
}

uint64 UnsignedOf(double number)
{
    if (number < TWO_TO_63 || std::isnan(number))
    {
        return static_cast<uint64>(SignedOf(number)); // by way of the signed range, also for negative numbers
    }
    return number >= 2 * TWO_TO_63 ? std::numeric_limits<uint64>::max() : static_cast<uint64>(number);
}

} // namespace

nlohmann::json const* FindPresent(nlohmann::json const& document, char const* key)
{
    if (!document.is_object())
    {
        return nullptr;
    }
    auto const position = document.find(key);
    return position != document.end() && !position->is_null() ? &*position : nullptr;
}

uint64 ToUint64(nlohmann::json const& value)
{
    return value.is_number_float() ? UnsignedOf(value.get<double>()) : value.get<uint64>();
}

int64 ToInt64(nlohmann::json const& value)
{
    return value.is_number_float() ? SignedOf(value.get<double>()) : value.get<int64>();
}

uint32 ToUint32(nlohmann::json const& value)
{
    return value.is_number_float() ? static_cast<uint32>(SignedOf(value.get<double>())) : value.get<uint32>();
}

} // namespace ZuControl::JsonNumber

namespace ZuControl::ScannerInfoDocument
{

namespace
{

constexpr int64 NO_ENCODER = std::numeric_limits<int64>::min();
constexpr uint64 NO_TIME = ~uint64{0};

} // namespace

void Read(nlohmann::json const& document, IControlScanEngineInterface::ScannerStateInfo& info)
{
    nlohmann::json const* const laser = JsonNumber::FindPresent(document, "laserEnabled");
    info.laserEnabled = laser == nullptr || laser->get<bool>();
    nlohmann::json const* const encoder = JsonNumber::FindPresent(document, "currentEncoderValue");
    info.currentEncoderValue = encoder != nullptr ? JsonNumber::ToInt64(*encoder) : NO_ENCODER;
    nlohmann::json const* const time = JsonNumber::FindPresent(document, "currentSyncTime");
    info.currentSyncTime = time != nullptr ? (JsonNumber::ToUint64(*time) * 1000) >> 10 : NO_TIME;
}

} // namespace ZuControl::ScannerInfoDocument

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

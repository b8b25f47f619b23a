#include "ZuControl/Control/JsonNumber.h"

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

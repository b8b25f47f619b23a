#pragma once

#include "ZuApi/Params/ScaleOption.h"
#include "ZuApi/Properties/Value.h"

#include <memory>
#include <string>

namespace Zu::Params::Internal
{

/// What few parameters have: the attributes that are enabled one by one. One is enabled exactly when it is there.
template <typename T>
struct OptionalAttributes
{
    T rejectedValue{}; ///< last presented to a read-only parameter
    std::unique_ptr<Properties::Value<std::string>> units;
    std::unique_ptr<Properties::Value<std::string>> description;
    std::unique_ptr<Properties::Value<T>> actual;
    std::unique_ptr<Properties::Value<T>> minimum;
    std::unique_ptr<Properties::Value<T>> maximum;
    std::unique_ptr<Properties::Value<T>> exclusiveMinimum;
    std::unique_ptr<Properties::Value<T>> exclusiveMaximum;
    std::unique_ptr<Properties::Value<ScaleOption>> scale;
    std::unique_ptr<Properties::Value<std::string>> extendedType;
    std::unique_ptr<Properties::Value<std::string>> format;
};

} // namespace Zu::Params::Internal

#pragma once

#include "ZuApi/Params/ScaleOption.h"
#include "ZuApi/Properties/Value.h"

#include <memory>
#include <string>

namespace Zu::Params::Internal
{

/// The attributes that few parameters have. Each is enabled separately: it is enabled exactly while its pointer is not
/// null.
template <typename T>
struct OptionalAttributes
{
    T rejectedValue{}; ///< the last value that a read-only parameter rejected
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

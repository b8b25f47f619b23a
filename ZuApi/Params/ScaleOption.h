#pragma once

#include "wApi/wTypes.h"

namespace Zu::Params
{

/// How a client may scale a parameter for display. The parameter model only passes it on.
enum class ScaleOption : uint32
{
    NONE = 0,
    LINEAR = 1, ///< the initial value when the scale is enabled
};

} // namespace Zu::Params

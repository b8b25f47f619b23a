#pragma once

#include "wApi/wTypes.h"

namespace Zu::Params
{

/// How a client may scale a parameter for display; the model itself passes it on.
enum class ScaleOption : uint32
{
    NONE = 0,
    LINEAR = 1, ///< what a parameter has as soon as its scale is enabled
};

} // namespace Zu::Params

#pragma once

#include "wApi/wTypes.h"

namespace ZuCommon
{

/// The owner of a stored setting. Other values are passed on unchanged.
enum class PersistDomain : int32
{
    PROTOCOL = 1, ///< the protocol, independent of the loaded job
    JOB = 2       ///< the loaded job
};

} // namespace ZuCommon

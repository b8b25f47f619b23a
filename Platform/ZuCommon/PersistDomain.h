#pragma once

#include "wApi/wTypes.h"

namespace ZuCommon
{

/// What a stored setting belongs to. Values other than these are passed on as they are.
enum class PersistDomain : int32
{
    PROTOCOL = 1, ///< the protocol itself, whatever job is loaded
    JOB = 2       ///< the job that is loaded
};

} // namespace ZuCommon

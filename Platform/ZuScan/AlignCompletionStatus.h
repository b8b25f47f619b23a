#pragma once

#include "wApi/wTypes.h"

namespace ZuScan
{

/// The result of an alignment.
enum class AlignCompletionStatus : int32
{
    SUCCESS = 0,
    FAILED = 1,
    CANCELLED = 2
};

} // namespace ZuScan

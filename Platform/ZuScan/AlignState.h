#pragma once

#include "wApi/wTypes.h"

namespace ZuScan
{

/// The alignment state of a scanner.
enum class AlignState : uint32
{
    NOT_ALIGNED = 0,
    ALIGNING = 1,
    ALIGNED = 2
};

} // namespace ZuScan

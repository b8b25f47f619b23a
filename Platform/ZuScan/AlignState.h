#pragma once

#include "wApi/wTypes.h"

namespace ZuScan
{

/// How far the alignment of a scanner has come.
enum class AlignState : uint32
{
    NOT_ALIGNED = 0,
    ALIGNING = 1,
    ALIGNED = 2
};

} // namespace ZuScan

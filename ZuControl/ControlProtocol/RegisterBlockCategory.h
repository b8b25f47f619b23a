#pragma once

#include "ZuApi/Params/Enum.h"
#include "wApi/wTypes.h"

namespace ZuControl::ControlProtocol
{

/// The kind of data in a register block.
enum RegisterBlockCategory : uint8
{
    BlockCategoryUnknown = 0,
    BlockCategoryControlInput = 1,
    BlockCategoryControlOutput = 2,
    BlockCategorySystem = 3,
    BlockCategoryScanner = 4,
    BlockCategoryStamp = 5,
    BlockCategoryMeasurement = 6
};

} // namespace ZuControl::ControlProtocol

ZU_DECLARE_ENUM_VALUE(ZuControl::ControlProtocol::RegisterBlockCategory);

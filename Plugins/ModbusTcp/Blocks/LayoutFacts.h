#pragma once

#include "wApi/wTypes.h"

namespace ModbusTcp
{

/// The source of the blocks whose content follows from the layout of the registers.
struct LayoutFacts
{
    uint32 fingerprint = 0; ///< of the service; 0 while no block shows it
};

} // namespace ModbusTcp

#pragma once

#include "ZuControl/ControlProtocol/RegisterEncoder.h"
#include "wApi/wTypes.h"

#include <concepts>

namespace ZuControl::ControlProtocol
{

/// An encoder with a layout that is known at compile time.
template <uint8 BYTES_PER_REGISTER, bool IS_BIG_ENDIAN>
struct KnownLayout final
{
    template <std::integral T>
    static void Write(uint8* where, T value) noexcept
    {
        RegisterEncoder(BYTES_PER_REGISTER, IS_BIG_ENDIAN).Write(where, value);
    }
};

/// Calls `writeFields` once, with the encoder of this layout, so that the layout is chosen once for several fields.
/// Calls nothing for a register size other than 1 and 2.
template <typename WriteFields>
void WithLayout(uint8 bytesPerRegister, bool isBigEndian, WriteFields const& writeFields)
{
    if (bytesPerRegister == 2)
    {
        isBigEndian ? writeFields(KnownLayout<2, true>()) : writeFields(KnownLayout<2, false>());
    }
    else if (bytesPerRegister == 1)
    {
        isBigEndian ? writeFields(KnownLayout<1, true>()) : writeFields(KnownLayout<1, false>());
    }
}

} // namespace ZuControl::ControlProtocol

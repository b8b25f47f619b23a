#pragma once

#include "ZuControl/ControlProtocol/RegisterEncoder.h"
#include "wApi/wTypes.h"

#include <concepts>

namespace ZuControl::ControlProtocol
{

/// An encoder whose layout the compiler knows.
template <uint8 BYTES_PER_REGISTER, bool IS_BIG_ENDIAN>
struct KnownLayout final
{
    template <std::integral T>
    static void Write(uint8* where, T value) noexcept
    {
        RegisterEncoder(BYTES_PER_REGISTER, IS_BIG_ENDIAN).Write(where, value);
    }
};

/// Calls `writeFields` once, with the encoder of this layout: what writes several fields does not ask for the layout again
/// with each of them. Nothing is called for a register size that no value can be written with.
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

#pragma once

#include "wApi/wTypes.h"

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace ZuControl::ControlProtocol
{

/// Writes integers into a protocol's registers. The layout is chosen once for all values of a record.
///
/// On a big-endian protocol the most significant register comes first, and within a register of two bytes the low byte
/// comes first: 0x11223344 is 11 22 33 44 in registers of one byte and 22 11 44 33 in registers of two. On a
/// little-endian protocol the low byte is first throughout. No bounds checks: the caller guarantees that all fields
/// fit.
class RegisterEncoder final
{
public:
    /// With `bytesPerRegister` other than 1 and 2 the encoder must not write.
    constexpr RegisterEncoder(uint8 bytesPerRegister, bool isBigEndian) noexcept
        : layout(!isBigEndian            ? Layout::LOW_BYTE_FIRST
                 : bytesPerRegister == 2 ? Layout::HIGH_REGISTER_FIRST
                                         : Layout::HIGH_BYTE_FIRST),
          bytes(bytesPerRegister)
    {
    }

    static constexpr bool IsUsable(uint8 bytesPerRegister) noexcept
    {
        return bytesPerRegister == 1 || bytesPerRegister == 2;
    }

    /// The bytes that a value of `valueSize` bytes takes: a whole register at least.
    constexpr std::size_t WidthOf(std::size_t valueSize) const noexcept
    {
        return valueSize < bytes ? bytes : valueSize;
    }

    /// Writes `value` as a whole number of registers. A byte is widened to a register of two bytes by its own type:
    /// with zeros when unsigned and with sign bits when signed.
    template <std::integral T>
    void Write(uint8* where, T value) const noexcept
    {
        if constexpr (sizeof(T) == 1)
        {
            if (bytes == 2)
            {
                using Wide = std::conditional_t<std::is_signed_v<T>, int16, uint16>;
                WriteExact(where, static_cast<uint16>(static_cast<Wide>(value)));
                return;
            }
        }
        WriteExact(where, static_cast<std::make_unsigned_t<T>>(value));
    }

    /// Writes the bytes of `value` alone. A byte does not fill a register of two: a big-endian protocol then writes
    /// nothing.
    template <std::unsigned_integral T>
    void WriteExact(uint8* where, T value) const noexcept
    {
        if constexpr (sizeof(T) == 1)
        {
            if (layout != Layout::HIGH_REGISTER_FIRST)
            {
                *where = value;
            }
        }
        else
        {
            T const arranged = Arranged(value);
            std::memcpy(where, &arranged, sizeof arranged);
        }
    }

private:
    enum class Layout : uint8
    {
        LOW_BYTE_FIRST,
        HIGH_BYTE_FIRST,
        HIGH_REGISTER_FIRST // registers of two bytes, the low byte first within each
    };

    static constexpr uint16 SwappedBytes(uint16 value) noexcept
    {
        return __builtin_bswap16(value);
    }

    static constexpr uint32 SwappedBytes(uint32 value) noexcept
    {
        return __builtin_bswap32(value);
    }

    static constexpr uint64 SwappedBytes(uint64 value) noexcept
    {
        return __builtin_bswap64(value);
    }

    static constexpr uint16 SwappedWords(uint16 value) noexcept
    {
        return value;
    }

    static constexpr uint32 SwappedWords(uint32 value) noexcept
    {
        return std::rotl(value, 16);
    }

    static constexpr uint64 SwappedWords(uint64 value) noexcept
    {
        constexpr uint64 EVEN_WORDS = 0x0000FFFF0000FFFF;
        uint64 const halves = std::rotl(value, 32);
        return ((halves & EVEN_WORDS) << 16) | ((halves >> 16) & EVEN_WORDS);
    }

    /// The value that has the bytes of the registers in memory.
    template <std::unsigned_integral T>
    constexpr T Arranged(T value) const noexcept
    {
        T const lowFirst = layout == Layout::HIGH_BYTE_FIRST       ? SwappedBytes(value)
                           : layout == Layout::HIGH_REGISTER_FIRST ? SwappedWords(value)
                                                                   : value;
        return std::endian::native == std::endian::little ? lowFirst : SwappedBytes(lowFirst);
    }

    Layout layout;
    uint8 bytes; // of one register
};

} // namespace ZuControl::ControlProtocol

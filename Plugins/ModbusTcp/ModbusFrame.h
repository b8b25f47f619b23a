#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <span>

namespace ModbusTcp
{

/// Modbus sends 16-bit numbers high byte first, whatever order the registers have among themselves.
inline uint16 ReadBigEndian16(uint8 const* bytes)
{
    return static_cast<uint16>((bytes[0] << 8) | bytes[1]);
}

inline void WriteBigEndian16(uint8* bytes, uint16 value)
{
    bytes[0] = static_cast<uint8>(value >> 8);
    bytes[1] = static_cast<uint8>(value & 0xFF);
}

/// One message on the wire: the 7 bytes of header (transaction, protocol, length, unit) and a protocol data unit of 1 to
/// 253 bytes, which begins with the function code. Refers to the bytes it was parsed from.
struct ModbusFrame
{
    static constexpr std::size_t HEADER_BYTES = 7;
    static constexpr std::size_t MAX_PDU_BYTES = 253;
    static constexpr std::size_t MAX_BYTES = HEADER_BYTES + MAX_PDU_BYTES;

    enum class Parsed
    {
        COMPLETE,
        INCOMPLETE, ///< so far nothing is wrong, but more bytes are needed
        MALFORMED   ///< no later byte can mend it: the stream has lost its frames
    };

    /// Reads the frame that `bytes` begin with. `frame` is filled only when it is complete; bytes behind it belong to the
    /// next one. What is wrong is told as early as it can be seen.
    static Parsed Parse(std::span<uint8 const> bytes, ModbusFrame& frame);

    /// Writes the header of an answer to this frame whose protocol data unit has `pduBytes` (1 to MAX_PDU_BYTES) and gives
    /// the bytes of the whole answer.
    std::size_t WriteAnswerHeader(std::span<uint8, HEADER_BYTES> header, std::size_t pduBytes) const;

    std::size_t Bytes() const
    {
        return HEADER_BYTES + pdu.size();
    }

    uint16 transactionId = 0;
    uint8 unitId = 0;
    std::span<uint8 const> pdu;
};

} // namespace ModbusTcp

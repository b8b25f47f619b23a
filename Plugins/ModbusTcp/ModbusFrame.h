#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <span>

namespace ModbusTcp
{

/// Modbus sends 16-bit numbers in big-endian order, independent of the register order.
inline uint16 ReadBigEndian16(uint8 const* bytes)
{
    return static_cast<uint16>((bytes[0] << 8) | bytes[1]);
}

inline void WriteBigEndian16(uint8* bytes, uint16 value)
{
    bytes[0] = static_cast<uint8>(value >> 8);
    bytes[1] = static_cast<uint8>(value & 0xFF);
}

/// A message: a header of 7 bytes (transaction, protocol, length, unit) and a protocol data unit of 1 to 253 bytes that
/// begins with the function code. Refers to the parsed bytes.
struct ModbusFrame
{
    static constexpr std::size_t HEADER_BYTES = 7;
    static constexpr std::size_t MAX_PDU_BYTES = 253;
    static constexpr std::size_t MAX_BYTES = HEADER_BYTES + MAX_PDU_BYTES;

    enum class Parsed
    {
        COMPLETE,
        INCOMPLETE, ///< valid so far, but more bytes are needed
        MALFORMED   ///< no later byte can make it valid: the frame boundaries are lost
    };

    /// Parses the frame at the begin of `bytes`. Fills `frame` only if it is complete; further bytes belong to the next
    /// frame. Reports MALFORMED as soon as a byte shows it.
    static Parsed Parse(std::span<uint8 const> bytes, ModbusFrame& frame);

    /// Writes the header of an answer to this frame. `pduBytes` (1 to MAX_PDU_BYTES) is the size of the answer's
    /// protocol data unit. Returns the size of the whole answer.
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

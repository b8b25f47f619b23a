#include "Plugins/ModbusTcp/ModbusFrame.h"

namespace ModbusTcp
{

namespace
{

constexpr std::size_t PROTOCOL_OFFSET = 2;
constexpr std::size_t LENGTH_OFFSET = 4;
constexpr std::size_t UNIT_OFFSET = 6;
constexpr uint16 MODBUS_PROTOCOL = 0;
constexpr std::size_t UNIT_BYTES = 1; // the length field counts the unit id too

} // namespace

ModbusFrame::Parsed ModbusFrame::Parse(std::span<uint8 const> bytes, ModbusFrame& frame)
{
    if (bytes.size() >= LENGTH_OFFSET && ReadBigEndian16(&bytes[PROTOCOL_OFFSET]) != MODBUS_PROTOCOL)
    {
        return Parsed::MALFORMED;
    }
    if (bytes.size() < UNIT_OFFSET)
    {
        return Parsed::INCOMPLETE;
    }
    std::size_t const length = ReadBigEndian16(&bytes[LENGTH_OFFSET]);
    if (length <= UNIT_BYTES || length > UNIT_BYTES + MAX_PDU_BYTES)
    {
        return Parsed::MALFORMED;
    }
    if (bytes.size() < UNIT_OFFSET + length)
    {
        return Parsed::INCOMPLETE;
    }
    frame.transactionId = ReadBigEndian16(bytes.data());
    frame.unitId = bytes[UNIT_OFFSET];
    frame.pdu = bytes.subspan(HEADER_BYTES, length - UNIT_BYTES);
    return Parsed::COMPLETE;
}

std::size_t ModbusFrame::WriteAnswerHeader(std::span<uint8, HEADER_BYTES> header, std::size_t pduBytes) const
{
    WriteBigEndian16(header.data(), transactionId);
    WriteBigEndian16(&header[PROTOCOL_OFFSET], MODBUS_PROTOCOL);
    WriteBigEndian16(&header[LENGTH_OFFSET], static_cast<uint16>(UNIT_BYTES + pduBytes)); // at most 254
    header[UNIT_OFFSET] = unitId;
    return HEADER_BYTES + pduBytes;
}

} // namespace ModbusTcp

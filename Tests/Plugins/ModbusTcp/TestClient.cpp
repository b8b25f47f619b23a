#include "Tests/Plugins/ModbusTcp/TestClient.h"

#include <stdexcept>

namespace ModbusTcp
{

TestClient::Bytes TestClient::Ask(Bytes const& pdu)
{
    ++transaction;
    std::size_t const length = pdu.size() + 1;
    Bytes frame = {static_cast<uint8>(transaction >> 8), static_cast<uint8>(transaction & 0xFF), 0, 0,
                   static_cast<uint8>(length >> 8),      static_cast<uint8>(length & 0xFF),      1};
    frame.insert(frame.end(), pdu.begin(), pdu.end());
    Send(frame);
    Bytes const header = Receive(7);
    if (header[0] != frame[0] || header[1] != frame[1] || header[2] != 0 || header[3] != 0 || header[6] != frame[6])
    {
        throw std::runtime_error("the answer is to another request");
    }
    return Receive(static_cast<std::size_t>(header[4] << 8 | header[5]) - 1);
}

TestClient::Registers TestClient::Read(uint16 first, uint16 count)
{
    Bytes const answer = Ask({3, static_cast<uint8>(first >> 8), static_cast<uint8>(first & 0xFF),
                              static_cast<uint8>(count >> 8), static_cast<uint8>(count & 0xFF)});
    if (answer.size() != 2u + 2u * count || answer[0] != 3)
    {
        throw std::runtime_error("the read was refused");
    }
    Registers registers(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        registers[i] = static_cast<uint16>(answer[2 + 2 * i] << 8 | answer[3 + 2 * i]);
    }
    return registers;
}

uint8 TestClient::Write(uint16 first, Registers const& values)
{
    Bytes pdu = {16, static_cast<uint8>(first >> 8),    static_cast<uint8>(first & 0xFF),
                 0,  static_cast<uint8>(values.size()), static_cast<uint8>(2 * values.size())};
    for (uint16 const value : values)
    {
        pdu.push_back(static_cast<uint8>(value >> 8));
        pdu.push_back(static_cast<uint8>(value & 0xFF));
    }
    Bytes const answer = Ask(pdu);
    return answer[0] == 16 ? uint8{0} : answer[1];
}

} // namespace ModbusTcp

#include "Plugins/ModbusTcp/ModbusConversation.h"

#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "wApi/wTime.h"

#include <cstring>
#include <string>

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

ModbusConversation::ModbusConversation(IRegisterModel& registerModel, ModbusCounters& serverCounters)
    : model(registerModel), counters(serverCounters)
{
}

ModbusConversation::~ModbusConversation() = default;

std::span<char> ModbusConversation::Room()
{
    if (outputEnd > outputFirst)
    {
        return {};
    }
    if (inputFirst > 0)
    {
        std::memmove(input.data(), input.data() + inputFirst, inputEnd - inputFirst);
        inputEnd -= inputFirst;
        inputFirst = 0;
    }
    return {reinterpret_cast<char*>(input.data()) + inputEnd, input.size() - inputEnd}; // the bytes as they come
}

void ModbusConversation::Received(std::size_t bytes)
{
    inputEnd += bytes;
    Count(counters.bytesIn, bytes);
    AnswerAll();
}

void ModbusConversation::InputEnded()
{
    step = step == Step::CONTINUE ? Step::CLOSE : step;
}

std::string_view ModbusConversation::Pending() const
{
    return {reinterpret_cast<char const*>(output.data()) + outputFirst, outputEnd - outputFirst};
}

void ModbusConversation::Sent(std::size_t bytes)
{
    outputFirst += bytes;
    Count(counters.bytesOut, bytes);
    if (outputFirst == outputEnd)
    {
        outputFirst = 0;
        outputEnd = 0;
        AnswerAll();
    }
}

void ModbusConversation::AnswerAll()
{
    while (step != Step::DROP && outputEnd + ModbusFrame::MAX_BYTES <= output.size())
    {
        ModbusFrame frame;
        auto const parsed = ModbusFrame::Parse(std::span(input).subspan(inputFirst, inputEnd - inputFirst), frame);
        if (parsed == ModbusFrame::Parsed::INCOMPLETE)
        {
            return;
        }
        if (parsed == ModbusFrame::Parsed::MALFORMED)
        {
            step = Step::DROP;
            return;
        }
        Answer(frame);
        inputFirst += frame.Bytes();
    }
}

void ModbusConversation::Answer(ModbusFrame const& frame)
{
    uint64 const beginUsec = wTime_NowUsec();
    std::span<uint8, ModbusFrame::MAX_BYTES> const place(output.data() + outputEnd, ModbusFrame::MAX_BYTES);
    ModbusException refusal = ModbusException::NONE;
    std::size_t const pduBytes = AnswerPdu(frame.pdu, place.subspan<ModbusFrame::HEADER_BYTES>(), refusal);
    outputEnd += frame.WriteAnswerHeader(place.first<ModbusFrame::HEADER_BYTES>(), pduBytes);
    ++answered;
    Count(counters.requests);
    counters.CountException(refusal);
    counters.NoteHandling(wTime_NowUsec() - beginUsec);
}

std::size_t ModbusConversation::AnswerPdu(std::span<uint8 const> request, std::span<uint8> answer,
                                          ModbusException& refusal)
{
    if (Client().role >= ModbusRequest::RoleFor(request[0]))
    {
        return ModbusRequest::Answer(model, request, answer, refusal);
    }
    Count(counters.deniedRequests);
    TellDenied("function " + std::to_string(request[0]));
    refusal = ModbusException::ILLEGAL_FUNCTION;
    return ModbusRequest::Refuse(request[0], answer, refusal);
}

} // namespace ModbusTcp

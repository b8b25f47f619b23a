#include "Plugins/ModbusTcp/ModbusConversation.h"

#include "Plugins/ModbusTcp/ModbusFrame.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "wApi/wTime.h"

#include <cstring>

namespace ModbusTcp
{

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
    std::size_t const pduBytes =
        ModbusRequest::Answer(model, frame.pdu, place.subspan<ModbusFrame::HEADER_BYTES>(), refusal);
    outputEnd += frame.WriteAnswerHeader(place.first<ModbusFrame::HEADER_BYTES>(), pduBytes);
    ++answered;
    Count(counters.requests);
    counters.CountException(refusal);
    counters.NoteHandling(wTime_NowUsec() - beginUsec);
}

} // namespace ModbusTcp

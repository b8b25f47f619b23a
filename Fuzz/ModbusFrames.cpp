// Input: the bytes that a Modbus client sends.
//
// Checks: the answers do not depend on the pieces in which the bytes arrive. Each answer is a frame that belongs to a
// request, and the answer to a read of bits has as many bytes as the bits need. The buffers do not grow. A refused
// request changes no register and no coil.

#include "Fuzz/Support/Check.h"
#include "Fuzz/Support/Input.h"
#include "Plugins/ModbusTcp/ModbusConversation.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/ModbusRequest.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string>
#include <vector>

namespace
{

using namespace ModbusTcp;
using Bytes = std::vector<uint8>;

/// Registers, of which the first 66 are writable, and coils that accept one 1 a request. Checks that reads stay within
/// the register count that it reports.
class Registers final : public IRegisterModel
{
public:
    static constexpr std::size_t WRITABLE = 66;

    uint32 RegisterCount() const override
    {
        return static_cast<uint32>(values.size());
    }

    void Read(uint16 first, std::span<uint16> registers) override
    {
        ZU_FUZZ_CHECK(!registers.empty() && first + registers.size() <= values.size());
        std::copy_n(values.begin() + first, registers.size(), registers.begin());
    }

    ModbusException Write(uint16 first, std::span<uint16 const> written) override
    {
        ZU_FUZZ_CHECK(!written.empty());
        if (first + written.size() > WRITABLE)
        {
            return ModbusException::ILLEGAL_DATA_ADDRESS;
        }
        std::ranges::copy(written, values.begin() + first);
        return ModbusException::NONE;
    }

    ModbusException MaskWrite(uint16 address, uint16 andMask, uint16 orMask) override
    {
        if (address >= WRITABLE)
        {
            return ModbusException::ILLEGAL_DATA_ADDRESS;
        }
        values[address] = static_cast<uint16>((values[address] & andMask) | (orMask & ~andMask));
        return ModbusException::NONE;
    }

    uint16 ReadCoils() override
    {
        return values[COILS];
    }

    ModbusException WriteCoils(uint16 ones) override
    {
        ZU_FUZZ_CHECK(ones != 0);
        if (!std::has_single_bit(ones))
        {
            return ModbusException::ILLEGAL_DATA_VALUE;
        }
        values[COILS] = ones;
        return ModbusException::NONE;
    }

    MapIdentity Identity() override
    {
        return {
            .name = std::string(300, 'n'), .blockCount = 4294967295, .fingerprint = 1, .job = std::string(300, 'j')};
    }

    static constexpr std::size_t COILS = 99; // beside the registers that are writable
    std::array<uint16, 1000> values{};
};

/// A client, a server and the bytes that passed between them.
class Talk final
{
public:
    /// Sends as many bytes as there is room for; without room it takes all answers. Returns the number of bytes sent.
    std::size_t Send(std::span<uint8 const> bytes)
    {
        std::span<char> const room = conversation.Room();
        std::size_t const count = std::min(room.size(), bytes.size());
        std::copy_n(bytes.begin(), count, room.begin());
        conversation.Received(count);
        return count;
    }

    void TakeAnswers(std::size_t atATime)
    {
        while (!conversation.Pending().empty())
        {
            std::string_view const pending = conversation.Pending();
            ZU_FUZZ_CHECK(pending.size() <= ModbusConversation::OUTPUT_BYTES);
            std::string_view const taken = pending.substr(0, atATime);
            answers.insert(answers.end(), taken.begin(), taken.end());
            conversation.Sent(taken.size());
        }
    }

    bool IsMalformed() const
    {
        return conversation.NextStep() == ModbusConversation::Step::DROP;
    }

    Registers registers;
    ModbusCounters counters;
    ModbusConversation conversation{registers, counters};
    Bytes answers;
};

void SayWhole(Talk& talk, std::span<uint8 const> bytes)
{
    while (!bytes.empty() && !talk.IsMalformed())
    {
        bytes = bytes.subspan(talk.Send(bytes));
        talk.TakeAnswers(SIZE_MAX);
    }
}

/// Sends `bytes` in pieces of `pieceBytes`. Takes the answers only when the conversation has no more room for input.
void SayInPieces(Talk& talk, std::span<uint8 const> bytes, std::size_t pieceBytes)
{
    while (!bytes.empty() && !talk.IsMalformed())
    {
        std::size_t const sent = talk.Send(bytes.first(std::min(bytes.size(), pieceBytes)));
        bytes = bytes.subspan(sent);
        if (sent == 0)
        {
            talk.TakeAnswers(pieceBytes);
        }
    }
    talk.TakeAnswers(pieceBytes);
}

/// Checks that every request has one answer with its transaction id, unit id and function code.
void CheckAnswers(std::span<uint8 const> requests, std::span<uint8 const> answers, uint64 answeredCount)
{
    for (uint64 i = 0; i < answeredCount; ++i)
    {
        ModbusFrame request;
        ModbusFrame answer;
        ZU_FUZZ_CHECK(ModbusFrame::Parse(requests, request) == ModbusFrame::Parsed::COMPLETE);
        ZU_FUZZ_CHECK(ModbusFrame::Parse(answers, answer) == ModbusFrame::Parsed::COMPLETE);
        ZU_FUZZ_CHECK(answer.transactionId == request.transactionId && answer.unitId == request.unitId);
        ZU_FUZZ_CHECK((answer.pdu[0] | 0x80) == (request.pdu[0] | 0x80));
        if (answer.pdu[0] == 1 || answer.pdu[0] == 2)
        {
            std::size_t const bytes = (ReadBigEndian16(&request.pdu[3]) + std::size_t{7}) / 8;
            ZU_FUZZ_CHECK(bytes <= 250 && answer.pdu.size() == 2 + bytes && answer.pdu[1] == bytes);
        }
        requests = requests.subspan(request.Bytes());
        answers = answers.subspan(answer.Bytes());
    }
    ZU_FUZZ_CHECK(answers.empty());
}

/// Sends the requests one by one and compares the registers before and after each refused request.
void CheckRefusals(std::span<uint8 const> requests)
{
    Talk talk;
    ModbusFrame request;
    while (ModbusFrame::Parse(requests, request) == ModbusFrame::Parsed::COMPLETE)
    {
        auto const before = talk.registers.values;
        uint64 const exceptionsBefore = talk.counters.exceptions;
        talk.Send(requests.first(request.Bytes()));
        talk.TakeAnswers(SIZE_MAX);
        if (talk.counters.exceptions != exceptionsBefore)
        {
            ZU_FUZZ_CHECK(talk.registers.values == before);
        }
        requests = requests.subspan(request.Bytes());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    ZuFuzz::Input input(data, size);
    std::size_t const pieceBytes = 1 + input.TakeByte();
    std::string_view const text = input.TakeRest();
    std::span<uint8 const> const bytes(reinterpret_cast<uint8 const*>(text.data()), text.size());

    Talk whole;
    Talk inPieces;
    SayWhole(whole, bytes);
    SayInPieces(inPieces, bytes, pieceBytes);

    ZU_FUZZ_CHECK(whole.answers == inPieces.answers);
    ZU_FUZZ_CHECK(whole.registers.values == inPieces.registers.values);
    ZU_FUZZ_CHECK(whole.IsMalformed() == inPieces.IsMalformed());
    CheckAnswers(bytes, whole.answers, whole.conversation.ProgressCount());
    CheckRefusals(bytes);
    return 0;
}

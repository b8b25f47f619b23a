#pragma once

#include "Plugins/Common/ITcpConversation.h"
#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "wApi/wTypes.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

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

struct ModbusCounters;
struct ModbusFrame;

/// The protocol with one client: requests in, answers out, in buffers of fixed size.
///
/// A request is answered only if the output has room for the longest answer; otherwise it stays in the input until
/// answers were sent. While the client does not take its answers, nothing more is read from it. A request that the
/// client's role does not allow gets the exception ILLEGAL_FUNCTION.
class ModbusConversation final : public PluginCommon::ITcpConversation
{
public:
    static constexpr std::size_t INPUT_BYTES = 4096;
    static constexpr std::size_t OUTPUT_BYTES = 16384;

    ModbusConversation(IRegisterModel& registerModel, ModbusCounters& serverCounters);
    ~ModbusConversation() override;
    ModbusConversation(ModbusConversation const&) = delete;
    ModbusConversation& operator=(ModbusConversation const&) = delete;

    /// Empty while answers are pending.
    std::span<char> Room() override;

    /// Answers each complete request, as long as the output has room.
    void Received(std::size_t bytes) override;

    void InputEnded() override;
    std::string_view Pending() const override;

    /// When no answer is left, answers the requests that waited in the input.
    void Sent(std::size_t bytes) override;

    /// DROP after bytes that are no frame: later bytes are ignored, and earlier answers are still sent. CLOSE after the
    /// end of the input.
    Step NextStep() const override
    {
        return step;
    }

    /// The number of requests answered so far.
    uint64 ProgressCount() const override
    {
        return answered;
    }

private:
    void AnswerAll();
    void Answer(ModbusFrame const& frame);
    std::size_t AnswerPdu(std::span<uint8 const> request, std::span<uint8> answer, ModbusException& refusal);

    IRegisterModel& model;
    ModbusCounters& counters;
    std::array<uint8, INPUT_BYTES> input;
    std::size_t inputFirst = 0; // begin of the next frame
    std::size_t inputEnd = 0;
    std::array<uint8, OUTPUT_BYTES> output;
    std::size_t outputFirst = 0; // bytes before it are sent
    std::size_t outputEnd = 0;
    uint64 answered = 0;
    Step step = Step::CONTINUE;
};

} // namespace ModbusTcp

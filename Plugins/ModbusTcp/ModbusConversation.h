#pragma once

#include "Plugins/ModbusTcp/IRegisterModel.h"
#include "Plugins/ModbusTcp/ServerCounters.h"

#include <array>
#include <cstddef>
#include <span>

namespace ModbusTcp
{

struct ModbusFrame;

/// What is said with one client, without a socket: bytes in, answers out, both in buffers that never grow.
///
/// The caller reads into `Room`, tells `Received`, and writes what `Pending` holds, telling `Sent`. Answers are made for as
/// long as the longest one has room; what waits behind that stays in the input until answers have gone, so a client that
/// sends without reading fills its own buffers and nothing else.
class ModbusConversation final
{
public:
    static constexpr std::size_t INPUT_BYTES = 4096;
    static constexpr std::size_t OUTPUT_BYTES = 16384;

    ModbusConversation(IRegisterModel& registerModel, ServerCounters& serverCounters);
    ~ModbusConversation();
    ModbusConversation(ModbusConversation const&) = delete;
    ModbusConversation& operator=(ModbusConversation const&) = delete;

    /// Where the next bytes go; never empty while nothing is pending and nothing is malformed.
    std::span<uint8> Room();

    /// `bytes` have been put into the room. Answers every complete request that the output has room for.
    void Received(std::size_t bytes);

    /// Answers that have not been sent yet.
    std::span<uint8 const> Pending() const;

    /// `bytes` of the pending ones have gone. When none are left, what waited in the input is answered.
    void Sent(std::size_t bytes);

    /// The client has sent what is no frame. Nothing after it is read; what was answered before may still be sent.
    bool IsMalformed() const
    {
        return malformed;
    }

    /// Complete requests answered so far.
    uint64 AnsweredCount() const
    {
        return answered;
    }

private:
    void AnswerAll();
    void Answer(ModbusFrame const& frame);

    IRegisterModel& model;
    ServerCounters& counters;
    std::array<uint8, INPUT_BYTES> input;
    std::size_t inputFirst = 0; // the next frame begins here
    std::size_t inputEnd = 0;
    std::array<uint8, OUTPUT_BYTES> output;
    std::size_t outputFirst = 0; // sent up to here
    std::size_t outputEnd = 0;
    uint64 answered = 0;
    bool malformed = false;
};

} // namespace ModbusTcp

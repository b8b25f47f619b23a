#pragma once

#include "Plugins/ModbusTcp/IRegisterModel.h"
#include "Plugins/ModbusTcp/ServerCounters.h"

#include <array>
#include <cstddef>
#include <span>

namespace ModbusTcp
{

struct ModbusFrame;

/// The protocol with one client, without a socket: bytes in, answers out, in buffers of fixed size.
///
/// The caller reads bytes into `Room` and calls `Received`; it writes the bytes of `Pending` and calls `Sent`. A
/// request is answered only if the output has room for the longest answer; otherwise it stays in the input until
/// answers were sent. A client that sends without reading therefore fills only its own buffers.
class ModbusConversation final
{
public:
    static constexpr std::size_t INPUT_BYTES = 4096;
    static constexpr std::size_t OUTPUT_BYTES = 16384;

    ModbusConversation(IRegisterModel& registerModel, ServerCounters& serverCounters);
    ~ModbusConversation();
    ModbusConversation(ModbusConversation const&) = delete;
    ModbusConversation& operator=(ModbusConversation const&) = delete;

    /// The place for the next bytes. It is not empty while nothing is pending and the input is not malformed.
    std::span<uint8> Room();

    /// `bytes` bytes were put into `Room`. Answers each complete request, as long as the output has room.
    void Received(std::size_t bytes);

    /// The answers that were not sent yet.
    std::span<uint8 const> Pending() const;

    /// `bytes` bytes of `Pending` were sent. When none are left, answers the requests that waited in the input.
    void Sent(std::size_t bytes);

    /// Whether the client has sent bytes that are no frame. Later bytes are ignored; earlier answers may still be sent.
    bool IsMalformed() const
    {
        return malformed;
    }

    /// The number of requests answered so far.
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
    std::size_t inputFirst = 0; // begin of the next frame
    std::size_t inputEnd = 0;
    std::array<uint8, OUTPUT_BYTES> output;
    std::size_t outputFirst = 0; // bytes before it are sent
    std::size_t outputEnd = 0;
    uint64 answered = 0;
    bool malformed = false;
};

} // namespace ModbusTcp

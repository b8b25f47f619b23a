#pragma once

#include "Plugins/Common/ITcpConversation.h"
#include "Plugins/ModbusTcp/IRegisterModel.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace ModbusTcp
{

struct ModbusCounters;
struct ModbusFrame;

/// The protocol with one client: requests in, answers out, in buffers of fixed size.
///
/// A request is answered only if the output has room for the longest answer; otherwise it stays in the input until
/// answers were sent. While the client does not take its answers, nothing more is read from it.
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

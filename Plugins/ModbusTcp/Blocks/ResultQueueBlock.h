#pragma once

#include "Plugins/ModbusTcp/Blocks/SourceListBlock.h"

#include <array>
#include <vector>

namespace ModbusTcp
{

/// Holds results until the PLC acknowledges them: shows the oldest one, and the next one after its number was written to
/// register 0.
///
/// Registers: 0 acknowledged number, written by the PLC; 1 number of the held result, 0 for none; 2 results that wait,
/// the held one included; 3 lost results; 4 session; 5 decisions; 6 which of them are valid; 7 results lost just before
/// the held one; 8 to 11 frame counter; 12 to 15 time; 16 to 47 values.
///
/// If the queue is full, the newest result is lost. Numbers count from a random begin, and 0 is left out. The session is
/// random for each queue, and another one after the sources have changed. The queue allocates in `SetDepth` only.
struct ResultQueueBlock : public SourceListBlock
{
public:
    static constexpr char const* TYPE = "ResultQueue";
    static constexpr uint16 REGISTER_COUNT = 48;
    static constexpr uint16 MAX_INSTANCES = 8;
    static constexpr uint16 FIRST_VALUE = 16; ///< the register of the first value
    static constexpr uint32 MOST_RESULTS = 10000;
    static constexpr uint32 DEFAULT_DEPTH = 100;

    struct Result
    {
        uint16 number = 0; ///< 0 for no result
        uint16 decisions = 0;
        uint16 valid = 0;
        uint16 lostBefore = 0; ///< 65535 stands for more, too
        uint64 frame = NO_READING;
        uint64 timeUsec = NO_READING;
        std::array<int32, MOST_SOURCES> values;

        Result();
        static constexpr uint64 NO_READING = 0xFFFFFFFFFFFFFFFF;
    };

    /// The source of `Serialize`.
    struct Content
    {
        uint16 acknowledged = 0; ///< the last number that was acknowledged; 0 for none
        uint16 waiting = 0;
        uint16 lost = 0; ///< modulo 65536
        uint16 session = 0;
        Result held;
    };

    ResultQueueBlock(ZuControl::ControlProtocol::RegisterBlockParams const& params,
                     ZuControl::ControlProtocol::ProtocolRegisterBlockInfo& usedInfo);
    ~ResultQueueBlock() override;

    /// Throws `Zu::Status::WRONG_BUFFER_SIZE` for another size of source or destination.
    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    /// Reads a written number, a uint16, from the bytes of register 0. Throws `Zu::Status::WRONG_BUFFER_SIZE` for
    /// another size of source or destination.
    void Deserialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    /// Room for this many results. Of more waiting results, the newest are lost. Returns how many.
    uint64 SetDepth(uint32 depth);

    /// Gives up the held result if `number` is its number. Does nothing for 0 and for the number acknowledged last: a
    /// PLC may repeat a write whose answer it did not get. Returns false for any other number.
    bool Acknowledge(uint16 number);

    uint64 WaitingCount() const
    {
        return count;
    }

    /// Whether results were lost since the queue was empty.
    bool IsOverflowing() const
    {
        return isOverflowing;
    }

    std::vector<ZuControl::ControlProtocol::RegisterField> Fields() const override;

    void Take(std::size_t place, Reading const& reading) override;
    Outcome EndSet() override;
    void Blank() override; ///< keeps the results: the PLC has still to read them
    void Encode(std::span<uint8> bytes) override;

protected:
    uint64 Clear() override;

private:
    uint16 TakeNumber();
    uint16 NewSession() const;

    std::vector<Result> ring; // its size is the depth
    std::size_t first = 0;    // the held result
    std::size_t count = 0;
    Result next; // collects the results of a set
    bool isNextFilled = false;
    uint16 lastNumber;
    uint16 acknowledged = 0;
    uint16 session;
    uint16 lost = 0;       // modulo 65536
    uint16 lostBefore = 0; // since the newest result in the ring; 65535 stands for more, too
    bool isOverflowing = false;
};

} // namespace ModbusTcp

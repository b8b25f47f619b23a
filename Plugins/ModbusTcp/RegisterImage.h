#pragma once

#include "wApi/wTypes.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <span>

namespace ModbusTcp
{

/// The encoded registers of the result blocks, published whole.
///
/// Three buffers go round: the writer fills its own and swaps it with the one in the middle, the reader swaps its own with
/// the middle when there is something newer. Neither ever waits for the other, and what a reader sees is one published
/// state, however many registers it takes. Only the span of registers that anything is placed in is copied; a register
/// outside it reads 0.
///
/// Threads: `Edit` and `Publish` exclude each other by a lock of the owner's, `Read` belongs to one thread at a time.
class RegisterImage final
{
public:
    static constexpr uint32 REGISTER_COUNT = 10000;
    static constexpr std::size_t BYTES = 2 * REGISTER_COUNT;

    RegisterImage();
    ~RegisterImage();
    RegisterImage(RegisterImage const&) = delete;
    RegisterImage& operator=(RegisterImage const&) = delete;

    /// The writer's own bytes, two a register. They keep what was written and reach readers with the next `Publish`.
    std::span<uint8, BYTES> Edit()
    {
        return edited;
    }

    /// Registers [first, end) are the ones that anything is placed in; the others read 0 from the next `Publish` on.
    void SetUsedSpan(uint32 first, uint32 end);

    /// Makes what stands in `Edit` the state that readers see.
    void Publish();

    /// Fills `registers` with those from `first` on, low byte first in the image. The range lies within REGISTER_COUNT.
    void Read(uint16 first, std::span<uint16> registers);

private:
    struct Buffer
    {
        uint32 first = 0;
        uint32 end = 0; // registers outside [first, end) are 0, whatever the bytes say
        std::array<uint8, BYTES> bytes;
    };

    static constexpr uint32 INDEX_MASK = 3;
    static constexpr uint32 FRESH = 4; // the middle buffer is newer than the reader's

    std::array<Buffer, 3> buffers;
    std::array<uint8, BYTES> edited{}; // of the writer
    uint32 usedFirst = 0;              // of the writer
    uint32 usedEnd = 0;                // of the writer
    uint32 back = 0;                   // of the writer: the buffer that it fills
    uint32 front = 1;                  // of the reader: the buffer that it reads
    std::atomic<uint32> middle{2};     // publishes the buffer that it names
};

} // namespace ModbusTcp

#pragma once

#include "wApi/wTypes.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <span>

namespace ModbusTcp
{

/// The encoded registers of the result blocks, published as a whole.
///
/// Three buffers rotate: the writer fills its own and swaps it with the middle one; the reader swaps its own with the
/// middle one if that is newer. Neither waits for the other, and a read returns values of one published state, however
/// many registers it covers. Only the span of registers in use is copied; registers outside it read 0.
///
/// Threads: the owner's lock serialises `Edit`, `SetUsedSpan` and `Publish`. One thread at a time calls `Read`.
class RegisterImage final
{
public:
    static constexpr uint32 REGISTER_COUNT = 10000;
    static constexpr std::size_t BYTES = 2 * REGISTER_COUNT;

    RegisterImage();
    ~RegisterImage();
    RegisterImage(RegisterImage const&) = delete;
    RegisterImage& operator=(RegisterImage const&) = delete;

    /// The writer's bytes, two for each register. They keep their values; readers see them after the next `Publish`.
    std::span<uint8, BYTES> Edit()
    {
        return edited;
    }

    /// Sets the registers in use, [first, end). From the next `Publish` on, all others read 0.
    void SetUsedSpan(uint32 first, uint32 end);

    /// Makes the bytes of `Edit` the state that readers see.
    void Publish();

    /// Fills `registers` from `first` on; the image holds the low byte of each first. The range lies within
    /// REGISTER_COUNT.
    void Read(uint16 first, std::span<uint16> registers);

private:
    struct Buffer
    {
        uint32 first = 0;
        uint32 end = 0; // registers outside [first, end) read 0
        std::array<uint8, BYTES> bytes;
    };

    static constexpr uint32 INDEX_MASK = 3;
    static constexpr uint32 FRESH = 4; // the middle buffer is newer than the reader's

    std::array<Buffer, 3> buffers;
    std::array<uint8, BYTES> edited{}; // writer only
    uint32 usedFirst = 0;              // writer only
    uint32 usedEnd = 0;                // writer only
    uint32 back = 0;                   // writer only: the buffer to fill
    uint32 front = 1;                  // reader only: the buffer to read
    std::atomic<uint32> middle{2};     // publishes the buffer that it names
};

} // namespace ModbusTcp

#include "Plugins/ModbusTcp/RegisterImage.h"

#include <algorithm>
#include <cstring>

namespace ModbusTcp
{

RegisterImage::RegisterImage() = default;

RegisterImage::~RegisterImage() = default;

void RegisterImage::SetUsedSpan(uint32 first, uint32 end)
{
    usedFirst = std::min(first, REGISTER_COUNT);
    usedEnd = std::clamp(end, usedFirst, REGISTER_COUNT);
}

void RegisterImage::Publish()
{
    Buffer& buffer = buffers[back];
    buffer.first = usedFirst;
    buffer.end = usedEnd;
    std::memcpy(&buffer.bytes[0] + 2 * std::size_t{usedFirst}, edited.data() + 2 * std::size_t{usedFirst},
                2 * std::size_t{usedEnd - usedFirst});
    back = middle.exchange(back | FRESH, std::memory_order_acq_rel) & INDEX_MASK;
}

void RegisterImage::Read(uint16 first, std::span<uint16> registers)
{
    if ((middle.load(std::memory_order_relaxed) & FRESH) != 0)
    {
        front = middle.exchange(front, std::memory_order_acq_rel) & INDEX_MASK;
    }
    Buffer const& buffer = buffers[front];
    uint32 const end = first + static_cast<uint32>(registers.size());
    uint32 const usedBegin = std::clamp(buffer.first, uint32{first}, end);
    uint32 const usedStop = std::clamp(buffer.end, usedBegin, end);
    std::fill(registers.begin(), registers.begin() + (usedBegin - first), uint16{0});
    for (uint32 i = usedBegin; i < usedStop; ++i)
    {
        registers[i - first] = static_cast<uint16>(buffer.bytes[2 * i] | buffer.bytes[2 * i + 1] << 8);
    }
    std::fill(registers.begin() + (usedStop - first), registers.end(), uint16{0});
}

} // namespace ModbusTcp

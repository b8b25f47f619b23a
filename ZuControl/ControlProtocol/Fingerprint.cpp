#include "ZuControl/ControlProtocol/Fingerprint.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

namespace ZuControl::ControlProtocol::Fingerprint
{

namespace
{

constexpr uint32 POLYNOMIAL = 0xEDB88320; // reflected

constexpr std::size_t STEP = 8; // bytes that are taken at a time

/// Table n holds the remainder of each byte with n bytes of 0 behind it.
using Tables = std::array<std::array<uint32, 256>, STEP>;

constexpr Tables MakeTables()
{
    Tables tables{};
    for (uint32 i = 0; i < 256; ++i)
    {
        uint32 value = i;
        for (int bit = 0; bit < 8; ++bit)
        {
            value = (value & 1) != 0 ? (value >> 1) ^ POLYNOMIAL : value >> 1;
        }
        tables[0][i] = value;
    }
    for (std::size_t n = 1; n < STEP; ++n)
    {
        for (std::size_t i = 0; i < 256; ++i)
        {
            uint32 const before = tables[n - 1][i];
            tables[n][i] = (before >> 8) ^ tables[0][before & 0xFF];
        }
    }
    return tables;
}

constexpr Tables TABLES = MakeTables();

uint32 LittleEndian(char const* bytes)
{
    uint32 value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i)
    {
        value |= uint32{static_cast<uint8>(bytes[i])} << (8 * i);
    }
    return value;
}

/// The remainder of four bytes with `behind` bytes of 0 behind them.
uint32 Remainder(uint32 bytes, std::size_t behind)
{
    return TABLES[behind + 3][bytes & 0xFF] ^ TABLES[behind + 2][bytes >> 8 & 0xFF] ^
           TABLES[behind + 1][bytes >> 16 & 0xFF] ^ TABLES[behind][bytes >> 24];
}

/// Appends numbers in little-endian order, and texts as their length and their bytes.
class Writer final
{
public:
    template <typename Integer>
    void Number(Integer value)
    {
        std::array<char, sizeof(Integer)> parts{};
        for (std::size_t i = 0; i < sizeof(Integer); ++i)
        {
            parts[i] = static_cast<char>((uint64{value} >> (8 * i)) & 0xFF);
        }
        bytes.append(parts.data(), parts.size());
    }

    void Text(std::string const& text)
    {
        Number(static_cast<uint32>(text.size()));
        bytes += text;
    }

    std::string bytes;
};

void Write(Writer& writer, LayoutEntry const& entry)
{
    writer.Text(entry.textId);
    writer.Number(entry.outputId);
    writer.Number(entry.registers);
    writer.Number(entry.bytesPerRegister);
    writer.Number(static_cast<uint8>((entry.isBigEndian ? 1 : 0) | (entry.areBytesSwapped ? 2 : 0)));
    writer.Number(entry.outputSize);
    writer.Number(entry.dataOffset);
    writer.Number(entry.dataLength);
    writer.Text(entry.type);
    writer.Text(entry.source);
    writer.Text(entry.scannerId);
}

void Write(Writer& writer, Layout const& layout)
{
    writer.Number(static_cast<uint8>(layout.kind));
    writer.Text(layout.id);
    writer.Number(static_cast<uint8>(layout.isAddressed ? 1 : 0));
    writer.Number(layout.itemSize);
    writer.Number(static_cast<uint32>(layout.entries.size()));
    for (LayoutEntry const* const entry : InOrder(layout))
    {
        Write(writer, *entry);
    }
}

} // namespace

std::vector<LayoutEntry const*> InOrder(Layout const& layout)
{
    std::vector<LayoutEntry const*> entries;
    entries.reserve(layout.entries.size());
    for (LayoutEntry const& entry : layout.entries)
    {
        entries.push_back(&entry);
    }
    auto const isBefore = [](LayoutEntry const* left, LayoutEntry const* right) {
        return std::tie(left->outputId, left->textId) < std::tie(right->outputId, right->textId);
    };
    if (!std::ranges::is_sorted(entries, isBefore)) // a register map may be out of order
    {
        std::ranges::stable_sort(entries, isBefore);
    }
    return entries;
}

std::string CanonicalBytes(std::vector<Layout> const& layouts)
{
    Writer writer;
    writer.Number(VERSION);
    writer.Number(static_cast<uint32>(layouts.size()));
    for (Layout const& layout : layouts)
    {
        Write(writer, layout);
    }
    return std::move(writer.bytes);
}

uint32 Of(std::vector<Layout> const& layouts)
{
    return Crc32(CanonicalBytes(layouts));
}

uint32 Crc32(std::string_view bytes)
{
    uint32 value = 0xFFFFFFFF;
    for (; bytes.size() >= STEP; bytes.remove_prefix(STEP))
    {
        value = Remainder(value ^ LittleEndian(bytes.data()), 4) ^ Remainder(LittleEndian(bytes.data() + 4), 0);
    }
    for (char const byte : bytes)
    {
        value = (value >> 8) ^ TABLES[0][(value ^ static_cast<uint8>(byte)) & 0xFF];
    }
    return ~value;
}

} // namespace ZuControl::ControlProtocol::Fingerprint

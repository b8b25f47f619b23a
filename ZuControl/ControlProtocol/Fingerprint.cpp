#include "ZuControl/ControlProtocol/Fingerprint.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>
#include <zlib.h>

namespace ZuControl::ControlProtocol::Fingerprint
{

namespace
{

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
    return static_cast<uint32>(crc32_z(0, reinterpret_cast<Bytef const*>(bytes.data()), bytes.size()));
}

} // namespace ZuControl::ControlProtocol::Fingerprint

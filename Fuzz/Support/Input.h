#pragma once

#include "wApi/wTypes.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace ZuFuzz
{

/// The bytes of one run, taken from the front, so that a corpus file reads in the order of its effects. Reads behind
/// the end return 0.
class Input final
{
public:
    Input(uint8 const* data, std::size_t size) : bytes(data, size)
    {
    }

    bool IsEmpty() const
    {
        return bytes.empty();
    }

    uint8 TakeByte()
    {
        std::span<uint8 const> const taken = Take(1);
        return taken.empty() ? uint8{0} : taken.front();
    }

    /// High byte first.
    uint16 TakeWord()
    {
        uint8 const high = TakeByte();
        return static_cast<uint16>((high << 8) | TakeByte());
    }

    std::span<uint8 const> Take(std::size_t count)
    {
        std::span<uint8 const> const taken = bytes.first(std::min(count, bytes.size()));
        bytes = bytes.subspan(taken.size());
        return taken;
    }

    /// Takes the text up to the next line feed or to the end. The line feed is taken too, but not returned.
    std::string_view TakeLine()
    {
        auto const end = std::find(bytes.begin(), bytes.end(), uint8{'\n'});
        std::string_view const line = AsText(Take(static_cast<std::size_t>(end - bytes.begin())));
        Take(1);
        return line;
    }

    std::string_view TakeRest()
    {
        return AsText(Take(bytes.size()));
    }

private:
    static std::string_view AsText(std::span<uint8 const> text)
    {
        return {reinterpret_cast<char const*>(text.data()), text.size()};
    }

    std::span<uint8 const> bytes;
};

} // namespace ZuFuzz

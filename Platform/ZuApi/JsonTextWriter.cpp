#include "ZuApi/JsonTextWriter.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <utility>

namespace Zu::Properties
{

namespace
{

constexpr std::size_t FIRST_BYTES = 1000; // a larger first block costs more to allocate than growing to it does
constexpr uint64 EACH_BYTE = 0x0101010101010101U;

/// Not zero if any of the eight bytes is special: beyond ASCII, a control character, a quote or a backslash. The borrow
/// of a subtraction marks a byte below a bound. The borrow may also mark the byte above it, but it marks nothing in a
/// word without special bytes.
uint64 SpecialBytes(uint64 word)
{
    auto const bytesBelow = [](uint64 bytes, uint64 bound) { return (bytes - EACH_BYTE * bound) & ~bytes; };
    auto const zeroBytes = [&bytesBelow](uint64 bytes) { return bytesBelow(bytes, 1); };
    return (word | bytesBelow(word, 0x20) | zeroBytes(word ^ EACH_BYTE * '"') | zeroBytes(word ^ EACH_BYTE * '\\')) &
           EACH_BYTE * 0x80;
}

/// Copies the first `sizeof(Word)` bytes of a text. Returns them as the lower bytes of a word; the upper bytes are
/// blanks.
template <typename Word>
uint64 CopyWord(char* to, char const* from)
{
    Word word = 0;
    std::memcpy(&word, from, sizeof(word));
    std::memcpy(to, &word, sizeof(word));
    return word | (sizeof(word) == sizeof(uint64) ? 0 : (EACH_BYTE * ' ') << (8 * sizeof(word) % 64));
}

/// Copies a text to `to`. Returns whether every byte may stand in a JSON string unescaped. The last word that is copied
/// may overlap the one before it.
bool CopyPlain(char* to, std::string_view value)
{
    char const* const from = value.data();
    std::size_t const size = value.size();
    uint64 found = 0;
    if (size >= sizeof(uint64))
    {
        for (std::size_t at = 0; at + sizeof(uint64) < size; at += sizeof(uint64))
        {
            found |= SpecialBytes(CopyWord<uint64>(to + at, from + at));
        }
        found |= SpecialBytes(CopyWord<uint64>(to + size - sizeof(uint64), from + size - sizeof(uint64)));
    }
    else if (size >= sizeof(uint32))
    {
        found = SpecialBytes(CopyWord<uint32>(to, from));
        found |= SpecialBytes(CopyWord<uint32>(to + size - sizeof(uint32), from + size - sizeof(uint32)));
    }
    else
    {
        for (std::size_t at = 0; at < size; ++at)
        {
            found |= SpecialBytes(CopyWord<uint8>(to + at, from + at));
        }
    }
    return found == 0;
}

} // namespace

JsonTextWriter::JsonTextWriter() : text(FIRST_BYTES, '\0')
{
}

JsonTextWriter::~JsonTextWriter() = default;

void JsonTextWriter::WriteInt32(int32 value)
{
    PutInteger(value);
}

void JsonTextWriter::WriteUint32(uint32 value)
{
    PutInteger(value);
}

void JsonTextWriter::WriteUint64(uint64 value)
{
    PutInteger(value);
}

void JsonTextWriter::WriteUint16(uint16 value)
{
    PutInteger(value);
}

void JsonTextWriter::WriteInt64(int64 value)
{
    PutInteger(value);
}

void JsonTextWriter::WriteBool(bool value)
{
    Put(value ? "true" : "false");
}

void JsonTextWriter::WriteDouble(double value)
{
    WriteAsLibrary(value);
}

void JsonTextWriter::WriteString(std::string const& value)
{
    WriteText(value);
}

void JsonTextWriter::WriteText(std::string_view value)
{
    char* const begin = Room(value.size() + 2);
    if (!CopyPlain(begin + 1, value))
    {
        WriteAsLibrary(value);
        return;
    }
    *begin = '"';
    begin[value.size() + 1] = '"';
    used += value.size() + 2;
}

void JsonTextWriter::BeginArray()
{
    Put('[');
}

void JsonTextWriter::NextElement()
{
    Separate('[');
}

void JsonTextWriter::EndArray()
{
    Put(']');
}

void JsonTextWriter::BeginObject()
{
    Put('{');
}

void JsonTextWriter::NextMember(std::string_view key)
{
    Separate('{');
    WriteLabel(key);
}

void JsonTextWriter::WriteLabel(std::string_view key)
{
    WriteText(key);
    Put(':');
}

void JsonTextWriter::NextLabelledMember(std::string_view label)
{
    Separate('{');
    Put(label);
}

void JsonTextWriter::EndObject()
{
    Put('}');
}

void JsonTextWriter::WriteJson(std::string_view json)
{
    Put(json);
}

void JsonTextWriter::WriteAsLibrary(nlohmann::json const& value)
{
    Put(value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

std::size_t JsonTextWriter::Size() const noexcept
{
    return used;
}

void JsonTextWriter::Cut(std::size_t size) noexcept
{
    used = std::min(used, size);
}

std::string JsonTextWriter::Take()
{
    text.resize(std::exchange(used, 0));
    return std::exchange(text, {});
}

void JsonTextWriter::Grow(std::size_t bytes)
{
    text.resize(std::max(2 * text.size(), used + bytes));
}

void JsonTextWriter::Put(char character)
{
    *Room(1) = character;
    ++used;
}

void JsonTextWriter::Put(std::string_view written)
{
    used += written.copy(Room(written.size()), written.size());
}

/// Puts a comma, unless the text ends with `opening`, which begins the array or object: no element ends with that
/// character.
void JsonTextWriter::Separate(char opening)
{
    if (text[used - 1] != opening)
    {
        Put(',');
    }
}

template <typename Integer>
void JsonTextWriter::PutInteger(Integer value)
{
    constexpr std::size_t MAX_DIGITS = std::numeric_limits<Integer>::digits10 + 2; // includes a sign
    char* const begin = Room(MAX_DIGITS);
    used += static_cast<std::size_t>(std::to_chars(begin, begin + MAX_DIGITS, value).ptr - begin);
}

} // namespace Zu::Properties

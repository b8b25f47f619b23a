#include "ZuApi/JsonTextWriter.h"

#include <nlohmann/json.hpp>

#include <array>
#include <charconv>
#include <cstring>
#include <string_view>

namespace Zu::Properties
{

namespace
{

constexpr uint64 EACH_BYTE = 0x0101010101010101U;

/// Not zero when any of the eight bytes is special: beyond ASCII, a control character, a quote or a backslash. A byte less
/// than a bound is seen by the borrow of a subtraction, which may make the byte above it look special too, but none where
/// there is none.
uint64 SpecialBytes(uint64 word)
{
    auto const bytesBelow = [](uint64 bytes, uint64 bound) { return (bytes - EACH_BYTE * bound) & ~bytes; };
    auto const zeroBytes = [&bytesBelow](uint64 bytes) { return bytesBelow(bytes, 1); };
    return (word | bytesBelow(word, 0x20) | zeroBytes(word ^ EACH_BYTE * '"') | zeroBytes(word ^ EACH_BYTE * '\\')) &
           EACH_BYTE * 0x80;
}

/// Whether all bytes stand in a text as they are.
bool IsPlain(std::string_view value)
{
    uint64 found = 0;
    while (value.size() >= sizeof(uint64))
    {
        uint64 word = 0;
        std::memcpy(&word, value.data(), sizeof(word));
        found |= SpecialBytes(word);
        value.remove_prefix(sizeof(word));
    }
    uint64 last = EACH_BYTE * ' ';
    std::memcpy(&last, value.data(), value.size());
    return (found | SpecialBytes(last)) == 0;
}

template <typename Integer>
void AppendInteger(std::string& text, Integer value)
{
    std::array<char, 24> digits{};
    text.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
}

} // namespace

JsonTextWriter::JsonTextWriter(std::string& writtenText) : text(writtenText)
{
}

JsonTextWriter::~JsonTextWriter() = default;

void JsonTextWriter::WriteInt32(int32 value)
{
    AppendInteger(text, value);
}

void JsonTextWriter::WriteUint32(uint32 value)
{
    AppendInteger(text, value);
}

void JsonTextWriter::WriteUint64(uint64 value)
{
    AppendInteger(text, value);
}

void JsonTextWriter::WriteUint16(uint16 value)
{
    AppendInteger(text, value);
}

void JsonTextWriter::WriteBool(bool value)
{
    text += value ? "true" : "false";
}

void JsonTextWriter::WriteDouble(double value)
{
    WriteAsLibrary(value);
}

void JsonTextWriter::WriteString(std::string const& value)
{
    if (!IsPlain(value))
    {
        WriteAsLibrary(value);
        return;
    }
    text.push_back('"');
    text += value;
    text.push_back('"');
}

void JsonTextWriter::BeginArray()
{
    text.push_back('[');
}

void JsonTextWriter::NextElement()
{
    if (text.back() != '[') // no element ends like this: it is the beginning of the array
    {
        text.push_back(',');
    }
}

void JsonTextWriter::EndArray()
{
    text.push_back(']');
}

void JsonTextWriter::WriteInt64(int64 value)
{
    AppendInteger(text, value);
}

void JsonTextWriter::WriteAsLibrary(nlohmann::json const& value)
{
    text += value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace Zu::Properties

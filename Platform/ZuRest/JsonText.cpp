#include "ZuRest/JsonText.h"

#include "ZuApi/Exception.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <utility>

namespace ZuRest::JsonText
{

namespace
{

constexpr std::size_t USUAL_BYTES = 4096; // of a document: most are written without growing

/// How deep the brackets of a text go that stand outside of strings.
uint32 DepthOf(std::string_view text)
{
    uint32 depth = 0;
    uint32 deepest = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        char const character = text[i];
        if (isInString)
        {
            i += character == '\\' ? 1 : 0;
            isInString = character != '"';
            continue;
        }
        isInString = character == '"';
        if (character == '[' || character == '{')
        {
            deepest = std::max(deepest, ++depth);
        }
        else if (character == ']' || character == '}')
        {
            depth -= depth != 0 ? 1 : 0;
        }
    }
    return deepest;
}

/// Appends the text of a document, byte for byte as the library gives it, in a fraction of its time.
class TextWriter final
{
public:
    explicit TextWriter(std::string& writtenText) : text(writtenText)
    {
    }

    void Write(nlohmann::json const& value)
    {
        switch (value.type())
        {
        case nlohmann::json::value_t::object:
            WriteObject(*value.get_ptr<nlohmann::json::object_t const*>());
            break;
        case nlohmann::json::value_t::array:
            WriteArray(*value.get_ptr<nlohmann::json::array_t const*>());
            break;
        case nlohmann::json::value_t::string:
            WriteString(*value.get_ptr<std::string const*>());
            break;
        case nlohmann::json::value_t::number_integer:
            WriteInteger(*value.get_ptr<nlohmann::json::number_integer_t const*>());
            break;
        case nlohmann::json::value_t::number_unsigned:
            WriteInteger(*value.get_ptr<nlohmann::json::number_unsigned_t const*>());
            break;
        default: // fractions among them: their shortest form is an art of its own
            text += DumpOf(value);
            break;
        }
    }

private:
    static std::string DumpOf(nlohmann::json const& value)
    {
        return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }

    /// Whether all bytes stand in a text as they are: ASCII but for control characters, quotes and backslashes.
    static bool IsPlain(std::string_view value)
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

    /// Not zero when any of the eight bytes is special. A byte less than n is seen by the borrow of a subtraction, which may
    /// make the byte above it look special too, but none where there is none.
    static uint64 SpecialBytes(uint64 word)
    {
        auto const bytesBelow = [](uint64 bytes, uint64 bound) { return (bytes - EACH_BYTE * bound) & ~bytes; };
        auto const isZero = [&bytesBelow](uint64 bytes) { return bytesBelow(bytes, 1); };
        return (word | bytesBelow(word, 0x20) | isZero(word ^ EACH_BYTE * '"') | isZero(word ^ EACH_BYTE * '\\')) &
               EACH_BYTE * 0x80;
    }

    void WriteObject(nlohmann::json::object_t const& members)
    {
        text.push_back('{');
        bool isFirst = true;
        for (auto const& [key, value] : members)
        {
            if (!std::exchange(isFirst, false))
            {
                text.push_back(',');
            }
            WriteString(key);
            text.push_back(':');
            Write(value);
        }
        text.push_back('}');
    }

    void WriteArray(nlohmann::json::array_t const& elements)
    {
        text.push_back('[');
        bool isFirst = true;
        for (nlohmann::json const& element : elements)
        {
            if (!std::exchange(isFirst, false))
            {
                text.push_back(',');
            }
            Write(element);
        }
        text.push_back(']');
    }

    void WriteString(std::string const& value)
    {
        if (!IsPlain(value))
        {
            text += DumpOf(value);
            return;
        }
        text.push_back('"');
        text += value;
        text.push_back('"');
    }

    template <typename Integer>
    void WriteInteger(Integer value)
    {
        std::array<char, 24> digits{};
        text.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
    }

    static constexpr uint64 EACH_BYTE = 0x0101010101010101U;

    std::string& text;
};

} // namespace

nlohmann::json Read(std::string_view text)
{
    if (text.size() > MAX_BYTES)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is longer than %zu bytes.", MAX_BYTES);
    }
    if (DepthOf(text) > MAX_DEPTH)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is nested deeper than %u levels.", MAX_DEPTH);
    }
    if (text.find('\0') != std::string_view::npos) // the library takes it for the end
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is not valid JSON: it has a zero byte.");
    }
    try
    {
        return nlohmann::json::parse(text.begin(), text.end());
    }
    catch (nlohmann::json::exception const& exception)
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is not valid JSON: %s", exception.what());
    }
}

std::string Write(nlohmann::json const& document)
{
    std::string text;
    text.reserve(USUAL_BYTES);
    TextWriter(text).Write(document);
    return text;
}

} // namespace ZuRest::JsonText

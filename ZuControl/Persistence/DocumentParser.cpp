#include "ZuControl/Persistence/DocumentParser.h"

#include "wApi/wTypes.h"

#include <nlohmann/json.hpp>

#include <cstring>
#include <utility>
#include <vector>

namespace ZuControl
{

namespace
{

using Json = nlohmann::json;

/// Goes over a text once, without recursion. It takes less than the library does, and makes of it what the library makes.
class Scanner
{
public:
    explicit Scanner(std::string const& text) : next(text.data()), end(text.data() + text.size())
    {
    }

    /// False for what is not JSON, as far as can be told here; `root` then holds what came before.
    bool Run(Json& root)
    {
        for (Json* slot = &root; slot != nullptr;)
        {
            if (!ReadValue(*slot))
            {
                return false;
            }
            if (isOpen)
            {
                slot = BeginMember();
                continue;
            }
            slot = EndValue();
            if (open.empty())
            {
                SkipBlanks();
                return next == end;
            }
        }
        return false;
    }

private:
    /// Reads a scalar, or the beginning of what has members: `isOpen` then, unless it is empty.
    bool ReadValue(Json& slot)
    {
        isOpen = false;
        SkipBlanks();
        if (next == end)
        {
            return false;
        }
        switch (*next)
        {
        case '{':
            return Open(slot, Json::object(), '}');
        case '[':
            return Open(slot, Json::array(), ']');
        case '"':
            return ReadText(slot);
        case 't':
            return ReadLiteral(slot, "true", true);
        case 'f':
            return ReadLiteral(slot, "false", false);
        case 'n':
            return ReadLiteral(slot, "null", nullptr);
        default:
            return ReadNumber(slot);
        }
    }

    bool Open(Json& slot, Json&& empty, char closing)
    {
        ++next;
        slot = std::move(empty);
        SkipBlanks();
        if (!Take(closing))
        {
            open.push_back(&slot); // it stays where it is: what it lies in does not grow before it is closed
            isOpen = true;
        }
        return true;
    }

    /// Closes what ends here and gives the place of the value that follows; null at the end and where neither stands.
    Json* EndValue()
    {
        while (!open.empty())
        {
            SkipBlanks();
            if (Take(','))
            {
                return BeginMember();
            }
            if (!Take(open.back()->is_object() ? '}' : ']'))
            {
                return nullptr;
            }
            open.pop_back();
        }
        return nullptr;
    }

    Json* BeginMember()
    {
        if (open.back()->is_array())
        {
            auto& elements = open.back()->get_ref<Json::array_t&>();
            elements.emplace_back(nullptr);
            return &elements.back();
        }
        SkipBlanks();
        std::string key;
        if (next == end || *next != '"' || !ReadString(key))
        {
            return nullptr;
        }
        SkipBlanks();
        if (!Take(':'))
        {
            return nullptr;
        }
        // Saved documents have their keys in order. Of a key that is there twice the later value stays.
        auto& members = open.back()->get_ref<Json::object_t&>();
        return &members.emplace_hint(members.end(), std::move(key), nullptr)->second;
    }

    bool ReadText(Json& slot)
    {
        std::string text;
        if (!ReadString(text))
        {
            return false;
        }
        slot = std::move(text);
        return true;
    }

    bool ReadString(std::string& text)
    {
        char const* const opening = next++;
        bool isPlain = true;
        while (next != end && *next != '"')
        {
            auto const character = static_cast<unsigned char>(*next);
            if (character < 0x20)
            {
                return false;
            }
            bool const isEscape = character == '\\';
            isPlain = isPlain && !isEscape && character < 0x80;
            next += isEscape && next + 1 != end ? 2 : 1;
        }
        if (next == end)
        {
            return false;
        }
        ++next;
        if (isPlain)
        {
            text.assign(opening + 1, next - 1);
            return true;
        }
        Json token;
        if (!ReadByLibrary(token, opening))
        {
            return false;
        }
        text = std::move(token.get_ref<std::string&>());
        return true;
    }

    bool ReadLiteral(Json& slot, char const* literal, Json&& value)
    {
        std::size_t const length = std::strlen(literal);
        if (static_cast<std::size_t>(end - next) < length || std::memcmp(next, literal, length) != 0)
        {
            return false;
        }
        next += length;
        slot = std::move(value);
        return true;
    }

    bool ReadNumber(Json& slot)
    {
        constexpr std::ptrdiff_t MOST_DIGITS = 18; // of those that fit into 64 bits in any case
        char const* const start = next;
        uint64 number = 0;
        while (next != end && *next >= '0' && *next <= '9')
        {
            number = number * 10 + static_cast<uint64>(*next++ - '0'); // wraps where it is not used
        }
        std::ptrdiff_t const digits = next - start;
        bool const isWhole = next == end || std::strchr(".eE+-", *next) == nullptr;
        if (isWhole && digits > 0 && digits <= MOST_DIGITS && (*start != '0' || digits == 1))
        {
            slot = number;
            return true;
        }
        while (next != end && *next != '\0' && std::strchr("0123456789.eE+-", *next) != nullptr)
        {
            ++next;
        }
        return next != start && ReadByLibrary(slot, start);
    }

    bool ReadByLibrary(Json& slot, char const* start) const
    {
        slot = Json::parse(start, next, nullptr, false);
        return !slot.is_discarded();
    }

    bool Take(char wanted)
    {
        if (next == end || *next != wanted)
        {
            return false;
        }
        ++next;
        return true;
    }

    void SkipBlanks()
    {
        while (next != end && (*next == ' ' || *next == '\n' || *next == '\t' || *next == '\r'))
        {
            ++next;
        }
    }

    char const* next;
    char const* const end;
    std::vector<Json*> open; // the objects and arrays around the present place
    bool isOpen = false;     // the value just read has members to come
};

} // namespace

Json DocumentParser::Parse(std::string const& text)
{
    Json document;
    if (!Scanner(text).Run(document))
    {
        document = Json::parse(text);
    }
    return document;
}

} // namespace ZuControl

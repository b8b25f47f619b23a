#include "Host/Pcd/PcdReader.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <utility>

namespace ZuHost
{

namespace
{

using Point = RangeImage::Point;

constexpr std::size_t POINT_BYTES = 12;
constexpr std::size_t SHORTEST_ASCII_POINT = 5; // "0 0 0" without a line break
static_assert(sizeof(Point) == POINT_BYTES, "the points of a binary file are copied as they lie");

constexpr std::string_view BLANKS = " \t\r\v\f";

/// Removes the next word from `text` and returns it; empty at the end.
std::string_view TakeWord(std::string_view& text, std::string_view blanks = BLANKS)
{
    std::size_t const begin = std::min(text.find_first_not_of(blanks), text.size());
    std::size_t const end = std::min(text.find_first_of(blanks, begin), text.size());
    std::string_view const word = text.substr(begin, end - begin);
    text.remove_prefix(end);
    return word;
}

template <typename Number>
bool ParseNumber(std::string_view word, Number& number)
{
    auto const result = std::from_chars(word.data(), word.data() + word.size(), number);
    return result.ec == std::errc{} && result.ptr == word.data() + word.size();
}

/// Replaces each run of blanks with one space.
std::string Squeezed(std::string_view text)
{
    std::string squeezed;
    for (std::string_view word = TakeWord(text); !word.empty(); word = TakeWord(text))
    {
        squeezed.append(squeezed.empty() ? "" : " ").append(word);
    }
    return squeezed;
}

class Parser
{
public:
    Parser(std::string_view allBytes, std::string const& fileName) : bytes(allBytes), name(fileName)
    {
    }

    RangeImage Parse()
    {
        ParseHeader();
        CheckHeader();
        return {width, height, isBinary ? ParseBinary() : ParseAscii()};
    }

private:
    [[noreturn]] void Refuse(std::string const& reason) const
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "%s: %s", name.c_str(), reason.c_str());
    }

    /// Reads the lines up to DATA; `bytes` then begins with the data.
    void ParseHeader()
    {
        bool hasData = false;
        while (!hasData)
        {
            std::size_t const end = bytes.find('\n');
            if (end == std::string_view::npos)
            {
                Refuse("is cut short: there is no DATA line");
            }
            std::string_view rest = bytes.substr(0, end);
            bytes.remove_prefix(end + 1);
            std::string_view const key = TakeWord(rest);
            if (!key.empty() && key.front() != '#')
            {
                ParseEntry(key, Squeezed(rest));
                hasData = key == "DATA";
            }
        }
    }

    void ParseEntry(std::string_view key, std::string const& value)
    {
        auto const known = std::find(KEYS.begin(), KEYS.end(), key);
        if (known == KEYS.end())
        {
            Refuse("has an unknown header line '" + std::string(key.substr(0, LONGEST_QUOTE)) + "'");
        }
        auto& entry = entries[static_cast<std::size_t>(known - KEYS.begin())];
        if (entry.has_value())
        {
            Refuse("has two header lines " + std::string(key));
        }
        entry = value;
    }

    void CheckHeader()
    {
        if (std::string const version = Required("VERSION"); version != "0.7" && version != ".7")
        {
            Refuse("has version '" + version.substr(0, LONGEST_QUOTE) + "', not 0.7");
        }
        Expect("FIELDS", Required("FIELDS"), "x y z");
        Expect("SIZE", Required("SIZE"), "4 4 4");
        Expect("TYPE", Required("TYPE"), "F F F");
        Expect("COUNT", Entry("COUNT").value_or("1 1 1"), "1 1 1");
        width = RequiredNumber("WIDTH");
        height = RequiredNumber("HEIGHT");
        if (width == 0 || height == 0)
        {
            Refuse("has no points");
        }
        if (height == 1)
        {
            Refuse("is not organised in rows (HEIGHT 1)");
        }
        if (__builtin_mul_overflow(width, height, &pointCount) || pointCount != RequiredNumber("POINTS"))
        {
            Refuse("lies about its size: POINTS is not WIDTH times HEIGHT");
        }
        std::string const data = Required("DATA");
        if (data != "ascii" && data != "binary")
        {
            Refuse("has data of kind '" + data.substr(0, LONGEST_QUOTE) + "', not ascii or binary");
        }
        isBinary = data == "binary";
    }

    std::optional<std::string> const& Entry(std::string_view key) const
    {
        return entries[static_cast<std::size_t>(std::find(KEYS.begin(), KEYS.end(), key) - KEYS.begin())];
    }

    std::string Required(char const* key) const
    {
        std::optional<std::string> const& entry = Entry(key);
        if (!entry.has_value())
        {
            Refuse(std::string("has no header line ") + key);
        }
        return *entry;
    }

    uint64 RequiredNumber(char const* key) const
    {
        std::string const text = Required(key);
        uint64 number = 0;
        if (!ParseNumber(std::string_view(text), number))
        {
            Refuse(std::string("has a ") + key + " that is no number");
        }
        return number;
    }

    void Expect(char const* key, std::string const& value, char const* expected) const
    {
        if (value != expected)
        {
            Refuse(std::string("has ") + key + " '" + value.substr(0, LONGEST_QUOTE) + "', not '" + expected + "'");
        }
    }

    std::vector<Point> ParseBinary() const
    {
        // Divide instead of multiplying: a product could overflow and let a small file pass for a large one.
        if (bytes.size() / POINT_BYTES < pointCount)
        {
            Refuse("is cut short: " + std::to_string(bytes.size()) + " bytes of data for " +
                   std::to_string(pointCount) + " points");
        }
        if (bytes.size() != pointCount * POINT_BYTES)
        {
            Refuse("lies about its size: " + std::to_string(bytes.size() - pointCount * POINT_BYTES) +
                   " bytes behind the last point");
        }
        std::vector<Point> points(pointCount);
        std::memcpy(points.data(), bytes.data(), bytes.size());
        return points;
    }

    std::vector<Point> ParseAscii() const
    {
        if (bytes.size() / SHORTEST_ASCII_POINT < pointCount)
        {
            Refuse("is cut short: " + std::to_string(bytes.size()) + " bytes of data for " +
                   std::to_string(pointCount) + " points");
        }
        std::vector<Point> points;
        points.reserve(pointCount);
        std::string_view rest = bytes;
        while (!rest.empty())
        {
            std::size_t const end = std::min(rest.find('\n'), rest.size());
            std::string_view line = rest.substr(0, end);
            rest.remove_prefix(std::min(end + 1, rest.size()));
            if (line.find_first_not_of(BLANKS) == std::string_view::npos)
            {
                continue;
            }
            if (points.size() == pointCount)
            {
                Refuse("lies about its size: there are more than " + std::to_string(pointCount) + " points");
            }
            points.push_back(ParsePoint(line, points.size()));
        }
        if (points.size() != pointCount)
        {
            Refuse("is cut short: " + std::to_string(points.size()) + " of " + std::to_string(pointCount) + " points");
        }
        return points;
    }

    Point ParsePoint(std::string_view line, std::size_t index) const
    {
        Point point{};
        bool const good = ParseNumber(TakeWord(line), point.x) && ParseNumber(TakeWord(line), point.y) &&
                          ParseNumber(TakeWord(line), point.z) && TakeWord(line).empty();
        if (!good)
        {
            Refuse("has a point " + std::to_string(index) + " that is not three numbers");
        }
        return point;
    }

    static constexpr std::size_t LONGEST_QUOTE = 40;
    static constexpr std::array<std::string_view, 10> KEYS{"VERSION", "FIELDS", "SIZE",      "TYPE",   "COUNT",
                                                           "WIDTH",   "HEIGHT", "VIEWPOINT", "POINTS", "DATA"};

    std::string_view bytes;
    std::string const& name;
    std::array<std::optional<std::string>, KEYS.size()> entries;
    uint64 width = 0;
    uint64 height = 0;
    uint64 pointCount = 0;
    bool isBinary = false;
};

} // namespace

RangeImage ReadPcd(std::filesystem::path const& file)
{
    std::error_code error;
    if (std::filesystem::is_directory(file, error))
    {
        ZU_THROW(Zu::Status::NOT_OFFERED, "%s: is a folder", file.c_str());
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    if (stream.is_open() && stream.peek() != std::ifstream::traits_type::eof())
    {
        content << stream.rdbuf();
    }
    if (!stream.is_open() || stream.bad() || content.fail())
    {
        ZU_THROW(Zu::Status::NOT_OFFERED, "%s: %s", file.c_str(), errno != 0 ? std::strerror(errno) : "cannot be read");
    }
    return ParsePcd(content.view(), file.string());
}

RangeImage ParsePcd(std::string_view bytes, std::string const& name)
{
    return Parser(bytes, name).Parse();
}

} // namespace ZuHost

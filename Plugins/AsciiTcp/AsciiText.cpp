#include "Plugins/AsciiTcp/AsciiText.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace AsciiTcp
{

namespace
{

constexpr std::string_view HEX_DIGITS = "0123456789ABCDEF";

// The longest finite number has 309 digits before the point, plus sign, point and decimals.
constexpr std::size_t LONGEST_NUMBER = 309 + 2 + MOST_DECIMALS;

bool IsControl(char character)
{
    auto const byte = static_cast<uint8>(character);
    return byte < 32 || byte == 127;
}

/// Returns 0 to 15, or -1.
int DigitOf(char character)
{
    int digit = 0;
    auto const [end, error] = std::from_chars(&character, &character + 1, digit, 16);
    return error == std::errc{} && end == &character + 1 ? digit : -1;
}

bool IsZero(std::string_view number)
{
    return number.find_first_of("123456789") == std::string_view::npos;
}

} // namespace

bool IsPrintable(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), IsControl);
}

void AppendName(std::string& line, std::string_view name)
{
    for (char const character : name)
    {
        if (!IsControl(character) && character != ' ' && character != '=' && character != '%')
        {
            line.push_back(character);
            continue;
        }
        auto const byte = static_cast<uint8>(character);
        line.push_back('%');
        line.push_back(HEX_DIGITS[byte >> 4]);
        line.push_back(HEX_DIGITS[byte & 15]);
    }
}

std::string ReadName(std::string_view written)
{
    std::string name;
    for (std::size_t i = 0; i < written.size(); ++i)
    {
        int const high = written[i] == '%' && i + 2 < written.size() ? DigitOf(written[i + 1]) : -1;
        int const low = high >= 0 ? DigitOf(written[i + 2]) : -1;
        name.push_back(low >= 0 ? static_cast<char>(high * 16 + low) : written[i]);
        i += low >= 0 ? 2 : 0;
    }
    return name;
}

void AppendValue(std::string& line, Reading const& reading, uint32 decimals)
{
    if (reading.state != Reading::State::VALID)
    {
        line.append(reading.state == Reading::State::NONE ? "none" : "invalid");
        return;
    }
    std::array<char, LONGEST_NUMBER> digits;
    auto const result = std::to_chars(digits.data(), digits.data() + digits.size(), reading.value,
                                      std::chars_format::fixed, static_cast<int>(std::min(decimals, MOST_DECIMALS)));
    std::string_view number(digits.data(), static_cast<std::size_t>(result.ptr - digits.data()));
    if (number.starts_with('-') && IsZero(number))
    {
        number.remove_prefix(1); // a negative number was rounded to zero
    }
    line.append(number);
}

void AppendNumber(std::string& line, uint64 number)
{
    std::array<char, 20> digits;
    auto const result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    line.append(digits.data(), result.ptr);
}

void AppendError(std::string& line, int32 status, std::string_view text)
{
    line.append("ERROR ").append(std::to_string(status)).append(" ");
    for (char const character : text)
    {
        line.push_back(IsControl(character) ? ' ' : character);
    }
}

} // namespace AsciiTcp

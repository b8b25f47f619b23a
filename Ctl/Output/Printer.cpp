#include "Ctl/Output/Printer.h"

#include "Ctl/Outcome/Failure.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <ostream>
#include <unistd.h>
#include <utility>

namespace ZuCtl
{

namespace
{

/// The first character of a text: its number and how many bytes it has. Zero bytes: no UTF-8.
struct Character
{
    char32_t code = 0;
    std::size_t bytes = 0;
};

Character FirstOf(std::string_view text)
{
    auto const first = static_cast<unsigned char>(text[0]);
    if (first < 0x80)
    {
        return {first, 1};
    }
    std::size_t const bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < bytes)
    {
        return {};
    }
    char32_t code = first & (0xFFu >> (bytes + 1));
    for (std::size_t i = 1; i < bytes; ++i)
    {
        auto const next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0u) != 0x80)
        {
            return {};
        }
        code = code << 6u | (next & 0x3Fu);
    }
    constexpr char32_t SMALLEST[] = {0, 0, 0x80, 0x800, 0x10000};
    bool const isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < SMALLEST[bytes] || code > 0x10FFFF || isSurrogate ? Character{} : Character{code, bytes};
}

bool IsHarmless(char32_t code)
{
    bool const isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    bool const turns = code == 0x61C || (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
                       (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF;
    return !isControl && !turns;
}

std::string EscapeOf(char32_t code)
{
    char text[16];
    std::snprintf(text, sizeof text, code < 0x100 ? "\\x%02x" : "\\u%04x", static_cast<unsigned>(code));
    return text;
}

std::size_t WidthOf(std::string_view text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0u) != 0x80; }));
}

constexpr std::size_t BAR_WIDTH = 30;

} // namespace

std::string Printable(std::string_view text)
{
    std::string printable;
    while (!text.empty())
    {
        Character const first = FirstOf(text);
        std::size_t const bytes = std::max<std::size_t>(first.bytes, 1);
        if (first.bytes != 0 && IsHarmless(first.code))
        {
            printable.append(text.substr(0, bytes));
        }
        else
        {
            printable.append(EscapeOf(first.bytes != 0 ? first.code : static_cast<unsigned char>(text[0])));
        }
        text.remove_prefix(bytes);
    }
    return printable;
}

Cell::Cell(std::string newText, Colour newColour) : text(std::move(newText)), colour(newColour)
{
}

Printer::Printer(std::ostream& newOutput, std::ostream& newErrors, Manner newManner)
    : output(newOutput), errors(newErrors), manner(newManner)
{
}

Printer::~Printer()
{
    EndBar();
}

Printer::Manner Printer::MannerOf(bool allowsColours)
{
    char const* const noColour = std::getenv("NO_COLOR");
    char const* const terminal = std::getenv("TERM");
    bool const refusesColours = noColour != nullptr && *noColour != '\0';
    bool const isDumb = terminal == nullptr || std::string_view(terminal) == "dumb";
    Manner manner;
    manner.isTerminal = isatty(STDOUT_FILENO) == 1;
    manner.showsBars = isatty(STDERR_FILENO) == 1;
    manner.canClear = manner.isTerminal && !isDumb;
    manner.hasColours = manner.canClear && allowsColours && !refusesColours;
    return manner;
}

std::string Printer::Painted(std::string_view text, Colour colour) const
{
    if (!manner.hasColours || colour == Colour::PLAIN)
    {
        return std::string(text);
    }
    char const* const code = colour == Colour::GOOD      ? "\033[32m"
                             : colour == Colour::WARNING ? "\033[33m"
                             : colour == Colour::BAD     ? "\033[31m"
                                                         : "\033[1m";
    return std::string(code).append(text).append("\033[0m");
}

void Printer::Line(std::string_view text, Colour colour)
{
    output << Painted(Printable(text), colour) << '\n';
}

void Printer::Note(std::string_view text)
{
    output.flush();
    errors << Printable(text) << '\n';
}

void Printer::Json(nlohmann::json const& document)
{
    output << document.dump(2, ' ', true, nlohmann::json::error_handler_t::replace) << '\n';
}

void Printer::JsonLine(nlohmann::json const& document)
{
    output << document.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace) << '\n';
    Flush();
}

void Printer::Text(std::string_view text)
{
    if (!manner.isTerminal)
    {
        output << text;
        return;
    }
    while (!text.empty())
    {
        std::size_t const end = std::min(text.find('\n'), text.size());
        Line(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

void Printer::Table(std::vector<std::string> const& headings, std::vector<std::vector<Cell>> const& rows)
{
    std::vector<std::size_t> widths;
    std::ranges::transform(headings, std::back_inserter(widths), WidthOf);
    for (std::vector<Cell> const& row : rows)
    {
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            widths.at(i) = std::max(widths.at(i), WidthOf(Printable(row[i].text)));
        }
    }
    auto const print = [&](std::size_t column, std::string const& text, Colour colour, bool isLast) {
        std::size_t const gap = isLast ? 0 : widths[column] + 2 - WidthOf(text);
        output << Painted(text, colour) << std::string(gap, ' ') << (isLast ? "\n" : "");
    };
    for (std::size_t i = 0; i < headings.size(); ++i)
    {
        print(i, headings[i], Colour::BOLD, i + 1 == headings.size());
    }
    for (std::vector<Cell> const& row : rows)
    {
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            print(i, Printable(row[i].text), row[i].colour, i + 1 == row.size());
        }
    }
}

void Printer::Bar(std::string_view title, std::uint64_t done, std::uint64_t total)
{
    if (!manner.showsBars || total == 0)
    {
        return;
    }
    std::size_t const full = static_cast<std::size_t>(std::min(done, total) * BAR_WIDTH / total);
    errors << '\r' << Printable(title) << " [" << std::string(full, '#') << std::string(BAR_WIDTH - full, '.') << "] "
           << std::min(done, total) * 100 / total << " %" << std::flush;
    hasBar = true;
}

void Printer::EndBar()
{
    if (std::exchange(hasBar, false))
    {
        errors << std::endl;
    }
}

void Printer::Clear()
{
    if (manner.canClear)
    {
        output << "\033[H\033[J";
    }
}

void Printer::Flush()
{
    output.flush();
    if (!output)
    {
        throw Failure(ExitStatus::LOCAL_FILE, "Standard output cannot be written");
    }
}

} // namespace ZuCtl

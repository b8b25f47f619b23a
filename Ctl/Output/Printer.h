#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace ZuCtl
{

enum class Colour
{
    PLAIN,
    GOOD,
    WARNING,
    BAD,
    BOLD
};

/// `text` with control characters, characters that change the direction of the text, and bytes that are no UTF-8 as
/// escapes: a server cannot control the terminal.
std::string Printable(std::string_view text);

/// One cell of a table.
struct Cell
{
    Cell(std::string newText, Colour newColour = Colour::PLAIN); // implicit: most cells are plain texts

    std::string text;
    Colour colour;
};

/// Writes what a command shows.
class Printer final
{
public:
    struct Manner
    {
        bool hasColours = false;
        bool isTerminal = false; ///< standard output is a terminal
        bool showsBars = false;  ///< standard error is a terminal
        bool canClear = false;   ///< standard output is a terminal that knows control sequences
    };

    Printer(std::ostream& newOutput, std::ostream& newErrors, Manner newManner);
    ~Printer(); ///< ends a bar, so that the text that follows has a line of its own
    Printer(Printer const&) = delete;
    Printer& operator=(Printer const&) = delete;

    /// One line, made printable.
    void Line(std::string_view text, Colour colour = Colour::PLAIN);
    /// On standard error: what a person should know besides the result.
    void Note(std::string_view text);
    void Json(nlohmann::json const& document);
    void JsonLine(nlohmann::json const& document); ///< in one line, and flushed as by `Flush`
    /// The text as it is; made printable line by line on a terminal.
    void Text(std::string_view text);
    /// Columns of equal width under headings.
    void Table(std::vector<std::string> const& headings, std::vector<std::vector<Cell>> const& rows);
    /// A bar on standard error for a transfer; nothing if it is no terminal.
    void Bar(std::string_view title, std::uint64_t done, std::uint64_t total);
    void EndBar();
    /// Clears a terminal; nothing elsewhere.
    void Clear();
    /// Throws `Failure` with `ExitStatus::LOCAL_FILE` if the reader of the output has gone: a stream must end then.
    void Flush();

    static Manner MannerOf(bool allowsColours); ///< of the process: standard output and error, `NO_COLOR`, `TERM`

private:
    std::string Painted(std::string_view text, Colour colour) const;

    std::ostream& output;
    std::ostream& errors;
    Manner manner;
    bool hasBar = false;
};

} // namespace ZuCtl

#include "Ctl/Output/Printer.h"

#include "Ctl/Outcome/Failure.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <sstream>

namespace ZuCtl
{

namespace
{

struct Output
{
    std::ostringstream out;
    std::ostringstream errors;
};

constexpr Printer::Manner FILE_MANNER{};
constexpr Printer::Manner TERMINAL{true, true, true, true};

} // namespace

TEST(Printer, LetsNoTextControlTheTerminal)
{
    struct Case
    {
        std::string_view text;
        char const* printable;
    };
    Case const cases[] = {
        {"plain \xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", "plain \xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {"\x1B[31m\n\t\x7F", "\\x1b[31m\\x0a\\x09\\x7f"},
        {"\xC2\x9B", "\\x9b"},
        {"\xE2\x80\xAE", "\\u202e"},
        {"\xEF\xBB\xBF", "\\ufeff"},
        {"\xFF\xC3", "\\xff\\xc3"},
        {"\xC0\xAF", "\\xc0\\xaf"},
        {"\xED\xA0\x80", "\\xed\\xa0\\x80"},
        {"\xE2\x28\xA1", "\\xe2(\\xa1"},
    };
    for (Case const& one : cases)
    {
        EXPECT_EQ(Printable(one.text), one.printable);
    }
}

TEST(Printer, AlignsTheColumnsOfATable)
{
    Output output;
    Printer(output.out, output.errors, FILE_MANNER)
        .Table({"NAME", "B"}, {{Cell("\xC3\xA4"), Cell("1")}, {Cell("longer"), Cell("2", Colour::BAD)}});
    EXPECT_EQ(output.out.str(), "NAME    B\n\xC3\xA4       1\nlonger  2\n");
}

TEST(Printer, PaintsOnATerminalOnly)
{
    Output file;
    Printer(file.out, file.errors, FILE_MANNER).Line("x", Colour::BAD);
    EXPECT_EQ(file.out.str(), "x\n");
    Output terminal;
    Printer(terminal.out, terminal.errors, TERMINAL).Line("x", Colour::BAD);
    EXPECT_EQ(terminal.out.str(), "\033[31mx\033[0m\n");
}

TEST(Printer, ShowsABarOnATerminalOnly)
{
    Output file;
    Printer plain(file.out, file.errors, FILE_MANNER);
    plain.Bar("a", 1, 2);
    plain.EndBar();
    EXPECT_EQ(file.errors.str(), "");

    Output terminal;
    Printer shown(terminal.out, terminal.errors, TERMINAL);
    shown.Bar("a", 0, 0);
    shown.Bar("a", 1, 2);
    shown.EndBar();
    shown.EndBar();
    EXPECT_EQ(terminal.errors.str(), "\ra [" + std::string(15, '#') + std::string(15, '.') + "] 50 %\n");
}

TEST(Printer, KeepsBytesForAFileAndNotForATerminal)
{
    Output file;
    Printer plain(file.out, file.errors, FILE_MANNER);
    plain.Text("a\x1B\n");
    plain.Clear();
    EXPECT_EQ(file.out.str(), "a\x1B\n");
    Output terminal;
    Printer shown(terminal.out, terminal.errors, TERMINAL);
    shown.Text("a\x1B\nb");
    EXPECT_EQ(terminal.out.str(), "a\\x1b\nb\n");
}

TEST(Printer, EndsAStreamWhoseReaderHasGone)
{
    Output output;
    Printer printer(output.out, output.errors, FILE_MANNER);
    printer.Line("x");
    printer.Flush();
    output.out.setstate(std::ios::badbit);
    EXPECT_THROW(printer.Flush(), Failure);
    EXPECT_THROW(printer.JsonLine({}), Failure);
}

TEST(Printer, EndsABarBeforeTheTextThatFollows)
{
    Output terminal;
    {
        Printer printer(terminal.out, terminal.errors, TERMINAL);
        printer.Bar("a", 1, 2);
    }
    EXPECT_TRUE(terminal.errors.str().ends_with("50 %\n"));
}

TEST(Printer, ClearsATerminalThatKnowsControlSequences)
{
    Output terminal;
    Printer(terminal.out, terminal.errors, TERMINAL).Clear();
    EXPECT_EQ(terminal.out.str(), "\033[H\033[J");
    Output dumb;
    Printer(dumb.out, dumb.errors, Printer::Manner{false, true, true, false}).Clear();
    EXPECT_EQ(dumb.out.str(), "");
}

TEST(Printer, WritesDocumentsInAscii)
{
    Output output;
    Printer(output.out, output.errors, FILE_MANNER).JsonLine({{"a", "\xE2\x80\xAE\xFF"}});
    EXPECT_EQ(output.out.str(), "{\"a\":\"\\u202e\\ufffd\"}\n");
}

} // namespace ZuCtl

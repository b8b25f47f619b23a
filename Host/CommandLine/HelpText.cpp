#include "Host/CommandLine/Options.h"

#include <sstream>

namespace ZuHost
{

namespace
{

constexpr std::size_t COLUMN = 23; // of the texts
constexpr std::size_t WIDTH = 100;

/// Two columns: the option, and its text in lines that begin below each other.
std::string Entry(OptionForm const& form)
{
    std::string entry = std::string("  --") + form.name;
    if (form.kind != OptionForm::Kind::SWITCH)
    {
        entry.append(" ").append(form.value);
    }
    if (entry.size() >= COLUMN)
    {
        entry += '\n';
    }
    std::size_t lineStart = entry.ends_with('\n') ? entry.size() : 0;
    entry.resize(lineStart + COLUMN, ' ');
    std::istringstream words(form.help);
    for (std::string word; words >> word;)
    {
        if (entry.size() - lineStart + word.size() > WIDTH)
        {
            entry.back() = '\n'; // in place of the space behind the last word
            lineStart = entry.size();
            entry.resize(lineStart + COLUMN, ' ');
        }
        entry += word + ' ';
    }
    entry.back() = '\n';
    return entry;
}

} // namespace

std::string HelpText()
{
    std::string text = "usage: zucontrol-host [OPTION]...\n"
                       "A scanning sensor on the desk, joined to factory automation.\n"
                       "\n";
    for (OptionForm const& form : OptionForms())
    {
        text += Entry(form);
    }
    return text;
}

} // namespace ZuHost

#include "Host/CommandLine/Options.h"

namespace ZuHost
{

namespace
{

/// A text as roff shows it: hyphens that can be copied. No text begins with the sign of a request.
std::string Roff(std::string const& text)
{
    std::string shown;
    for (char const letter : text)
    {
        shown += letter == '\\' ? "\\e" : letter == '-' ? "\\-" : std::string(1, letter);
    }
    return shown;
}

std::string PageEntry(OptionForm const& form)
{
    std::string const value =
        form.kind == OptionForm::Kind::SWITCH ? "" : std::string(" \\fI") + Roff(form.value) + "\\fR";
    return std::string(".TP\n\\fB\\-\\-") + Roff(form.name) + "\\fR" + value + '\n' + Roff(form.help) + '\n';
}

} // namespace

std::string ManPage()
{
    std::string const version = VersionText();
    std::string page = ".TH ZUCONTROL\\-HOST 8 \"\" \"" + Roff(version.substr(0, version.find('\n'))) +
                       "\" \"System Administration\"\n"
                       ".SH NAME\nzucontrol\\-host \\- run a scanning sensor for factory automation\n"
                       ".SH SYNOPSIS\n.B zucontrol\\-host\n[\\fIOPTION\\fR]...\n"
                       ".SH DESCRIPTION\nA scanning sensor on the desk, joined to factory automation.\n"
                       ".SH OPTIONS\n";
    for (OptionForm const& form : OptionForms())
    {
        page += PageEntry(form);
    }
    return page + ".SH EXIT STATUS\n"
                  ".TP\n\\fB0\\fR\nthe stop was orderly\n"
                  ".TP\n\\fB1\\fR\nthe host cannot run, or could not save the job at the stop\n"
                  ".TP\n\\fB2\\fR\nbad input: an option, a file, a data folder or a job\n"
                  ".SH FILES\n.TP\n\\fI/etc/zucontrol/zucontrol.toml\\fR\nthe configuration of the service\n"
                  ".SH SEE ALSO\n.BR zucontrolctl (1)\n";
}

} // namespace ZuHost

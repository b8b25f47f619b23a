#include "Ctl/Program.h"

#include "Ctl/CommandLine/Call.h"
#include "Ctl/CommandLine/ManPage.h"
#include "Ctl/Commands/CommandTable.h"
#include "Ctl/Outcome/Failure.h"

#include <curl/curl.h>
#include <sodium.h>

#include <algorithm>
#include <ostream>
#include <utility>

namespace ZuCtl
{

namespace
{

using nlohmann::json;

/// Prints why a command has ended: lines for people, a document for programs.
int Report(std::vector<std::string> const& words, std::ostream& errors, Failure const& failure)
{
    int const status = static_cast<int>(failure.Status());
    if (std::ranges::find(words, "--json") != words.end())
    {
        json document{{"error", failure.what()}, {"exitStatus", status}};
        if (!failure.Problem().empty())
        {
            document["problem"] = json::parse(failure.Problem());
        }
        errors << document.dump(-1, ' ', true, json::error_handler_t::replace) << '\n';
        return status;
    }
    std::string prefix = "zucontrolctl: ";
    for (std::string text = failure.what(); !text.empty();)
    {
        std::size_t const end = std::min(text.find('\n'), text.size());
        errors << prefix << Printable(text.substr(0, end)) << '\n';
        text.erase(0, end + 1);
        prefix = "    ";
    }
    return status;
}

void Run(std::vector<std::string> const& words, std::ostream& output, std::ostream& errors)
{
    if (words.size() == 2 && words[1] == "--man") // for the build, which makes the man page
    {
        output << ManPage(CommandTable());
        return;
    }
    ParsedWords parsed = ParseWords({words.begin() + 1, words.end()}, CommandTable());
    if (parsed.command == nullptr)
    {
        output << parsed.text;
        return;
    }
    bool const allowsColours = !parsed.values.contains("--no-color");
    Printer printer(output, errors, Printer::MannerOf(allowsColours));
    auto* const run = parsed.command->run;
    Call call(std::move(parsed), CommandTable(), printer);
    run(call);
}

} // namespace

int RunCtl(std::vector<std::string> const& words, std::ostream& output, std::ostream& errors)
{
    try
    {
        if (sodium_init() < 0 || curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK)
        {
            throw Failure(ExitStatus::LOCAL_FILE, "The libraries for encryption cannot be used");
        }
        Run(words, output, errors);
        output.flush();
        if (!output)
        {
            throw Failure(ExitStatus::LOCAL_FILE, "Standard output cannot be written");
        }
        return static_cast<int>(ExitStatus::FINE);
    }
    catch (Failure const& failure)
    {
        output.flush();
        return Report(words, errors, failure);
    }
    catch (json::exception const&)
    {
        return Report(
            words, errors,
            Failure(ExitStatus::NOT_A_SENSOR, "The server answers with other documents than a ZuControl host"));
    }
    catch (std::exception const& exception)
    {
        return Report(words, errors, Failure(ExitStatus::LOCAL_FILE, exception.what()));
    }
}

} // namespace ZuCtl

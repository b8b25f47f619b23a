#include "Host/CommandLine/Options.h"

#include "Host/CommandLine/ConfigurationFile.h"
#include "ZuApi/Exception.h"

#include <algorithm>
#include <getopt.h>

namespace ZuHost
{

namespace
{

constexpr int FIRST_CODE = 256; // above all characters: there are no short options

/// The forms as getopt needs them. The code of an option is its place among the forms.
std::vector<option> MakeOptionTable()
{
    std::vector<option> table;
    for (OptionForm const& form : OptionForms())
    {
        int const argument = form.kind == OptionForm::Kind::SWITCH ? no_argument : required_argument;
        table.push_back({form.name, argument, nullptr, FIRST_CODE + static_cast<int>(table.size())});
    }
    table.push_back({}); // ends the table
    return table;
}

/// Whether the option shows a text; the rest of the command line is then ignored.
bool IsToShow(Options::Request request)
{
    using Request = Options::Request;
    return request == Request::SHOW_HELP || request == Request::SHOW_MAN_PAGE || request == Request::SHOW_VERSION;
}

void Apply(GivenOption const& given, Options& options)
{
    given.form->apply(given.label, given.text, options);
}

void CheckTogether(Options const& options)
{
    if (options.partStandsStill && !options.replayFile.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "options '--still' and '--replay' exclude each other");
    }
    if (options.certificateFile.empty() != options.keyFile.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "options '--certificate' and '--key' need each other");
    }
    if (!options.certificateFile.empty() && options.httpsAddress.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--certificate' needs '--https', which serves it");
    }
}

/// The options of the command line alone.
Options ReadWords(std::vector<std::string> const& words)
{
    std::vector<std::string> copies = words; // getopt needs writable words
    std::vector<char*> arguments;
    for (std::string& copy : copies)
    {
        arguments.push_back(copy.data());
    }
    arguments.push_back(nullptr);
    int const count = static_cast<int>(copies.size());

    auto const table = MakeOptionTable();
    Options options;
    options.words = words;
    optind = 0; // 0, not 1: resets the parser after an earlier command line
    while (!IsToShow(options.request))
    {
        int const current = std::max(optind, 1);
        // "+": do not reorder, so that `current` is the word at fault. ":": we write the error texts.
        int const code = getopt_long(count, arguments.data(), "+:", table.data(), nullptr);
        if (code == -1)
        {
            break;
        }
        char const* const word = words[static_cast<std::size_t>(current)].c_str();
        if (code == ':')
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '%s' needs a value", word);
        }
        if (code == '?')
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '%s' is not known or takes no value", word);
        }
        OptionForm const& form = OptionForms()[static_cast<std::size_t>(code - FIRST_CODE)];
        options.given.push_back({&form, std::string("option '--") + form.name + "'", optarg == nullptr ? "" : optarg});
        Apply(options.given.back(), options);
    }
    if (!IsToShow(options.request) && optind < count)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "'%s' is no option", words[static_cast<std::size_t>(optind)].c_str());
    }
    return options;
}

/// The file's options that the command line does not replace, and behind them those of the command line. Single parameters
/// of protocols replace each other by their order.
std::vector<GivenOption> Merged(std::vector<GivenOption> const& ofFile, std::vector<GivenOption> const& ofLine)
{
    std::vector<GivenOption> merged;
    std::copy_if(ofFile.begin(), ofFile.end(), std::back_inserter(merged), [&ofLine](GivenOption const& given) {
        return given.form->name == std::string_view("param") ||
               std::none_of(ofLine.begin(), ofLine.end(),
                            [&given](auto const& other) { return other.form == given.form; });
    });
    merged.insert(merged.end(), ofLine.begin(), ofLine.end());
    return merged;
}

} // namespace

ConfiguredOptions ReadConfiguration(std::vector<std::string> const& words)
{
    ConfiguredOptions result;
    Options const ofLine = ReadWords(words);
    std::filesystem::path const path =
        ofLine.configurationFile.empty() ? Options::STANDARD_CONFIGURATION : ofLine.configurationFile;
    ConfigurationFile file = ConfigurationFile::Read(path);
    result.faults = std::move(file.faults);
    if (!result.faults.empty())
    {
        return result;
    }
    result.options.words = words;
    result.options.given = Merged(file.given, ofLine.given);
    for (GivenOption const& given : result.options.given)
    {
        Apply(given, result.options);
    }
    result.options.configurationFile = path;
    CheckTogether(result.options);
    return result;
}

Options ParseOptions(std::vector<std::string> const& words)
{
    Options options = ReadWords(words);
    bool const takesFile = !options.configurationFile.empty() && !IsToShow(options.request) &&
                           options.request != Options::Request::CHECK_CONFIGURATION;
    if (!takesFile)
    {
        CheckTogether(options);
        return options;
    }
    ConfiguredOptions configured = ReadConfiguration(words);
    if (!configured.faults.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s", configured.faults.front().c_str());
    }
    return std::move(configured.options);
}

} // namespace ZuHost

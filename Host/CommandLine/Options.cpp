#include "Host/CommandLine/Options.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <getopt.h>
#include <string_view>
#include <utility>

namespace ZuHost
{

namespace
{

constexpr std::array DEPLOYMENT_NAMES{
    std::pair<std::string_view, Deployment>{"physical-sensor", Deployment::PHYSICAL_SENSOR},
    std::pair<std::string_view, Deployment>{"virtual-sensor", Deployment::VIRTUAL_SENSOR},
    std::pair<std::string_view, Deployment>{"physical-brackle", Deployment::PHYSICAL_BRACKLE},
    std::pair<std::string_view, Deployment>{"virtual-brackle", Deployment::VIRTUAL_BRACKLE},
    std::pair<std::string_view, Deployment>{"tavrin-service-app", Deployment::TAVRIN_SERVICE_APP},
};

constexpr std::array LOG_LEVEL_NAMES{
    std::pair<std::string_view, LogLevel>{"error", LogLevel::ERROR},
    std::pair<std::string_view, LogLevel>{"warning", LogLevel::WARNING},
    std::pair<std::string_view, LogLevel>{"info", LogLevel::INFO},
};

template <typename Value, std::size_t Count>
Value ParseName(char const* optionName, std::string const& text,
                std::array<std::pair<std::string_view, Value>, Count> const& names)
{
    auto const found =
        std::find_if(names.begin(), names.end(), [&text](auto const& name) { return name.first == text; });
    if (found != names.end())
    {
        return found->second;
    }
    std::string known;
    for (auto const& name : names)
    {
        known.append(known.empty() ? "" : ", ").append(name.first);
    }
    ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--%s': '%s' is none of %s", optionName, text.c_str(), known.c_str());
}

double ParseRate(std::string const& text)
{
    double rateHz = 0;
    char const* const end = text.data() + text.size();
    auto const result = std::from_chars(text.data(), end, rateHz);
    if (result.ec != std::errc{} || result.ptr != end || !std::isfinite(rateHz) || std::signbit(rateHz) ||
        rateHz > Options::MAX_RATE_HZ)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--rate': '%s' is no number of profiles per second from 0 to %.0f",
                 text.c_str(), Options::MAX_RATE_HZ);
    }
    return rateHz;
}

uint64 ParseNumber(char const* optionName, char const* unit, std::string const& text, uint64 most)
{
    uint64 number = 0;
    char const* const end = text.data() + text.size();
    auto const result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc{} || result.ptr != end || number == 0 || number > most)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--%s': '%s' is no number of %s from 1 to %llu", optionName,
                 text.c_str(), unit, static_cast<unsigned long long>(most));
    }
    return number;
}

uint64 ParseSeconds(char const* optionName, std::string const& text, uint64 most)
{
    return ParseNumber(optionName, "seconds", text, most);
}

/// Splits "127.0.0.1:8080" or "[::1]:8080". The server checks whether the address is valid and may be used.
void ParseEndpoint(char const* optionName, std::string const& text, std::string& parsedAddress, uint16& parsedPort)
{
    std::size_t const colon = std::min(text.rfind(':'), text.size());
    std::string address = text.substr(0, colon);
    if (address.starts_with('[') && address.ends_with(']'))
    {
        address = address.substr(1, address.size() - 2);
    }
    else if (address.find(':') != std::string::npos)
    {
        address.clear(); // version 6 without brackets: the end of the address is ambiguous
    }
    uint16 port = 0;
    char const* const end = text.data() + text.size();
    auto const result = std::from_chars(std::min(text.data() + colon + 1, end), end, port);
    if (address.empty() || result.ec != std::errc{} || result.ptr != end)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "option '--%s': '%s' is not of the form ADDRESS:PORT, such as 127.0.0.1:8080 or [::1]:8080",
                 optionName, text.c_str());
    }
    parsedAddress = std::move(address);
    parsedPort = port;
}

/// The job's name must be usable as the name of a file.
JobName ParseJobName(std::string const& text)
{
    try
    {
        return JobName(text);
    }
    catch (Zu::Exception const& exception)
    {
        ZU_THROW(exception.Status(), "option '--job': %s", exception.what());
    }
}

ParameterSetting ParseSetting(std::string const& text)
{
    std::size_t const equals = text.find('=');
    std::size_t const point = text.substr(0, equals).find('.');
    if (equals == std::string::npos || point == std::string::npos || point == 0 || point + 1 == equals)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--param': '%s' is not of the form TYPE.KEY=VALUE", text.c_str());
    }
    return {text.substr(0, point), text.substr(point + 1, equals - point - 1), text.substr(equals + 1)};
}

std::string ParseNotEmpty(char const* optionName, std::string const& text)
{
    if (text.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--%s' needs a value that is not empty", optionName);
    }
    return text;
}

using OptionName = char const*;
using OptionText = std::string const&;

/// An option of the command line.
struct OptionForm
{
    OptionName name;
    int argument; ///< as in `option::has_arg`
    /// Takes the option over; `text` is empty for an option without a value. Throws `Zu::Status::BAD_ARGUMENT`.
    void (*apply)(OptionName name, OptionText text, Options& options);
};

constexpr std::array OPTION_FORMS{
    OptionForm{"http", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   ParseEndpoint(name, text, options.httpAddress, options.httpPort);
               }},
    OptionForm{"https", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   ParseEndpoint(name, text, options.httpsAddress, options.httpsPort);
               }},
    OptionForm{"certificate", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.certificateFile = ParseNotEmpty(name, text);
               }},
    OptionForm{"key", required_argument,
               [](OptionName name, OptionText text, Options& options) { options.keyFile = ParseNotEmpty(name, text); }},
    OptionForm{"insecure", no_argument, [](OptionName, OptionText, Options& options) { options.isInsecure = true; }},
    OptionForm{"keep-alive", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.keepAliveSeconds = ParseSeconds(name, text, Options::MAX_KEEP_ALIVE_SECONDS);
               }},
    OptionForm{"operation-limit", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.operationLimitSeconds = ParseSeconds(name, text, Options::MAX_OPERATION_LIMIT_SECONDS);
               }},
    OptionForm{"stop-limit", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.stopLimitSeconds = ParseSeconds(name, text, Options::MAX_STOP_LIMIT_SECONDS);
               }},
    OptionForm{
        "token", required_argument,
        [](OptionName name, OptionText text, Options& options) { options.tokenFile = ParseNotEmpty(name, text); }},
    OptionForm{"login-notice", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.loginNoticeFile = ParseNotEmpty(name, text);
               }},
    OptionForm{"reset-administrator", no_argument,
               [](OptionName, OptionText, Options& options) { options.resetsAdministrator = true; }},
    OptionForm{
        "data", required_argument,
        [](OptionName name, OptionText text, Options& options) { options.dataFolder = ParseNotEmpty(name, text); }},
    OptionForm{"job", required_argument,
               [](OptionName, OptionText text, Options& options) { options.jobName = ParseJobName(text); }},
    OptionForm{"plugins", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.pluginFolders.emplace_back(ParseNotEmpty(name, text));
               }},
    OptionForm{
        "plugin-keys", required_argument,
        [](OptionName name, OptionText text, Options& options) { options.pluginKeys = ParseNotEmpty(name, text); }},
    OptionForm{"check-plugin", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.request = Options::Request::CHECK_PLUGIN;
                   options.checkedPlugin = ParseNotEmpty(name, text);
               }},
    OptionForm{"check-trail", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.request = Options::Request::CHECK_TRAIL;
                   options.checkedTrail = ParseNotEmpty(name, text);
               }},
    OptionForm{"trail-days", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.trailDays = ParseNumber(name, "days", text, Options::MAX_TRAIL_DAYS);
               }},
    OptionForm{"trail-mib", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.trailMib = ParseNumber(name, "MiB", text, Options::MAX_TRAIL_MIB);
               }},
    OptionForm{"allow-core-dumps", no_argument,
               [](OptionName, OptionText, Options& options) { options.allowsCoreDumps = true; }},
    OptionForm{"deployment", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.deployment = ParseName(name, text, DEPLOYMENT_NAMES);
               }},
    OptionForm{
        "replay", required_argument,
        [](OptionName name, OptionText text, Options& options) { options.replayFile = ParseNotEmpty(name, text); }},
    OptionForm{"still", no_argument, [](OptionName, OptionText, Options& options) { options.partStandsStill = true; }},
    OptionForm{"rate", required_argument,
               [](OptionName, OptionText text, Options& options) { options.rateHz = ParseRate(text); }},
    OptionForm{"start", no_argument, [](OptionName, OptionText, Options& options) { options.start = true; }},
    OptionForm{"enable", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.enabledTypes.push_back(ParseNotEmpty(name, text));
               }},
    OptionForm{"param", required_argument,
               [](OptionName, OptionText text, Options& options) { options.settings.push_back(ParseSetting(text)); }},
    OptionForm{"log", required_argument,
               [](OptionName name, OptionText text, Options& options) {
                   options.logLevel = ParseName(name, text, LOG_LEVEL_NAMES);
               }},
    OptionForm{"help", no_argument,
               [](OptionName, OptionText, Options& options) { options.request = Options::Request::SHOW_HELP; }},
    OptionForm{"version", no_argument,
               [](OptionName, OptionText, Options& options) { options.request = Options::Request::SHOW_VERSION; }},
};

constexpr int FIRST_CODE = 256; // above all characters: there are no short options

/// The forms as getopt needs them. The code of an option is its place among the forms.
std::array<option, OPTION_FORMS.size() + 1> MakeOptionTable()
{
    std::array<option, OPTION_FORMS.size() + 1> table{}; // the last one ends the table
    for (std::size_t i = 0; i < OPTION_FORMS.size(); ++i)
    {
        table[i] = {OPTION_FORMS[i].name, OPTION_FORMS[i].argument, nullptr, FIRST_CODE + static_cast<int>(i)};
    }
    return table;
}

/// Whether the option shows a text; the rest of the command line is then ignored.
bool IsToShow(Options::Request request)
{
    return request == Options::Request::SHOW_HELP || request == Options::Request::SHOW_VERSION;
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

} // namespace

Options ParseOptions(std::vector<std::string> const& words)
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
        if (code == ':')
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '%s' needs a value",
                     words[static_cast<std::size_t>(current)].c_str());
        }
        if (code == '?')
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '%s' is not known or takes no value",
                     words[static_cast<std::size_t>(current)].c_str());
        }
        OptionForm const& form = OPTION_FORMS.at(static_cast<std::size_t>(code - FIRST_CODE));
        form.apply(form.name, optarg == nullptr ? "" : optarg, options);
    }
    if (!IsToShow(options.request) && optind < count)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "'%s' is no option", words[static_cast<std::size_t>(optind)].c_str());
    }
    CheckTogether(options);
    return options;
}

std::string HelpText()
{
    return "usage: zucontrol-host [OPTION]...\n"
           "A scanning sensor on the desk, joined to factory automation.\n"
           "\n"
           "  --http ADDRESS:PORT  where the REST service listens; port 0: a free one (127.0.0.1:8080)\n"
           "  --https ADDRESS:PORT where the REST service listens for HTTPS as well; port 0: a free one\n"
           "  --certificate FILE   the certificate for HTTPS, with the authorities between it and the root; without\n"
           "                       it the host makes its own, whose authority GET /authority shows\n"
           "  --key FILE           the private key of the certificate\n"
           "  --insecure           let --http take any address, without encryption\n"
           "  --keep-alive SECONDS how often a stream without news sends a comment (15)\n"
           "  --token FILE         ask REST clients for the bearer token in this file\n"
           "  --login-notice FILE  a text, such as the conditions of use, for clients that are not logged in\n"
           "  --reset-administrator\n"
           "                       show a one-time code with which POST /setup makes an administrator\n"
           "  --data DIR           where jobs and settings live (zucontrol-data)\n"
           "  --job NAME           the job to begin with (default)\n"
           "  --plugins DIR        folder of protocol plug-ins; may be repeated (plugins, beside the program)\n"
           "  --plugin-keys FILE   load only plug-ins that an Ed25519 key in this file has signed (NAME.so.sig)\n"
           "  --check-plugin FILE  lead one plug-in through its whole life, tell what failed or what it offers, and "
           "end\n"
           "  --check-trail FILE   check the chain of a trail, and end\n"
           "  --trail-days DAYS    how long the trail keeps its entries (400)\n"
           "  --trail-mib MIB      how large the file of the trail may be (64)\n"
           "  --allow-core-dumps   for developers: a crash may write the memory of the host, with its secrets, to a "
           "file\n"
           "  --deployment KIND    physical-sensor, virtual-sensor, physical-brackle, virtual-brackle or\n"
           "                       tavrin-service-app (physical-sensor)\n"
           "  --replay FILE.pcd    replay a recorded range image, a row a profile, in metres, instead of the\n"
           "                       simulated part\n"
           "  --still              the simulated part stands still under the laser, so that its measurements never "
           "change\n"
           "  --operation-limit SECONDS\n"
           "                       how long an operation on the sensor may take before it is a problem (60)\n"
           "  --stop-limit SECONDS how long an orderly stop may take before it is given up with status 1 (30)\n"
           "  --rate HZ            profiles per second; 0: as fast as the consumers take them (50)\n"
           "  --start              start scanning at once\n"
           "  --enable TYPE        enable a protocol; may be repeated\n"
           "  --param TYPE.KEY=VALUE\n"
           "                       set one parameter of a protocol before it runs; may be repeated\n"
           "  --log LEVEL          error, warning or info (info)\n"
           "  --help               show this text\n"
           "  --version            show the version\n";
}

std::string VersionText()
{
    return "zucontrol-host " ZU_VERSION "\n";
}

} // namespace ZuHost

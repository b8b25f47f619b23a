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

enum OptionCode : int
{
    HTTP = 256, // above all characters: there are no short options
    HTTPS,
    CERTIFICATE,
    KEY,
    INSECURE,
    KEEP_ALIVE,
    OPERATION_LIMIT,
    STOP_LIMIT,
    TOKEN,
    RESET_ADMINISTRATOR,
    DATA,
    JOB,
    PLUGINS,
    PLUGIN_KEYS,
    CHECK_PLUGIN,
    CHECK_TRAIL,
    TRAIL_DAYS,
    TRAIL_MIB,
    ALLOW_CORE_DUMPS,
    DEPLOYMENT,
    REPLAY,
    STILL,
    RATE,
    START,
    ENABLE,
    PARAM,
    LOG,
    HELP,
    VERSION
};

constexpr std::array OPTION_TABLE{
    option{"http", required_argument, nullptr, HTTP},
    option{"https", required_argument, nullptr, HTTPS},
    option{"certificate", required_argument, nullptr, CERTIFICATE},
    option{"key", required_argument, nullptr, KEY},
    option{"insecure", no_argument, nullptr, INSECURE},
    option{"keep-alive", required_argument, nullptr, KEEP_ALIVE},
    option{"operation-limit", required_argument, nullptr, OPERATION_LIMIT},
    option{"stop-limit", required_argument, nullptr, STOP_LIMIT},
    option{"token", required_argument, nullptr, TOKEN},
    option{"reset-administrator", no_argument, nullptr, RESET_ADMINISTRATOR},
    option{"data", required_argument, nullptr, DATA},
    option{"job", required_argument, nullptr, JOB},
    option{"plugins", required_argument, nullptr, PLUGINS},
    option{"plugin-keys", required_argument, nullptr, PLUGIN_KEYS},
    option{"check-plugin", required_argument, nullptr, CHECK_PLUGIN},
    option{"check-trail", required_argument, nullptr, CHECK_TRAIL},
    option{"trail-days", required_argument, nullptr, TRAIL_DAYS},
    option{"trail-mib", required_argument, nullptr, TRAIL_MIB},
    option{"allow-core-dumps", no_argument, nullptr, ALLOW_CORE_DUMPS},
    option{"deployment", required_argument, nullptr, DEPLOYMENT},
    option{"replay", required_argument, nullptr, REPLAY},
    option{"still", no_argument, nullptr, STILL},
    option{"rate", required_argument, nullptr, RATE},
    option{"start", no_argument, nullptr, START},
    option{"enable", required_argument, nullptr, ENABLE},
    option{"param", required_argument, nullptr, PARAM},
    option{"log", required_argument, nullptr, LOG},
    option{"help", no_argument, nullptr, HELP},
    option{"version", no_argument, nullptr, VERSION},
    option{nullptr, 0, nullptr, 0},
};

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

void Apply(int code, std::string const& text, Options& options)
{
    switch (code)
    {
    case HTTP:
        ParseEndpoint("http", text, options.httpAddress, options.httpPort);
        break;
    case HTTPS:
        ParseEndpoint("https", text, options.httpsAddress, options.httpsPort);
        break;
    case CERTIFICATE:
        options.certificateFile = ParseNotEmpty("certificate", text);
        break;
    case KEY:
        options.keyFile = ParseNotEmpty("key", text);
        break;
    case INSECURE:
        options.isInsecure = true;
        break;
    case TOKEN:
        options.tokenFile = ParseNotEmpty("token", text);
        break;
    case RESET_ADMINISTRATOR:
        options.resetsAdministrator = true;
        break;
    case DATA:
        options.dataFolder = ParseNotEmpty("data", text);
        break;
    case JOB:
        options.jobName = ParseJobName(text);
        break;
    case PLUGINS:
        options.pluginFolders.emplace_back(ParseNotEmpty("plugins", text));
        break;
    case PLUGIN_KEYS:
        options.pluginKeys = ParseNotEmpty("plugin-keys", text);
        break;
    case CHECK_PLUGIN:
        options.request = Options::Request::CHECK_PLUGIN;
        options.checkedPlugin = ParseNotEmpty("check-plugin", text);
        break;
    case CHECK_TRAIL:
        options.request = Options::Request::CHECK_TRAIL;
        options.checkedTrail = ParseNotEmpty("check-trail", text);
        break;
    case TRAIL_DAYS:
        options.trailDays = ParseNumber("trail-days", "days", text, Options::MAX_TRAIL_DAYS);
        break;
    case TRAIL_MIB:
        options.trailMib = ParseNumber("trail-mib", "MiB", text, Options::MAX_TRAIL_MIB);
        break;
    case ALLOW_CORE_DUMPS:
        options.allowsCoreDumps = true;
        break;
    case DEPLOYMENT:
        options.deployment = ParseName("deployment", text, DEPLOYMENT_NAMES);
        break;
    case REPLAY:
        options.replayFile = ParseNotEmpty("replay", text);
        break;
    case STILL:
        options.partStandsStill = true;
        break;
    case KEEP_ALIVE:
        options.keepAliveSeconds = ParseSeconds("keep-alive", text, Options::MAX_KEEP_ALIVE_SECONDS);
        break;
    case OPERATION_LIMIT:
        options.operationLimitSeconds = ParseSeconds("operation-limit", text, Options::MAX_OPERATION_LIMIT_SECONDS);
        break;
    case STOP_LIMIT:
        options.stopLimitSeconds = ParseSeconds("stop-limit", text, Options::MAX_STOP_LIMIT_SECONDS);
        break;
    case RATE:
        options.rateHz = ParseRate(text);
        break;
    case START:
        options.start = true;
        break;
    case ENABLE:
        options.enabledTypes.push_back(ParseNotEmpty("enable", text));
        break;
    case PARAM:
        options.settings.push_back(ParseSetting(text));
        break;
    case LOG:
        options.logLevel = ParseName("log", text, LOG_LEVEL_NAMES);
        break;
    case HELP:
        options.request = Options::Request::SHOW_HELP;
        break;
    default:
        options.request = Options::Request::SHOW_VERSION;
        break;
    }
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

    Options options;
    options.words = words;
    optind = 0; // 0, not 1: resets the parser after an earlier command line
    while (!IsToShow(options.request))
    {
        int const current = std::max(optind, 1);
        // "+": do not reorder, so that `current` is the word at fault. ":": we write the error texts.
        int const code = getopt_long(count, arguments.data(), "+:", OPTION_TABLE.data(), nullptr);
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
        Apply(code, optarg == nullptr ? "" : optarg, options);
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

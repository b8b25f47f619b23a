#include "Host/CommandLine/OptionForms.h"

#include "Host/CommandLine/Options.h"
#include "ZuApi/Exception.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>

namespace ZuHost
{

namespace
{

using OptionLabel = std::string const&;
using OptionText = std::string const&;
using Kind = OptionForm::Kind;
using Scope = OptionForm::Scope;

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
Value ParseName(OptionLabel label, std::string const& text,
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
    ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s: '%s' is none of %s", label.c_str(), text.c_str(), known.c_str());
}

double ParseRate(OptionLabel label, std::string const& text)
{
    double rateHz = 0;
    char const* const end = text.data() + text.size();
    auto const result = std::from_chars(text.data(), end, rateHz);
    if (result.ec != std::errc{} || result.ptr != end || !std::isfinite(rateHz) || std::signbit(rateHz) ||
        rateHz > Options::MAX_RATE_HZ)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s: '%s' is no number of profiles per second from 0 to %.0f", label.c_str(),
                 text.c_str(), Options::MAX_RATE_HZ);
    }
    return rateHz;
}

uint64 ParseNumber(OptionLabel label, char const* unit, std::string const& text, uint64 most)
{
    uint64 number = 0;
    char const* const end = text.data() + text.size();
    auto const result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc{} || result.ptr != end || number == 0 || number > most)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s: '%s' is no number of %s from 1 to %llu", label.c_str(), text.c_str(),
                 unit, static_cast<unsigned long long>(most));
    }
    return number;
}

/// Splits "127.0.0.1:8080" or "[::1]:8080". The server checks whether the address is valid and may be used.
void ParseEndpoint(OptionLabel label, std::string const& text, std::string& parsedAddress, uint16& parsedPort)
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
                 "%s: '%s' is not of the form ADDRESS:PORT, such as 127.0.0.1:8080 or [::1]:8080", label.c_str(),
                 text.c_str());
    }
    parsedAddress = std::move(address);
    parsedPort = port;
}

/// The job's name must be usable as the name of a file.
JobName ParseJobName(OptionLabel label, std::string const& text)
{
    try
    {
        return JobName(text);
    }
    catch (Zu::Exception const& exception)
    {
        ZU_THROW(exception.Status(), "%s: %s", label.c_str(), exception.what());
    }
}

ParameterSetting ParseSetting(OptionLabel label, std::string const& text)
{
    std::size_t const equals = text.find('=');
    std::size_t const point = text.substr(0, equals).find('.');
    if (equals == std::string::npos || point == std::string::npos || point == 0 || point + 1 == equals)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s: '%s' is not of the form TYPE.KEY=VALUE", label.c_str(), text.c_str());
    }
    return {text.substr(0, point), text.substr(point + 1, equals - point - 1), text.substr(equals + 1)};
}

std::string ParseNotEmpty(OptionLabel label, std::string const& text)
{
    if (text.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s needs a value that is not empty", label.c_str());
    }
    return text;
}

constexpr OptionForm FORMS[] = {
    {"http", Kind::VALUE, Scope::START, "ADDRESS:PORT",
     "where the REST service listens; port 0: a free one (127.0.0.1:8080)",
     [](OptionLabel label, OptionText text, Options& options) {
         ParseEndpoint(label, text, options.httpAddress, options.httpPort);
     }},
    {"https", Kind::VALUE, Scope::START, "ADDRESS:PORT",
     "where the REST service listens for HTTPS as well; port 0: a free one",
     [](OptionLabel label, OptionText text, Options& options) {
         ParseEndpoint(label, text, options.httpsAddress, options.httpsPort);
     }},
    {"certificate", Kind::VALUE, Scope::START, "FILE",
     "the certificate for HTTPS, with the authorities between it and the root; without it the host makes its own, "
     "whose authority GET /authority shows",
     [](OptionLabel label, OptionText text, Options& options) {
         options.certificateFile = ParseNotEmpty(label, text);
     }},
    {"key", Kind::VALUE, Scope::START, "FILE", "the private key of the certificate",
     [](OptionLabel label, OptionText text, Options& options) { options.keyFile = ParseNotEmpty(label, text); }},
    {"insecure", Kind::SWITCH, Scope::START, "", "let --http take any address, without encryption",
     [](OptionLabel, OptionText, Options& options) { options.isInsecure = true; }},
    {"keep-alive", Kind::VALUE, Scope::START, "SECONDS", "how often a stream without news sends a comment (15)",
     [](OptionLabel label, OptionText text, Options& options) {
         options.keepAliveSeconds = ParseNumber(label, "seconds", text, Options::MAX_KEEP_ALIVE_SECONDS);
     }},
    {"token", Kind::VALUE, Scope::START, "FILE", "ask REST clients for the bearer token in this file",
     [](OptionLabel label, OptionText text, Options& options) { options.tokenFile = ParseNotEmpty(label, text); }},
    {"login-notice", Kind::VALUE, Scope::START, "FILE",
     "a text, such as the conditions of use, for clients that are not logged in",
     [](OptionLabel label, OptionText text, Options& options) {
         options.loginNoticeFile = ParseNotEmpty(label, text);
     }},
    {"reset-administrator", Kind::SWITCH, Scope::COMMAND_LINE, "",
     "show a one-time code with which POST /setup makes an administrator",
     [](OptionLabel, OptionText, Options& options) { options.resetsAdministrator = true; }},
    {"data", Kind::VALUE, Scope::START, "DIR", "where jobs and settings live (zucontrol-data)",
     [](OptionLabel label, OptionText text, Options& options) { options.dataFolder = ParseNotEmpty(label, text); }},
    {"job", Kind::VALUE, Scope::START, "NAME", "the job to begin with (default)",
     [](OptionLabel label, OptionText text, Options& options) { options.jobName = ParseJobName(label, text); }},
    {"plugins", Kind::LIST, Scope::START, "DIR",
     "folder of protocol plug-ins; may be repeated (plugins, beside the program)",
     [](OptionLabel label, OptionText text, Options& options) {
         options.pluginFolders.emplace_back(ParseNotEmpty(label, text));
     }},
    {"plugin-keys", Kind::VALUE, Scope::START, "FILE",
     "load only plug-ins that an Ed25519 key in this file has signed (NAME.so.sig)",
     [](OptionLabel label, OptionText text, Options& options) { options.pluginKeys = ParseNotEmpty(label, text); }},
    {"check-plugin", Kind::VALUE, Scope::COMMAND_LINE, "FILE",
     "lead one plug-in through its whole life, tell what failed or what it offers, and end",
     [](OptionLabel label, OptionText text, Options& options) {
         options.request = Options::Request::CHECK_PLUGIN;
         options.checkedPlugin = ParseNotEmpty(label, text);
     }},
    {"check-trail", Kind::VALUE, Scope::COMMAND_LINE, "FILE", "check the chain of a trail, and end",
     [](OptionLabel label, OptionText text, Options& options) {
         options.request = Options::Request::CHECK_TRAIL;
         options.checkedTrail = ParseNotEmpty(label, text);
     }},
    {"trail-days", Kind::VALUE, Scope::START, "DAYS", "how long the trail keeps its entries (400)",
     [](OptionLabel label, OptionText text, Options& options) {
         options.trailDays = ParseNumber(label, "days", text, Options::MAX_TRAIL_DAYS);
     }},
    {"trail-mib", Kind::VALUE, Scope::START, "MiB", "how large the file of the trail may be (64)",
     [](OptionLabel label, OptionText text, Options& options) {
         options.trailMib = ParseNumber(label, "MiB", text, Options::MAX_TRAIL_MIB);
     }},
    {"allow-core-dumps", Kind::SWITCH, Scope::START, "",
     "for developers: a crash may write the memory of the host, with its secrets, to a file",
     [](OptionLabel, OptionText, Options& options) { options.allowsCoreDumps = true; }},
    {"deployment", Kind::VALUE, Scope::START, "KIND",
     "physical-sensor, virtual-sensor, physical-brackle, virtual-brackle or tavrin-service-app (physical-sensor)",
     [](OptionLabel label, OptionText text, Options& options) {
         options.deployment = ParseName(label, text, DEPLOYMENT_NAMES);
     }},
    {"replay", Kind::VALUE, Scope::START, "FILE.pcd",
     "replay a recorded range image, a row a profile, in metres, instead of the simulated part",
     [](OptionLabel label, OptionText text, Options& options) { options.replayFile = ParseNotEmpty(label, text); }},
    {"still", Kind::SWITCH, Scope::START, "",
     "the simulated part stands still under the laser, so that its measurements never change",
     [](OptionLabel, OptionText, Options& options) { options.partStandsStill = true; }},
    {"operation-limit", Kind::VALUE, Scope::START, "SECONDS",
     "how long an operation on the sensor may take before it is a problem (60)",
     [](OptionLabel label, OptionText text, Options& options) {
         options.operationLimitSeconds = ParseNumber(label, "seconds", text, Options::MAX_OPERATION_LIMIT_SECONDS);
     }},
    {"stop-limit", Kind::VALUE, Scope::START, "SECONDS",
     "how long an orderly stop may take before it is given up with status 1 (30)",
     [](OptionLabel label, OptionText text, Options& options) {
         options.stopLimitSeconds = ParseNumber(label, "seconds", text, Options::MAX_STOP_LIMIT_SECONDS);
     }},
    {"rate", Kind::VALUE, Scope::START, "HZ", "profiles per second; 0: as fast as the consumers take them (50)",
     [](OptionLabel label, OptionText text, Options& options) { options.rateHz = ParseRate(label, text); }},
    {"start", Kind::SWITCH, Scope::START, "", "start scanning at once",
     [](OptionLabel, OptionText, Options& options) { options.start = true; }},
    {"enable", Kind::LIST, Scope::START, "TYPE", "enable a protocol; may be repeated",
     [](OptionLabel label, OptionText text, Options& options) {
         options.enabledTypes.push_back(ParseNotEmpty(label, text));
     }},
    {"param", Kind::LIST, Scope::START, "TYPE.KEY=VALUE",
     "set one parameter of a protocol before it runs; may be repeated",
     [](OptionLabel label, OptionText text, Options& options) {
         options.settings.push_back(ParseSetting(label, text));
     }},
    {"log", Kind::VALUE, Scope::RUN, "LEVEL", "error, warning or info (info)",
     [](OptionLabel label, OptionText text, Options& options) {
         options.logLevel = ParseName(label, text, LOG_LEVEL_NAMES);
     }},
    {"config", Kind::VALUE, Scope::COMMAND_LINE, "FILE",
     "take the options that are not on the command line from this file, which is written in TOML",
     [](OptionLabel label, OptionText text, Options& options) {
         options.configurationFile = ParseNotEmpty(label, text);
     }},
    {"check-config", Kind::SWITCH, Scope::COMMAND_LINE, "",
     "check the file of --config, or else /etc/zucontrol/zucontrol.toml, tell each fault with its line, and end",
     [](OptionLabel, OptionText, Options& options) { options.request = Options::Request::CHECK_CONFIGURATION; }},
    {"help", Kind::SWITCH, Scope::COMMAND_LINE, "", "show this text",
     [](OptionLabel, OptionText, Options& options) { options.request = Options::Request::SHOW_HELP; }},
    {"man", Kind::SWITCH, Scope::COMMAND_LINE, "", "print this text as a man page, in roff",
     [](OptionLabel, OptionText, Options& options) { options.request = Options::Request::SHOW_MAN_PAGE; }},
    {"version", Kind::SWITCH, Scope::COMMAND_LINE, "", "show the version",
     [](OptionLabel, OptionText, Options& options) { options.request = Options::Request::SHOW_VERSION; }},
};

} // namespace

std::span<OptionForm const> OptionForms()
{
    return FORMS;
}

} // namespace ZuHost

#pragma once

#include "Host/CommandLine/OptionForms.h"
#include "Host/Store/JobName.h"
#include "wApi/wTypes.h"

#include <filesystem>
#include <string>
#include <vector>

namespace ZuHost
{

/// The kind of system that the host reports to the module.
enum class Deployment
{
    PHYSICAL_SENSOR,
    VIRTUAL_SENSOR,
    PHYSICAL_BRACKLE,
    VIRTUAL_BRACKLE,
    TAVRIN_SERVICE_APP
};

/// The lowest level that is logged.
enum class LogLevel
{
    INFO,
    WARNING,
    ERROR
};

/// One `--param TYPE.KEY=VALUE`.
struct ParameterSetting
{
    std::string typeName;
    std::string key;
    std::string value;

    bool operator==(ParameterSetting const&) const = default;
};

/// The command line and the configuration file, parsed.
struct Options
{
    enum class Request
    {
        RUN,
        CHECK_PLUGIN,
        CHECK_TRAIL,
        CHECK_CONFIGURATION,
        SHOW_HELP,
        SHOW_MAN_PAGE, ///< for the build, which installs it
        SHOW_VERSION
    };

    static constexpr double MAX_RATE_HZ = 100'000;
    static constexpr uint64 MAX_KEEP_ALIVE_SECONDS = 3600;
    static constexpr uint64 MAX_OPERATION_LIMIT_SECONDS = 86'400;
    static constexpr uint64 MAX_STOP_LIMIT_SECONDS = 3600;
    static constexpr uint64 MAX_TRAIL_DAYS = 3650;
    static constexpr uint64 MAX_TRAIL_MIB = 1024;

    static constexpr char STANDARD_CONFIGURATION[] = "/etc/zucontrol/zucontrol.toml";

    Request request = Request::RUN;
    std::vector<std::string> words;          ///< of the command line, the program first
    std::filesystem::path configurationFile; ///< empty: none
    std::vector<GivenOption> given;          ///< in the order in which they were applied
    std::string httpAddress = "127.0.0.1";   ///< of the REST service
    uint16 httpPort = 8080;                  ///< 0: a free port
    bool isInsecure = false;                 ///< the REST service may be open beyond this machine without TLS
    std::string httpsAddress;                ///< of the REST service over TLS; empty: none
    uint16 httpsPort = 0;                    ///< 0: a free port
    std::filesystem::path certificateFile;   ///< for TLS; empty: the host makes its own
    std::filesystem::path keyFile;           ///< empty if and only if there is no certificate file
    uint64 keepAliveSeconds = 15;            ///< interval of comments on an event stream without news
    bool resetsAdministrator = false;        ///< offer a one-time code for a new administrator
    std::filesystem::path tokenFile;         ///< empty: the REST service asks for no token
    std::filesystem::path loginNoticeFile;   ///< a text for callers who are not logged in; empty: none
    std::filesystem::path dataFolder = "zucontrol-data"; ///< folder of jobs and settings
    JobName jobName{"default"};
    std::vector<std::filesystem::path> pluginFolders; ///< empty: "plugins" beside the program
    std::filesystem::path pluginKeys;                 ///< empty: plug-ins need no signature
    std::filesystem::path checkedPlugin;              ///< for CHECK_PLUGIN
    std::filesystem::path checkedTrail;               ///< for CHECK_TRAIL
    uint64 trailDays = 400;                           ///< older entries of the trail are cut
    uint64 trailMib = 64;                             ///< of the trail's file; the oldest entries beyond it are cut
    bool allowsCoreDumps = false;                     ///< a crash may write the memory of the host to a file
    Deployment deployment = Deployment::PHYSICAL_SENSOR;
    std::filesystem::path replayFile;       ///< empty: the simulated part
    bool partStandsStill = false;           ///< the simulated part does not move
    double rateHz = 50;                     ///< 0: as fast as the consumers take the profiles
    bool start = false;                     ///< scan at once
    uint64 operationLimitSeconds = 60;      ///< a longer operation on the system is a problem
    uint64 stopLimitSeconds = 30;           ///< a stop that takes longer is given up
    std::vector<std::string> enabledTypes;  ///< protocols to enable, in this order
    std::vector<ParameterSetting> settings; ///< in the order given
    LogLevel logLevel = LogLevel::INFO;
};

/// Parses a command line and the configuration file that it names; the first word is the program. An option of the command
/// line replaces all values of that option in the file, except that `--param` adds to the file's. Throws
/// `Zu::Status::BAD_ARGUMENT` with one line that names the option, or the file and the line in it, and the fault. Not
/// thread-safe.
Options ParseOptions(std::vector<std::string> const& words);

/// Options with all faults of their configuration file; with faults the options must not be used.
struct ConfiguredOptions
{
    Options options;
    std::vector<std::string> faults; ///< a sentence each, with the file and the line
};

/// As `ParseOptions`, for a caller that wants to know every fault of the file. Without `--config` the file is
/// `Options::STANDARD_CONFIGURATION`. Throws `Zu::Status::BAD_ARGUMENT` for the command line, and for options that
/// contradict each other.
ConfiguredOptions ReadConfiguration(std::vector<std::string> const& words);

/// The text of `--help`, with a final line break.
std::string HelpText();

/// The man page of the program, in roff: the texts of the help.
std::string ManPage();

/// The text of `--version`: version, commit and ABI text of the plug-ins that fit, each with a line break.
std::string VersionText();

} // namespace ZuHost

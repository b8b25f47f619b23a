#include "Host/HostProgram.h"

#include "Host/Application.h"
#include "Host/Audit/AuditTrail.h"
#include "Host/Clinic/PluginClinic.h"
#include "Host/Clinic/PluginFiles.h"
#include "Host/Clinic/SignedPlugins.h"
#include "Host/HangUp.h"
#include "Host/Http/BearerToken.h"
#include "Host/Log/LogLine.h"
#include "Host/Log/LogSink.h"
#include "Host/OrderlyStop.h"
#include "Host/Pcd/PcdReader.h"
#include "Host/ProcessGuard.h"
#include "Host/Security/LoginNotice.h"
#include "Host/Sensor/ProfileSource.h"
#include "Host/Sensor/SimulatedPart.h"
#include "Host/Service/ServiceNotifier.h"
#include "Host/Store/DataFolder.h"
#include "Host/Tls/HttpsCertificate.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuTls/Context.h"
#include "wApi/wTime.h"

#include <ostream>
#include <unistd.h>

namespace ZuHost
{

namespace
{

constexpr int EXIT_FINE = 0;
constexpr int EXIT_BROKEN = 1;
constexpr int EXIT_BAD_INPUT = 2;
constexpr uint64 SECOND_USEC = 1'000'000;

void CheckPluginFolders(Options const& options)
{
    for (std::filesystem::path const& folder : options.pluginFolders)
    {
        std::error_code error;
        if (!std::filesystem::is_directory(folder, error))
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "option '--plugins': there is no folder '%s'", folder.c_str());
        }
    }
}

std::unique_ptr<PluginClinic> ClinicOf(Options const& options)
{
    std::shared_ptr<SignedPlugins> signatures;
    if (!options.pluginKeys.empty())
    {
        signatures = std::make_shared<SignedPlugins>(PluginKeys(options.pluginKeys));
    }
    return std::make_unique<PluginClinic>(options.deployment, PluginClinic::LONGEST_SILENCE, std::move(signatures));
}

std::unique_ptr<IProfileSource> MakeSource(Options const& options)
{
    if (options.replayFile.empty())
    {
        using Conveyor = SimulatedPart::Conveyor;
        return std::make_unique<SimulatedPart>(options.partStandsStill ? Conveyor::STANDS_STILL : Conveyor::MOVES);
    }
    return std::make_unique<Replay>(ReadPcd(options.replayFile));
}

/// The addresses of the REST service. Refuses an address that may not be used without encryption.
HttpServer::Settings CheckHttp(Options const& options)
{
    HttpServer::Settings settings;
    settings.address = options.httpAddress;
    settings.port = options.httpPort;
    settings.isInsecure = options.isInsecure;
    settings.httpsAddress = options.httpsAddress;
    settings.httpsPort = options.httpsPort;
    settings.commentPeriodUsec = SECOND_USEC * options.keepAliveSeconds;
    HttpServer::Check(settings);
    return settings;
}

/// The certificate for HTTPS: the user's, or the host's own in the data folder. Null without HTTPS.
std::unique_ptr<HttpsCertificate> ReadCertificate(Options const& options, DataFolder const& dataFolder)
{
    if (options.httpsAddress.empty())
    {
        return nullptr;
    }
    using Certificate = HttpsCertificate;
    return options.certificateFile.empty()
               ? std::make_unique<Certificate>(Certificate::OwnFiles{dataFolder.TlsFolder(), options.httpsAddress})
               : std::make_unique<Certificate>(Certificate::UsersFiles{options.certificateFile, options.keyFile});
}

/// Prints the fingerprints, which people compare with the certificate that a browser shows.
void PrintFingerprints(std::ostream& output, HttpsCertificate const& certificate)
{
    output << "fingerprint https " << certificate.Current()->Own()->fingerprint << '\n';
    if (certificate.IsOwn())
    {
        output << "fingerprint authority " << certificate.AuthorityFingerprint() << '\n';
    }
}

/// Starts everything and prints the addresses, then that the host is ready. Returns the addresses in a sentence.
std::string Start(Application& application, HttpsCertificate const* certificate, std::ostream& output)
{
    std::string addresses;
    for (Application::Listener const& listener : application.Start())
    {
        output << "listening " << listener.name << ' ' << listener.address << '\n';
        addresses.append(addresses.empty() ? "" : ", ").append(listener.name).append(" on ").append(listener.address);
    }
    if (certificate != nullptr)
    {
        PrintFingerprints(output, *certificate);
    }
    output << "ready" << std::endl;
    return "Serves " + addresses + ".";
}

TrailLimits LimitsOf(Options const& options)
{
    TrailLimits limits;
    limits.days = options.trailDays;
    limits.bytes = options.trailMib * 1024 * 1024;
    return limits;
}

void WarnAtStart(DataFolder const& dataFolder)
{
    if (geteuid() == 0)
    {
        ZU_LOG_WARNING("The host runs as root, which it need not: run it as a user who can write the data folder");
    }
    if (std::string const sentence = dataFolder.WideAccess(); !sentence.empty())
    {
        ZU_LOG_WARNING("%s", sentence.c_str());
    }
}

/// The files that the options name, read.
struct Inputs
{
    std::string token;
    std::string loginNotice;
    HttpServer::Settings http;
    std::unique_ptr<IProfileSource> source;
};

Inputs ReadInputs(Options const& options)
{
    Inputs inputs;
    inputs.token = options.tokenFile.empty() ? "" : BearerToken::ReadFile(options.tokenFile);
    inputs.loginNotice = options.loginNoticeFile.empty() ? "" : LoginNotice::ReadFile(options.loginNoticeFile);
    inputs.http = CheckHttp(options);
    CheckPluginFolders(options);
    inputs.source = MakeSource(options);
    return inputs;
}

/// Serves until `waitForStop` returns, reads the files again after each SIGHUP, and stops in order.
void ServeUntilStop(Application& application, HangUp& hangUp, AuditTrail& trail, ServiceNotifier& service,
                    std::string const& status, std::function<void()> const& waitForStop)
{
    service.TellReady(status);
    OrderlyStop::SetHangUpHandler([&] {
        service.TellReloading(wTime_NowUsec());
        trail.Note({"host", "", "hang-up signal", "", "", "done"});
        hangUp.Answer();
        service.TellReady(status);
    });
    waitForStop();
    OrderlyStop::SetHangUpHandler(nullptr);
    service.TellStopping();
    application.Stop();
}

/// `failureStatus` is kept at the exit status that applies if the next step throws.
void RunSensor(Options const& options, std::ostream& output, std::function<void()> const& waitForStop,
               int& failureStatus)
{
    OrderlyStop::SetStep("reading the files of the command line");
    Inputs inputs = ReadInputs(options);
    DataFolder const dataFolder(options.dataFolder);
    std::unique_ptr<HttpsCertificate> const certificate = ReadCertificate(options, dataFolder);
    OrderlyStop::SetStep("testing the plug-ins");
    // Before the first thread starts, because it forks; and before the log, so that each line is written once.
    auto const plugins = ClinicOf(options)->Admit(FindPluginFiles(options.pluginFolders));

    if (OrderlyStop::IsRequested())
    {
        return;
    }
    failureStatus = EXIT_BROKEN;
    ServiceNotifier service;
    LogScope log(options.logLevel);
    AuditTrail trail(dataFolder, LimitsOf(options));
    Application application(options, inputs.http, inputs.token, certificate.get(), dataFolder, std::move(inputs.source),
                            plugins, log, trail);
    application.SetLoginNotice(inputs.loginNotice);
    application.SetWatchListener([&service](auto const& faults, uint64 nowUsec) { service.Beat(faults, nowUsec); });
    failureStatus = EXIT_BAD_INPUT;
    application.Configure();
    failureStatus = EXIT_BROKEN;
    if (OrderlyStop::IsRequested())
    {
        return;
    }
    std::string const status = Start(application, certificate.get(), output);
    WarnAtStart(dataFolder);
    HangUp hangUp(options, application, log);
    ServeUntilStop(application, hangUp, trail, service, status, waitForStop);
    OrderlyStop::SetStep("writing the trail");
}

/// Tells every fault of the configuration file, and then the first one of the files that it names.
int CheckConfiguration(std::vector<std::string> const& words, std::ostream& output, std::ostream& errors)
{
    ConfiguredOptions const configured = ReadConfiguration(words);
    for (std::string const& fault : configured.faults)
    {
        errors << "zucontrol-host: " << Printable(fault) << std::endl;
    }
    if (!configured.faults.empty())
    {
        return EXIT_BAD_INPUT;
    }
    Options const& options = configured.options;
    ReadInputs(options);
    if (!options.certificateFile.empty())
    {
        HttpsCertificate(HttpsCertificate::UsersFiles{options.certificateFile, options.keyFile});
    }
    output << Printable(options.configurationFile.string()) << " has no fault\n";
    return EXIT_FINE;
}

int CheckTrail(Options const& options, std::ostream& output, std::ostream& errors)
{
    TrailFile::Chain const chain = TrailFile(options.checkedTrail).Check();
    std::string const file = options.checkedTrail.string();
    if (!chain.fault.empty())
    {
        errors << "zucontrol-host: " << Printable(file + " is not whole: " + chain.fault) << std::endl;
        return EXIT_BROKEN;
    }
    output << Printable(file) << " is whole: " << chain.entries << " entries, from " << chain.firstId << " to "
           << chain.lastId << "; the last hash is " << chain.lastHash << '\n';
    return EXIT_FINE;
}

int CheckPlugin(Options const& options, std::ostream& output, std::ostream& errors)
{
    CheckPluginFolders(options);
    PluginClinic::CheckUp const checkUp =
        ClinicOf(options)->Check(options.checkedPlugin, FindPluginFiles(options.pluginFolders));
    if (!checkUp.isSound)
    {
        errors << "zucontrol-host: " << Printable(checkUp.report) << std::endl;
        return EXIT_BROKEN;
    }
    output << checkUp.report;
    return EXIT_FINE;
}

/// What an option shows that ends the program.
std::string ShownText(Options::Request request)
{
    switch (request)
    {
    case Options::Request::SHOW_HELP:
        return HelpText();
    case Options::Request::SHOW_MAN_PAGE:
        return ManPage();
    default:
        return VersionText();
    }
}

} // namespace

int RunHost(std::vector<std::string> const& words, std::ostream& output, std::ostream& errors,
            std::function<void()> const& waitForStop)
{
    int failureStatus = EXIT_BAD_INPUT;
    try
    {
        Options const options = ParseOptions(words);
        if (options.allowsCoreDumps)
        {
            ProcessGuard::AllowCoreDumps();
        }
        OrderlyStop::SetLimit(static_cast<uint32>(options.stopLimitSeconds));
        if (options.request == Options::Request::CHECK_PLUGIN)
        {
            return CheckPlugin(options, output, errors);
        }
        if (options.request == Options::Request::CHECK_TRAIL)
        {
            failureStatus = EXIT_BROKEN;
            return CheckTrail(options, output, errors);
        }
        if (options.request == Options::Request::CHECK_CONFIGURATION)
        {
            return CheckConfiguration(words, output, errors);
        }
        if (options.request == Options::Request::RUN)
        {
            RunSensor(options, output, waitForStop, failureStatus);
        }
        else
        {
            output << ShownText(options.request);
        }
        return EXIT_FINE;
    }
    catch (...)
    {
        errors << "zucontrol-host: " << Printable(Zu::CaughtReason()) << std::endl;
        return failureStatus;
    }
}

} // namespace ZuHost

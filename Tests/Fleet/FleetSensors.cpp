// Runs many sensors in one process, each with its module, its job and its REST service, as scripts/fleet asks for.
//
// usage: fleet-sensors PLUGIN_FOLDER
//
// Each line of standard input is a request:
//   start NAME OPTION...   starts a sensor with options of zucontrol-host, among them --replay; answer: "NAME listening ADDRESS:PORT"
//   stop NAME              ends it in order; answer: "NAME stopped"
// A request that fails is answered with "NAME failed: REASON". At the end of the input all sensors end.
//
// The sensors share what a process has once: the log, the shared objects of the plug-ins, and the text of the step in
// which a stop hangs. Plug-ins are tried before the first sensor starts, because the trial forks the process.

#include "Host/Application.h"
#include "Host/Audit/AuditTrail.h"
#include "Host/Clinic/PluginFiles.h"
#include "Host/Log/LogSink.h"
#include "Host/Pcd/PcdReader.h"
#include "Host/Sensor/ProfileSource.h"
#include "Host/Store/DataFolder.h"
#include "ZuApi/Exception.h"

#include <csignal>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace ZuHost;

/// What all sensors share.
struct Shared
{
    PluginClinic::Admission const& plugins;
    LogScope const& log;
};

HttpServer::Settings HttpOf(Options const& options)
{
    HttpServer::Settings settings;
    settings.address = options.httpAddress;
    settings.port = options.httpPort;
    HttpServer::Check(settings);
    return settings;
}

class FleetSensor final
{
public:
    FleetSensor(std::vector<std::string> const& words, Shared const& shared)
        : options(ParseOptions(words)),
          dataFolder(options.dataFolder),
          trail(dataFolder),
          application(options, HttpOf(options), "", nullptr, dataFolder,
                      std::make_unique<Replay>(ReadPcd(options.replayFile)), shared.plugins, shared.log, trail)
    {
        application.Configure();
        address = application.Start().front().address;
    }

    std::string const& Address() const
    {
        return address;
    }

    void Stop()
    {
        application.Stop();
    }

private:
    Options const options;
    DataFolder const dataFolder;
    AuditTrail trail;
    Application application;
    std::string address; // of the REST service
};

class FleetSensors final
{
public:
    explicit FleetSensors(Shared const& sharedParts) : shared(sharedParts)
    {
    }

    /// Carries out a request, and answers it.
    void Take(std::string const& line)
    {
        std::istringstream words(line);
        std::string verb;
        std::string name;
        words >> verb >> name;
        std::vector<std::string> options{"zucontrol-host"};
        for (std::string word; words >> word;)
        {
            options.push_back(word);
        }
        std::string answer;
        try
        {
            answer = verb == "start" ? Start(name, options) : Stop(name);
        }
        catch (...)
        {
            answer = "failed: " + Zu::CaughtReason();
        }
        std::cout << name << ' ' << answer << std::endl;
    }

private:
    std::string Start(std::string const& name, std::vector<std::string> const& options)
    {
        auto const [place, isNew] = sensors.try_emplace(name, nullptr);
        if (!isNew)
        {
            ZU_THROW(Zu::Status::WRONG_STATE, "it runs already");
        }
        try
        {
            place->second = std::make_unique<FleetSensor>(options, shared);
        }
        catch (...)
        {
            sensors.erase(place);
            throw;
        }
        return "listening " + place->second->Address();
    }

    std::string Stop(std::string const& name)
    {
        auto const place = sensors.find(name);
        if (place == sensors.end())
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "it does not run");
        }
        std::unique_ptr<FleetSensor> const sensor = std::move(place->second);
        sensors.erase(place);
        sensor->Stop();
        return "stopped";
    }

    Shared const shared;
    std::map<std::string, std::unique_ptr<FleetSensor>> sensors;
};

} // namespace

int main(int count, char** arguments)
{
    if (count != 2)
    {
        std::cerr << "usage: fleet-sensors PLUGIN_FOLDER\n";
        return 2;
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGINT, SIG_IGN); // the end of the input ends this process
    try
    {
        auto const plugins = PluginClinic(Deployment::PHYSICAL_SENSOR).Admit(FindPluginFiles({arguments[1]}));
        LogScope const log(LogLevel::WARNING);
        FleetSensors sensors({plugins, log});
        for (std::string line; std::getline(std::cin, line);)
        {
            sensors.Take(line);
        }
    }
    catch (...)
    {
        std::cerr << "fleet-sensors: " << Zu::CaughtReason() << '\n';
        return 1;
    }
    return 0;
}

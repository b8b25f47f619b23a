/// Latency from the publication of a set until a Modbus TCP client can read its value, stage by stage. Uses the real
/// module, the real plug-in and a real socket, one set at a time.
///
/// usage: ResultLatency [SETS]      2000 unless told otherwise
/// Exit status 1 when the 99th percentile of the whole way exceeds the goal.

#include "Host/Module/DeploymentQuery.h"
#include "Host/Module/ParameterSetter.h"
#include "Host/Module/UpdateGate.h"
#include "Host/Sensor/DeskCore.h"
#include "Host/Sensor/DeskScanner.h"
#include "Host/Sensor/FramePublisher.h"
#include "Host/Sensor/Sensor.h"
#include "Host/Sensor/SimulatedPart.h"
#include "RegisterReader.h"
#include "Samples.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Structure.h"
#include "ZuCommon/Persistence.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlManager.h"
#include "ZuControl/Control/ControlRegistry.h"
#include "ZuControl/Control/ControlScanResults.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuCore/ResultHub.h"
#include "ZuPlugin/PluginManager.h"
#include "ZuScan/ScanEngines.h"
#include "wBeacon/wMsgInfo.h"

#include <nlohmann/json.hpp>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <thread>

namespace
{

using namespace ZuHost;
using ZuBench::RegisterReader;
using ZuBench::Samples;

constexpr double GOAL_USEC = 6000; // of the 99th percentile; the dispatcher's pauses are 4000 of them
constexpr char const* TYPE_NAME = "ModbusTcp";
constexpr uint16 COUNTER_REGISTER = 162; // the four registers of the frame counter
constexpr uint16 FIRST_RESULT_REGISTER = 150;

uint64 Now()
{
    return static_cast<uint64>(std::chrono::steady_clock::now().time_since_epoch().count());
}

/// The port on which the protocol listens, read from its metrics. No other thread uses the metrics at that time.
uint16 PortOf(ZuControl::IControlInstance& protocol)
{
    Zu::Properties::Structure const& metrics = protocol.MetricsKeeper().UpdateMetrics();
    auto const address = Zu::Properties::JsonSerializer::Serialize(metrics).value("listening", std::string());
    if (address.empty())
    {
        throw std::runtime_error("the protocol does not listen");
    }
    return static_cast<uint16>(std::strtoul(address.substr(address.rfind(':') + 1).c_str(), nullptr, 10));
}

/// The module as the host builds it, without a sensor: the benchmark publishes the sets.
class Bench final
{
public:
    Bench() : sensor(hub, std::make_unique<SimulatedPart>(), 50), scanner(sensor), core(sensor, false), publisher(hub)
    {
        scanner.AddTo(scanEngines);
        persistManager.LoadJob("default");
        pluginManager.LoadFolder((std::filesystem::read_symlink("/proc/self/exe").parent_path() / "plugins").string());
        registry.emplace(pluginManager);
        scanResults.emplace(&hub, nullptr);
        ZuControl::ControlModuleEnviron environ;
        environ.deployment = &deployment;
        environ.problems = &problems;
        environ.resultHub = &hub;
        environ.updateGate = &updateGate;
        environ.scanEngines = &scanEngines;
        environ.persistManager = &persistManager;
        environ.core = &core;
        manager.emplace(*registry, *scanResults, environ);

        auto& protocol = manager->GetInstance(TYPE_NAME);
        SetParameter(protocol, {TYPE_NAME, "port", "0"});
        auto const id = protocol.EthernetProtocolId();
        handlerIds[0] =
            scanResults->AddResultHandler([this](void*) { handedOver = Now(); }, id); // ahead of the protocol's
        protocol.Enable(true);
        handlerIds[1] = scanResults->AddResultHandler([this](void*) { encoded = Now(); }, id); // behind it
        port = PortOf(protocol);
    }

    ~Bench()
    {
        manager->GetInstance(TYPE_NAME).Enable(false);
        for (auto const& id : handlerIds)
        {
            scanResults->RemoveResultHandler(id);
        }
    }

    Bench(Bench const&) = delete;
    Bench& operator=(Bench const&) = delete;

    void Publish(uint64 frame)
    {
        wStamp stamp;
        stamp.stampCounter = frame;
        publisher.Publish(stamp, tool.Measure(*part.ProfileAt(frame)), false);
    }

    uint16 Port() const
    {
        return port;
    }

    std::atomic<uint64> handedOver{0};
    std::atomic<uint64> encoded{0};

private:
    ZuCommon::ProblemsManager problems;
    DeploymentQuery deployment{Deployment::PHYSICAL_SENSOR};
    UpdateGate updateGate;
    ZuCommon::PersistManager persistManager{{"default"}};
    ZuCore::ResultHub hub{true};
    Sensor sensor;
    DeskScanner scanner;
    ZuScan::Internal::ScanEngineManager scanEngines;
    DeskCore core;
    FramePublisher publisher;
    ProfileTool tool;
    SimulatedPart part;
    ZuPlugin::PluginManager pluginManager;
    std::optional<ZuControl::ControlRegistry> registry;
    std::optional<ZuControl::ControlScanResults> scanResults;
    std::optional<ZuControl::ControlManager> manager;
    std::array<std::pair<ZuControl::ZuEthernetProtocol, Zu::Event<void*>::CallbackId>, 2> handlerIds;
    uint16 port = 0;
};

uint64 CounterOf(std::array<uint16, 35> const& registers)
{
    uint64 counter = 0;
    for (std::size_t i = 0; i < 4; ++i)
    {
        counter = counter << 16 | registers[COUNTER_REGISTER - FIRST_RESULT_REGISTER + i];
    }
    return counter;
}

int Run(uint64 sets)
{
    Bench bench;
    RegisterReader reader(bench.Port());
    std::array<uint16, 35> registers{};
    Samples read("one read of 35 registers, nothing to wait for");
    Samples fanOut("published -> fan-out done");
    Samples handOver("published -> batch handed to the protocol");
    Samples image("batch handed over -> register image published");
    Samples whole("published -> value readable over Modbus");
    std::mt19937_64 random(1);
    std::uniform_int_distribution<int> pause(0, 4000);

    for (uint64 frame = 1; frame <= sets; ++frame)
    {
        std::this_thread::sleep_for(std::chrono::microseconds(pause(random))); // a random moment between two passes
        uint64 const asked = Now();
        reader.Read(FIRST_RESULT_REGISTER, registers);
        uint64 const published = Now();
        bench.Publish(frame);
        uint64 const returned = Now();
        do
        {
            reader.Read(FIRST_RESULT_REGISTER, registers);
        } while (CounterOf(registers) != frame);
        uint64 const readable = Now();
        while (bench.encoded < published) // waits for the handler that runs after the protocol's
        {
            std::this_thread::yield();
        }
        read.Add(published - asked);
        fanOut.Add(returned - published);
        handOver.Add(bench.handedOver - published);
        image.Add(bench.encoded - bench.handedOver);
        whole.Add(readable - published);
    }

    std::printf("%llu sets, each published at a random moment and polled for over loopback\n",
                static_cast<unsigned long long>(sets));
    Samples::PrintHead();
    for (Samples* const stage : {&read, &fanOut, &handOver, &image, &whole})
    {
        stage->Print();
    }
    bool const isMet = whole.Quantile(0.99) <= GOAL_USEC;
    std::printf("goal: 99 %% of the whole way within %.0f microseconds: %s\n", GOAL_USEC, isMet ? "met" : "MISSED");
    return isMet ? 0 : 1;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    try
    {
        uint64 const sets = argumentCount > 1 ? std::strtoull(arguments[1], nullptr, 10) : 2000;
        return Run(sets > 0 ? sets : 1);
    }
    catch (std::exception const& exception)
    {
        std::fprintf(stderr, "ResultLatency: %s\n", exception.what());
        return 1;
    }
}

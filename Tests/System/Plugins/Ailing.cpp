// A protocol with faults that its parameter "ailment" switches on and off, for tests of the host's reaction.

#include "ZuApi/Logging.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuPlugin/PluginEntry.h"
#include "wApi/wThread.h"

#include <condition_variable>
#include <mutex>
#include <stdexcept>

namespace
{

using namespace ZuControl;
using namespace ZuControl::ControlProtocol;

constexpr char const* TYPE_NAME = "Ailing";

constexpr char const* RESULTS_FAIL = "results fail";
constexpr char const* RESULTS_HANG = "results hang";
constexpr char const* START_FAILED = "start failed"; // reports the status and keeps running
constexpr char const* METRICS_FAIL = "metrics fail";
constexpr char const* METRICS_HANG = "metrics hang";
constexpr char const* START_HANGS = "start hangs"; // the start of a scan, which is an operation of the system
constexpr char const* SERVICE_FAILS = "service fails";
constexpr char const* SERVICE_FAILS_LATE = "service fails late"; // a second after its start began

struct AilingParams final : Zu::Params::Group
{
    AilingParams() : Group("")
    {
        Register("ailment", "Ailment", ailment);
    }

    Zu::Params::Value<std::string> ailment; // one of the above; any other text means no fault
};

class AilingProtocol final : public ProtocolBase
{
public:
    explicit AilingProtocol(ControlProtocolEnviron const& environ)
        : ProtocolBase(ZuEthernetProtocol{111}, TYPE_NAME, environ)
    {
        metrics.Register("controlDrops", controlDrops);
        ProtocolInitParams init;
        init.params = &params;
        init.metricsData = &metrics;
        Init(init);
    }

    ~AilingProtocol() override
    {
        CloseResultHandlerGate();
    }

    void Start() override
    {
        if (params.ailment.Get() == SERVICE_FAILS_LATE)
        {
            ZU_LOG_USER_WARNING("The service is about to fail");
            wThread_Sleep(1'000'000);
        }
        if (params.ailment.Get().starts_with(SERVICE_FAILS))
        {
            throw std::runtime_error("not well");
        }
        NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Running);
    }

    void Stop() override
    {
        NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Stopped);
    }

    void RegisterControlScanResultsHandler(IControlScanResults& results) override
    {
        ProtocolBase::RegisterControlScanResultsHandler(results);
        results.UpdateOutputMap(EthernetProtocolId(), {"profile/zMax"});
        UpdateConnectedClientCount(1);
    }

    void ProcessResultSets(void*) override
    {
        FailWith(RESULTS_FAIL);
        HangWith(RESULTS_HANG);
    }

    void OnStartScan() override
    {
        HangWith(START_HANGS);
    }

    void ParamsUpdate() override
    {
        {
            std::scoped_lock const guard(lock);
            ailment = params.ailment.Get();
        }
        changed.notify_all();
        if (params.ailment.Get() == START_FAILED)
        {
            NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::FailedToStart);
        }
        if (params.ailment.Get() == START_HANGS)
        {
            ProcessReceivedCommonCommands({1, CommandStart, ""});
        }
    }

    void ResetParams() override
    {
        params.ailment.Set("");
        ParamsUpdate();
    }

    Zu::Properties::Structure& UpdateMetrics() override
    {
        FailWith(METRICS_FAIL);
        HangWith(METRICS_HANG);
        return metrics;
    }

    void ResetMetrics() override
    {
    }

private:
    void FailWith(std::string const& one)
    {
        std::scoped_lock const guard(lock);
        if (ailment == one)
        {
            throw std::runtime_error("not well");
        }
    }

    void HangWith(std::string const& one)
    {
        std::unique_lock guard(lock);
        changed.wait(guard, [&] { return ailment != one; });
    }

    AilingParams params;
    Zu::Properties::Structure metrics{true};
    Zu::Properties::Value<uint64> controlDrops;

    std::mutex lock; // guards the ailment in force
    std::condition_variable changed;
    std::string ailment;
};

struct AilingFactory final : IControlFactory
{
    std::shared_ptr<IProtocol> Create(ControlProtocolEnviron const& environ) override
    {
        return std::make_shared<AilingProtocol>(environ);
    }
};

class AilingPlugin final : public ControlPlugin
{
public:
    AilingPlugin()
    {
        auto const factory = std::make_shared<AilingFactory>();
        infos.push_back(ControlInfo().SetTypeName(TYPE_NAME).SetDisplayName(TYPE_NAME).SetFactory(*factory));
        factories.push_back(factory);
    }
};

std::shared_ptr<ControlPlugin> Make()
{
    return std::make_shared<AilingPlugin>();
}

} // namespace

ZU_PLUGIN_ENTRY(Make);

// A protocol that fails at one step of its life.

#include "Trouble.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/Control/IControlHardware.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuPlugin/PluginEntry.h"

#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace
{

using namespace ZuControl;
using namespace ZuControl::ControlProtocol;

constexpr char const* TYPE_NAME = "Troubled";
constexpr ZuEthernetProtocol NUMBER{110};
constexpr ZuEthernetProtocol NUMBER_OF_MODBUS{1};

ZuEthernetProtocol NumberOfProtocol()
{
    switch (TROUBLE)
    {
    case Trouble::TAKEN_NUMBER:
        return NUMBER_OF_MODBUS;
    case Trouble::HOSTS_NUMBER:
        return HOST_PROTOCOL;
    default:
        return NUMBER;
    }
}

char const* NameOfType()
{
    switch (TROUBLE)
    {
    case Trouble::TAKEN_NAME:
        return "ModbusTcp";
    case Trouble::BAD_NAME:
        return "Troubled type";
    default:
        return TYPE_NAME;
    }
}

[[noreturn]] void Hang()
{
    while (true)
    {
        pause();
    }
}

bool RunInitialiser()
{
    if (TROUBLE == Trouble::ABORTING_INITIALISER)
    {
        std::abort();
    }
    if (TROUBLE == Trouble::EXITING_INITIALISER)
    {
        _exit(0);
    }
    if (TROUBLE == Trouble::HANGING_INITIALISER)
    {
        Hang();
    }
    return true;
}

bool const INITIALISED = RunInitialiser();

class TroubledProtocol final : public ProtocolBase
{
public:
    explicit TroubledProtocol(ControlProtocolEnviron const& environ)
        : ProtocolBase(NumberOfProtocol(), TYPE_NAME, environ)
    {
        metrics.Register("controlDrops", controlDrops);
        ProtocolInitParams init;
        init.params = &params;
        init.metricsData = &metrics;
        Init(init);
        if (TROUBLE == Trouble::THROWING_CONSTRUCTOR)
        {
            throw std::runtime_error("no licence for this sensor");
        }
        if (TROUBLE == Trouble::ABORTING_CONSTRUCTOR)
        {
            std::abort();
        }
    }

    ~TroubledProtocol() override
    {
        if (TROUBLE == Trouble::ABORTING_DESTRUCTOR)
        {
            std::abort();
        }
    }

    void Start() override
    {
        if (TROUBLE == Trouble::THROWING_START)
        {
            throw std::runtime_error("no cable");
        }
        if (TROUBLE == Trouble::NEEDED_HARDWARE)
        {
            HardwareManager().GetHardwareInterface(IControlHardware::ZuHardwareIOType::DIGITAL_OUTPUT, 0);
        }
        NotifyProtocolStatusUpdateEventHandler(TROUBLE == Trouble::FAILING_START ? ProtocolStatus::FailedToStart
                                                                                 : ProtocolStatus::Running);
    }

    void Stop() override
    {
        if (TROUBLE == Trouble::HANGING_STOP)
        {
            Hang();
        }
        if (TROUBLE == Trouble::THROWING_STOP)
        {
            throw std::runtime_error("no way back");
        }
        NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Stopped);
    }

    void ProcessResultSets(void*) override
    {
        if (TROUBLE == Trouble::THROWING_RESULTS)
        {
            throw std::runtime_error("no appetite");
        }
        if (TROUBLE == Trouble::FOREIGN_RESULTS)
        {
            throw 42;
        }
        if (TROUBLE == Trouble::LOGGED_ERROR)
        {
            ZU_LOG_ERROR("these results are bad");
        }
    }

    void ParamsUpdate() override
    {
    }

    void ResetParams() override
    {
    }

    Zu::Properties::Structure& UpdateMetrics() override
    {
        return metrics;
    }

    void ResetMetrics() override
    {
    }

private:
    Zu::Params::Group params{""};
    Zu::Properties::Structure metrics{true};
    Zu::Properties::Value<uint64> controlDrops;
};

struct TroubledFactory final : IControlFactory
{
    std::shared_ptr<IProtocol> Create(ControlProtocolEnviron const& environ) override
    {
        if (TROUBLE == Trouble::EMPTY_FACTORY)
        {
            return nullptr;
        }
        if (TROUBLE == Trouble::THROWING_FACTORY)
        {
            throw std::runtime_error("no licence for this protocol");
        }
        auto const protocol = std::make_shared<TroubledProtocol>(environ);
        if (TROUBLE == Trouble::KEPT_PROTOCOL)
        {
            kept = protocol;
        }
        return protocol;
    }

    std::shared_ptr<IProtocol> kept;
};

class TroubledPlugin final : public ControlPlugin
{
public:
    TroubledPlugin()
    {
        factories.push_back(std::make_shared<TroubledFactory>());
        ControlInfo info;
        info.SetTypeName(NameOfType()).SetDisplayName(TYPE_NAME);
        if (TROUBLE != Trouble::MISSING_FACTORY)
        {
            info.SetFactory(*factories.back());
        }
        infos.push_back(info);
        if (TROUBLE == Trouble::TWIN_NUMBERS)
        {
            infos.push_back(info.SetTypeName("Twin"));
        }
    }
};

std::shared_ptr<ControlPlugin> Make()
{
    return INITIALISED ? std::make_shared<TroubledPlugin>() : nullptr;
}

} // namespace

ZU_PLUGIN_ENTRY(Make);

#include "ZuApi/Params/Group.h"
#include "ZuApi/Properties/Value.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuPlugin/PluginEntry.h"

using namespace ZuControl;
using namespace ZuControl::ControlProtocol;

class ExampleProtocol final : public ProtocolBase
{
public:
    explicit ExampleProtocol(ControlProtocolEnviron const& environ)
        : ProtocolBase(ZuEthernetProtocol{100}, "Example", environ)
    {
        metrics.Register("controlDrops", controlDrops);
        ProtocolInitParams init;
        init.params = &params;
        init.metricsData = &metrics;
        Init(init);
    }

    void Start() override { NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Running); }
    void Stop() override { NotifyProtocolStatusUpdateEventHandler(ProtocolStatus::Stopped); }
    void ParamsUpdate() override {}
    void ResetParams() override {}
    Zu::Properties::Structure& UpdateMetrics() override { return metrics; }
    void ResetMetrics() override { controlDrops = 0; }

private:
    Zu::Params::Group params{""};
    Zu::Properties::Structure metrics{true};
    Zu::Properties::Value<uint64> controlDrops;
};

struct ExampleFactory final : IControlFactory
{
    std::shared_ptr<IProtocol> Create(ControlProtocolEnviron const& environ) override
    {
        return std::make_shared<ExampleProtocol>(environ);
    }
};

struct ExamplePlugin final : ControlPlugin
{
    ExamplePlugin()
    {
        factories.push_back(std::make_shared<ExampleFactory>());
        infos.push_back(ControlInfo().SetTypeName("Example").SetDisplayName("Example").SetFactory(*factories.back()));
    }

    static std::shared_ptr<ExamplePlugin> Make() { return std::make_shared<ExamplePlugin>(); }
};

ZU_PLUGIN_ENTRY(ExamplePlugin::Make);

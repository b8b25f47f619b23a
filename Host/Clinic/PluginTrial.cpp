#include "Host/Clinic/PluginTrial.h"

#include "Host/Module/ListenerAddress.h"
#include "Host/Module/ParameterSetter.h"
#include "Host/Sensor/SimulatedPart.h"
#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuControl/ControlProtocol/IProtocol.h"
#include "wApi/wArrayList.h"
#include "wApi/wMutex.h"
#include "wApi/wObject.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

namespace ZuHost
{

using ZuControl::IControlInstance;
using ZuControl::ControlProtocol::IProtocol;

namespace
{

constexpr bool SCANS_AT_POWER_UP = false;
constexpr double RATE_HZ = 1000;
constexpr std::size_t FED_SETS = 10;
constexpr uint64 LONGEST_SCAN_USEC = 5'000'000;

/// Keeps the first result sets that a hub publishes.
class SetKeeper final
{
public:
    explicit SetKeeper(ZuCore::ResultHub& usedHub) : hub(usedHub)
    {
        id = hub.AddResultHandler([this](void* set) { Keep(static_cast<ZuCore::ResultSet>(set)); });
    }

    ~SetKeeper()
    {
        hub.RemoveResultHandler(id);
    }

    SetKeeper(SetKeeper const&) = delete;
    SetKeeper& operator=(SetKeeper const&) = delete;

    void Wait()
    {
        Zu::MutexLock const guard(lock);
        changed.WaitUntil(lock, wTime_AfterUsec(LONGEST_SCAN_USEC),
                          [this]() ZU_REQUIRES(lock) { return kept.size() == FED_SETS; });
    }

    /// Fills the list as a dispatcher does; the list shares the sets.
    void Fill(wArrayList& list)
    {
        Zu::MutexLock const guard(lock);
        ZU_CHECK(wArrayList_Construct(&list, nullptr, kept.size(), nullptr));
        for (auto& set : kept)
        {
            ZU_CHECK(wArrayList_Add(list, set.get()));
            wObject_Share(set.get());
        }
    }

private:
    void Keep(ZuCore::ResultSet set)
    {
        {
            Zu::MutexLock const guard(lock);
            if (kept.size() < FED_SETS)
            {
                kept.push_back(wHandle_Share(set));
            }
        }
        changed.NotifyAll();
    }

    ZuCore::ResultHub& hub;
    ZuCore::ResultHub::CallbackId id;
    Zu::Mutex lock; // a leaf
    Zu::CondVar changed;
    std::vector<wHandle<ZuCore::ResultSetObject>> kept ZU_GUARDED_BY(lock);
};

/// Whether the service accepts 0 as "port" and then listens on a free port. A service that sends to a port does not
/// accept 0.
bool TakesFreePort(IControlInstance const& instance)
{
    nlohmann::json const schema = Zu::Properties::JsonSerializer::SerializeSchema(instance.Params()).at("properties");
    auto const port = schema.find("port");
    return port != schema.end() && port->value("minimum", 1) == 0;
}

bool IsLetterOrDigit(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9');
}

void Append(std::string& list, std::string const& word)
{
    list.append(list.empty() ? "" : ", ").append(word);
}

std::string KeysOf(Zu::Properties::Structure const& record)
{
    std::string keys;
    for (uint64 i = 0; i < record.Count(); ++i)
    {
        Append(keys, record.KeyAt(i));
    }
    return keys;
}

std::string CommandsOf(IControlInstance& instance)
{
    std::string ids;
    if (auto const* const target = instance.ActionTarget(); target != nullptr)
    {
        for (ZuControl::ControlActionInfo const& action : target->ListActions())
        {
            Append(ids, action.Id());
        }
    }
    return ids;
}

std::string MetricsOf(IControlInstance& instance)
{
    try
    {
        return KeysOf(instance.MetricsSource().GetMetrics());
    }
    catch (Zu::Exception const& exception)
    {
        if (exception.Status() == Zu::Status::NOT_FOUND)
        {
            return ""; // a protocol without a metrics record
        }
        throw;
    }
}

std::string Line(char const* title, std::string const& text)
{
    return text.empty() ? "" : "    " + std::string(title) + ": " + text + "\n";
}

} // namespace

/// Makes protocols with the plug-in's own factory, and notes them.
class PluginTrial::MeetingFactory final : public ZuControl::IControlFactory
{
public:
    MeetingFactory(ZuControl::IControlFactory& ownFactory, std::vector<std::weak_ptr<IProtocol>>& metProtocols)
        : own(ownFactory), met(metProtocols)
    {
    }

    std::shared_ptr<IProtocol> Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ) override
    {
        std::shared_ptr<IProtocol> protocol = own.Create(environ);
        met.push_back(protocol);
        return protocol;
    }

private:
    ZuControl::IControlFactory& own;
    std::vector<std::weak_ptr<IProtocol>>& met;
};

/// Offers the types of another plug-in, with noting factories.
class PluginTrial::MeetingPlugin final : public ZuControl::ControlPlugin
{
public:
    MeetingPlugin(ZuControl::ControlPlugin const& offer, std::vector<std::weak_ptr<IProtocol>>& met)
    {
        for (uint64 i = 0; i < offer.ControlInfoCount(); ++i)
        {
            ZuControl::ControlInfo info = offer.ControlInfoAt(i);
            factories.push_back(std::make_shared<MeetingFactory>(info.Factory(), met));
            infos.push_back(info.SetFactory(*factories.back()));
        }
    }
};

PluginTrial::PluginTrial(std::filesystem::path pluginFile, std::filesystem::path newLoadPath, Deployment kind)
    : file(std::move(pluginFile)),
      loadPath(std::move(newLoadPath)),
      sensorModule({problems, persistRegistry, updateGate, persistManager}, {kind, RATE_HZ, SCANS_AT_POWER_UP},
                   std::make_unique<SimulatedPart>())
{
}

PluginTrial::~PluginTrial() = default;

void PluginTrial::Load()
{
    if (!loaded.LoadFile(file.string(), loadPath.string()))
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "%s", loaded.Refusals().back().reason.c_str());
    }
}

void PluginTrial::Create()
{
    sensorModule.Build(loaded);
}

void PluginTrial::CreateAnew()
{
    sensorModule.Destroy();
    std::vector<std::shared_ptr<ZuPlugin::IPlugin>> plugins;
    for (auto const& plugin : loaded.At(0).PluginsByType(ZuControl::ControlPlugin::TYPE))
    {
        auto const* const offer = static_cast<ZuControl::ControlPlugin const*>(plugin->GetObject());
        plugins.push_back(std::make_shared<MeetingPlugin>(*offer, met));
    }
    meeting.Add(std::make_unique<ZuPlugin::PluginLib>(file.string(), std::move(plugins)));
    sensorModule.Build(meeting);
}

void PluginTrial::Start()
{
    if (sensorModule.Controls().List().empty())
    {
        ZU_THROW(Zu::Status::NOT_OFFERED, "it offers no protocol for this kind of system");
    }
    for (std::string const& typeName : sensorModule.Controls().List())
    {
        UpdateGate::Request const request(updateGate);
        IControlInstance& instance = sensorModule.Controls().GetInstance(typeName);
        instance.ResetInstance(true, IControlInstance::DataToResetAll);
        if (TakesFreePort(instance))
        {
            SetParameter(instance, {typeName, "port", "0"});
        }
        instance.Enable(true);
        auto const status = instance.GetProtocolStatus();
        if (status != ZuControl::ProtocolStatus::Running && status != ZuControl::ProtocolStatus::Starting)
        {
            ZU_THROW(Zu::Status::WRONG_STATE, "%s says that it does not run", typeName.c_str());
        }
    }
}

void PluginTrial::Feed()
{
    SetKeeper keeper(sensorModule.ResultHub());
    sensorModule.Core().Start(false);
    keeper.Wait();
    sensorModule.Core().Stop(false);
    for (auto const& protocol : met)
    {
        wArrayList batch;
        keeper.Fill(batch);
        if (auto const fed = protocol.lock(); fed != nullptr)
        {
            fed->ProcessResultSets(&batch);
        }
    }
}

void PluginTrial::Stop()
{
    for (std::string const& typeName : sensorModule.Controls().List())
    {
        UpdateGate::Request const request(updateGate);
        sensorModule.Controls().GetInstance(typeName).Enable(false);
    }
}

void PluginTrial::Destroy()
{
    sensorModule.Destroy();
    for (auto const& protocol : met)
    {
        if (!protocol.expired())
        {
            ZU_THROW(Zu::Status::WRONG_STATE, "it keeps a protocol that nobody needs any more");
        }
    }
}

std::vector<PluginTrial::ProtocolType> PluginTrial::Types()
{
    std::vector<ProtocolType> types;
    for (std::string const& typeName : sensorModule.Controls().List())
    {
        auto const number = sensorModule.Controls().GetInstance(typeName).EthernetProtocolId();
        types.push_back({typeName, static_cast<int32>(number)});
    }
    return types;
}

void PluginTrial::CheckNames()
{
    for (std::string const& typeName : sensorModule.Controls().List())
    {
        if (typeName.empty() || !std::ranges::all_of(typeName, IsLetterOrDigit))
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "the type name \"%s\" may have letters and digits only",
                     typeName.c_str());
        }
    }
}

std::string PluginTrial::Offer()
{
    std::string text = file.string() + " offers\n";
    for (std::string const& typeName : sensorModule.Controls().List())
    {
        text += OfferOf(sensorModule.Controls().GetInstance(typeName));
    }
    return text;
}

std::string PluginTrial::OfferOf(IControlInstance& instance)
{
    std::string assemblies;
    for (std::string const& id :
         instance.HasRegisterAssemblyGroup() ? instance.RegisterAssemblyList() : std::vector<std::string>{})
    {
        Append(assemblies, id);
    }
    return "  " + std::string(instance.TypeName()) + " (" + instance.Info().DisplayName() + "), protocol number " +
           std::to_string(static_cast<int32>(instance.EthernetProtocolId())) + "\n" +
           Line("parameters", KeysOf(instance.Params())) +
           Line("output map", instance.HasProtocolOutput() ? "yes" : "") + Line("register assemblies", assemblies) +
           Line("commands", CommandsOf(instance)) + Line("metrics", MetricsOf(instance)) +
           Line("listens on", WaitForListenerAddress(sensorModule.RequestProcessor(), instance.TypeName()));
}

} // namespace ZuHost

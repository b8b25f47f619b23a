#include "ZuControl/Persistence/PersistControl.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuCommon/Persistence.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/Persistence/ConfigurationDocument.h"
#include "ZuControl/Persistence/PersistedPart.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <optional>
#include <string_view>

namespace ZuControl
{

using ControlProtocol::IProtocolRegisterAssembly;
using Zu::Properties::JsonSerializer;
using ZuCommon::PersistDomain;
using Json = nlohmann::json;

namespace
{

/// The members of a configuration document that concern the instance, beside the settings of its protocol.
struct PersistInstanceProperties final : public Zu::Properties::Structure
{
    PersistInstanceProperties() : Structure(true)
    {
        Register("enabled", enabled);
    }

    Zu::Properties::Value<bool> enabled; ///< whether the protocol runs
};

constexpr char const* CFG_VERSION = "1";

constexpr char const* KEY_VERSION = "version";
constexpr char const* KEY_CONTROL = "zu:control";
constexpr char const* KEY_ENABLED = "enabled";
constexpr char const* KEY_PARAMETERS = "parameters";
constexpr char const* KEY_PARAMETERS_VERSION = "parametersVersion";
constexpr char const* KEY_OUTPUTS = "outputs";
constexpr char const* KEY_MAP = "map";
constexpr char const* KEY_ASSEMBLIES = "registerAssemblyList";
constexpr char const* KEY_ATTRIBUTES = "attributes";
constexpr char const* KEY_PROPERTIES = "properties";
constexpr char const* KEY_ID = "id";
constexpr char const* KEY_BLOCKS = "blocks";

constexpr char const* ACTION_ADD = "add";
constexpr char const* ACTION_REMOVE_ALL = "removeAll";

std::string DocumentPath(IControlInstance const& instance)
{
    return std::string("/controls/") + instance.TypeName() + "/config.json";
}

void WriteDocument(IControlInstance const& instance, Json const& document, ZuCommon::IPersistStore& store)
{
    std::string const bytes = document.dump(); // throws for a text that is not UTF-8: nothing is written then
    store.Write(DocumentPath(instance), bytes.data(), bytes.size());
}

/// A new argument record of the action "add". Throws `Zu::Status::NOT_SUPPORTED` when the protocol gives none.
std::shared_ptr<Zu::Params::Group> AddArguments(IControlActionTarget const& target)
{
    auto args = target.GetActionParams(ACTION_ADD);
    if (args == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "The action \"%s\" has no arguments", ACTION_ADD);
    }
    return args;
}

/// Whether the protocol's own document has content. An empty text and 0 are content.
bool HasContent(Json const& document)
{
    return !document.is_null() && !(document.is_structured() && document.empty());
}

bool KeepsParamsOnly(IControlInstance const& instance)
{
    return instance.EthernetProtocolId() == PARAMS_ONLY_PROTOCOL;
}

/// The document of one assembly, for the saved list. The caller holds the assembly's lock.
Json AssemblyDocument(IProtocolRegisterAssembly& assembly)
{
    Json document;
    document[KEY_ATTRIBUTES] = JsonSerializer::Serialize(assembly.Attributes());
    document[KEY_PROPERTIES] = JsonSerializer::Serialize(assembly.Properties());
    Json& blocks = document[KEY_BLOCKS] = Json::array();
    for (auto const& block : assembly.AddedRegisterBlocks())
    {
        blocks.push_back(JsonSerializer::Serialize(*block));
    }
    return document;
}

/// Whether the protocol has the assembly `id` of an entry; else the user is told, and the entry is passed over.
bool KnowsAssembly(IControlInstance const& instance, std::string const& id, char const* function)
{
    char const* const service = instance.TypeName();
    if (id.empty())
    {
        ZU_LOG_LINE(Zu::Logging::FLAGS_WARNING, function, "Missing connection map identifier for service %s", service);
        ZU_LOG_USER_WARNING("Missing connection map identifier for service %1$s. Connection map may require manual "
                            "configuration.",
                            service);
        return false;
    }
    if (HasNul(id) || !instance.HasRegisterAssembly(id.c_str()))
    {
        std::string const shown = WithoutNuls(id);
        ZU_LOG_LINE(Zu::Logging::FLAGS_WARNING, function, "Missing connection map identifier %s for service %s",
                    shown.c_str(), service);
        ZU_LOG_USER_WARNING("Missing connection map identifier %1$s for service %2$s. Connection map may require "
                            "manual configuration.",
                            shown.c_str(), service);
        return false;
    }
    return true;
}

} // namespace

void PersistControl::Init(IControlInstance& instance, PersistDomain domain, ZuCommon::IPersistStore& store)
{
    if (domain == PersistDomain::JOB)
    {
        instance.ResetInstance(false, IControlInstance::DataToResetAll);
    }
    else if (domain == PersistDomain::PROTOCOL)
    {
        Json document;
        instance.InitPersistDomain(domain, document);
        if (HasContent(document))
        {
            WriteDocument(instance, document, store);
        }
    }
}

void PersistControl::Load(IControlInstance& instance, PersistDomain domain, ZuCommon::IPersistStore const& store)
{
    bool const isJob = domain == PersistDomain::JOB;
    if ((!isJob && domain != PersistDomain::PROTOCOL) || !store.Exists(DocumentPath(instance)))
    {
        return;
    }
    ConfigurationDocument document(store.Read(DocumentPath(instance)));
    if (isJob)
    {
        ValidateFileFormat(instance, document.Root());
        LoadControlInstance(true, instance, document.Root());
    }
    else if (HasContent(document.ToJson()))
    {
        instance.LoadPersistDomain(domain, document.ToJson());
    }
}

void PersistControl::Save(IControlInstance& instance, PersistDomain domain, ZuCommon::IPersistStore& store)
{
    if (domain == PersistDomain::JOB)
    {
        WriteDocument(instance, SaveControlInstance(instance), store);
    }
    else if (domain == PersistDomain::PROTOCOL)
    {
        Json document;
        instance.SavePersistDomain(domain, document);
        if (HasContent(document))
        {
            WriteDocument(instance, document, store);
        }
    }
}

char const* PersistControl::Version() const
{
    return CFG_VERSION;
}

void PersistControl::LoadControlInstance(bool keepEnabled, IControlInstance& instance,
                                         DocumentPart const& document) const
{
    PersistInstanceProperties properties;
    ValidateCfgFileVersion(instance, WithoutNuls(document.Find(KEY_VERSION)->Text()).c_str());
    instance.ResetInstance(keepEnabled, KeepsParamsOnly(instance) ? IControlInstance::DataToResetParams
                                                                  : IControlInstance::DataToResetAll);
    // From here on the old settings are lost, also when the load fails.
    DocumentPart const settings = *document.Find(KEY_CONTROL);
    if (settings.Find(KEY_ENABLED))
    {
        settings.ReadInto(properties);
    }
    else
    {
        properties.enabled.Set(false);
        ZU_LOG_USER_WARNING("Missing enable/disable setting in configuration file for service %1$s. Service will be "
                            "disabled. Manual configuration for service may be needed.",
                            instance.TypeName());
        ZU_LOG_WARNING("Missing enable/disable setting in configuration file for service %s.", instance.TypeName());
    }
    bool failed = false;
    try
    {
        LoadControlInstanceSettings(instance, settings);
    }
    catch (...)
    {
        failed = true; // the code that has thrown has written the log lines
    }
    if (bool const wanted = properties.enabled.Get(); wanted != instance.IsEnabled())
    {
        instance.Enable(wanted); // last, so that the protocol starts with all applied settings
    }
    if (failed)
    {
        ZU_THROW(Zu::Status::FAILURE);
    }
}

void PersistControl::LoadControlInstanceSettings(IControlInstance& instance, DocumentPart const& settings)
{
    LoadControlInstanceParams(instance, settings);
    if (!KeepsParamsOnly(instance))
    {
        LoadControlInstanceOutputs(instance, settings);
        LoadControlInstanceRegisterAssembly(instance, settings);
    }
}

void PersistControl::LoadControlInstanceParams(IControlInstance& instance, DocumentPart const& settings)
{
    PersistedPart part(ZU_FUNCTION_LABEL, instance.TypeName(), nullptr, PersistedPart::LOADED_PARAMETERS);
    part.Run([&] {
        auto const parameters = settings.Find(KEY_PARAMETERS);
        if (!parameters)
        {
            return;
        }
        if (!ParametersVersionSupported(instance, settings))
        {
            ZU_THROW(Zu::Status::UNSUPPORTED_VERSION);
        }
        Zu::Params::Group& group = instance.BeginUpdateParameters();
        part.RunStep([&] {
            parameters->ReadInto(group);
            instance.ParamsUpdate();
        });
        instance.EndUpdateParameters();
    });
}

void PersistControl::LoadControlInstanceOutputs(IControlInstance& instance, DocumentPart const& settings)
{
    PersistedPart part(ZU_FUNCTION_LABEL, instance.TypeName(), nullptr, PersistedPart::LOADED_OUTPUTS);
    part.Run([&] {
        auto const outputs = settings.Find(KEY_OUTPUTS);
        if (!outputs || !instance.HasProtocolOutput())
        {
            return;
        }
        auto const map = outputs->Find(KEY_MAP);
        if (!map)
        {
            return;
        }
        instance.BeginUpdateOutputsMap();
        part.RunStep([&] {
            LoadOutputMapEntries(instance, *map);
            instance.OutputsUpdate();
        });
        instance.EndUpdateOutputsMap();
    });
}

void PersistControl::LoadControlInstanceRegisterAssembly(IControlInstance& instance, DocumentPart const& settings)
{
    auto const list = settings.Find(KEY_ASSEMBLIES);
    if (list && list->IsArray() && instance.HasRegisterAssemblyGroup() && instance.HasRegisterAssemblyActionTarget())
    {
        LoadRegisterAssemblyList(instance, *list);
    }
}

void PersistControl::LoadOutputMapEntries(IControlInstance& instance, DocumentPart const& map)
{
    if (!instance.HasOutputsActionTarget())
    {
        return;
    }
    IControlActionTarget& target = instance.OutputsActionTarget();
    target.InvokeAction(ACTION_REMOVE_ALL, Zu::Params::Group(""));
    // One record for all entries: a member that an entry does not name keeps the value of the entry before.
    std::shared_ptr<Zu::Params::Group> const args = AddArguments(target);
    for (DocumentPart const& entry : map.Elements()) // throws for a value that is neither an array nor empty
    {
        entry.ReadInto(*args);
        target.InvokeAction(ACTION_ADD, *args);
    }
}

void PersistControl::LoadRegisterAssemblyList(IControlInstance& instance, DocumentPart const& list)
{
    for (DocumentPart const& entry : list.Elements())
    {
        LoadRegisterAssemblyEntry(instance, entry);
    }
}

void PersistControl::LoadRegisterAssemblyEntry(IControlInstance& instance, DocumentPart const& entry)
{
    std::string id;
    PersistedPart part(ZU_FUNCTION_LABEL, instance.TypeName(), &id, PersistedPart::LOADED_ASSEMBLY);
    part.Run([&] {
        if (!entry.Find(KEY_BLOCKS))
        {
            return;
        }
        id = RegisterAssemblyIdFromCfg(entry);
        if (!KnowsAssembly(instance, id, ZU_FUNCTION_LABEL))
        {
            return;
        }
        instance.BeginUpdateRegisterAssembly();
        part.RunStep([&] {
            LoadRegisterAssemblyBlocks(instance, entry, id.c_str());
            instance.RegisterAssemblyUpdate(id.c_str());
        });
        instance.EndUpdateRegisterAssembly(id);
    });
}

void PersistControl::LoadRegisterAssemblyBlocks(IControlInstance& instance, DocumentPart const& entry, char const* id)
{
    try
    {
        IControlActionTarget& target = instance.RegisterAssemblyActionTarget(id);
        IProtocolRegisterAssembly& assembly = instance.RegisterAssembly(id);
        std::shared_ptr<Zu::Params::Group> const args = AddArguments(target);
        entry.ReadInto(*args);
        assembly.ResetRegisterAssembly(); // removes the default blocks
        target.InvokeAction(ACTION_ADD, *args);
    }
    catch (...)
    {
        // Guarded, so that an exception of the reset does not hide the first one.
        ZU_GUARD_BOUNDARY([&] { instance.ResetInstance(true, IControlInstance::DataToResetRegisterAssemblies); });
        ZU_LOG_CAUGHT("Loading register assembly %s blocks for service %s", id, instance.TypeName());
        ZU_THROW_NESTED("Loading register assembly blocks");
    }
}

bool PersistControl::ParametersVersionSupported(IControlInstance const& instance, DocumentPart const& settings)
{
    char const* const service = instance.TypeName();
    auto const found = settings.Find(KEY_PARAMETERS_VERSION);
    if (!found)
    {
        ZU_LOG_USER_WARNING("Missing parameters version for service %1$s. Parameters may require manual configuration.",
                            service);
        ZU_LOG_WARNING("Missing parameters version for service %s", service);
        return false;
    }
    auto const version = found->Text();
    char const* const expected = instance.ParamsVersion();
    if (version != expected)
    {
        ZU_LOG_USER_WARNING(
            "Unsupported parameters version for service %1$s. Parameters may require manual configuration.", service);
        ZU_LOG_WARNING("Unsupported parameters version for service %s. Expected: %s, version in config: %s", service,
                       expected, WithoutNuls(version).c_str());
        return false;
    }
    return true;
}

std::string PersistControl::RegisterAssemblyIdFromCfg(DocumentPart const& entry)
{
    auto const properties = entry.Find(KEY_PROPERTIES);
    auto const id = properties ? properties->Find(KEY_ID) : std::nullopt;
    return id ? id->Text() : std::string();
}

Json PersistControl::SaveControlInstance(IControlInstance& instance) const
{
    PersistInstanceProperties properties;
    properties.enabled.Set(instance.IsEnabled());
    Json document;
    document[KEY_VERSION] = Version();
    Json& settings = document[KEY_CONTROL] = JsonSerializer::Serialize(properties);
    SaveControlInstanceSettings(instance, settings);
    return document;
}

void PersistControl::SaveControlInstanceSettings(IControlInstance& instance, Json& settings)
{
    SaveControlInstanceParams(instance, settings);
    if (!KeepsParamsOnly(instance))
    {
        SaveControlInstanceOutputs(instance, settings);
        SaveControlInstanceRegisterAssembly(instance, settings);
    }
}

void PersistControl::SaveControlInstanceParams(IControlInstance& instance, Json& settings)
{
    PersistedPart part(ZU_FUNCTION_LABEL, instance.TypeName(), nullptr, PersistedPart::SAVED_PARAMETERS);
    part.Run([&] {
        settings[KEY_PARAMETERS] = JsonSerializer::Serialize(instance.Params());
        settings[KEY_PARAMETERS_VERSION] = instance.ParamsVersion();
    });
}

void PersistControl::SaveControlInstanceOutputs(IControlInstance& instance, Json& settings)
{
    PersistedPart part(ZU_FUNCTION_LABEL, instance.TypeName(), nullptr, PersistedPart::SAVED_OUTPUTS);
    part.Run([&] {
        if (!instance.HasProtocolOutput())
        {
            return;
        }
        instance.OutputsMapBeginLock();
        part.RunStep([&] { settings[KEY_OUTPUTS] = JsonSerializer::Serialize(instance.OutputsMap()); });
        instance.OutputsMapEndLock();
    });
}

void PersistControl::SaveControlInstanceRegisterAssembly(IControlInstance& instance, Json& settings)
{
    PersistedPart part(ZU_FUNCTION_LABEL, instance.TypeName(), nullptr, PersistedPart::SAVED_ASSEMBLIES);
    part.Run([&] {
        if (!instance.HasRegisterAssemblyGroup())
        {
            return;
        }
        Json& list = settings[KEY_ASSEMBLIES] = Json::array();
        for (std::string const& id : instance.RegisterAssemblyList())
        {
            instance.RegisterAssemblyBeginLock(id.c_str());
            bool const isSaved =
                part.RunStep([&] { list.push_back(AssemblyDocument(instance.RegisterAssembly(id.c_str()))); });
            instance.RegisterAssemblyEndLock(id.c_str());
            if (!isSaved)
            {
                break;
            }
        }
    });
}

void PersistControl::ValidateCfgFileVersion(IControlInstance const& instance, char const* version) const
{
    if (std::string_view(version) != Version())
    {
        ZU_LOG_USER_WARNING("Unsupported configuration file version for service %1$s. Manual configuration for service "
                            "may be needed.",
                            instance.TypeName());
        ZU_THROW(Zu::Status::UNSUPPORTED_VERSION,
                 "Unsupported configuration file version for service %s. expected: %s actual: %s", instance.TypeName(),
                 Version(), version);
    }
}

void PersistControl::ValidateFileFormat(IControlInstance const& instance, DocumentPart const& document)
{
    if (!document.Find(KEY_CONTROL))
    {
        ZU_LOG_USER_WARNING(
            "No saved information found in service %1$s configuration file. No changes made to service.",
            instance.TypeName());
        ZU_THROW(Zu::Status::BAD_FORMAT, "No saved information found in service %s configuration file.",
                 instance.TypeName());
    }
    if (!document.Find(KEY_VERSION))
    {
        ZU_LOG_USER_WARNING("Unsupported configuration file format for service %1$s. Manual configuration for service "
                            "may be needed.",
                            instance.TypeName());
        ZU_THROW(Zu::Status::BAD_FORMAT, "Unsupported configuration file format for service %s.", instance.TypeName());
    }
}

} // namespace ZuControl

#include "Host/Operation/SensorSettings.h"

#include "Host/Module/PersistRegistry.h"
#include "Host/Operation/SensorParams.h"
#include "Host/Sensor/Sensor.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Logging.h"

namespace ZuHost
{

using Json = nlohmann::json;
using Zu::Properties::JsonSerializer;
using ZuCommon::PersistDomain;

namespace
{

constexpr char const* LIMITS_PATH = "/sensor/config.json";
constexpr char const* AUTHORITY_PATH = "/sensor/authority.json";

// The same form as the documents of the services, so that a load of the job reports it in the same way.
constexpr char const* SETTINGS = "zu:control";
constexpr char const* PARAMETERS = "parameters";
constexpr char const* DOCUMENT_VERSION = "1";

/// The parameters in a stored document. Throws if it has another form.
Json ParametersIn(std::string const& text)
{
    Json const document = Json::parse(text);
    if (document.at("version") != DOCUMENT_VERSION)
    {
        ZU_THROW(Zu::Status::UNSUPPORTED_VERSION, "The document has another version");
    }
    return document.at(SETTINGS).at(PARAMETERS);
}

void WriteTo(ZuCommon::IPersistStore& store, char const* path, Json const& parameters)
{
    std::string const text = Json{{"version", DOCUMENT_VERSION}, {SETTINGS, {{PARAMETERS, parameters}}}}.dump();
    store.Write(path, text.data(), text.size());
}

/// Validates the whole document before it stores a value.
void Read(Zu::Params::Group& params, Json const& document)
{
    JsonSerializer::Validate(params, document);
    JsonSerializer::Deserialize(params, document);
}

Json DefaultLimits()
{
    LimitsParams params;
    params.SetDefaults();
    return JsonSerializer::Serialize(params);
}

} // namespace

SensorSettings::SensorSettings(PersistRegistry& usedRegistry, Sensor& usedSensor, ControlAuthority& usedAuthority)
    : registry(usedRegistry), sensor(usedSensor), authority(usedAuthority), limits(DefaultLimits())
{
    registration = registry.Register(*this, Component());
}

SensorSettings::~SensorSettings()
{
    ZU_GUARD_DESTRUCTOR([this] { registry.Deregister(registration); });
}

Json SensorSettings::Limits() const
{
    Zu::MutexLock const guard(lock);
    return limits;
}

void SensorSettings::ChangeLimits(Json const& document)
{
    {
        Zu::MutexLock const guard(lock);
        Apply(limits, document);
    }
    registry.MarkModified(*this, PersistDomain::JOB, 0);
}

void SensorSettings::ChangeAuthority(Json const& document)
{
    {
        Zu::MutexLock const guard(lock);
        AuthorityParams params;
        params.Show(authority.Get());
        Read(params, document);
        authority.Set(params.Settings());
        refusedAuthority.clear();
    }
    registry.MarkModified(*this, PersistDomain::PROTOCOL, 0);
}

std::string SensorSettings::Component()
{
    return "sensor";
}

void SensorSettings::InitPersistDomain(PersistDomain domain, ZuCommon::IPersistStore& /*store*/)
{
    Zu::MutexLock const guard(lock);
    if (domain == PersistDomain::JOB)
    {
        Apply(DefaultLimits(), Json::object());
    }
    else
    {
        refusedAuthority.clear();
        authority.Set({});
    }
}

void SensorSettings::LoadPersistDomain(PersistDomain domain, ZuCommon::IPersistStore const& store)
{
    Zu::MutexLock const guard(lock);
    domain == PersistDomain::JOB ? LoadLimits(store) : LoadAuthority(store);
}

void SensorSettings::SavePersistDomain(PersistDomain domain, ZuCommon::IPersistStore& store)
{
    Zu::MutexLock const guard(lock);
    if (domain == PersistDomain::JOB)
    {
        WriteTo(store, LIMITS_PATH, limits);
        return;
    }
    if (!refusedAuthority.empty())
    {
        store.Write(AUTHORITY_PATH, refusedAuthority.data(), refusedAuthority.size());
        return;
    }
    AuthorityParams params;
    params.Show(authority.Get());
    WriteTo(store, AUTHORITY_PATH, JsonSerializer::Serialize(params));
}

/// Applies `changes` on top of `base`, or throws and changes nothing.
void SensorSettings::Apply(Json const& base, Json const& changes)
{
    LimitsParams params;
    JsonSerializer::Deserialize(params, base);
    Read(params, changes);
    params.Check();
    limits = JsonSerializer::Serialize(params);
    sensor.SetLimits(params.Limits());
}

/// A job without limits has the defaults.
void SensorSettings::LoadLimits(ZuCommon::IPersistStore const& store)
{
    if (store.Exists(LIMITS_PATH))
    {
        try
        {
            Apply(DefaultLimits(), ParametersIn(store.Read(LIMITS_PATH)));
            return;
        }
        catch (...)
        {
            std::string const reason = Zu::CaughtReason();
            ZU_LOG_USER_WARNING("The limits of the measurements are not valid (%1$s): no limits apply", reason.c_str());
            ZU_LOG_WARNING("The limits of the measurements are not valid (%s): no limits apply", reason.c_str());
        }
    }
    Apply(DefaultLimits(), Json::object());
}

void SensorSettings::LoadAuthority(ZuCommon::IPersistStore const& store)
{
    AuthorityParams params;
    refusedAuthority.clear();
    if (store.Exists(AUTHORITY_PATH))
    {
        std::string const text = store.Read(AUTHORITY_PATH);
        try
        {
            Read(params, ParametersIn(text));
        }
        catch (...)
        {
            // REST must not run the sensor against a setting that cannot be read. A newer version may have written it,
            // so a save does not replace it.
            refusedAuthority = text;
            params.Show({RestAuthority::NEVER, ControlAuthority::DEFAULT_IDLE_SECONDS});
            std::string const reason = Zu::CaughtReason();
            ZU_LOG_USER_ERROR("The control authority cannot be read (%1$s): REST may not run the sensor",
                              reason.c_str());
            ZU_LOG_ERROR("The control authority cannot be read (%s): REST may not run the sensor", reason.c_str());
        }
    }
    authority.Set(params.Settings());
}

} // namespace ZuHost

#include "ZuApi/Params/ParamsBase.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Structure.h"

namespace Zu::Params
{

namespace
{

void Enter(Properties::Structure* schema, char const* key, Properties::Node& node)
{
    if (schema != nullptr)
    {
        schema->Register(key, node);
    }
}

void Leave(Properties::Structure* schema, char const* key)
{
    if (schema != nullptr)
    {
        schema->Deregister(key);
    }
}

} // namespace

ParamsBase::ParamsBase() noexcept = default;
ParamsBase::~ParamsBase() = default;

void ParamsBase::ClearVisibility()
{
    if (!visibilityEnabled)
    {
        ZU_THROW(Status::BAD_ARGUMENT, "Visibility not enabled, cannot clear visibility types");
    }
    visibility->Set(0);
}

void ParamsBase::CheckValidation()
{
    readOnlyRejected = readOnlyEnabled && readOnly.Get();
    if (readOnlyRejected)
    {
        ZU_LOG_WARNING("%s is read-only.", Name());
    }
}

bool ParamsBase::TakeReadOnlyRejected() noexcept
{
    bool const taken = readOnlyRejected;
    readOnlyRejected = false;
    return taken;
}

void ParamsBase::Refuse(int line, char const* file, char const* label, char const* logFormat,
                        char const* exceptionFormat) const
{
    constexpr uint64 FLAGS = Logging::FLAGS_USER_ERROR;
    if (Logging::IsWanted(FLAGS))
    {
        Logging::Zu_Debug_Log(line, file, FLAGS, "Params validation", logFormat, Name());
    }
    throw Exception(line, file, Status::BAD_ARGUMENT, label, exceptionFormat, Name());
}

char const* ParamsBase::Name() const noexcept
{
    std::string const& text = title.Get();
    return text.empty() ? "<unnamed>" : text.c_str();
}

void ParamsBase::EnterParams(Properties::Structure& schema)
{
    schema.Register("title", title.Node());
    schema.Register("sortOrder", sortOrder.Node());
    if (readOnlyEntered)
    {
        schema.Register("readOnly", readOnly.Node());
    }
    if (usedEntered)
    {
        schema.Register("used", used.Node());
    }
    if (visibilityEntered)
    {
        schema.Register("visibility", *visibility);
    }
}

void ParamsBase::EnableReadOnly(Properties::Structure* schema)
{
    if (schema != nullptr)
    {
        schema->Register("readOnly", readOnly.Node());
    }
    readOnlyEntered = true;
    readOnlyEnabled = true;
}

void ParamsBase::EnableUsed(Properties::Structure* schema, bool enable)
{
    if (enable)
    {
        if (visibilityEnabled)
        {
            ZU_THROW(Status::BAD_ARGUMENT, "Visibility is already enabled, cannot enable used.");
        }
        if (schema != nullptr)
        {
            schema->Register("used", used.Node());
        }
        usedEntered = true;
    }
    else if (usedEnabled)
    {
        Leave(schema, "used");
        usedEntered = false;
    }
    usedEnabled = enable;
}

void ParamsBase::EnableVisibility(Properties::Structure* schema, bool enable)
{
    if (enable == visibilityEnabled)
    {
        return;
    }
    if (!enable)
    {
        ClearVisibility();
        Leave(schema, "visibility");
        visibilityEntered = false;
        visibilityEnabled = false;
        visibility.reset();
        return;
    }
    if (usedEnabled)
    {
        ZU_THROW(Status::BAD_ARGUMENT, "Used is already enabled, cannot enable visibility.");
    }
    if (visibility == nullptr) // a copy may have disabled visibility and left its mask
    {
        visibility = std::make_unique<Properties::Value<uint32>>();
    }
    visibility->Set(0);
    Enter(schema, "visibility", *visibility);
    visibilityEntered = true;
    visibilityEnabled = true;
}

void ParamsBase::CopyParams(Properties::Structure* schema, ParamsBase const& other)
{
    title.CopyFrom(other.title);
    sortOrder.Set(other.sortOrder);
    readOnly.Set(other.readOnly);
    used.Set(other.used);
    if (other.visibilityEnabled)
    {
        if (visibility == nullptr)
        {
            visibility = std::make_unique<Properties::Value<uint32>>();
        }
        visibility->Set(other.visibility->Get());
    }
    visibilityEnabled = other.visibilityEnabled;
    readOnlyEnabled = other.readOnlyEnabled;
    usedEnabled = other.usedEnabled;
    if (readOnlyEnabled)
    {
        EnableReadOnly(schema);
    }
    if (usedEnabled)
    {
        EnableUsed(schema, true);
    }
}

} // namespace Zu::Params

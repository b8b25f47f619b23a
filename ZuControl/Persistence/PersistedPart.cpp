#include "ZuControl/Persistence/PersistedPart.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"

#include <exception>
#include <utility>

namespace ZuControl
{

PersistedPart::Texts const PersistedPart::LOADED_PARAMETERS{
    .stepUser = "Error updating parameters for service %s. Parameters may require manual configuration.",
    .step = "Error updating parameters for service %s",
    .partUser = "Error loading parameters for service %1$s. Parameters may require manual configuration.",
    .part = "Error loading parameters for service %s",
};

PersistedPart::Texts const PersistedPart::LOADED_OUTPUTS{
    .stepUser = "Error adding connections for service %1$s. Connections may require manual configuration.",
    .step = "Error adding connections for service %s",
    .partUser = "Error loading connections for service %1$s. Connections may require manual configuration.",
    .part = "Error loading connections for service %s",
};

PersistedPart::Texts const PersistedPart::LOADED_ASSEMBLY{
    .stepUser = "Error filling connection map %1$s for service %2$s. Connection map may require manual configuration.",
    .step = "Error filling connection map %s for service %s",
    .partUser = "Error loading connection map %1$s for service %2$s. Connection map may require manual configuration.",
    .part = "Error loading connection map %s for service %s",
};

PersistedPart::Texts const PersistedPart::SAVED_PARAMETERS{
    .stepUser = nullptr,
    .step = nullptr,
    .partUser = "Error saving parameters for service %1$s. Please check the parameter settings.",
    .part = "Error saving parameters for service %s",
};

PersistedPart::Texts const PersistedPart::SAVED_OUTPUTS{
    .stepUser = "Error saving connections for service %1$s. Please check the connections.",
    .step = "Error saving connections for service %s",
    .partUser = nullptr,
    .part = "Error locking/unlocking connections for service %s",
};

PersistedPart::Texts const PersistedPart::SAVED_ASSEMBLIES{
    .stepUser = "Error saving connection map for service %1$s. Please check the connection map.",
    .step = "Error saving connection map for service %s",
    .partUser = nullptr,
    .part = "Error locking/unlocking or getting list connection map for %s",
};

PersistedPart::PersistedPart(std::string newFunction, char const* newService, std::string const* newId,
                             Texts const& newTexts)
    : function(std::move(newFunction)), service(newService), id(newId), texts(newTexts)
{
}

/// Calls `write` with the arguments of the formats.
template <typename Write>
void PersistedPart::WithNames(Write write) const
{
    if (id != nullptr)
    {
        write(id->c_str(), service);
    }
    else
    {
        write(service);
    }
}

void PersistedPart::ReportStep()
{
    hasFailed = true;
    WithNames([this](auto... names) {
        ZU_LOG_USER_WARNING(texts.stepUser, names...);
        Zu::LogCaught(__LINE__, __FILE__, function.c_str(), texts.step, names...);
    });
}

void PersistedPart::ThrowNested() const
{
    WithNames([this](auto... names) {
        if (texts.partUser != nullptr)
        {
            ZU_LOG_USER_WARNING(texts.partUser, names...);
        }
        Zu::LogCaught(__LINE__, __FILE__, function.c_str(), "EXCEPTION THROWN: ");
        std::throw_with_nested(
            Zu::Exception(__LINE__, __FILE__, Zu::CaughtStatus(), function.c_str(), texts.part, names...));
    });
}

void PersistedPart::ThrowIfStepFailed() const
{
    if (hasFailed)
    {
        WithNames([this](auto... names) {
            throw Zu::Exception(__LINE__, __FILE__, Zu::Status::FAILURE, function.c_str(), texts.step, names...);
        });
    }
}

} // namespace ZuControl

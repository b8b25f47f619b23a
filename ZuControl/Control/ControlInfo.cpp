#include "ZuControl/Control/ControlInfo.h"

namespace ZuControl
{

char const* const ControlInfo::DEFAULT_TYPE_NAME = "TT-TT-TT!@#$%";
char const* const ControlInfo::DEFAULT_DISPLAY_NAME = "Dun-Dun!@#$%";

ControlInfo::ControlInfo() : typeName(DEFAULT_TYPE_NAME), displayName(DEFAULT_DISPLAY_NAME)
{
}

ControlInfo::ControlInfo(ControlInfo const&) = default;
ControlInfo& ControlInfo::operator=(ControlInfo const&) = default;
ControlInfo::~ControlInfo() = default;

char const* ControlInfo::TypeName() const
{
    return typeName.c_str();
}

char const* ControlInfo::DisplayName() const
{
    return displayName.c_str();
}

IControlFactory& ControlInfo::Factory() const
{
    return *factory;
}

ControlInfo& ControlInfo::SetTypeName(char const* newTypeName)
{
    typeName = newTypeName != nullptr ? newTypeName : "";
    return *this;
}

ControlInfo& ControlInfo::SetDisplayName(char const* newDisplayName)
{
    displayName = newDisplayName != nullptr ? newDisplayName : "";
    return *this;
}

ControlInfo& ControlInfo::SetFactory(IControlFactory& newFactory)
{
    factory = &newFactory;
    return *this;
}

ControlInfo& ControlInfo::SetSupportedEnvironment(SupportedEnvironmentList const& newSupportedEnvironments)
{
    supportedEnvironments = newSupportedEnvironments;
    return *this;
}

bool ControlInfo::SupportedOnPhysicalSensor() const
{
    return supportedEnvironments.physicalSensor;
}

bool ControlInfo::SupportedOnPhysicalBrackle() const
{
    return supportedEnvironments.physicalBrackle;
}

bool ControlInfo::SupportedOnVirtualSensor() const
{
    return supportedEnvironments.virtualSensor;
}

bool ControlInfo::SupportedOnVirtualBrackle() const
{
    return supportedEnvironments.virtualBrackle;
}

bool ControlInfo::SupportedOnTavrinServiceApp() const
{
    return supportedEnvironments.tavrinServiceApp;
}

} // namespace ZuControl

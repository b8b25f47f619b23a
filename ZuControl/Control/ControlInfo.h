#pragma once

#include "ZuControl/Export.h"

#include <string>

namespace ZuControl
{

class IControlFactory;

/// Describes one protocol type: its names, its factory and where it can run. A value; the catalogue holds a copy.
class ZUCONTROL_API ControlInfo
{
public:
    /// The kinds of system on which a type can run.
    struct SupportedEnvironmentList
    {
        bool physicalSensor = true;
        bool physicalBrackle = true;
        bool virtualSensor = true;
        bool virtualBrackle = true;
        bool tavrinServiceApp = true;
    };

    // The names of a type that has set none.
    static char const* const DEFAULT_TYPE_NAME;
    static char const* const DEFAULT_DISPLAY_NAME;

    ControlInfo();
    ControlInfo(ControlInfo const&);
    ControlInfo& operator=(ControlInfo const&);
    ~ControlInfo();

    char const* TypeName() const;
    char const* DisplayName() const;

    /// The factory. The record must have one.
    IControlFactory& Factory() const;

    // For the next two, a null text counts as an empty one.
    ControlInfo& SetTypeName(char const* newTypeName);
    ControlInfo& SetDisplayName(char const* newDisplayName);

    /// `newFactory` is not owned and outlives every copy of the record: the plug-in that lists the type keeps it.
    ControlInfo& SetFactory(IControlFactory& newFactory);
    ControlInfo& SetSupportedEnvironment(SupportedEnvironmentList const& newSupportedEnvironments);

    bool SupportedOnPhysicalSensor() const;
    bool SupportedOnPhysicalBrackle() const;
    bool SupportedOnVirtualSensor() const;
    bool SupportedOnVirtualBrackle() const;
    bool SupportedOnTavrinServiceApp() const;

private:
    friend class ControlManager; // tests whether there is a factory before it calls `Factory`

    std::string typeName;
    std::string displayName;
    IControlFactory* factory = nullptr;
    SupportedEnvironmentList supportedEnvironments;
};

} // namespace ZuControl

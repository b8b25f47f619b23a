#pragma once

#include "wApi/wExport.h"

#include <string>

namespace ZuPlugin
{

/// One plug-in object that a plug-in library offers.
class ZUPLATFORM_API IPlugin
{
public:
    virtual ~IPlugin(); // slot order is part of the plug-in interface: append only

    /// The purpose of the plug-in, for example "ZuControl.ControlPlugin".
    virtual std::string Type() const = 0;

    /// Returns the plug-in's object. Its class follows from the type. The plug-in owns it.
    virtual void const* GetObject() const = 0;
};

} // namespace ZuPlugin

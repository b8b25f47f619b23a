#pragma once

#include "wApi/wExport.h"

#include <string>

namespace ZuPlugin
{

/// One thing that a plug-in library offers.
class ZUPLATFORM_API IPlugin
{
public:
    virtual ~IPlugin(); // first of the slots that others call through: never move one

    /// What it is for, as "ZuControl.ControlPlugin".
    virtual std::string Type() const = 0;

    /// The object behind it, of a class that goes with the type; the plug-in's.
    virtual void const* GetObject() const = 0;
};

} // namespace ZuPlugin

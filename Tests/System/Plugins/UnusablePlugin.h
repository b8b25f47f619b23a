#pragma once

#include "ZuControl/Control/ControlPlugin.h"
#include "ZuControl/Control/IControlFactory.h"

#include <memory>

/// A plug-in that offers one type, made by `Factory`.
template <typename Factory>
class UnusablePlugin : public ZuControl::ControlPlugin
{
public:
    explicit UnusablePlugin(char const* typeName)
    {
        factories.push_back(std::make_shared<Factory>());
        infos.push_back(
            ZuControl::ControlInfo().SetTypeName(typeName).SetDisplayName(typeName).SetFactory(*factories.back()));
    }
};

#pragma once

#include "ZuPlugin/IPlugin.h"

#include <memory>
#include <string>

/// A plug-in of the tests; the object that it offers is a text.
class TestPlugin final : public ZuPlugin::IPlugin
{
public:
    TestPlugin(std::string pluginType, std::string offeredText)
        : type(std::move(pluginType)), text(std::move(offeredText))
    {
    }

    std::string Type() const override
    {
        return type;
    }

    void const* GetObject() const override
    {
        return &text;
    }

private:
    std::string const type;
    std::string const text;
};

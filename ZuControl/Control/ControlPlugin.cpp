#include "ZuControl/Control/ControlPlugin.h"

#include "ZuControl/Control/IControlFactory.h"

namespace ZuControl
{

std::shared_ptr<ControlPlugin> ControlPlugin::Create()
{
    return std::shared_ptr<ControlPlugin>(new ControlPlugin); // make_shared cannot call the protected constructor
}

ControlPlugin::~ControlPlugin() = default;

std::string ControlPlugin::Type() const
{
    return TYPE;
}

void const* ControlPlugin::GetObject() const
{
    return this;
}

uint64 ControlPlugin::ControlInfoCount() const
{
    return infos.size();
}

ControlInfo const& ControlPlugin::ControlInfoAt(uint64 index) const
{
    return infos.at(index);
}

ControlPlugin::ControlPlugin() = default;

} // namespace ZuControl

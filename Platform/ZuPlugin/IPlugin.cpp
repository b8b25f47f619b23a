#include "ZuPlugin/IPlugin.h"

namespace ZuPlugin
{

IPlugin::~IPlugin() = default;

} // namespace ZuPlugin

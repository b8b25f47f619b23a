#include "Plugins/AsciiTcp/AsciiTcpPlugin.h"
#include "ZuPlugin/PluginEntry.h"

ZU_PLUGIN_ENTRY(AsciiTcp::AsciiTcpPlugin::Make);

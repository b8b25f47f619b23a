#include "Plugins/ModbusTcp/ModbusTcpPlugin.h"
#include "ZuPlugin/PluginEntry.h"

ZU_PLUGIN_ENTRY(ModbusTcp::ModbusTcpPlugin::Make);

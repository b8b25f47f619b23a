#include "Plugins/Common/ProtocolPlugin.h"
#include "Plugins/ModbusTcp/ModbusTcpProtocol.h"
#include "ZuPlugin/PluginEntry.h"

ZU_PLUGIN_ENTRY(PluginCommon::ProtocolPlugin<ModbusTcp::ModbusTcpProtocol>::Make);

#include "Plugins/AsciiTcp/AsciiTcpProtocol.h"
#include "Plugins/Common/ProtocolPlugin.h"
#include "ZuPlugin/PluginEntry.h"

ZU_PLUGIN_ENTRY(PluginCommon::ProtocolPlugin<AsciiTcp::AsciiTcpProtocol>::Make);

#include "Plugins/Common/ProtocolPlugin.h"
#include "Plugins/SparkplugMqtt/SparkplugMqttProtocol.h"
#include "ZuPlugin/PluginEntry.h"

ZU_PLUGIN_ENTRY(PluginCommon::ProtocolPlugin<SparkplugMqtt::SparkplugMqttProtocol>::Make);

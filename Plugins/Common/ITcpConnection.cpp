#include "Plugins/Common/ITcpConnection.h"

namespace PluginCommon
{

ITcpConnection::~ITcpConnection() = default;

} // namespace PluginCommon

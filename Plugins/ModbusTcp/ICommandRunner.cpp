#include "Plugins/ModbusTcp/ICommandRunner.h"

namespace ModbusTcp
{

ICommandRunner::~ICommandRunner() = default;

} // namespace ModbusTcp

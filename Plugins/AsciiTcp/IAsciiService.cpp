#include "Plugins/AsciiTcp/IAsciiService.h"

namespace AsciiTcp
{

IAsciiService::~IAsciiService() = default;

} // namespace AsciiTcp

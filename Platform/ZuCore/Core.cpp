#include "ZuCore/Core.h"

namespace ZuCore
{

Core::~Core() = default;

} // namespace ZuCore

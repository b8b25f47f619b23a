#include "ZuControl/Control/CommandOrigin.h"

namespace ZuControl
{

namespace
{

thread_local CommandOrigin const* currentOrigin = nullptr;

} // namespace

CommandOriginScope::CommandOriginScope(CommandOrigin const& origin) noexcept : outer(currentOrigin)
{
    currentOrigin = &origin;
}

CommandOriginScope::~CommandOriginScope()
{
    currentOrigin = outer;
}

CommandOrigin CommandOriginScope::Current()
{
    return currentOrigin == nullptr ? CommandOrigin() : *currentOrigin;
}

} // namespace ZuControl

#include "Host/Console/ConsoleFiles.h"

namespace ZuHost::ConsoleFiles
{

std::span<File const> All() noexcept
{
    return {};
}

} // namespace ZuHost::ConsoleFiles

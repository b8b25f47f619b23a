#pragma once

/// Takes from the process what the host does not need. Call it on the main thread before any other thread starts.
namespace ZuHost::ProcessGuard
{

/// Closed standard descriptors lead to /dev/null from now on, no program that the process starts gains privileges, the files
/// that the process makes are for their owner alone, and no crash writes the memory of the process, with its secrets, to a
/// file. Other processes of the same user cannot read its memory.
void Restrict();

/// Takes the last two back, for developers: core dumps as the limits of the process were before `Restrict`, and
/// debuggers.
void AllowCoreDumps();

} // namespace ZuHost::ProcessGuard

#pragma once

namespace ZuControl::ControlProtocol
{
class IProtocolRegisterAssembly;
}

namespace ModbusTcp
{

/// Replaces the blocks of `assembly` with those of a new job: the four single blocks at 0, 66, 68 and 140, the stamp of
/// the profile at 150, and a block for each of the profile's measurements at 170, 173, 176, 179 and 182. Holds the
/// assembly's lock, so no other thread sees an incomplete list.
void ConfigureDefaultJob(ZuControl::ControlProtocol::IProtocolRegisterAssembly& assembly);

} // namespace ModbusTcp

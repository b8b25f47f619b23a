#pragma once

namespace ZuControl::ControlProtocol
{
class IProtocolRegisterAssembly;
}

namespace ModbusTcp
{

/// Replaces the blocks of `assembly` by those of a new job: the four single blocks at 0, 66, 68 and 140, the stamp of the
/// profile at 150, and behind it a measurement block for each of the profile's measurements, at 170, 173, 176, 179 and 182.
/// Nobody else sees the list half done.
void ConfigureDefaultJob(ZuControl::ControlProtocol::IProtocolRegisterAssembly& assembly);

} // namespace ModbusTcp

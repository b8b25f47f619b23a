#pragma once

#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "wApi/wTypes.h"

#include <vector>

namespace ZuControl::ControlProtocol
{
class IProtocolRegisterAssembly;
class ProtocolRegisterAssemblyBase;
} // namespace ZuControl::ControlProtocol

/// The block types of this service: the types of every protocol in a layout of 16-bit registers where no two fields
/// share a register.
namespace ModbusTcp
{

inline constexpr uint16 LAST_REGISTER = 9999;

// The type names, the same as in all protocols.
inline constexpr char const* TYPE_CONTROL_INPUT = "ControlInput";
inline constexpr char const* TYPE_CONTROL_OUTPUT = "ControlOutput";
inline constexpr char const* TYPE_SYSTEM = "System";
inline constexpr char const* TYPE_SCANNER = "Scanner";
inline constexpr char const* TYPE_STAMP = "Stamp";
inline constexpr char const* TYPE_MEASUREMENT_VALUE = "MeasurementValue";
inline constexpr char const* TYPE_DECISION = "Decision";
inline constexpr char const* TYPE_MEASUREMENT = "Measurement";

/// Registers: 0 request id, 1 command id, 2 to 65 text with one character in each. The block also describes the coils of
/// the service, which run the same commands.
struct ModbusControlInputBlock : public ZuControl::ControlProtocol::DefaultControlInputRegisterBlock,
                                 public ZuControl::ControlProtocol::IDescribedBlock
{
    ModbusControlInputBlock(ZuControl::ControlProtocol::RegisterBlockParams const& params,
                            ZuControl::ControlProtocol::ProtocolRegisterBlockInfo& usedInfo);
    ~ModbusControlInputBlock() override;

    std::vector<ZuControl::ControlProtocol::RegisterField> Fields() const override;
};

/// Registers: 0 to 3 up-time, 4 first state, 5 length of the job name, 6 to 69 job name, 70 and 71 the other states.
struct ModbusSystemBlock : public ZuControl::ControlProtocol::DefaultSystemStateRegisterBlock,
                           public ZuControl::ControlProtocol::IDescribedBlock
{
    ModbusSystemBlock(ZuControl::ControlProtocol::RegisterBlockParams const& params,
                      ZuControl::ControlProtocol::ProtocolRegisterBlockInfo& usedInfo);
    ~ModbusSystemBlock() override;

    std::vector<ZuControl::ControlProtocol::RegisterField> Fields() const override;
};

/// Registers: 0 to 3 encoder, 4 to 7 time, 8 and 9 the two states.
struct ModbusScannerBlock : public ZuControl::ControlProtocol::DefaultScannerStateRegisterBlock,
                            public ZuControl::ControlProtocol::IDescribedBlock
{
    ModbusScannerBlock(ZuControl::ControlProtocol::RegisterBlockParams const& params,
                       ZuControl::ControlProtocol::ProtocolRegisterBlockInfo& usedInfo);
    ~ModbusScannerBlock() override;

    std::vector<ZuControl::ControlProtocol::RegisterField> Fields() const override;
};

/// Adds all block types of this service to an assembly. Blocks may have an order of their own, those of final classes
/// excepted.
void AddModbusBlockTypes(ZuControl::ControlProtocol::IProtocolRegisterAssembly& assembly);

/// Sets the order of the service in all block types of `assembly`. Takes the assembly's lock.
void ChangeOrder(ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase& assembly,
                 ZuControl::ControlProtocol::BlockOrder order);

/// Replaces the blocks of `assembly` with those of a new job: the four single blocks at 0, 66, 68 and 140, the stamp of
/// the profile at 150, and a block for each of the profile's measurements at 170, 173, 176, 179 and 182. Holds the
/// assembly's lock, so no other thread sees an incomplete list.
void ConfigureDefaultJob(ZuControl::ControlProtocol::IProtocolRegisterAssembly& assembly);

} // namespace ModbusTcp

#pragma once

#include "ZuCommon/Role.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <span>
#include <string>

namespace ModbusTcp
{

/// The exception code by which a request is refused.
enum class ModbusException : uint8
{
    NONE = 0,
    ILLEGAL_FUNCTION = 1,     ///< unknown, or not allowed to the client
    ILLEGAL_DATA_ADDRESS = 2, ///< outside the address space, or a write to what is not writable
    ILLEGAL_DATA_VALUE = 3,   ///< a quantity out of range, or parts of the request that contradict each other
    SERVER_DEVICE_BUSY = 6    ///< an operation begun by this service still runs
};

/// What the device identification says of the register map.
struct MapIdentity
{
    std::string name; ///< the id of the assembly
    uint32 blockCount = 0;
    uint32 fingerprint = 0; ///< of the service
    std::string job;        ///< the loaded job; empty if it is not known
};

/// The registers behind the server. All operations are called on the server's I/O thread and must not wait for a
/// client.
class IRegisterModel
{
public:
    virtual ~IRegisterModel();

    /// Registers 0 to RegisterCount() - 1 can be read.
    virtual uint32 RegisterCount() const = 0;

    /// Fills `registers` from `first` on with values of one moment. The range lies within RegisterCount.
    virtual void Read(uint16 first, std::span<uint16> registers) = 0;

    /// Carries out a write request completely or not at all. A refused request changes nothing.
    virtual ModbusException Write(uint16 first, std::span<uint16 const> values) = 0;

    /// Changes a register to (present AND `andMask`) OR (`orMask` AND NOT `andMask`). No other write comes in between.
    virtual ModbusException MaskWrite(uint16 address, uint16 andMask, uint16 orMask) = 0;

    static constexpr uint16 COIL_COUNT = 16;

    /// Coil n in bit n.
    virtual uint16 ReadCoils() = 0;

    /// Writes 1 to the coils whose bits are set. A refused request changes nothing. Writing 0 to a coil changes nothing,
    /// so the model does not hear of it.
    virtual ModbusException WriteCoils(uint16 ones) = 0;

    virtual MapIdentity Identity() = 0;
};

/// Answers a protocol data unit from a register model.
///
/// Supported functions: read coils (1) and discrete inputs (2), where input 16 r + b is bit b of register r; read holding
/// registers (3) and input registers (4), which return the same; write one coil (5), one register (6), several coils
/// (15), several registers (16); mask write of a register (22); read and write several registers (23), with the write
/// first; device identification (43/14). Other functions and invalid requests are answered with an exception code.
/// Quantities and byte counts are checked before addresses, and all checks precede the write. Only device identification
/// allocates.
class ModbusRequest final
{
public:
    static constexpr uint16 MAX_READ = 125;          ///< registers of one read
    static constexpr uint16 MAX_WRITE = 123;         ///< registers of one write
    static constexpr uint16 MAX_READ_WRITE_IN = 121; ///< registers written by function 23
    static constexpr uint16 MAX_READ_BITS = 2000;    ///< coils or discrete inputs of one read
    static constexpr uint16 MAX_WRITE_BITS = 1968;   ///< coils of one write

    /// `request` has 1 to ModbusFrame::MAX_PDU_BYTES bytes; `answer` has room for MAX_PDU_BYTES. Returns the size of
    /// the answer. `refusal` is the exception code, or NONE.
    static std::size_t Answer(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                              ModbusException& refusal);

    /// Answers with an exception code, which is not NONE. Returns the size of the answer.
    static std::size_t Refuse(uint8 function, std::span<uint8> answer, ModbusException refusal);

    /// The least role of a client that may use a function: VIEWER for reading, OPERATOR for all else.
    static ZuCommon::Role RoleFor(uint8 function);
};

} // namespace ModbusTcp

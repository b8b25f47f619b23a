#pragma once

#include "Plugins/ModbusTcp/IRegisterModel.h"

#include <cstddef>
#include <span>

namespace ModbusTcp
{

/// Answers a protocol data unit from a register model.
///
/// Supported functions: read holding registers (3) and input registers (4), which return the same; write one register
/// (6) and several (16); read and write several (23), with the write first; device identification (43/14). Other
/// functions and invalid requests are answered with an exception code. Quantities and byte counts are checked before
/// addresses, and all checks precede the write. Nothing allocates.
class ModbusRequest final
{
public:
    static constexpr uint16 MAX_READ = 125;          ///< registers of one read
    static constexpr uint16 MAX_WRITE = 123;         ///< registers of one write
    static constexpr uint16 MAX_READ_WRITE_IN = 121; ///< registers written by function 23

    /// `request` has 1 to ModbusFrame::MAX_PDU_BYTES bytes; `answer` has room for MAX_PDU_BYTES. Returns the size of
    /// the answer. `refusal` is the exception code, or NONE.
    static std::size_t Answer(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                              ModbusException& refusal);
};

} // namespace ModbusTcp

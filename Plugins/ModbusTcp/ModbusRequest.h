#pragma once

#include "Plugins/ModbusTcp/IRegisterModel.h"

#include <cstddef>
#include <span>

namespace ModbusTcp
{

/// Answers one protocol data unit out of a register model.
///
/// Offered: read holding registers (3) and input registers (4), which give the same; write one register (6) and several
/// (16); read and write several (23), where the write comes first; device identification (43/14). Everything else, and what
/// is wrong with these, gets its exception code. Quantities and byte counts are judged before addresses, and both before
/// anything is written. Nothing allocates.
class ModbusRequest final
{
public:
    static constexpr uint16 MAX_READ = 125;          ///< registers of one read
    static constexpr uint16 MAX_WRITE = 123;         ///< registers of one write
    static constexpr uint16 MAX_READ_WRITE_IN = 121; ///< registers written by a read and write

    /// `request` is not empty and has at most ModbusFrame::MAX_PDU_BYTES; `answer` has room for as many. Gives the bytes of
    /// the answer; `refusal` says whether it is an exception.
    static std::size_t Answer(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                              ModbusException& refusal);
};

} // namespace ModbusTcp

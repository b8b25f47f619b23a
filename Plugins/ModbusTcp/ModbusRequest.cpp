#include "Plugins/ModbusTcp/ModbusRequest.h"

#include "Plugins/ModbusTcp/DeviceIdentification.h"
#include "Plugins/ModbusTcp/ModbusConversation.h"

#include <algorithm>
#include <array>

namespace ModbusTcp
{

IRegisterModel::~IRegisterModel() = default;

namespace
{

constexpr uint8 EXCEPTION_BIT = 0x80;

/// Registers, coils or discrete inputs [first, first + count) of a request.
struct Range
{
    uint16 first;
    uint16 count;

    bool LiesWithin(uint32 wholeCount) const
    {
        return uint32{first} + count <= wholeCount;
    }
};

Range ReadRange(uint8 const* bytes)
{
    return {ReadBigEndian16(bytes), ReadBigEndian16(bytes + 2)};
}

using Values = std::array<uint16, ModbusRequest::MAX_READ>;

std::span<uint16 const> ReadValues(Values& values, uint8 const* bytes, uint16 count)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        values[i] = ReadBigEndian16(bytes + 2 * i);
    }
    return std::span(values).first(count);
}

/// Writes the byte count and the registers of a read, after the function code.
std::size_t WriteRegisters(IRegisterModel& model, Range range, std::span<uint8> answer)
{
    Values values;
    std::span<uint16> const registers = std::span(values).first(range.count);
    model.Read(range.first, registers);
    answer[0] = static_cast<uint8>(2 * range.count); // at most 250
    for (std::size_t i = 0; i < registers.size(); ++i)
    {
        WriteBigEndian16(&answer[1 + 2 * i], registers[i]);
    }
    return 1 + 2 * registers.size();
}

// Each of these gets the request after the function code and writes the answer after the function code.

ModbusException Read(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer, std::size_t& bytes)
{
    if (request.size() != 4)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    Range const range = ReadRange(request.data());
    if (range.count < 1 || range.count > ModbusRequest::MAX_READ)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    if (!range.LiesWithin(model.RegisterCount()))
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    bytes = WriteRegisters(model, range, answer);
    return ModbusException::NONE;
}

ModbusException WriteSingle(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                            std::size_t& bytes)
{
    if (request.size() != 4)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    uint16 const value = ReadBigEndian16(&request[2]);
    ModbusException const refusal = model.Write(ReadBigEndian16(request.data()), {&value, 1});
    std::ranges::copy(request, answer.begin()); // the answer repeats the request
    bytes = request.size();
    return refusal;
}

ModbusException WriteMultiple(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                              std::size_t& bytes)
{
    constexpr std::size_t HEAD_BYTES = 5; // range and byte count
    if (request.size() < HEAD_BYTES)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    Range const range = ReadRange(request.data());
    if (range.count < 1 || range.count > ModbusRequest::MAX_WRITE || request[4] != 2 * range.count ||
        request.size() != HEAD_BYTES + request[4])
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    Values values;
    ModbusException const refusal =
        model.Write(range.first, ReadValues(values, request.data() + HEAD_BYTES, range.count));
    std::ranges::copy(request.first(4), answer.begin());
    bytes = 4;
    return refusal;
}

ModbusException ReadWriteMultiple(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                                  std::size_t& bytes)
{
    constexpr std::size_t HEAD_BYTES = 9; // two ranges and a byte count
    if (request.size() < HEAD_BYTES)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    Range const read = ReadRange(request.data());
    Range const write = ReadRange(request.data() + 4);
    if (read.count < 1 || read.count > ModbusRequest::MAX_READ || write.count < 1 ||
        write.count > ModbusRequest::MAX_READ_WRITE_IN || request[8] != 2 * write.count ||
        request.size() != HEAD_BYTES + request[8])
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    if (!read.LiesWithin(model.RegisterCount())) // before the write: a refused request changes nothing
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    Values values;
    ModbusException const refusal =
        model.Write(write.first, ReadValues(values, request.data() + HEAD_BYTES, write.count));
    if (refusal == ModbusException::NONE)
    {
        bytes = WriteRegisters(model, read, answer);
    }
    return refusal;
}

ModbusException MaskWrite(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                          std::size_t& bytes)
{
    if (request.size() != 6)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    ModbusException const refusal =
        model.MaskWrite(ReadBigEndian16(request.data()), ReadBigEndian16(&request[2]), ReadBigEndian16(&request[4]));
    std::ranges::copy(request, answer.begin()); // the answer repeats the request
    bytes = request.size();
    return refusal;
}

constexpr uint32 BITS_PER_REGISTER = 16;
constexpr uint32 MOST_INPUTS = 65536; // the address space of a request
constexpr std::size_t BITS_PER_BYTE = 8;

constexpr std::size_t BytesOfBits(std::size_t count)
{
    return (count + BITS_PER_BYTE - 1) / BITS_PER_BYTE;
}

/// Writes the byte count and `count` bits of a read. The first is bit `offset` of the first register.
std::size_t WriteBits(std::span<uint16 const> registers, std::size_t offset, std::size_t count, std::span<uint8> answer)
{
    std::size_t const byteCount = BytesOfBits(count);
    answer[0] = static_cast<uint8>(byteCount); // at most 250
    std::ranges::fill(answer.subspan(1, byteCount), uint8{0});
    for (std::size_t i = 0; i < count; ++i)
    {
        std::size_t const bit = offset + i;
        unsigned const value = registers[bit / BITS_PER_REGISTER] >> (bit % BITS_PER_REGISTER) & 1u;
        answer[1 + i / BITS_PER_BYTE] |= static_cast<uint8>(value << (i % BITS_PER_BYTE));
    }
    return 1 + byteCount;
}

/// Checks a read of bits. Sets `range` if the result is NONE.
ModbusException TakeBitRange(std::span<uint8 const> request, uint32 wholeCount, Range& range)
{
    if (request.size() != 4)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    range = ReadRange(request.data());
    if (range.count < 1 || range.count > ModbusRequest::MAX_READ_BITS)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    return range.LiesWithin(wholeCount) ? ModbusException::NONE : ModbusException::ILLEGAL_DATA_ADDRESS;
}

ModbusException ReadCoils(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                          std::size_t& bytes)
{
    Range range{};
    ModbusException const refusal = TakeBitRange(request, IRegisterModel::COIL_COUNT, range);
    if (refusal == ModbusException::NONE)
    {
        uint16 const coils = model.ReadCoils();
        bytes = WriteBits({&coils, 1}, range.first, range.count, answer);
    }
    return refusal;
}

ModbusException ReadInputs(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                           std::size_t& bytes)
{
    Range range{};
    uint32 const inputCount = std::min(BITS_PER_REGISTER * model.RegisterCount(), MOST_INPUTS);
    ModbusException const refusal = TakeBitRange(request, inputCount, range);
    if (refusal == ModbusException::NONE)
    {
        std::array<uint16, ModbusRequest::MAX_READ_BITS / BITS_PER_REGISTER + 1> values; // the ends may lie within one
        auto const first = static_cast<uint16>(range.first / BITS_PER_REGISTER);
        std::size_t const offset = range.first % BITS_PER_REGISTER;
        auto const registers =
            std::span(values).first((offset + range.count + BITS_PER_REGISTER - 1) / BITS_PER_REGISTER);
        model.Read(first, registers);
        bytes = WriteBits(registers, offset, range.count, answer);
    }
    return refusal;
}

ModbusException WriteCoils(IRegisterModel& model, uint16 ones)
{
    return ones == 0 ? ModbusException::NONE : model.WriteCoils(ones);
}

ModbusException WriteSingleCoil(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                                std::size_t& bytes)
{
    constexpr uint16 ON = 0xFF00;
    constexpr uint16 OFF = 0x0000;
    if (request.size() != 4)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    uint16 const coil = ReadBigEndian16(request.data());
    uint16 const value = ReadBigEndian16(&request[2]);
    if (value != ON && value != OFF)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    if (coil >= IRegisterModel::COIL_COUNT)
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    std::ranges::copy(request, answer.begin()); // the answer repeats the request
    bytes = request.size();
    return WriteCoils(model, static_cast<uint16>(value == ON ? 1u << coil : 0u));
}

ModbusException WriteMultipleCoils(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                                   std::size_t& bytes)
{
    constexpr std::size_t HEAD_BYTES = 5; // range and byte count
    if (request.size() < HEAD_BYTES)
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    Range const range = ReadRange(request.data());
    if (range.count < 1 || range.count > ModbusRequest::MAX_WRITE_BITS || request[4] != BytesOfBits(range.count) ||
        request.size() != HEAD_BYTES + request[4])
    {
        return ModbusException::ILLEGAL_DATA_VALUE;
    }
    if (!range.LiesWithin(IRegisterModel::COIL_COUNT))
    {
        return ModbusException::ILLEGAL_DATA_ADDRESS;
    }
    uint32 ones = request[HEAD_BYTES];
    ones |= request.size() > HEAD_BYTES + 1 ? uint32{request[HEAD_BYTES + 1]} << BITS_PER_BYTE : 0;
    ones &= (1u << range.count) - 1; // the bits behind the last coil do not count
    std::ranges::copy(request.first(4), answer.begin());
    bytes = 4;
    return WriteCoils(model, static_cast<uint16>(ones << range.first));
}

ModbusException Identify(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                         std::size_t& bytes)
{
    return DeviceIdentification::Read(model, request, answer, bytes);
}

/// A function code, the least role of a client that may use it, and the operation that answers it.
struct Function
{
    uint8 code;
    ZuCommon::Role role;
    ModbusException (*answer)(IRegisterModel&, std::span<uint8 const>, std::span<uint8>, std::size_t&);
};

constexpr std::array<Function, 11> FUNCTIONS = {{
    {1, ZuCommon::Role::VIEWER, ReadCoils},
    {2, ZuCommon::Role::VIEWER, ReadInputs},
    {3, ZuCommon::Role::VIEWER, Read},
    {4, ZuCommon::Role::VIEWER, Read},
    {5, ZuCommon::Role::OPERATOR, WriteSingleCoil},
    {6, ZuCommon::Role::OPERATOR, WriteSingle},
    {15, ZuCommon::Role::OPERATOR, WriteMultipleCoils},
    {16, ZuCommon::Role::OPERATOR, WriteMultiple},
    {22, ZuCommon::Role::OPERATOR, MaskWrite},
    {23, ZuCommon::Role::OPERATOR, ReadWriteMultiple},
    {43, ZuCommon::Role::VIEWER, Identify},
}};

/// Null for an unknown code.
Function const* FindFunction(uint8 code)
{
    auto const found = std::ranges::find(FUNCTIONS, code, &Function::code);
    return found != FUNCTIONS.end() ? &*found : nullptr;
}

} // namespace

std::size_t ModbusRequest::Answer(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                                  ModbusException& refusal)
{
    std::size_t bytes = 0;
    Function const* const function = FindFunction(request[0]);
    refusal = function != nullptr ? function->answer(model, request.subspan(1), answer.subspan(1), bytes)
                                  : ModbusException::ILLEGAL_FUNCTION;
    if (refusal == ModbusException::NONE)
    {
        answer[0] = request[0];
        return 1 + bytes;
    }
    return Refuse(request[0], answer, refusal);
}

std::size_t ModbusRequest::Refuse(uint8 function, std::span<uint8> answer, ModbusException refusal)
{
    answer[0] = function | EXCEPTION_BIT;
    answer[1] = static_cast<uint8>(refusal);
    return 2;
}

ZuCommon::Role ModbusRequest::RoleFor(uint8 function)
{
    Function const* const found = FindFunction(function);
    return found != nullptr ? found->role : ZuCommon::Role::OPERATOR;
}

} // namespace ModbusTcp

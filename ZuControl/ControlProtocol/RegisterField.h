#pragma once

#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <optional>
#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{

struct ProtocolRegisterBlock;

/// The type of a field, with the names of IEC 61131-3 where it has one.
enum class FieldType : uint8
{
    BOOL, ///< one coil or discrete input
    BIT,  ///< one bit of a register
    USINT,
    INT,
    UINT,
    DINT,
    UDINT,
    LINT,
    ULINT,
    REAL,
    LREAL,
    TEXT, ///< characters up to the first 0, or to the end of the registers
    RAW   ///< registers of unknown content
};

/// The table of a client's protocol in which the address of a field counts.
enum class FieldArea : uint8
{
    REGISTERS,
    COILS,
    DISCRETE_INPUTS
};

/// What a client does with a field, so that a generated program can start a command,
/// check the fingerprint and take results from a queue.
enum class FieldRole : uint8
{
    VALUE,
    COMMAND_REQUEST_ID,
    COMMAND_ID,
    COMMAND_TEXT,
    ANSWER_REQUEST_ID,
    ANSWER_STATUS,
    FINGERPRINT,
    QUEUE_ACKNOWLEDGE, ///< takes the number of the held result
    QUEUE_NUMBER,      ///< of the held result; 0 for none
    QUEUE_SESSION,     ///< another number after the queue has begun anew
    QUEUE_LOST_BEFORE  ///< results lost directly before the held one
};

/// One value in the registers of a block, as a client has to read it.
struct RegisterField
{
    /// A letter, then letters and digits. Unique among all types of a service whose blocks can have the same data
    /// source, because the name of a tag consists of the source and this name.
    std::string name;
    FieldType type = FieldType::RAW;
    FieldArea area = FieldArea::REGISTERS;
    uint16 offset = 0;               ///< registers from the first of the block; in other areas the address itself
    uint16 count = 1;                ///< registers; 1 in other areas
    uint8 bit = 0;                   ///< of a BIT: 0 is the least significant
    uint8 charactersPerRegister = 1; ///< of a TEXT: 1 in the low byte, or 2
    std::optional<BlockOrder> order; ///< empty: the order of the block's type
    uint32 divisor = 1;              ///< the value is the number in the registers divided by this
    std::string unit;
    std::string source; ///< empty: the data source of the block
    /// The number in the registers that marks an invalid value, as a bit pattern. Of REAL and LREAL, any NaN does.
    std::optional<uint64> invalid;
    bool isWritable = false;
    FieldRole role = FieldRole::VALUE;
    std::string comment; ///< one line

    bool operator==(RegisterField const&) const = default;
};

/// A register block describes its fields with this interface, as an additional base, for the files that PLC programmers
/// get. Without it the registers of a block are listed as RAW.
class ZUCONTROL_API IDescribedBlock
{
public:
    IDescribedBlock() noexcept;

    /// The fields in the order of their registers. The caller holds the lock of the assembly.
    virtual std::vector<RegisterField> Fields() const = 0;

    virtual ~IDescribedBlock(); // after the other slot, which keeps its place
};

/// The unit of a measurement of this data source; empty if it is not known.
ZUCONTROL_API char const* UnitOfSource(std::string const& source);

/// The bytes of a value of this type; 0 for TEXT and RAW.
ZUCONTROL_API uint32 SizeOf(FieldType type);

/// Makes fields from the offsets in bytes with which blocks encode them.
class ZUCONTROL_API FieldList final
{
public:
    explicit FieldList(ProtocolRegisterBlock const& describedBlock);
    ~FieldList();
    FieldList(FieldList const&) = delete;
    FieldList& operator=(FieldList const&) = delete;

    /// A number that takes whole registers. A byte has a whole register.
    RegisterField& Number(char const* name, FieldType type, size_t byteOffset);
    /// `length` characters, each in a register.
    RegisterField& Text(char const* name, size_t length, size_t byteOffset);

    /// The fields. None if a field does not begin with a register or if two fields overlap.
    std::vector<RegisterField> Take();

private:
    RegisterField& Add(char const* name, size_t byteOffset);

    ProtocolRegisterBlock const& block;
    std::vector<RegisterField> fields;
    bool isAligned = true;
};

} // namespace ZuControl::ControlProtocol

#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/RegisterEncoder.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <string>
#include <type_traits>

namespace ZuControl::ControlProtocol
{

struct ProtocolRegisterBlockInfo;
struct RegisterBlockParams;

/// One placed block of a register assembly, with the encoding of values into registers that all kinds of blocks share.
///
/// A block does no I/O: the protocol hands it a buffer that stands for its registers. All offsets are bytes from the
/// start of the buffer and do not scale with the register size.
/// Ownership: the assembly shares it; neither it nor its type outlives the assembly.
/// Threads: no lock; a protocol encodes on its own thread, ids and names change under the assembly's lock.
struct ZUCONTROL_API ProtocolRegisterBlock : public Zu::Params::Group
{
public:
    /// `usedInfo` outlives the block. Throws `Zu::Status::BAD_ARGUMENT` when output ids are register addresses and
    /// `params` has no output id.
    ProtocolRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~ProtocolRegisterBlock() override;

    // The protocol calls the next two on its own threads, without the assembly's lock; they must not block. Each writes
    // the first buffer and reads the second. A kind of block overrides the direction that it supports; the base throws
    // `Zu::Status::NOT_SUPPORTED`.

    /// Writes registers from a record. A wrong size is refused before the first byte is written.
    virtual void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize);
    /// Writes a record from registers.
    virtual void Deserialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize);
    virtual void SetDataSource(std::string const& newDataSource);
    virtual std::string const& DataSource() const;

    std::string const& Type() const;
    std::string const& DisplayName() const;
    void SetDisplayName(std::string const& newDisplayName);
    std::string const& ScannerId() const;
    void SetScannerId(std::string const& newScannerId);
    uint16 OutputId() const;
    /// Without validation. The block keeps its place in the assembly's list.
    void SetOutputId(uint16 newOutputId);

    uint16 RegisterCount() const;
    uint8 BytesPerRegister() const;
    /// The last output id that the block takes, in 16 bits; its own id where output ids are plain numbers.
    uint16 EndAddress() const;

    bool HasDataSource() const;
    bool AtMaxInstance() const;
    bool AtMinInstance() const;
    void IncrementInstanceCount();
    void DecrementInstanceCount();

protected:
    /// Writes `value` as a whole number of registers in the protocol's byte order. `isSigned` names the kind of the
    /// value and changes no byte: the type decides the widening. Throws `Zu::Status::BAD_ARGUMENT` for a register size
    /// other than 1 and 2.
    template <typename T>
    void SerializeValue(uint8* buffer, size_t offset, T value, [[maybe_unused]] bool isSigned)
    {
        static_assert(std::is_integral_v<T> && sizeof(T) <= 8);
        CheckBytesPerRegister(SERIALIZE_VALUE_LABEL);
        WriteWidened(buffer + offset, Widened(value), WidthOf(sizeof(T)), SERIALIZE_VALUE_LABEL);
    }

    /// Writes the whole registers of `value`, the most significant first, the low byte first within each of two.
    template <typename T>
    void Serialize_BE(uint8* buffer, size_t offset, T value)
    {
        CheckBytesPerRegister("ZuControl::ControlProtocol::ProtocolRegisterBlock::Serialize_BE");
        RegisterEncoder(BytesPerRegister(), true)
            .WriteExact(buffer + offset, static_cast<std::make_unsigned_t<T>>(value));
    }

    /// Writes the bytes of `value`, the low byte first, with any register size.
    template <typename T>
    void Serialize_LE(uint8* buffer, size_t offset, T value)
    {
        CheckBytesPerRegister("ZuControl::ControlProtocol::ProtocolRegisterBlock::Serialize_LE");
        RegisterEncoder(BytesPerRegister(), false)
            .WriteExact(buffer + offset, static_cast<std::make_unsigned_t<T>>(value));
    }

    /// Writes the encoding of a missing value: the smallest number when signed, all ones when not.
    void SerializeInvalidValue(uint8* buffer, size_t offset, size_t numOfBytes, bool isSigned);

    // Reading is not the mirror image of writing: with two bytes a register on a big-endian protocol the low byte is
    // written first and the high byte is read first. Clients rely on both.
    void Deserialize16(uint16& value, uint8 const* buffer, size_t offset);
    void Deserialize16_BE(uint16& value, uint8 const* buffer, size_t offset);
    void Deserialize16_LE(uint16& value, uint8 const* buffer, size_t offset);

    /// `value` times `scale`, rounded half away from zero. A value that is missing, is no number or does not fit gives
    /// the smallest 32-bit integer and `isInvalid` 1, and unless it is missing also `isOutOfRange` 1.
    static void Convert64fTo32s(double value, double scale, int32& result, int32& isOutOfRange, int32& isInvalid);

    /// Appends the ending of job files when it is missing. Throws `Zu::Status::BAD_ARGUMENT`, no text, for an empty
    /// name, and the platform's status when the result does not fit into `capacity`.
    static void FormatFullJobFileName(char* fileName, size_t capacity);

    /// The encoder for all values of one record. Throws `Zu::Status::BAD_ARGUMENT` as `SerializeValue` does.
    RegisterEncoder ValueEncoder() const;

    /// The end of a value of `valueSize` bytes at `offset`; all ones when the sum overflows.
    size_t EndOfValue(size_t offset, size_t valueSize) const;

    /// Whether fields that end at `endOfFields` lie within the block's registers. True for a register size other than 1
    /// and 2, which the encoder refuses.
    bool FieldsFit(size_t endOfFields) const;

    ProtocolRegisterBlockInfo& info;
    Zu::Params::Value<std::string> type;
    Zu::Params::Value<std::string> displayName;
    Zu::Params::Value<std::string> scannerId;
    Zu::Params::Value<uint16> outputId;

private:
    // The labels of the encoders are literals: ZU_FUNCTION_LABEL would copy 256 bytes to the stack for each value.
    static constexpr char const* SERIALIZE_VALUE_LABEL =
        "ZuControl::ControlProtocol::ProtocolRegisterBlock::SerializeValue";

    template <typename T>
    static uint64 Widened(T value)
    {
        return static_cast<uint64>(static_cast<std::conditional_t<std::is_signed_v<T>, int64, uint64>>(value));
    }

    void CheckBytesPerRegister(char const* label) const;
    size_t WidthOf(size_t valueSize) const;
    void WriteWidened(uint8* where, uint64 value, size_t numOfBytes, char const* label) const;
    static bool CanConvert64fTo64s(double value);
    bool IsProtocolBigEndian() const;
};

} // namespace ZuControl::ControlProtocol
